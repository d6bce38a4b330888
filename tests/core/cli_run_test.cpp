// The zenta program run in-process on a simulated unit the test made, so
// that the unit's trace and memories can be inspected afterwards.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "cli_rig.h"
#include "common/number_text.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "platform/udev_rule.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using Packet = std::array<std::uint8_t, 8>;
using zenta::testing::TempDir;

using testing::Outcome;
using testing::run_on;
using testing::SimRun;

// The identification's packets: programming mode, configuration space,
// six steps to the ID word, a pause, one word read, and back.
std::vector<Packet> read_devid_packets() {
  std::vector<Packet> p = {{UNIT_MCLR_LEVEL, 0},
                           {UNIT_PGM_LINES, 1},
                           {UNIT_MCLR_LEVEL, 2},
                           {ICSP_LOAD_CONFIG, 0x3F, 0xFF}};
  for (int i = 0; i < 6; ++i) p.push_back({ICSP_INC_ADDR, 0});
  p.insert(p.end(),
           {{UNIT_WAIT, 10}, {ICSP_READ_DATA, 1}, {UNIT_MCLR_LEVEL, 1}, {UNIT_PGM_LINES, 1}});
  return p;
}

TEST(CliRunTest, IdReadsTheIdOnceWithTheSupplyOn) {
  const struct {
    const char* chip;
    std::vector<std::string> args;
    const char* name;  // as the panel's ID table names it
  } cases[] = {
      {"12F675", {"--device", "12F629/675", "id"}, "12F675"},
      {"16F819", {"id", "--device", "7"}, "16F819"},
      // The 16F84 has no ID word: its entry takes the blank answer.
      {"none", {"id", "--device", "16F84"}, "16F84"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    SimRun run(c.chip);
    const Outcome result = run(c.args);
    EXPECT_EQ(result.status, kExitOk) << result.err;
    const int id = run.unit->device_id_word();
    EXPECT_EQ(result.out, "Device=" + std::string(c.name) + " (" + hex_text(id >> 8) +
                              hex_text(id & 0xFF) + ")\n");
    // The device entry is taken without a packet; the one identification
    // runs between supply on and supply off.
    std::vector<Packet> expected = {{UNIT_VCC, 1}};
    for (const Packet& p : read_devid_packets()) expected.push_back(p);
    expected.push_back({UNIT_VCC, 0});
    std::vector<Packet> sent;
    for (const auto& exchange : run.unit->trace()) sent.push_back(exchange.tx);
    EXPECT_EQ(sent, expected);
  }
}

TEST(CliRunTest, WriteTakesTheConfigurationWordFromOptionFileOrDevice) {
  const struct {
    std::vector<std::string> options;
    std::optional<std::uint16_t> file_config;
    int chip_config;
    const char* says;
    int word7;  // what the write leaves in word 7
  } cases[] = {
      // A configuration record puts the last address at 0x2000: the last row
      // wraps onto row 0 and programs the file's word 0x2007 over word 7,
      // which the verify then finds.
      {{"--config", "3F39"}, 0x3F3A, 0x3F39, "3F39 (from --config)", 0x3F3A},
      {{}, 0x3F3A, 0x3F3A, "3F3A (from the file)", 0x3F3A},
      // A blank word in the file: its row is blank, so it is not programmed.
      {{}, 0x3FFF, 0x3F3B, "3F3B (the device's default)", 0x3FFF},
      {{}, std::nullopt, 0x3F3B, "3F3B (the device's default)", 0x3FFF},
  };
  for (const auto& c : cases) {
    for (const bool exact : {true, false}) {
      SCOPED_TRACE(c.says + std::string(exact ? ", exact" : ", checked"));
      TempDir dir;
      std::vector<HexWord> words = {{0, 0x2805}, {1, 0x0000}, {5, 0x3FFE}};
      if (c.file_config) words.push_back({0x2007, *c.file_config});
      zenta::testing::write_text(dir.file("p.hex"), format_inhx8m(words));
      SimRun run("16F877A");
      std::vector<std::string> args = {"write", dir.file("p.hex")};
      if (exact) args.push_back("--exact");
      args.insert(args.end(), c.options.begin(), c.options.end());
      const Outcome result = run(args);
      // The checked write covers the image's words only: nothing wraps.
      const bool damaged = exact && c.word7 != 0x3FFF;
      EXPECT_EQ(result.status, damaged ? kExitFailed : kExitOk) << result.err;
      EXPECT_EQ(result.err.find("Verify Data ERROR") != std::string::npos, damaged) << result.err;
      // No success line after a failure.
      EXPECT_EQ(result.out, "Configuration word " + std::string(c.says) + "\n" +
                                (damaged ? "" : "Write Complete\n"));
      EXPECT_EQ(run.unit->config_word(), c.chip_config);
      for (const auto& [address, word] : {std::pair{0, 0x2805},
                                          {1, 0},
                                          {5, 0x3FFE},
                                          {7, damaged ? c.word7 : 0x3FFF},
                                          {8, 0x3FFF}}) {
        EXPECT_EQ(run.unit->program_word(address), word) << "word " << address;
      }
    }
  }
}

// The device entry bounds the EEPROM read: the 16F84A's 64 bytes, table
// and INHX8M file alike, with the byte at the last address included.
TEST(CliRunTest, ReadEepromBringsBackTheDevicesBytes) {
  TempDir dir;
  SimRun run("16F84A");
  for (int i = 0; i < 64; ++i) run.unit->set_eeprom_byte(i, (i * 5 + 3) & 0xFF);
  const Outcome table = run({"--device", "16F84A", "read-eeprom"});
  EXPECT_EQ(table.status, kExitOk) << table.err;
  EXPECT_NE(table.out.find("\n30: F3 F8 FD 02 07"), std::string::npos) << table.out;
  EXPECT_EQ(table.out.find("\n40:"), std::string::npos) << table.out;
  EXPECT_EQ(run({"--device", "16F84A", "read-eeprom", "-o", dir.file("ee.hex")}).status, kExitOk);
  std::vector<HexWord> expected;
  for (std::uint16_t i = 0; i < 64; ++i) {
    expected.push_back({0x2100u + i, static_cast<std::uint16_t>((i * 5 + 3) & 0xFF)});
  }
  EXPECT_EQ(zenta::testing::read_text(dir.file("ee.hex")), format_inhx8m(expected));
}

TEST(CliRunTest, FailuresGiveTheirExitStatus) {
  TempDir dir;
  ASSERT_TRUE(sim::SimUnit("16F84A").save(dir.file("m84.txt")));
  const struct {
    int fail_read_at;  // 0: none; -1: the unit unplugged
    std::vector<std::string> args;
    int status;
    const char* says;
    int exchanges;  // how many reached the unit; -1: not pinned
  } cases[] = {
      // The erase's chip check meets the failed exchange first.
      {2,
       {"erase"},
       kExitFailed,
       "zenta: the chip check failed: exchanges with the unit failed",
       -1},
      {2, {"--exact", "erase"}, kExitFailed, "zenta: 1 exchange with the unit failed\n", -1},
      {-1, {"version"}, kExitNoUnit, "Unit not Found", 0},
      {0, {"write", dir.file("missing.hex")}, kExitFailed, "missing.hex': no such file", 0},
      {0, {"--sim-memory", dir.file("m84.txt"), "id"}, kExitFailed, "", 0},  // another chip's
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args.back());
    SimRun run("16F877A");
    if (c.fail_read_at > 0) run.unit->fail_read_at(c.fail_read_at);
    if (c.fail_read_at < 0) run.unit->unplug();
    const Outcome result = run(c.args);
    EXPECT_EQ(result.status, c.status);
    EXPECT_NE(result.err.find(c.says), std::string::npos) << result.err;
    if (c.exchanges >= 0) {
      EXPECT_EQ(run.unit->trace().size(), std::size_t(c.exchanges));
    }
  }
  // Simulated memories asked of a real unit: bad usage, the unit left closed.
  DriverChoice choice;
  auto* scripted = new zenta::testing::ScriptedDriver();
  choice.driver.reset(scripted);
  EXPECT_EQ(run_on(choice, {"--sim-memory", "m.txt", "id"}).status, kExitUsage);
  EXPECT_EQ(scripted->opens, 0);
}

// A driver that cannot open and says why, as the usb driver does.
class RefusingDriver : public zenta::testing::ScriptedDriver {
 public:
  std::string hint;
  std::string open_failure_hint() const override { return hint; }
};

TEST(CliRunTest, UnitNotFoundCarriesTheDriversHint) {
  const struct {
    std::string hint;
    const char* says;
  } cases[] = {
      {"The unit 1209:5a4e is in use by another program.", "in use by another program"},
      {"The unit 1209:5a4e is plugged in, but this user may not use it.", "may not use it"},
      {"", "Plug the unit in and check that you may use it"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.says);
    DriverChoice choice;
    auto* driver = new RefusingDriver();
    driver->open_result = kDriverOpenError;
    driver->hint = c.hint;
    choice.driver.reset(driver);
    const Outcome result = run_on(choice, {"version"});
    EXPECT_EQ(result.status, kExitNoUnit);
    EXPECT_NE(result.err.find("Unit not Found (Driver Open:NG(ドライバオープンエラー): the "
                              "driver could not be opened)\n"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find(c.says), std::string::npos) << result.err;
  }
}

TEST(CliRunTest, UdevRulePrintsTheRuleForTheUnitsId) {
  std::ostringstream out, err;
  ASSERT_TRUE(parse_arguments({"udev-rule"}).ok());
  EXPECT_EQ(run(parse_arguments({"udev-rule"}).options, out, err, false), kExitOk);
  EXPECT_EQ(out.str(), udev_rule_text());
  EXPECT_FALSE(parse_arguments({"--unit", "sim", "udev-rule"}).ok());
}

}  // namespace
}  // namespace zenta::cli

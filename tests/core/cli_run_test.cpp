// The zenta program run in-process on a simulated unit the test made, so
// that the unit's trace and memories can be inspected afterwards.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "cli/console_host.h"
#include "common/number_text.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using Packet = std::array<std::uint8_t, 8>;
using zenta::testing::TempDir;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

Outcome run_on(DriverChoice& choice, const std::vector<std::string>& args) {
  const ParseResult parsed = parse_arguments(args);
  EXPECT_TRUE(parsed.ok()) << parsed.error;
  std::ostringstream out, err;
  Outcome result;
  result.status = run_with_driver(parsed.options, choice, out, err, false);
  result.out = out.str();
  result.err = err.str();
  return result;
}

DriverChoice sim_choice(const std::string& chip) {
  DriverChoice choice;
  choice.driver = std::make_unique<sim::SimUnit>(chip);
  choice.simulated = true;
  return choice;
}

sim::SimUnit& sim_of(DriverChoice& choice) {
  return static_cast<sim::SimUnit&>(*choice.driver);
}

std::vector<Packet> sent(const sim::SimUnit& unit) {
  std::vector<Packet> packets;
  for (const auto& exchange : unit.trace()) packets.push_back(exchange.tx);
  return packets;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

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

TEST(CliRunTest, IdSelectsTheDeviceThenReadsTheIdWithTheSupplyOn) {
  struct Case {
    const char* chip;
    const char* device;
    const char* name;  // as the panel's ID table names it
  };
  const Case cases[] = {
      {"16F877A", "", "16F877A"},
      {"12F675", "12F629/675", "12F675"},
      {"16F819", "7", "16F819"},
      {"none", "", "16F84"},  // an empty socket reads as all ones
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip);
    DriverChoice choice = sim_choice(c.chip);
    std::vector<std::string> args = {"id"};
    if (*c.device) args.insert(args.end(), {"--device", c.device});
    const Outcome result = run_on(choice, args);
    EXPECT_EQ(result.status, kExitOk) << result.err;
    const int id = std::string(c.chip) == "none" ? 0x3FFF : sim_of(choice).device_id_word();
    EXPECT_EQ(result.out, "Device=" + std::string(c.name) + " (" + hex_text(id >> 8) +
                              hex_text(id & 0xFF) + ")\n");
    // The selection's own identification runs unpowered; the command's in between
    // supply on and supply off.
    std::vector<Packet> expected = read_devid_packets();
    expected.push_back({UNIT_VCC, 1});
    for (const Packet& p : read_devid_packets()) expected.push_back(p);
    expected.push_back({UNIT_VCC, 0});
    EXPECT_EQ(sent(sim_of(choice)), expected);
  }
}

TEST(CliRunTest, WriteTakesTheConfigurationWordFromOptionFileOrDevice) {
  struct Case {
    const char* name;
    std::vector<std::string> options;
    std::optional<std::uint16_t> file_config;
    int chip_config;
    const char* says;
  };
  const Case cases[] = {
      {"option over file", {"--config", "3F39"}, 0x3F3A, 0x3F39, "3F39 (from --config)"},
      {"file", {}, 0x3F3A, 0x3F3A, "3F3A (from the file)"},
      {"blank word in the file", {}, 0x3FFF, 0x3F3B, "3F3B (the device's default)"},
      {"device default", {}, std::nullopt, 0x3F3B, "3F3B (the device's default)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    std::vector<HexWord> words = {{0, 0x2805}, {1, 0x0000}, {5, 0x3FFE}};
    if (c.file_config) words.push_back({0x2007, *c.file_config});
    zenta::testing::write_text(dir.file("p.hex"), format_inhx8m(words));
    DriverChoice choice = sim_choice("16F877A");
    std::vector<std::string> args = {"write", dir.file("p.hex")};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const Outcome result = run_on(choice, args);
    EXPECT_EQ(result.status, kExitOk) << result.err;
    EXPECT_TRUE(contains(result.out, "Configuration word " + std::string(c.says) + "\n"))
        << result.out;
    EXPECT_TRUE(contains(result.out, "Write Complete\n")) << result.out;
    const sim::SimUnit& unit = sim_of(choice);
    EXPECT_EQ(unit.config_word(), c.chip_config);
    EXPECT_EQ(unit.program_word(0), 0x2805);
    EXPECT_EQ(unit.program_word(1), 0x0000);
    EXPECT_EQ(unit.program_word(5), 0x3FFE);
    EXPECT_EQ(unit.program_word(7), 0x3FFF);  // nothing of configuration space wrapped onto it
  }
}

TEST(CliRunTest, ReadEepromSavesTheBytesWhereGputilsPutsThem) {
  TempDir dir;
  DriverChoice choice = sim_choice("16F628A");
  sim_of(choice).set_eeprom_byte(0, 0x12);
  sim_of(choice).set_eeprom_byte(0x7F, 0x34);
  const Outcome saved =
      run_on(choice, {"--device", "16F62xA", "read-eeprom", "-o", dir.file("e.hex")});
  EXPECT_EQ(saved.status, kExitOk) << saved.err;
  EXPECT_EQ(saved.out, "EE Read Complete\n");
  std::istringstream file(zenta::testing::read_text(dir.file("e.hex")));
  ProgrammerState loaded;
  blank_program_image(loaded);
  ASSERT_TRUE(load_hex_records(file, loaded).ok);
  for (int i = 0; i < 128; ++i) {
    const int expected = i == 0 ? 0x12 : i == 0x7F ? 0x34 : kBlankWord;
    ASSERT_EQ(loaded.word(0x2100 + i), expected) << "EEPROM byte " << i;
  }
  // The table shows the device's 128 bytes, 16 a line, and then the outcome.
  const Outcome shown = run_on(choice, {"--device", "16F62xA", "read-eeprom"});
  EXPECT_EQ(shown.status, kExitOk);
  EXPECT_TRUE(shown.out.rfind("00: 12 FF", 0) == 0) << shown.out;
  EXPECT_TRUE(contains(shown.out, "\n70: FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 34\nEE "))
      << shown.out;
}

TEST(CliRunTest, FailuresGiveTheirExitStatus) {
  {
    SCOPED_TRACE("failed exchange");
    DriverChoice choice = sim_choice("16F877A");
    sim_of(choice).fail_read_at(2);
    const Outcome result = run_on(choice, {"erase"});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_TRUE(contains(result.err, "USB ERROR: USB Read Error\n")) << result.err;
    EXPECT_TRUE(contains(result.err, "1 exchange with the unit failed")) << result.err;
    EXPECT_EQ(result.out, "Chip Erase Complete\n");
  }
  {
    SCOPED_TRACE("unplugged unit");
    DriverChoice choice = sim_choice("16F877A");
    sim_of(choice).unplug();
    const Outcome result = run_on(choice, {"version"});
    EXPECT_EQ(result.status, kExitNoUnit);
    EXPECT_TRUE(contains(result.err, "Unit not Found")) << result.err;
    EXPECT_TRUE(contains(result.err, "--unit sim")) << result.err;
    EXPECT_EQ(result.out, "");
  }
  {
    SCOPED_TRACE("unreadable HEX file");
    TempDir dir;
    DriverChoice choice = sim_choice("16F877A");
    const Outcome result = run_on(choice, {"write", dir.file("missing.hex")});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_TRUE(contains(result.err, "FILE ERROR: Can't Open or Read the FILE")) << result.err;
    // Only the selection's identification reached the unit.
    EXPECT_EQ(sent(sim_of(choice)), read_devid_packets());
  }
  {
    SCOPED_TRACE("memory file of another chip");
    TempDir dir;
    ASSERT_TRUE(sim::SimUnit("16F84A").save(dir.file("m.txt")));
    DriverChoice choice = sim_choice("16F877A");
    const Outcome result = run_on(choice, {"--sim-memory", dir.file("m.txt"), "id"});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_TRUE(sim_of(choice).trace().empty());
  }
  {
    SCOPED_TRACE("simulated memories with a real unit");
    DriverChoice choice;
    auto driver = std::make_unique<zenta::testing::ScriptedDriver>();
    auto* scripted = driver.get();
    choice.driver = std::move(driver);
    const Outcome result = run_on(choice, {"--sim-memory", "m.txt", "id"});
    EXPECT_EQ(result.status, kExitUsage);
    EXPECT_EQ(scripted->opens, 0);
  }
}

TEST(ConsoleHostTest, BarOnlyOnATerminalAndRepeatedMessagesCounted) {
  MainView view;
  std::ostringstream plain_err;
  ConsoleHost plain(plain_err, false);
  plain.attach(view);
  view.progress = {50, 100};
  plain.process_events();
  EXPECT_EQ(plain_err.str(), "");

  std::ostringstream err;
  ConsoleHost host(err, true);
  host.attach(view);
  host.process_events();
  EXPECT_EQ(err.str(), "\r[" + std::string(20, '#') + std::string(20, ' ') + "] 50%");
  err.str("");
  host.process_events();  // same percentage: nothing redrawn
  EXPECT_EQ(err.str(), "");
  for (int i = 0; i < 3; ++i) host.message_box("USB Write Error", "USB ERROR", MessageIcon::kStop);
  host.message_box("Verify Data ERROR", "VERIFY ERROR", MessageIcon::kStop);
  const std::string blank = '\r' + std::string(48, ' ') + '\r';
  EXPECT_EQ(err.str(), blank +
                           "USB ERROR: USB Write Error\n  (2 more times)\n"
                           "VERIFY ERROR: Verify Data ERROR\n");
  err.str("");
  view.progress = {100, 100};
  host.process_events();
  view.progress = {};
  host.process_events();
  EXPECT_EQ(err.str(), "\r[" + std::string(40, '#') + "] 100%" + blank);
  EXPECT_EQ(host.message_count(), 4);
}

}  // namespace
}  // namespace zenta::cli

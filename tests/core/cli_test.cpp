// The zenta program's runs on simulated units, in-process on a unit the
// test made, so that its trace and memories can be looked at afterwards,
// and as the built program a script runs.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "cli/args.h"
#include "cli/record.h"
#include "cli_rig.h"
#include "env_guard.h"
#include "fakes.h"
#include "image/hex_check.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "instruments/capture_export.h"
#include "instruments/logic_view.h"
#include "link/command_codes.h"
#include "packets.h"
#include "platform/udev_rule.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using namespace zenta::testing;  // packets and files
using testing::Outcome;
using testing::run_args;
using testing::SimRun;
using testing::words;
using Json = nlohmann::ordered_json;
using Memory = std::map<int, int>;  // address -> word; 0x2007 the configuration word

Memory with(Memory memory, int address, int word) {
  memory[address] = word;
  return memory;
}

int held(const sim::SimUnit& unit, int address) {
  return address == 0x2007 ? unit.config_word() : unit.program_word(address);
}

// Words 0, 1 and 4 of a small program and its configuration word, as
// p.hex holds them and a chip holds them once written.
const Memory kProgrammed = {{0, 0x2805}, {1, 0x0000}, {4, 0x3FFE}, {0x2007, 0x3F70}};
constexpr int kCalibration = 0x3480;

// Each command line's exit status and what it printed, the exchanges that
// reached the unit and what the chip holds afterwards. A failure prints no
// outcome line.
TEST(CliRuns, EachCommandLineEndsAsItSays) {
  TempDir dir;
  write_text(dir.file("p.hex"),
             format_inhx8m({{0, 0x2805}, {1, 0}, {4, 0x3FFE}, {0x2007, 0x3F70}}));
  write_text(dir.file("noconfig.hex"), format_inhx8m({{0, 0x2805}, {1, 0}, {4, 0x3FFE}}));
  write_text(dir.file("blink.asm"), "  list p=16f628a\n  goto 0\n  end\n");
  std::filesystem::create_directory(dir.file("folder.hex"));
  // Word 0x900 is past the 16F628A's 2K words but inside its entry's 4K.
  write_text(dir.file("4k.hex"), format_inhx8m({{0, 0x2805}, {0x900, 0x0000}}));
  write_text(dir.file("8k.hex"), format_inhx8m({{0, 0x2805}, {0x1100, 0x0000}}));
  write_text(dir.file("nul.hex"), std::string(":02000000\0"
                                              "528D1\n:00000001FF\n",
                                              28));
  ASSERT_TRUE(sim::SimUnit("16F84A").save(dir.file("m84.txt")));
  // Files as toolchains and editors write them.
  const std::string data = ":020000000528D1\n";  // word 0 = 0x2805
  const std::string end = ":00000001FF\n";
  write_text(dir.file("address.hex"), data + ":020000040000FA\n" + end);
  write_text(dir.file("ccs.hex"), data + end + ";PIC16F628A\n;CRC=1A2B  CREATED=\"22-Nov-26\"\n");
  write_text(dir.file("beyond.hex"), data + ":024E2000052863\n" + end);
  write_text(dir.file("calibrated.hex"), data + ":02400E00C43FAD\n" + end);
  const std::string wrote = "Configuration word 3F7B (the device's default)\nWrite Complete\n";
  const Memory none, word0 = {{0, 0x2805}}, calibrated = {{0x3FF, kCalibration}};
  const Memory calibrated_word0 = with(calibrated, 0, 0x2805);
  const Memory word4 = with(kProgrammed, 4, 0x2FFE), config = with(kProgrammed, 0x2007, 0x3F7B);
  struct Case {
    // In the unit's socket, and the --device where the line gives none;
    // nullptr: the program makes its own unit.
    const char* chip;
    std::string line;  // commands on that unit, ";" between them
    int status;
    std::string out;       // all of standard output
    std::string err = {};  // in standard error
    int exchanges = -1;    // that reached the unit; -1: not counted
    int lost_read = 0;     // the exchange whose reply is lost; -1: the unit is unplugged
    Memory before = {};    // what the chip holds
    Memory after = {};     // what it must hold afterwards
  };
  const Case cases[] = {
      // Refused before the unit is touched.
      {"16F628A", "write @/blink.asm", 1, "", "blink.asm': no Intel HEX records in it", 0},
      {"16F628A", "write @/4k.hex", 1, "", "word 0x900 is outside the 16F628A (program 0-0x7FF,",
       0},
      {"16F628A", "--device=16F62xA write @/8k.hex", 1, "",
       "word 0x1100 is outside the 16F62xA entry (program 0-0xFFF,", 0},
      {"16F628A", "write @/nul.hex", 1, "", "nul.hex line 1: byte 0x00 at column 10 is not a", 0},
      {"16F628A", "--sim-memory /dev/zero id", 1, "",
       "'/dev/zero': larger than a memory file of the 16F628A", 0},
      {"16F628A", "write @/folder.hex", 1, "", "folder.hex': it is a folder", 0},
      {"16F877A", "write @/missing.hex", 1, "", "missing.hex': no such file", 0},
      {"16F877A", "--sim-memory @/m84.txt id", 1, "", "not a memory file, or one of another", 0},
      {"16F628A", "write @/beyond.hex", 1, "", "beyond.hex line 2: word 0x2710 is outside the", 0},
      {"16F628A", "--exact write @/beyond.hex", 1, "",
       "beyond.hex': line 2: byte address 4E21 is outside the program buffer (0-4E20)", 0},
      // A file named in two roles would be emptied before it is read.
      {"16F628A", "--trace @/address.hex write @/address.hex", 2, "",
       "is both the trace (--trace) and the image", 0},
      {"16F628A", "--sim-memory @/m.sim read -o @/./m.sim", 2, "",
       "is both the output (-o) and the simulated chip's memory", 0},
      // A unit that is gone or loses a reply; the erase's chip check meets
      // the failed exchange first.
      {"16F877A", "version", 3, "", "Unit not Found", 0, -1},
      {"16F877A", "erase", 1, "", "zenta: the chip check failed: exchanges with the unit failed",
       -1, 2},
      {"16F877A", "--exact erase", 1, "", "zenta: 1 exchange with the unit failed\n", -1, 2},
      {"16F628A", "write @/p.hex", 1, "Configuration word 3F70 (from the file)\n",
       "zenta: 1 exchange with the unit failed", -1, 40},
      // The checked verify: every word of the file, then its configuration
      // word. The documented one stops before the LAST box's word, which the
      // loader leaves at word 4 here, and runs to the LAST box a
      // configuration record puts at the entry's size: past this 2K chip,
      // word 0x800 reads word 0 again.
      {"16F628A", "verify @/p.hex", 0, "Verify Complete\n", "", -1, 0, kProgrammed},
      {"16F628A", "verify @/address.hex", 1, "", "verify failed at 0000: file 2805, chip 3FFF"},
      {"16F628A", "verify @/noconfig.hex", 1, "", "verify failed at 0004: file 3FFE, chip 2FFE", -1,
       0, word4},
      {"16F628A", "verify @/p.hex", 1, "", "verify failed at 2007: file 3F70, chip 3F7B", -1, 0,
       config},
      {"16F628A", "--exact verify @/noconfig.hex", 0, "Verify Complete\n", "", -1, 0, word4},
      {"16F628A", "--exact verify @/p.hex", 1, "", "verify failed at 0800: file 3FFF, chip 2805",
       -1, 0, config},
      // An address record after the data, comments after the end record; a
      // calibrated chip keeps its own band-gap bits, the verify after the
      // write compares the others.
      {"16F628A", "write @/address.hex; verify @/address.hex", 0, wrote + "Verify Complete\n", "",
       -1, 0, none, word0},
      {"16F628A", "write @/ccs.hex", 0, wrote,
       "ccs.hex line 3: text after the end record is not loaded", -1, 0, none, word0},
      {"12F675", "write @/calibrated.hex; verify @/calibrated.hex", 0,
       "Configuration word 3FC4 (from the file)\nWrite Complete\nVerify Complete\n",
       "zenta: calibration 3480 kept", -1, 0, calibrated, calibrated_word0},
      // The identification: one ID read between supply on and off, as the
      // panel's ID table names the chip. The 16F84 has no ID word: its entry
      // takes the blank answer, no other does.
      {"12F675", "--device 12F629/675 id", 0, "Device=12F675 (FC4)\n", "", 16},
      {"16F819", "id --device 7", 0, "Device=16F819 (4E1)\n", "", 16},
      {"none", "id --device 16F84", 0, "Device=16F84 (3FFF)\n", "", 16},
      {"16F84", "erase", 0, "Chip Erase Complete\n", "zenta: 16F84 (no ID word)\n"},
      {"none", "--device auto erase", 1, "", "no chip answered (ID word 3FFF)", 16},
      {"16F84", "--device auto erase", 1, "", "no chip answered (ID word 3FFF)", 16},
      {"none", "id", 1, "", "no chip answered (ID word 3FFF)", 16},
      // The program's own simulated units and the commands that need none.
      {nullptr, "--unit sim version", 0, "Firmware version 1.2 (ZENTA 12)\n"},
      {nullptr, "--unit sim:16F877A,freq=5000 freq --gate 1s", 0, "5000 Hz\n"},
      {nullptr, "--unit sim:16F877A,freq=5000 freq", 0, "5.000 KHz\n"},
      {nullptr, "--unit sim count read", 0, "0\n"},
      {nullptr, "--unit sim -q count clear", 0, ""},
      {nullptr, "--unit sim count start", 0, "Counter start\n"},
      // Channel 0 follows the MCLR/Vpp level, at 0 V when idle.
      {nullptr, "--unit sim volts --channel vpp", 0, "Vpp 0.0 V\n"},
      {nullptr, "udev-rule", 0, udev_rule_text()},
      {nullptr, "--unit sim:16F999 id", 2, "",
       "zenta: unknown chip '16F999' for the simulated unit"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    if (!c.chip) {
      const Outcome result = run_args(words(c.line));
      EXPECT_EQ(result.status, c.status) << result.err;
      EXPECT_EQ(result.out, c.out);
      EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
      continue;
    }
    SimRun run(c.chip);
    for (const auto& [address, word] : c.before) {
      address == 0x2007 ? run.unit->set_config_word(word)
                        : run.unit->set_program_word(address, word);
    }
    if (c.lost_read > 0) run.unit->fail_read_at(c.lost_read);
    if (c.lost_read < 0) run.unit->unplug();
    const std::string device = std::string(c.chip) == "none" ? "" : c.chip;
    const Outcome result = run.line(c.line, dir.path().string(), device);
    EXPECT_EQ(result.status, c.status) << result.err;
    EXPECT_EQ(result.out, c.out);
    EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
    EXPECT_TRUE(c.exchanges < 0 || run.unit->trace().size() == std::size_t(c.exchanges));
    for (const auto& [address, word] : c.after)
      EXPECT_EQ(held(*run.unit, address), word) << address;
  }
  // Simulated memories asked of a real unit: bad usage, the unit left closed.
  DriverChoice choice;
  auto* scripted = new ScriptedDriver();
  choice.driver.reset(scripted);
  EXPECT_EQ(testing::run_on(choice, words("--sim-memory m.txt id")).status, kExitUsage);
  EXPECT_EQ(scripted->opens, 0);
}

// The identification, the erase and the configuration word's read, packet
// by packet: from 0x2000 six or seven steps, a pause and one word; the
// target powered around each and nothing else. The read that makes a file
// takes program memory, the configuration word and the EEPROM, each in its
// own bracket, and the file holds what they read and no word more.
TEST(CliRuns, IdentificationEraseAndFileReadPackets) {
  SimRun id("16F819");
  ASSERT_EQ(id(words("--device 7 id")).status, kExitOk);
  EXPECT_EQ(sent(*id.unit), seq(kSupplyOn, config_space_read(6), kSupplyOff));
  SimRun erase("16F628A");
  ASSERT_EQ(erase(words("--exact --device 16F628A erase")).status, kExitOk);
  EXPECT_EQ(sent(*erase.unit), seq(kSupplyOn, kEnter, load(0x3FFF), Packet{ICSP_BULK_ERASE_PROG},
                                   kLeaveRead, kSupplyOff));
  TempDir dir;
  SimRun read("16F628A");
  for (int w = 0; w < 5; ++w) read.unit->set_program_word(w, 0x3000 + w);
  read.unit->set_config_word(0x3F12);
  for (int a = 0; a < 128; ++a) read.unit->set_eeprom_byte(a, a ^ 0x5A);
  const Outcome result =
      read(words("--exact --device 16F628A read --last 4 -o @/r.hex", dir.path()));
  ASSERT_EQ(result.status, kExitOk) << result.err;
  const Packets on = {kLedOn, kSupplyOn}, off = {kSupplyOff, kLedOff};
  EXPECT_EQ(sent(*read.unit),
            seq(on, kEnter, Packet{ICSP_READ_DATA, 4}, kLeaveRead, off,  // program memory
                kSupplyOn, config_space_read(7), kSupplyOff,             // configuration
                on, kEnter, times(16, {{ICSP_READ_EE, 8}, kStay}), kLeaveRead, off));  // EEPROM
  const HexCheck file = check_hex_text(read_text(dir.file("r.hex")), {0x800, 128, ""});
  EXPECT_EQ(file.program,
            (std::map<int, std::uint16_t>{{0, 0x3000}, {1, 0x3001}, {2, 0x3002}, {3, 0x3003}}));
  EXPECT_EQ(file.config, std::optional<std::uint16_t>(0x3F12));
  ASSERT_EQ(file.eeprom.size(), 128u);
  EXPECT_EQ(file.eeprom.at(0x7F), 0x7F ^ 0x5A);
}

TEST(CliRuns, WriteTakesTheConfigurationWordFromOptionFileOrDevice) {
  TempDir dir;
  for (const auto& [name, config] : {std::pair{"3f3a", 0x3F3A}, {"3fff", 0x3FFF}, {"none", -1}}) {
    std::vector<HexWord> image = {{0, 0x2805}, {1, 0x0000}, {5, 0x3FFE}};
    if (config >= 0) image.push_back({0x2007, std::uint16_t(config)});
    write_text(dir.file(std::string(name) + ".hex"), format_inhx8m(image));
  }
  const struct {
    const char* line;
    int chip_config;
    const char* says;
    int word7;  // what the exact write leaves in word 7
  } cases[] = {
      // A configuration record puts the last address at 0x2000: the last row
      // wraps onto row 0 and programs the file's word 0x2007 over word 7,
      // which the verify then finds. A blank word in the file: its row is
      // blank, so it is not programmed.
      {"write @/3f3a.hex --config 3F39", 0x3F39, "3F39 (from --config)", 0x3F3A},
      {"write @/3f3a.hex", 0x3F3A, "3F3A (from the file)", 0x3F3A},
      {"write @/3fff.hex", 0x3F3B, "3F3B (the device's default)", 0x3FFF},
      {"write @/none.hex", 0x3F3B, "3F3B (the device's default)", 0x3FFF},
  };
  for (const auto& c : cases) {
    for (const bool exact : {true, false}) {
      SCOPED_TRACE(c.line + std::string(exact ? ", exact" : ", checked"));
      SimRun run("16F877A");
      const Outcome result = run(words(std::string(exact ? "--exact " : "") + c.line, dir.path()));
      // The checked write covers the image's words only: nothing wraps.
      const bool damaged = exact && c.word7 != 0x3FFF;
      EXPECT_EQ(result.status, damaged ? kExitFailed : kExitOk) << result.err;
      EXPECT_EQ(result.err.find("Verify Data ERROR") != std::string::npos, damaged) << result.err;
      EXPECT_EQ(result.out, "Configuration word " + std::string(c.says) + "\n" +
                                (damaged ? "" : "Write Complete\n"));
      const Memory chip = {{0, 0x2805}, {1, 0},
                           {5, 0x3FFE}, {7, damaged ? c.word7 : 0x3FFF},
                           {8, 0x3FFF}, {0x2007, c.chip_config}};
      for (const auto& [address, word] : chip) EXPECT_EQ(held(*run.unit, address), word) << address;
    }
  }
}

TEST(CliRuns, FailedReadLeavesTheFileAsItWas) {
  // Exchanges of the program read, of the configuration read and of the
  // EEPROM read that follow it.
  for (const int lost : {40, 1061, 1072}) {
    TempDir dir;
    write_text(dir.file("chip.hex"), "before\n");
    SimRun run("16F628A");
    run.unit->fail_read_at(lost);
    const Outcome result = run(words("--device 16F628A read -o @/chip.hex", dir.path()));
    EXPECT_EQ(result.status, kExitFailed) << lost;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(read_text(dir.file("chip.hex")), "before\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
  }
}

// Ctrl-C, or a supply-off that never goes through: the command ends as a
// failure that says so, with no outcome line, out of programming mode.
TEST(CliRuns, InterruptOrTargetLeftPoweredEndsTheCommand) {
  TempDir dir;
  std::vector<HexWord> image;
  for (std::uint16_t w = 0; w < 0x100; ++w) image.push_back({w, w});
  write_text(dir.file("p.hex"), format_inhx8m(image));
  const std::pair<const char*, std::size_t> cases[] = {
      // The command, and the exchange the interrupt comes at; SIZE_MAX: the
      // supply-off never goes through instead. The erase is interrupted
      // past its pre-flight, while the calibration is written back.
      {"--device 16F628A write @/p.hex", 30},
      {"--device 16F628A verify @/p.hex", 30},
      {"--device 16F628A read", 30},
      {"--device 16F628A read-eeprom", 30},
      {"--device 16F628A read-eeprom", SIZE_MAX},
      {"--device 12F675 erase", 1060},
  };
  for (const auto& [line, at] : cases) {
    SCOPED_TRACE(line);
    const bool calibrated = std::string(line).find("12F675") != std::string::npos;
    sim::SimUnit unit(calibrated ? "12F675" : "16F628A");
    for (int w = 0; w < 0x100; ++w) unit.set_program_word(w, w);  // the verify runs on
    unit.set_program_word(0x3FF, kCalibration);
    DriverChoice choice;
    choice.driver = std::make_unique<testing::InterruptAt>(unit, at, at == SIZE_MAX);
    const Outcome result = testing::run_on(choice, words(line, dir.path()));
    clear_interrupt();
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_NE(
        result.err.find(at == SIZE_MAX ? "the target may still be powered" : "zenta: interrupted"),
        std::string::npos)
        << result.err;
    EXPECT_EQ(result.out.find("Complete"), std::string::npos) << result.out;
    EXPECT_FALSE(unit.in_programming_mode() || unit.led());
    EXPECT_EQ(unit.vcc(), at == SIZE_MAX);
    EXPECT_TRUE(!calibrated || unit.program_word(0x3FF) == kCalibration);
    if (at == SIZE_MAX || calibrated) continue;
    // After the step that was under way: leave programming mode, supply and
    // LED off (and the write's closing 5 V level); no further target command.
    ASSERT_GT(unit.trace().size(), at);
    EXPECT_LE(unit.trace().size(), at + 9);
    for (std::size_t i = at + 4; i < unit.trace().size(); ++i) {
      EXPECT_GE(unit.trace()[i].tx[0], UNIT_PGM_LINES) << "exchange " << i;
    }
  }
}

// A driver that cannot open and says why, as the usb driver does.
class RefusingDriver : public ScriptedDriver {
 public:
  std::string hint;
  std::string open_failure_hint() const override { return hint; }
};

TEST(CliRuns, UnitNotFoundCarriesTheDriversHint) {
  for (const std::string hint :
       {"The unit 1209:5a4e is in use by another program.",
        "The unit 1209:5a4e is plugged in, but this user may not use it.", ""}) {
    DriverChoice choice;
    auto* driver = new RefusingDriver();
    driver->open_result = kDriverOpenError;
    driver->hint = hint;
    choice.driver.reset(driver);
    const Outcome result = testing::run_on(choice, {"version"});
    EXPECT_EQ(result.status, kExitNoUnit);
    EXPECT_EQ(result.err,
              "zenta: Unit not Found (Driver Open:NG(ドライバオープンエラー): the driver could not "
              "be opened)\n" +
                  (hint.empty()
                       ? "Plug the unit in and check that you may use it (permissions, udev rules)."
                       : hint) +
                  "\nOr use --unit sim for the simulated unit.\n");
  }
}

// The outcome, device and first mismatch of a --json object, in one line.
std::string summary(const Json& object, bool chip = true) {
  return object["unit"].dump() + " " + (chip ? object["chip"].dump() + " " : "") +
         object["device"].dump() + " " + object["outcome"].dump() + " " +
         object["first_mismatch"].dump();
}

// Several units: each gets its own lines, files and status, one failing
// fails the run while the other's answer still comes out.
TEST(CliRuns, EachUnitGetsItsOwnLinesFilesAndStatus) {
  TempDir dir;
  const Outcome both = run_args(
      words("--unit sim:16F628A --unit sim:16F628A --device 16F628A --trace @/t.trace erase",
            dir.path()));
  EXPECT_EQ(both.status, kExitOk) << both.err;
  EXPECT_EQ(both.out, "sim:16F628A: Chip Erase Complete\nsim:16F628A#2: Chip Erase Complete\n");
  for (const char* file : {"t.sim-16F628A.trace", "t.sim-16F628A-2.trace"}) {
    // The chip check (supply on, the fourteen exchanges of the ID read,
    // supply off), then supply on, the seven exchanges of the erase, supply off.
    const std::string trace = read_text(dir.file(file));
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 16 + 9) << file;
  }
  const Outcome mixed =
      run_args(words("--json --unit sim:12F675 --unit sim:none --device auto id"));
  EXPECT_EQ(mixed.status, kExitFailed);
  std::istringstream lines(mixed.out);
  std::string good, bad;
  std::getline(lines, good);
  std::getline(lines, bad);
  EXPECT_EQ(summary(Json::parse(good)), R"("sim:12F675" "12F675" "12F629/675" "ok" null)");
  EXPECT_EQ(summary(Json::parse(bad)), R"("sim:none" null null "failed" null)");
  EXPECT_TRUE(Json::parse(bad)["message"].get<std::string>().starts_with("no chip answered"));
}

// Every command's --json object is one line a JSON parser reads back with
// the same members in the same order; names that need escaping (quotes,
// backslashes, control characters) and non-ASCII text come back as given,
// and bytes that are not UTF-8 (a unit's firmware reply) become U+FFFD.
TEST(CliRuns, EveryCommandsJsonReadsBackWhateverTheNames) {
  TempDir dir;
  const std::string odd = "q\"b\\s\x01\t\n Gr\u00FC\u00DFe \u2713";
  write_text(dir.file(odd + ".hex"), format_inhx8m({{0, 0x2805}, {3, 0x0123}, {0x2007, 0x3F70}}));
  write_text(dir.file("q.hex"), format_inhx8m({{0, 0x2805}, {3, 0x0124}}));
  // The unit and the device (the chip is named by the identification, as
  // the test above shows), the outcome and the first mismatch.
  const std::string unit = Json(odd).dump() + " \"16F62xA\" ", none = Json(odd).dump() + " null ";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"version"}, none + "\"ok\" null"},
      {{"id"}, unit + "\"ok\" null"},
      {{"erase"}, unit + "\"ok\" null"},
      {{"write", dir.file(odd + ".hex")}, unit + "\"ok\" null"},
      {{"verify", dir.file("q.hex")},
       unit + R"("failed" {"address":"0003","file":"0124","chip":"0123"})"},
      {{"verify", dir.file(odd + "-gone.hex")}, unit + "\"refused\" null"},
      {{"read", "-o", dir.file(odd + "-back.hex")}, unit + "\"ok\" null"},
      {{"read-eeprom"}, unit + "\"ok\" null"},
      {{"capture", "-o", dir.file(odd + ".vcd")}, none + "\"ok\" null"},
      {{"count", "read"}, none + "\"ok\" null"},
  };
  const std::vector<std::string> first = {"command", "unit",          "device",      "chip",
                                          "outcome", "message",       "exit_status", "exchanges",
                                          "seconds", "first_mismatch"};
  SimRun run("16F628A");  // one chip for all: the verify finds what the write left
  for (const auto& [command, says] : cases) {
    SCOPED_TRACE(command[0]);
    std::vector<std::string> args = {"--json", "--device", "pic16f628a", "--unit", odd};
    args.insert(args.end(), command.begin(), command.end());
    const Outcome result = run(args);
    ASSERT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1) << result.out;
    const Json object = Json::parse(result.out);
    std::vector<std::string> names;
    for (const auto& member : object.items()) names.push_back(member.key());
    names.resize(std::min(names.size(), first.size()));
    EXPECT_EQ(names, first);
    EXPECT_EQ(summary(object, false), says);
    EXPECT_EQ(object["command"], command[0]);
    EXPECT_EQ(object["exit_status"], result.status);
    EXPECT_GE(object["seconds"].get<double>(), 0.0);
    if (command[0] == "write") {
      EXPECT_EQ(object["message"], "Write Complete");
      EXPECT_GT(object["exchanges"].get<int>(), 40);
    }
    if (object["outcome"] == "refused") {
      EXPECT_NE(object["message"].get<std::string>().find(odd), std::string::npos);
    }
  }
  const std::vector<PluggedUnit> plugged = {{odd,
                                             "ZENTA \xFF"
                                             "1",
                                             1, 7},
                                            {"", "", 2, 3}};
  EXPECT_EQ(
      Json::parse(json_text(plugged)),
      (Json{{"command", "units"},
            {"units",
             {{{"unit", "usb:" + odd}, {"firmware", "ZENTA \uFFFD1"}, {"bus", 1}, {"address", 7}},
              {{"unit", "usb:"}, {"firmware", ""}, {"bus", 2}, {"address", 3}}}}}));
  EXPECT_EQ(Json::parse(json_text(std::vector<PluggedUnit>{})),
            (Json{{"command", "units"}, {"units", Json::array()}}));
}

// The capture takes its period and edge from the options, and goes to
// standard output as lines of 80 samples, or into a VCD or CSV file.
TEST(CliRuns, CaptureTakesItsOptionsIntoItsFile) {
  TempDir dir;
  sim::SimUnit simulated;
  FakeHost host;
  Unit unit(simulated, host);
  ASSERT_EQ(unit.open(), kDriverOk);
  const std::vector<bool> samples = capture_samples(capture(unit, 3, false).bytes);
  std::string levels;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    levels += std::string(samples[i] ? "1" : "0") + (i % 80 == 79 ? "\n" : "");
  }
  const std::string options = "--unit sim capture --period 3 --edge neg ";
  EXPECT_EQ(run_args(words(options)).out, levels + "480 samples, one every 300 us\n");
  ASSERT_EQ(run_args(words(options + "-o @/x.vcd", dir.path())).status, kExitOk);
  EXPECT_EQ(read_text(dir.file("x.vcd")), vcd_text(samples, 3, false));
  ASSERT_EQ(run_args(words(options + "-o @/x.csv", dir.path())).status, kExitOk);
  EXPECT_EQ(read_text(dir.file("x.csv")), csv_text(samples, 3));
}

// Without --att the reading takes the panel's stored attenuation, as its
// volt meter does, and leaves the settings file as it was.
TEST(CliRuns, VoltsTakesThePanelsStoredAttenuationUnlessGiven) {
  const struct {
    const char* stored;  // the file's [DATA] lines; nullptr: no file
    const char* att;
    const char* out;
    const char* xdg = "";  // XDG_CONFIG_HOME under the home folder; nullptr: unset
  } cases[] = {
      {nullptr, "", "Vin 5.0 V\n"},
      {"VOLTATT=1\n", "", "Vin 1.1 V\n"},
      {"DEVICE=1\nVOLTATT = \"5\"\n", "", "Vin 5.7 V\n"},
      {"VOLTATT=1\n", "--att 2", "Vin 2.3 V\n"},
      {"VOLTATT=\n", "", "Vin 5.0 V\n"},
      {"VOLTATT=\"2,5\"\n", "", "Vin 2.3 V\n"},  // read as the meter reads it
      {"VOLTATT=1\n", "", "Vin 1.1 V\n", nullptr},
      {"VOLTATT=1\n", "", "Vin 1.1 V\n", "relative"},  // not absolute: ignored
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stored ? c.stored : "no file");
    TempDir dir;
    EnvGuard home("HOME", dir.path().c_str());
    const std::string xdg_home = dir.file(c.xdg && *c.xdg ? c.xdg : ".config");
    EnvGuard xdg("XDG_CONFIG_HOME", !c.xdg ? nullptr : *c.xdg ? c.xdg : xdg_home.c_str());
    const std::string file = dir.file(".config/ZENTA/ZENTA.conf");
    const std::string text = "[PANEL]\nVOLTATT=9\n[DATA]\n" + std::string(c.stored ? c.stored : "");
    if (c.stored) std::filesystem::create_directories(dir.file(".config/ZENTA"));
    if (c.stored) write_text(file, text);
    const Outcome result = run_args(words(std::string("--unit sim volts ") + c.att));
    EXPECT_EQ(result.status, kExitOk) << result.err;
    EXPECT_EQ(result.out, c.out);
    // The settings are the panel's.
    EXPECT_EQ(c.stored ? read_text(file) : std::to_string(std::filesystem::exists(file)),
              c.stored ? text : "0");
  }
}

// ---- the built program, as a script runs it ----

// Each shell line's exit status and what it said: "zenta" stands for the
// built program, "@/" for the test's folder; "status.txt" in a line holds
// the status of a run inside a pipe.
TEST(CliProgram, ExitStatusAndMessagesOfTheBuiltProgram) {
  TempDir dir;
  write_text(dir.file("image.hex"), ":020000000528D1\n:00000001FF\n");
  ASSERT_EQ(mkfifo(dir.file("fifo.hex").c_str(), 0600), 0);
  const std::string full = "No space left on device\n";
  const struct {
    std::string line;
    int status;
    std::string says;  // in standard error; after a success, in standard output
  } cases[] = {
      {"zenta --unit sim --trace @/t.txt version", 0, "Firmware version 1.2 (ZENTA 12)\n"},
#ifdef ZENTA_HAVE_LIBUSB
      // An id no device has, so that a unit on the test machine does not count.
      {"ZENTA_UNIT=usb ZENTA_USB_ID=0000:0000 zenta version", 3,
       "zenta: Unit not Found (Driver Open:NG(ドライバオープンエラー): the driver could not be "
       "opened)\nNo unit with the USB id 0000:0000 is plugged in. Plug it in; if lsusb shows it "
       "with another id, set ZENTA_USB_ID to that id.\nOr use --unit sim for the simulated "
       "unit.\n"},
#endif
      {"zenta flash", 2, "\nTry 'zenta --help'.\n"},
      {"zenta --unit sim --device 9 id", 2, "\nTry 'zenta --help'.\n"},
      // Output that does not arrive is a failure that says so, wherever it goes.
      {"zenta --unit sim read-eeprom >/dev/full", 1,
       "zenta: cannot write the standard output: " + full},
      {"zenta --unit sim --trace /dev/full id", 1,
       "zenta: cannot write the trace file '/dev/full': " + full},
      {"zenta --unit sim read-eeprom -o /dev/full", 1, "cannot write '/dev/full'"},
      // The reader has gone before the program writes.
      {"(sleep 0.5; zenta --unit sim read 2>@/err.txt; echo $? >@/status.txt) | true", 1,
       "zenta: cannot write the standard output: Broken pipe\n"},
      // A named pipe is read once, as a file is.
      {"timeout 10 dd if=@/image.hex of=@/fifo.hex status=none & "
       "zenta --unit sim:16F628A --device 16F628A write @/fifo.hex",
       0, "Configuration word 3F7B (the device's default)\nWrite Complete\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    std::string line;
    for (const std::string& word : words(c.line, dir.path())) {
      line += (word == "zenta" ? "'" ZENTA_CLI_PATH "'" : word) + " ";
    }
    if (line.find("2>") == std::string::npos) line += "2>" + dir.file("err.txt");
    ProcessResult result = run_command(line);
    if (line.find("status.txt") != std::string::npos) {
      result.status = std::stoi("0" + read_text(dir.file("status.txt")));
    }
    const std::string err = read_text(dir.file("err.txt"));
    EXPECT_EQ(result.status, c.status) << err;
    EXPECT_NE((c.status == 0 ? result.out : err).find(c.says), std::string::npos) << err;
  }
  EXPECT_EQ(read_text(dir.file("t.txt")),
            "TX 3F 00 00 00 00 00 00 00 RX 5A 45 4E 54 41 20 31 32\n");
}

// The chip in a --sim-memory file keeps what one run wrote for the next: a
// gpasm program written, verified in a later run, and a file one word off
// refused.
TEST(CliProgram, ChipKeepsWhatWasWrittenAcrossRuns) {
  if (!tool_available("gpasm")) GTEST_SKIP() << "gputils' gpasm is not installed";
  TempDir dir;
  ASSERT_EQ(run_command("gpasm -p p16f876 -a inhx8m -o '" + dir.file("blink.hex") + "' '" +
                        ZENTA_TEST_DATA "/blink.asm'")
                .status,
            0);
  ProgrammerState image;
  ASSERT_TRUE(load_hex_text(read_text(dir.file("blink.hex")), image).ok);
  image.set_word(0x81, image.word(0x81) ^ 0x0100);
  ASSERT_TRUE(write_inhx8m_file(dir.file("changed.hex"), program_hex_words(image, 0x2000)));
  const std::string chip = "--unit sim:16F876 --device 16F87x --sim-memory @/m.txt ";
  const auto run = [&](const std::string& command) {
    return run_args(words(chip + command, dir.path()));
  };
  EXPECT_TRUE(run("write @/blink.hex").out.ends_with("Write Complete\n"));
  EXPECT_EQ(run("verify @/blink.hex").out, "Verify Complete\n");
  const Outcome changed = run("verify @/changed.hex");
  EXPECT_EQ(changed.status, 1);
  EXPECT_NE(changed.err.find("VERIFY ERROR: Verify Data ERROR"), std::string::npos) << changed.err;
}

}  // namespace
}  // namespace zenta::cli

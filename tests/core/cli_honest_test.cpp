// The program says what happened: no outcome line after a failure, exit
// status 1 whenever something went wrong, files written only after a
// clean read, the first difference named.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "cli_rig.h"
#include "common/interrupt.h"
#include "devices/device_library.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "programming/device_catalogue.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using testing::Outcome;
using testing::SimRun;
using zenta::testing::read_text;
using zenta::testing::TempDir;
using zenta::testing::write_text;

constexpr int kConfig = 0x3F70;

// Words 0, 1 and 4 of a small program, with the configuration word or without.
std::string program_hex(bool with_config) {
  std::vector<HexWord> words = {{0, 0x2805}, {1, 0x0000}, {4, 0x3FFE}};
  if (with_config) words.push_back({0x2007, kConfig});
  return format_inhx8m(words);
}

// The chip as program_hex writes it.
void program_chip(sim::SimUnit& unit) {
  unit.set_program_word(0, 0x2805);
  unit.set_program_word(1, 0x0000);
  unit.set_program_word(4, 0x3FFE);
  unit.set_config_word(kConfig);
}

TEST(CliHonestTest, FailuresSayWhyAndPrintNoOutcomeLine) {
  TempDir dir;
  write_text(dir.file("p.hex"), program_hex(true));
  write_text(dir.file("noconfig.hex"), program_hex(false));
  write_text(dir.file("blink.asm"), "  list p=16f628a\n  goto 0\n  end\n");
  std::filesystem::create_directory(dir.file("folder.hex"));
  // Word 0x900 is past the 16F628A's 2K words but inside its entry's 4K.
  write_text(dir.file("4k.hex"), format_inhx8m({{0, 0x2805}, {0x900, 0x0000}}));
  write_text(dir.file("8k.hex"), format_inhx8m({{0, 0x2805}, {0x1100, 0x0000}}));
  write_text(dir.file("nul.hex"), std::string(":02000000\0"
                                              "528D1\n:00000001FF\n",
                                              28));
  const std::string chip = "--device=16F628A";
  const struct {
    const char* name;
    std::function<void(sim::SimUnit&)> setup;
    std::vector<std::string> args;
    int status;
    std::string says;  // in standard error
    std::string out;   // all of standard output
    int exchanges;     // -1: not pinned
  } cases[] = {
      {"source file",
       {},
       {chip, "write", dir.file("blink.asm")},
       kExitFailed,
       "blink.asm': no Intel HEX records in it",
       "",
       0},
      {"past the chip's memory",
       {},
       {chip, "write", dir.file("4k.hex")},
       kExitFailed,
       "word 0x900 is outside the 16F628A (program 0-0x7FF,",
       "",
       0},
      {"past the entry's memory",
       {},
       {"--device=16F62xA", "write", dir.file("8k.hex")},
       kExitFailed,
       "word 0x1100 is outside the 16F62xA entry (program 0-0xFFF,",
       "",
       0},
      {"NUL byte in a record",
       {},
       {chip, "write", dir.file("nul.hex")},
       kExitFailed,
       "nul.hex line 1: byte 0x00 at column 10 is not a hexadecimal digit",
       "",
       0},
      {"memory file from a device",
       {},
       {"--sim-memory", "/dev/zero", chip, "id"},
       kExitFailed,
       "'/dev/zero': larger than a memory file of the 16F628A can be",
       "",
       0},
      {"memory file from a full device",
       {},
       {"--sim-memory", "/dev/full", chip, "id"},
       kExitFailed,
       "'/dev/full': larger than a memory file of the 16F628A can be",
       "",
       0},
      {"folder",
       {},
       {chip, "write", dir.file("folder.hex")},
       kExitFailed,
       "folder.hex': it is a folder",
       "",
       0},
      {"lost reply mid-write",
       [](sim::SimUnit& u) { u.fail_read_at(40); },
       {chip, "write", dir.file("p.hex")},
       kExitFailed,
       "zenta: 1 exchange with the unit failed",
       "Configuration word 3F70 (from the file)\n",
       -1},
      {"same chip",
       program_chip,
       {chip, "verify", dir.file("p.hex")},
       kExitOk,
       "",
       "Verify Complete\n",
       -1},
      {"last program word",
       [](sim::SimUnit& u) { program_chip(u), u.set_program_word(4, 0x2FFE); },
       {chip, "verify", dir.file("noconfig.hex")},
       kExitFailed,
       "zenta: verify failed at 0004: file 3FFE, chip 2FFE",
       "",
       -1},
      // The documented verify stops before the LAST box's word, which the
      // loader leaves at word 4 here.
      {"last word, exact",
       [](sim::SimUnit& u) { program_chip(u), u.set_program_word(4, 0x2FFE); },
       {chip, "--exact", "verify", dir.file("noconfig.hex")},
       kExitOk,
       "",
       "Verify Complete\n",
       -1},
      {"configuration word",
       [](sim::SimUnit& u) { program_chip(u), u.set_config_word(0x3F7B); },
       {chip, "verify", dir.file("p.hex")},
       kExitFailed,
       "zenta: verify failed at 2007: file 3F70, chip 3F7B",
       "",
       -1},
      // The documented verify runs to the LAST box, which a configuration
      // record puts at the entry's size: past this 2K chip, word 0x800
      // reads word 0 again.
      {"configuration word, exact",
       [](sim::SimUnit& u) { program_chip(u), u.set_config_word(0x3F7B); },
       {chip, "--exact", "verify", dir.file("p.hex")},
       kExitFailed,
       "zenta: verify failed at 0800: file 3FFF, chip 2805",
       "",
       -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    SimRun run("16F628A");
    if (c.setup) c.setup(*run.unit);
    const Outcome result = run(c.args);
    EXPECT_EQ(result.status, c.status) << result.err;
    EXPECT_NE(result.err.find(c.says), std::string::npos) << result.err;
    EXPECT_EQ(result.out, c.out);
    if (c.exchanges >= 0) {
      EXPECT_EQ(run.unit->trace().size(), std::size_t(c.exchanges));
    }
  }
}

TEST(CliHonestTest, FailedReadLeavesTheFileAsItWas) {
  // Exchanges of the program read, of the configuration read and of the
  // EEPROM read that follow it.
  for (const int lost : {40, 1061, 1072}) {
    SCOPED_TRACE(lost);
    TempDir dir;
    const std::string file = dir.file("chip.hex");
    write_text(file, "before\n");
    SimRun run("16F628A");
    run.unit->fail_read_at(lost);
    const Outcome result = run({"--device", "16F628A", "read", "-o", file});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(read_text(file), "before\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
  }
}

TEST(CliHonestTest, DeviceAutoPicksTheEntryThatListsTheChip) {
  for (const sim::ChipModel& model : sim::chip_models()) {
    if (model.device_id == 0x3FFF) continue;  // no ID word: such a chip must be named
    SCOPED_TRACE(model.name);
    SimRun run(model.name);
    const Outcome result = run({"--json", "--device", "auto", "id"});
    ASSERT_EQ(result.status, kExitOk) << result.err;
    const auto json = testing::parse_json_object(result.out.substr(0, result.out.size() - 1));
    ASSERT_TRUE(json) << result.out;
    EXPECT_EQ(json->at("chip"), model.name);
    const auto entry = find_device(json->at("device"));
    ASSERT_TRUE(entry);
    const std::string chips = " " + entry_chip_names(*entry) + ",";
    EXPECT_NE(chips.find(" " + model.name + ","), std::string::npos) << chips;
    // The ID was read once, for both the choice and the answer.
    EXPECT_EQ(run.unit->trace().size(), 16u);
  }
  const struct {
    const char* chip;
    std::vector<std::string> args;
  } silent[] = {
      {"none", {"--device", "auto", "erase"}},
      {"16F84", {"--device", "auto", "erase"}},
      {"none", {"id"}},
  };
  for (const auto& c : silent) {
    SCOPED_TRACE(c.chip);
    SimRun run(c.chip);
    const Outcome result = run(c.args);
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("no chip answered (ID word 3FFF)"), std::string::npos) << result.err;
    // Nothing but the identification was sent.
    EXPECT_EQ(run.unit->trace().size(), 16u);
  }
}

TEST(CliHonestTest, InterruptEndsTheCommandWithTheTargetSafe) {
  TempDir dir;
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 0x100; ++w) words.push_back({w, w});
  write_text(dir.file("p.hex"), format_inhx8m(words));
  const std::vector<std::string> commands[] = {
      {"write", dir.file("p.hex")}, {"verify", dir.file("p.hex")}, {"read"}, {"read-eeprom"}};
  for (const auto& command : commands) {
    SCOPED_TRACE(command[0]);
    sim::SimUnit unit("16F628A");
    for (int w = 0; w < 0x100; ++w) unit.set_program_word(w, w);  // the verify runs on
    DriverChoice choice;
    constexpr std::size_t kAt = 30;
    choice.driver = std::make_unique<testing::InterruptAt>(unit, kAt);
    std::vector<std::string> args = {"--device", "16F628A"};
    args.insert(args.end(), command.begin(), command.end());
    const Outcome result = testing::run_on(choice, args);
    clear_interrupt();
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_NE(result.err.find("zenta: interrupted"), std::string::npos) << result.err;
    EXPECT_EQ(result.out.find("Complete"), std::string::npos) << result.out;
    EXPECT_FALSE(unit.in_programming_mode());
    EXPECT_FALSE(unit.vcc());
    EXPECT_FALSE(unit.led());
    // After the step that was under way: leave programming mode, supply and
    // LED off (and the write's closing 5 V level); no further target command.
    ASSERT_GT(unit.trace().size(), kAt);
    EXPECT_LE(unit.trace().size(), kAt + 9);
    for (std::size_t i = kAt + 4; i < unit.trace().size(); ++i) {
      EXPECT_GE(unit.trace()[i].tx[0], UNIT_PGM_LINES) << "exchange " << i;
    }
  }
}

}  // namespace
}  // namespace zenta::cli

// Safe mode at its edges: one failed exchange or an interrupt at any point
// of a checked write or erase, images that reach a chip's last word, and
// the files real toolchains write. The chip must never lose its calibration
// or hold anything but what the user meant while the program says it does.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>
#include <map>
#include <thread>

#include "cli_rig.h"
#include "common/interrupt.h"
#include "devices/device_library.h"
#include "fakes.h"
#include "image/hex_check.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "panel_rig.h"
#include "programming/commands.h"
#include "programming/safe_programming.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

constexpr int kCalibration = 0x3480;
constexpr int kChipConfig = 0x1184;  // band-gap bits 01
constexpr int kOldWord = 0x2ABC;

// Stops the operation once the unit has seen `at` exchanges, as a signal
// arriving then would.
class InterruptingReport : public SilentReport {
 public:
  InterruptingReport(const sim::SimUnit& unit, std::size_t at) : unit_(unit), at_(at) {}
  bool stop_requested() override { return unit_.trace().size() >= at_; }

 private:
  const sim::SimUnit& unit_;
  std::size_t at_;
};

enum class Fault { kNone, kFailWrite, kFailRead, kShortRead, kInterrupt };

struct Outcome {
  CommandResult result;
  Preflight preflight;
  std::size_t exchanges = 0;
  // 1-based index of the pre-flight's last exchange: its supply-off before
  // the first erase command.
  std::size_t preflight_end = 0;
  bool lost = false;  // what the chip must keep, or a promise broken
  std::string why;
};

// A checked write of a small program with __CONFIG (or a checked erase) on
// a chip that holds an old program and, when calibrated, its factory
// calibration, with `fault` at exchange `at`.
Outcome run_checked(const ChipDescription& chip, bool write, Fault fault, int at) {
  sim::SimUnit unit(chip.name);
  unit.set_program_word(0, kOldWord);
  if (chip.calibrated()) {
    unit.set_program_word(0x3FF, kCalibration);
    unit.set_config_word(kChipConfig);
  }
  if (fault == Fault::kFailWrite) unit.fail_write_at(at);
  if (fault == Fault::kFailRead) unit.fail_read_at(at);
  if (fault == Fault::kShortRead) unit.short_transfer_at(at);
  FakeHost host;
  Unit opened(unit, host);
  opened.open();
  ProgrammerState state;
  select_device_parameters(state, *chip.entry);
  InterruptingReport report(unit, fault == Fault::kInterrupt ? static_cast<std::size_t>(at)
                                                             : static_cast<std::size_t>(-1));
  ChipOperations ops(opened, state, report);
  ops.checked = true;
  Outcome run;
  const int config = 0x3FC4;
  if (write) {
    blank_program_image(state);
    for (int w = 0; w < 16; ++w) state.set_word(w, 0x2800 + w);
    state.ConfigWord = static_cast<std::int16_t>(config);
    state.ConfigHigh = static_cast<std::int16_t>(config >> 8);
    state.ConfigLow = static_cast<std::int16_t>(config & 0xFF);
    state.DataLoaded = 1;
    run.result = run_checked_write(ops, {*chip.entry, std::nullopt}, std::nullopt, run.preflight);
  } else {
    run.result = run_checked_erase(ops, {*chip.entry, std::nullopt}, run.preflight);
  }
  run.exchanges = unit.trace().size();
  for (std::size_t i = 0; i < unit.trace().size(); ++i) {
    const auto& tx = unit.trace()[i].tx;
    if (tx[0] == ICSP_BULK_ERASE_PROG || tx[0] == ICSP_CHIP_ERASE || tx[0] == ICSP_BULK_SETUP1)
      break;
    if (tx[0] == UNIT_VCC && tx[1] == 0) run.preflight_end = i + 1;
  }
  const auto broken = [&run](const std::string& why) {
    run.lost = true;
    run.why += why + "; ";
  };
  if (chip.calibrated() && !run.result.calibration_at_risk) {
    if (unit.program_word(0x3FF) != kCalibration) broken("calibration word");
    if ((unit.config_word() & 0x3000) != (kChipConfig & 0x3000)) broken("band-gap bits");
  }
  if (run.result.calibration_at_risk) broken("calibration at risk");
  if (run.preflight.refused && unit.program_word(0) != kOldWord) broken("touched after refusal");
  if (unit.vcc() && !run.result.target_powered) broken("left powered without a word");
  if (unit.in_programming_mode()) broken("left in programming mode");
  if (run.result.ok() && write) {
    for (int w = 0; w < chip.program_words; ++w) {
      const int meant =
          w < 16 ? 0x2800 + w : (chip.calibrated() && w == 0x3FF ? kCalibration : 0x3FFF);
      if (unit.program_word(w) != meant) {
        broken("word " + std::to_string(w) + " differs after a write said complete");
        break;
      }
    }
    const int band_gap = chip.calibrated() ? (kChipConfig & 0x3000) : (config & 0x3000);
    if (unit.config_word() != ((config & ~0x3000) | band_gap)) broken("configuration word");
  }
  if (run.result.ok() && !write && unit.program_word(0) != 0x3FFF) broken("erase said complete");
  return run;
}

// One fault of each kind at every exchange of the checked write and erase,
// and an interrupt before every exchange: nothing is ever lost, the target
// always ends switched off and out of programming mode (or the user is told
// it may not be), and a write that says it is complete left the chip
// holding exactly the image.
TEST(SafeEdges, OneFaultOrInterruptAnywhereNeverCostsTheChip) {
  for (const char* name : {"12F675", "16F630", "16F877A", "16F628A", "16F84A", "16F819"}) {
    const ChipDescription chip = *chip_by_name(name);
    for (const bool write : {true, false}) {
      SCOPED_TRACE(std::string(name) + (write ? " write" : " erase"));
      const Outcome clean = run_checked(chip, write, Fault::kNone, 0);
      ASSERT_TRUE(clean.result.ok())
          << clean.why << clean.preflight.refusal << clean.result.refused
          << clean.result.failed_exchanges << clean.result.stopped << clean.exchanges;
      ASSERT_FALSE(clean.lost) << clean.why;
      int runs = 0, lost = 0;
      for (const Fault fault :
           {Fault::kFailWrite, Fault::kFailRead, Fault::kShortRead, Fault::kInterrupt}) {
        for (int at = 1; at <= static_cast<int>(clean.exchanges); ++at) {
          const Outcome run = run_checked(chip, write, fault, at);
          ++runs;
          if (run.lost) {
            ++lost;
            ADD_FAILURE() << "fault " << static_cast<int>(fault) << " at " << at << ": " << run.why;
          }
          // Anything in the pre-flight refuses the operation: what the chip
          // must keep is not known, or the user asked to stop.
          if (at <= static_cast<int>(clean.preflight_end)) {
            EXPECT_TRUE(run.preflight.refused) << static_cast<int>(fault) << " at " << at;
          }
          // Every fault is told.
          if (fault != Fault::kInterrupt) {
            EXPECT_FALSE(run.result.ok() && !run.preflight.refused)
                << static_cast<int>(fault) << " at " << at;
          }
        }
      }
      EXPECT_EQ(lost, 0) << runs << " runs";
    }
  }
}

// Boot loaders live at the top of memory: an image that uses a chip's last
// word (with words 0 and 7 and a configuration word, which the row devices
// would meet again if the walk wrapped) is written whole on every chip and
// reads back exactly.
TEST(SafeEdges, ImagesReachingTheLastWordAreWrittenWholeOnEveryChip) {
  for (const ChipDescription& chip : devices().chips) {
    SCOPED_TRACE(chip.name);
    sim::SimUnit unit(chip.name);
    if (chip.calibrated()) unit.set_program_word(0x3FF, kCalibration);
    FakeHost host;
    Unit opened(unit, host);
    opened.open();
    ProgrammerState state;
    select_device_parameters(state, *chip.entry);
    blank_program_image(state);
    const int last = chip.program_words - 1;
    const std::map<int, int> image = {{0, 0x1234}, {7, 0x2345}, {last - 1, 0x0ABC}, {last, 0x3456}};
    for (const auto& [address, word] : image) state.set_word(address, word);
    state.set_word(0x2007, 0x3F72);  // where the loader puts __CONFIG
    state.ConfigWord = 0x3F72;
    state.ConfigHigh = 0x3F;
    state.ConfigLow = 0x72;
    state.DataLoaded = 1;
    SilentReport report;
    ChipOperations ops(opened, state, report);
    ops.checked = true;
    Preflight preflight;
    const CommandResult result =
        run_checked_write(ops, {*chip.entry, std::nullopt}, std::nullopt, preflight);
    EXPECT_TRUE(result.ok());
    for (int w = 0; w < chip.program_words; ++w) {
      const auto it = image.find(w);
      ASSERT_EQ(unit.program_word(w), it != image.end() ? it->second : 0x3FFF) << w;
    }
  }
}

// A full chip read into a file and written into a blank one: the clone
// holds every word, the last one included, and the configuration word; the
// file holds the chip's memories even where its entry's are larger.
TEST(SafeEdges, AFullChipClonesWhole) {
  for (const char* name : {"16F877A", "16F873A", "16F628A", "16F819"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    cli::testing::SimRun original(name);
    const int words = original.unit->chip().program_words;
    for (int w = 0; w < words; ++w) original.unit->set_program_word(w, (w * 7 + 1) & 0x3FFF);
    original.unit->set_config_word(0x3F72);
    for (int a = 0; a < original.unit->chip().eeprom_bytes; ++a)
      original.unit->set_eeprom_byte(a, a & 0x7F);
    const int config = original.unit->config_word();
    ASSERT_EQ(original({"--device", name, "read", "-o", dir.file("clone.hex")}).status, 0);
    // The file holds the chip's own memories, not its entry's.
    const HexCheck file = check_hex_text(read_text(dir.file("clone.hex")), {0x2000, 256, ""});
    EXPECT_EQ(static_cast<int>(file.eeprom.size()), original.unit->chip().eeprom_bytes);
    EXPECT_EQ(static_cast<int>(file.program.size()), words);
    cli::testing::SimRun blank(name);
    const auto written = blank({"--device", name, "write", dir.file("clone.hex")});
    ASSERT_EQ(written.status, 0) << written.err;
    for (int w = 0; w < words; ++w)
      ASSERT_EQ(blank.unit->program_word(w), (w * 7 + 1) & 0x3FFF) << w;
    EXPECT_EQ(blank.unit->config_word(), config);
  }
}

// What users meet through zenta, each as one command line: the files real
// toolchains and shells hand over, a file named in two roles, the verify
// after a calibrated chip's write, a target that cannot be switched off and
// Ctrl-C during an erase.
TEST(SafeEdges, TheCommandLineAtTheEdges) {
  TempDir dir;
  const std::string data = ":020000000528D1\n";  // word 0 = 0x2805
  const std::string end = ":00000001FF\n";
  write_text(dir.file("address.hex"), data + ":020000040000FA\n" + end);
  write_text(dir.file("ccs.hex"), data + end + ";PIC16F628A\n;CRC=1A2B  CREATED=\"22-Nov-26\"\n");
  write_text(dir.file("beyond.hex"), data + ":024E2000052863\n" + end);
  write_text(dir.file("calibrated.hex"), data + ":02400E00C43FAD\n" + end);
  const std::string image = read_text(dir.file("address.hex"));
  const std::string fifo = dir.file("fifo.hex");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  struct Case {
    std::string name, chip;
    std::vector<std::string> args;
    int status;
    std::string says;  // on standard error, or the outcome line
    int word0 = -1;    // the chip's word 0 afterwards, -1: not looked at
  };
  const std::vector<Case> cases = {
      {"an address record after the data",
       "16F628A",
       {"write", dir.file("address.hex")},
       0,
       "Write Complete",
       0x2805},
      {"and its verify", "16F628A", {"verify", dir.file("address.hex")}, 0, "Verify Complete"},
      {"comments after the end record",
       "16F628A",
       {"write", dir.file("ccs.hex")},
       0,
       "ccs.hex line 3: text after the end record is not loaded",
       0x2805},
      {"a record beyond any chip",
       "16F628A",
       {"write", dir.file("beyond.hex")},
       1,
       "beyond.hex line 2: word 0x2710 is outside the 16F628A"},
      {"the same, exact",
       "16F628A",
       {"--exact", "write", dir.file("beyond.hex")},
       1,
       "beyond.hex': line 2: byte address 4E21 is outside the program buffer (0-4E20)"},
      {"a FIFO", "16F628A", {"write", fifo}, 0, "Write Complete", 0x2805},
      {"the trace onto the image",
       "16F628A",
       {"--trace", dir.file("address.hex"), "write", dir.file("address.hex")},
       2,
       "is both the trace (--trace) and the image"},
      {"the output onto the memory",
       "16F628A",
       {"--sim-memory", dir.file("m.sim"), "read", "-o", dir.file("./m.sim")},
       2,
       "is both the output (-o) and the simulated chip's memory"},
      {"a calibrated chip's write",
       "12F675",
       {"write", dir.file("calibrated.hex")},
       0,
       "Write Complete",
       0x2805},
      {"and its verify", "12F675", {"verify", dir.file("calibrated.hex")}, 0, "Verify Complete"},
      {"a target that stays powered",
       "16F628A",
       {"read-eeprom"},
       1,
       "the target may still be powered"},
      {"Ctrl-C during an erase", "12F675", {"erase"}, 1, "zenta: interrupted"},
  };
  std::unique_ptr<sim::SimUnit> unit;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.name.rfind("and its", 0) != 0) {
      unit = std::make_unique<sim::SimUnit>(c.chip);
      if (c.chip == "12F675") unit->set_program_word(0x3FF, kCalibration);
    }
    DriverChoice choice;
    choice.simulated = true;
    choice.sim_unit = unit.get();
    std::thread writer;
    if (c.name == "a FIFO") {
      writer = std::thread([&] { std::ofstream(fifo) << image; });
    }
    if (c.name == "a target that stays powered") {
      choice.driver = std::make_unique<cli::testing::InterruptAt>(*unit, SIZE_MAX, true);
    } else if (c.name == "Ctrl-C during an erase") {
      // Past the pre-flight, while the calibration is written back.
      choice.driver = std::make_unique<cli::testing::InterruptAt>(*unit, 1060);
    } else {
      choice.driver = std::make_unique<cli::testing::InterruptAt>(*unit, SIZE_MAX);
    }
    std::vector<std::string> args = {"--device", c.chip};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const cli::testing::Outcome result = cli::testing::run_on(choice, args);
    if (writer.joinable()) writer.join();
    clear_interrupt();
    EXPECT_EQ(result.status, c.status) << result.err;
    EXPECT_NE((result.err + result.out).find(c.says), std::string::npos)
        << result.err << result.out;
    if (c.word0 >= 0) {
      EXPECT_EQ(unit->program_word(0), c.word0);
    }
    if (c.chip == "12F675") {
      EXPECT_EQ(unit->program_word(0x3FF), kCalibration);
    }
  }
  EXPECT_EQ(read_text(dir.file("address.hex")), image);
}

// The panel: a signal during a write's pre-flight erases nothing, one in its
// pauses ends it with the target off; a long comment line before the end
// record loads the data before it quietly in exact mode and is refused,
// with its line, in checked mode.
TEST(SafeEdges, ThePanelUnderSignalsAndLongLines) {
  TempDir dir;
  const std::string data = ":020000000528D1\n";
  write_text(dir.file("long.hex"),
             data + std::string(600, ';') + "\n:02000200FF3FBE\n:00000001FF\n");
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 0x200; ++w) words.push_back({w, 0x2000});
  EXPECT_TRUE(write_inhx8m_file(dir.file("big.hex"), words));
  for (const bool exact : {true, false}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    PanelRig rig("12F675", 6, exact);
    rig.host.open_answers = {dir.file("long.hex")};
    EXPECT_EQ(rig.form.F_OpenButton_Click(), exact);
    EXPECT_EQ(rig.state.DataLoaded, exact ? 1 : 0);
    if (exact) {
      EXPECT_EQ(rig.state.word(0), 0x2805);
    } else {
      ASSERT_EQ(rig.host.boxes.size(), 1u);
      EXPECT_NE(rig.host.boxes[0].text.find("long.hex line 2: longer than any valid record"),
                std::string::npos)
          << rig.host.boxes[0].text;
    }
  }
  for (const std::size_t at : {std::size_t{10}, std::size_t{600}, std::size_t{1300}}) {
    SCOPED_TRACE(at);
    PanelRig rig("12F675", 6, false);
    rig.unit.set_program_word(0x3FF, kCalibration);
    rig.unit.set_program_word(0, kOldWord);
    rig.host.open_answers = {dir.file("big.hex")};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.unit.clear_trace();
    // A signal raises the flag between two exchanges; the form asks it.
    rig.opened.link().on_status_changed = [&rig, at] {
      if (rig.unit.trace().size() >= at) request_interrupt();
    };
    const CommandResult result = rig.form.WriteButton_Click();
    clear_interrupt();
    EXPECT_FALSE(result.ok());
    EXPECT_FALSE(rig.unit.vcc());
    EXPECT_FALSE(rig.unit.in_programming_mode());
    EXPECT_EQ(rig.unit.program_word(0x3FF), kCalibration);
    // Before the erase (the pre-flight's 550 or so exchanges) nothing changes.
    EXPECT_EQ(rig.unit.program_word(0), at < 500 ? kOldWord : (at < 1100 ? 0x3FFF : 0x2000));
    EXPECT_EQ(rig.form.view().NotesLabel, kStoppedText);
  }
}

}  // namespace
}  // namespace zenta::testing

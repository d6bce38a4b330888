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
#include "fakes.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "programming/chips.h"
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
Outcome run_checked(const ChipFacts& chip, bool write, Fault fault, int at) {
  sim::SimUnit unit(chip.name);
  unit.set_program_word(0, kOldWord);
  if (chip.calibrated) {
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
  select_device_parameters(state, chip.entry);
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
    run.result = run_checked_write(ops, chip.entry, std::nullopt, run.preflight);
  } else {
    run.result = run_checked_erase(ops, chip.entry, run.preflight);
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
  if (chip.calibrated && !run.result.calibration_at_risk) {
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
          w < 16 ? 0x2800 + w : (chip.calibrated && w == 0x3FF ? kCalibration : 0x3FFF);
      if (unit.program_word(w) != meant) {
        broken("word " + std::to_string(w) + " differs after a write said complete");
        break;
      }
    }
    const int band_gap = chip.calibrated ? (kChipConfig & 0x3000) : (config & 0x3000);
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
    const ChipFacts chip = *chip_by_name(name);
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
  for (const ChipFacts& chip : known_chips()) {
    SCOPED_TRACE(chip.name);
    sim::SimUnit unit(chip.name);
    if (chip.calibrated) unit.set_program_word(0x3FF, kCalibration);
    FakeHost host;
    Unit opened(unit, host);
    opened.open();
    ProgrammerState state;
    select_device_parameters(state, chip.entry);
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
    const CommandResult result = run_checked_write(ops, chip.entry, std::nullopt, preflight);
    EXPECT_TRUE(result.ok());
    for (int w = 0; w < chip.program_words; ++w) {
      const auto it = image.find(w);
      ASSERT_EQ(unit.program_word(w), it != image.end() ? it->second : 0x3FFF) << w;
    }
  }
}

}  // namespace
}  // namespace zenta::testing

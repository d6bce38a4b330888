// Where the chip operations start and stop: the row holding the last
// address, the verify's last compared word, the progress bar's end, and the
// ranges refused before the first packet. Driven on a Unit over the
// simulated unit, the chip read back afterwards.
#include <gtest/gtest.h>

#include <algorithm>

#include "fakes.h"
#include "image/hex_loader.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "programming/commands.h"

namespace zenta::testing {
namespace {

using Packet = std::array<std::uint8_t, 8>;

// Keeps what an operation showed: every progress step, boxes and notes.
class RecordingReport : public OperationReport {
 public:
  void notes(const std::string& text, std::uint32_t) override { notes_shown.push_back(text); }
  void current_address(int) override {}
  void start_address(int) override {}
  void progress(int value, int maximum) override {
    if (maximum != 0) steps.push_back({value, maximum});
  }
  void supply(bool) override {}
  void led(bool) override {}
  void stop_box(const std::string& text, const std::string&) override { boxes.push_back(text); }
  void let_events_run() override { stop = ++pauses >= stop_at_pause && stop_at_pause > 0; }
  bool stop_requested() override { return stop; }

  int stop_at_pause = 0;  // 0: never asked to stop
  int pauses = 0;
  bool stop = false;
  std::vector<std::pair<int, int>> steps;
  std::vector<std::string> boxes, notes_shown;
};

// Word w of the test image: distinct, 14 bits, never blank.
int image_word(int w) {
  return 0x1000 + (w * 37) % 0x1000;
}

struct OpsRig {
  OpsRig(const std::string& chip, int device, int image_words) : unit(chip) {
    select_device_parameters(state, device);
    blank_program_image(state);
    for (int w = 0; w < image_words; ++w) state.set_word(w, image_word(w));
    state.DataLoaded = 1;
    unit.clear_trace();
  }
  int count(Packet packet) const {
    return static_cast<int>(std::count_if(unit.trace().begin(), unit.trace().end(),
                                          [&](const auto& e) { return e.tx == packet; }));
  }

  sim::SimUnit unit;
  FakeHost host;
  ProgrammerState state;
  RecordingReport report;
  Unit opened{unit, host};
  Unit::Operation operation{opened};
  ChipOperations ops{opened, state, report};
};

// The write reaches the word at LAST in each mode: whole rows of eight up to
// the row holding it, single words one past it. The verify that follows
// passes, and the write's own bar counts its rows or words.
TEST(OperationBounds, WriteReachesTheWordAtLastInEveryMode) {
  const struct {
    const char* chip;
    int device;
    int last;
  } cases[] = {
      {"16F877A", 1, 7},  {"16F877A", 1, 8},  {"16F877A", 1, 9},
      {"16F877A", 1, 15}, {"16F877A", 1, 16}, {"16F877", 0, 8},
      {"16F877", 0, 4},   {"16F84A", 3, 8},   {"16F84A", 3, 5},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.chip) + " last " + std::to_string(c.last));
    OpsRig rig(c.chip, c.device, 64);
    const CommandResult result = run_write(rig.ops, static_cast<std::int16_t>(c.last));
    EXPECT_TRUE(result.ok());
    EXPECT_FALSE(result.mismatch.has_value());
    // Row mode programs whole rows; the word-by-word modes one word past LAST.
    const int written_end = c.device == 1 ? (c.last | 7) : c.last + 1;
    for (int w = 0; w < 40; ++w) {
      EXPECT_EQ(rig.unit.program_word(w), w <= written_end ? image_word(w) : 0x3FFF) << w;
    }
    ASSERT_FALSE(rig.report.steps.empty());
    // The write's own bar ends full before the verify starts its own.
    const auto write_end = std::find_if(rig.report.steps.begin(), rig.report.steps.end(),
                                        [](auto s) { return s.first == s.second; });
    ASSERT_NE(write_end, rig.report.steps.end());
    if (c.device == 1) {
      EXPECT_EQ(write_end->second, rig.count({ICSP_BEGIN_PROG_ONLY}));
    } else {
      EXPECT_EQ(write_end->second, written_end + 1);
    }
  }
}

// The verify compares words 0 up to LAST - 1, four to a read: a difference
// at LAST - 1 is found, one at LAST is not, and no read goes past the group
// holding LAST - 1.
TEST(OperationBounds, VerifyComparesUpToTheWordBeforeLast) {
  for (const int last : {1, 3, 4, 5, 7, 8, 9, 12}) {
    for (const bool differ_before_last : {true, false}) {
      SCOPED_TRACE("last " + std::to_string(last) + (differ_before_last ? " before" : " at"));
      OpsRig rig("16F877A", 1, 32);
      for (int w = 0; w < 32; ++w) rig.unit.set_program_word(w, image_word(w));
      const int changed = differ_before_last ? last - 1 : last;
      rig.unit.set_program_word(changed, 0x0123);
      rig.unit.clear_trace();
      rig.state.LastAddress = static_cast<std::int16_t>(last);
      const CommandResult result = run_verify(rig.ops);
      if (differ_before_last) {
        ASSERT_TRUE(result.mismatch.has_value());
        EXPECT_EQ(result.mismatch->address, changed);
        EXPECT_EQ(result.mismatch->read, 0x0123);
        EXPECT_EQ(rig.report.notes_shown.back(), "Verify Error");
      } else {
        EXPECT_FALSE(result.mismatch.has_value());
        EXPECT_EQ(rig.count({ICSP_READ_DATA, 4}), (last + 3) / 4);
        EXPECT_EQ(rig.count({ICSP_INC_ADDR, 1}), (last + 3) / 4 - 1);
        EXPECT_EQ(rig.report.notes_shown.back(), "Verify Complete");
      }
    }
  }
}

// With nothing to compare (LAST 0 or -1) the verify reads one group and its
// bar still ends full.
TEST(OperationBounds, VerifyWithoutWordsReadsOneGroupAndEndsFull) {
  for (const int last : {-1, 0}) {
    SCOPED_TRACE(last);
    OpsRig rig("16F877A", 1, 0);
    rig.state.LastAddress = static_cast<std::int16_t>(last);
    const CommandResult result = run_verify(rig.ops);
    EXPECT_TRUE(result.ok());
    EXPECT_EQ(rig.count({ICSP_READ_DATA, 4}), 1);
    EXPECT_EQ(rig.report.steps, (std::vector<std::pair<int, int>>{{4, 4}}));
  }
}

// Ranges past the image buffer are refused with a box before any packet.
TEST(OperationBounds, RangesPastTheBufferAreRefusedBeforeAnyPacket) {
  using Run = std::function<CommandResult(ChipOperations&)>;
  const struct {
    const char* name;
    Run run;
    bool refused;
  } cases[] = {
      {"read 10001 words", [](ChipOperations& ops) { return run_read(ops, 10001); }, true},
      {"read without a number", [](ChipOperations& ops) { return run_read(ops, std::nullopt); },
       true},
      {"read 16 words", [](ChipOperations& ops) { return run_read(ops, 16); }, false},
      {"verify through word 10000",
       [](ChipOperations& ops) { return run_verify_all(ops, 10000, std::nullopt); }, true},
      {"verify from below nothing",
       [](ChipOperations& ops) { return run_verify_all(ops, -2, std::nullopt); }, true},
      {"verify through word 9999",
       [](ChipOperations& ops) { return run_verify_all(ops, 9999, std::nullopt); }, false},
      {"write with LAST 10000 in rows", [](ChipOperations& ops) { return run_write(ops, 10000); },
       true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    OpsRig rig("16F877A", 1, 0);
    const CommandResult result = c.run(rig.ops);
    EXPECT_EQ(result.refused, c.refused);
    if (c.refused) {
      EXPECT_TRUE(rig.unit.trace().empty());
      EXPECT_EQ(rig.report.boxes, std::vector<std::string>{"Last address out of range"});
    } else {
      EXPECT_FALSE(rig.unit.trace().empty());
      EXPECT_TRUE(rig.report.boxes.empty());
    }
  }
}

// The full verify names its first difference in a box and on the notes line,
// for a program word and for the configuration word.
TEST(OperationBounds, FullVerifyShowsItsFirstDifference) {
  const struct {
    int chip_word3, chip_config;
    std::optional<int> mismatch_at;
  } cases[] = {
      {image_word(3), 0x3F3B, std::nullopt},
      {0x0123, 0x3F3B, 3},
      {image_word(3), 0x3F3A, 0x2007},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mismatch_at.value_or(-1));
    OpsRig rig("16F877A", 1, 8);
    for (int w = 0; w < 8; ++w) rig.unit.set_program_word(w, image_word(w));
    rig.unit.set_program_word(3, c.chip_word3);
    rig.unit.set_config_word(c.chip_config);
    const CommandResult result = run_verify_all(rig.ops, 7, 0x3F3B);
    ASSERT_EQ(result.mismatch.has_value(), c.mismatch_at.has_value());
    if (c.mismatch_at) {
      EXPECT_EQ(result.mismatch->address, *c.mismatch_at);
      EXPECT_EQ(rig.report.boxes, std::vector<std::string>{"Verify Data ERROR"});
      EXPECT_EQ(rig.report.notes_shown.back(), "Verify Error");
    } else {
      EXPECT_TRUE(rig.report.boxes.empty());
      EXPECT_EQ(rig.report.notes_shown.back(), "Verify Complete");
    }
    ASSERT_FALSE(rig.report.steps.empty());
    EXPECT_EQ(rig.report.steps.front(), std::make_pair(4, 8));
  }
}

// A read asked to stop between groups says so, keeps the words it stored,
// and leaves the target powered down.
TEST(OperationBounds, StoppedReadSaysHowFarItGot) {
  for (const int stop_at : {1, 3}) {
    SCOPED_TRACE(stop_at);
    OpsRig rig("16F877A", 1, 0);
    for (int w = 0; w < 64; ++w) rig.unit.set_program_word(w, image_word(w));
    rig.report.stop_at_pause = stop_at;
    const CommandResult result = run_read(rig.ops, 64);
    EXPECT_TRUE(result.stopped);
    ASSERT_TRUE(result.read.has_value());
    EXPECT_TRUE(result.read->stopped_early);
    EXPECT_EQ(result.read->next_address, 4 * stop_at);
    for (int w = 0; w < 4 * stop_at; ++w) EXPECT_EQ(rig.state.word(w), image_word(w)) << w;
    EXPECT_EQ(rig.unit.trace().back().tx, (Packet{UNIT_LED, 0}));
    EXPECT_FALSE(rig.unit.vcc());
  }
  OpsRig rig("16F877A", 1, 0);
  const CommandResult whole = run_read(rig.ops, 64);
  EXPECT_FALSE(whole.stopped);
  EXPECT_FALSE(whole.read->stopped_early);
  EXPECT_EQ(whole.read->next_address, 64);
}

// The short commands power the target around their packets and nothing
// else: supply on first, off last.
TEST(OperationBounds, ShortCommandsPowerTheTargetAroundTheirPackets) {
  using Run = std::function<CommandResult(ChipOperations&)>;
  const std::pair<const char*, Run> cases[] = {
      {"erase", run_erase}, {"identify", run_identify}, {"read config", run_read_config}};
  for (const auto& [name, run] : cases) {
    SCOPED_TRACE(name);
    OpsRig rig("16F877A", 1, 0);
    EXPECT_TRUE(run(rig.ops).ok());
    const auto& trace = rig.unit.trace();
    ASSERT_GE(trace.size(), 2u);
    EXPECT_EQ(trace.front().tx, (Packet{UNIT_VCC, 1}));
    EXPECT_EQ(trace.back().tx, (Packet{UNIT_VCC, 0}));
    EXPECT_EQ(rig.count({UNIT_VCC, 1}), 1);
    EXPECT_EQ(rig.count({UNIT_LED, 1}), 0);
  }
}

}  // namespace
}  // namespace zenta::testing

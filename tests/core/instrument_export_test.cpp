// A simulated capture written as VCD and CSV and read back: by sigrok-cli
// for the VCD, so the file opens in the tools people use.
#include <gtest/gtest.h>

#include <filesystem>

#include "instrument_rig.h"
#include "instruments/capture_export.h"
#include "instruments/logic_view.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::InstrumentRig;
using testing::TempDir;

std::string levels_text(const std::vector<bool>& samples, int repeat) {
  std::string text;
  for (bool level : samples) text.append(static_cast<std::size_t>(repeat), level ? '1' : '0');
  return text;
}

// Each row: a capture's period byte and edge, exported from the logic view.
// The timescale stays one VCD allows (1, 10 or 100 of a unit), 0.1 ms, so
// sigrok sees each sample for `period` steps.
TEST(CaptureExport, SigrokReadsTheSamplesBackAtTheSamplePeriod) {
  if (!testing::tool_available("sigrok-cli")) {
    GTEST_SKIP() << "sigrok-cli is not installed (Debian package sigrok-cli)";
  }
  struct Row {
    const char* stime;
    bool pos;
    int steps;
  };
  const Row rows[] = {{"1", true, 1}, {"4", false, 4}, {"0", true, 1}, {"100", true, 100}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.stime);
    InstrumentRig rig;
    TempDir dir;
    LogicView view(rig.unit);
    view.Form_Load();
    view.STIME = row.stime;
    if (!row.pos) view.Option2_Click();
    view.Command7_Click();
    rig.host.save_answers.push_back(dir.file("capture.vcd"));
    view.Export_Click();
    EXPECT_NE(testing::read_text(dir.file("capture.vcd")).find("$timescale 100 us $end\n"),
              std::string::npos);
    const testing::ProcessResult bits =
        testing::run_command("sigrok-cli -I vcd -i " + dir.file("capture.vcd") + " -O bits 2>&1");
    ASSERT_EQ(bits.status, 0) << bits.out;
    // "LA:0101..." lines, 64 time steps each.
    std::string read_back;
    std::size_t at = 0;
    while ((at = bits.out.find("LA:", at)) != std::string::npos) {
      at += 3;
      while (at < bits.out.size() &&
             (bits.out[at] == '0' || bits.out[at] == '1' || bits.out[at] == ' ')) {
        if (bits.out[at] != ' ') read_back += bits.out[at];
        ++at;
      }
    }
    EXPECT_EQ(read_back, levels_text(view.samples(), row.steps));
    EXPECT_NE(bits.out.find("samplerate: 10000"), std::string::npos) << bits.out;
  }
}

TEST(CaptureExport, CsvHasOneLinePerSampleWithItsTime) {
  InstrumentRig rig;
  TempDir dir;
  LogicView view(rig.unit);
  view.Form_Load();
  view.STIME = "3";
  view.Command7_Click();
  rig.host.save_answers.push_back(dir.file("capture.CSV"));
  view.Export_Click();
  const std::string text = testing::read_text(dir.file("capture.CSV"));
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "sample,time_us,level");
  std::string levels;
  int count = 0;
  while (std::getline(lines, line)) {
    EXPECT_EQ(line.substr(0, line.size() - 2),
              std::to_string(count) + "," + std::to_string(count * 300));
    levels += line.back();
    ++count;
  }
  EXPECT_EQ(levels, levels_text(view.samples(), 1));
}

TEST(CaptureExport, UnwritableFileIsReportedAndLeavesNothing) {
  InstrumentRig rig;
  LogicView view(rig.unit);
  view.Form_Load();
  view.Command7_Click();
  rig.host.save_answers.push_back("/nonexistent-folder/x.vcd");
  view.Export_Click();
  ASSERT_EQ(rig.host.boxes.size(), 1u);
  EXPECT_EQ(rig.host.boxes[0].title, "FILE ERROR");
  view.Export_Click();  // cancelled dialog
  EXPECT_EQ(rig.host.boxes.size(), 1u);
}

// EXPORT saves a capture, in the format of the typed extension or else of
// the chosen filter; it refuses what is no capture of the input and marks
// the DATA SET pattern as what it is.
TEST(CaptureExport, SavesWhatTheStoreHoldsAsWhatItIs) {
  enum class Before { kLoad, kCapture, kFailedCapture, kClearAfterCapture, kPattern };
  struct Row {
    Before before;
    const char* typed;  // nullptr: the dialog is not asked
    std::size_t choice;
    const char* saved;       // file name written; nullptr: nothing
    const char* first_line;  // of the file, or the box's text start
  };
  const Row rows[] = {
      {Before::kLoad, nullptr, 0, nullptr, "Nothing has been captured"},
      {Before::kFailedCapture, nullptr, 0, nullptr, "The last capture failed"},
      {Before::kClearAfterCapture, nullptr, 0, nullptr, "Nothing has been captured"},
      {Before::kCapture, "run1", 1, "run1.csv", "sample,time_us,level"},
      {Before::kCapture, "run1", 0, "run1.vcd",
       "$comment ZENTA logic view capture, trigger POS $end"},
      {Before::kCapture, "run1.CSV", 0, "run1.CSV", "sample,time_us,level"},
      {Before::kCapture, "run1.vcd", 1, "run1.vcd",
       "$comment ZENTA logic view capture, trigger POS $end"},
      {Before::kCapture, "run1.txt", 1, "run1.txt", "sample,time_us,level"},
      {Before::kPattern, "p", 0, "p.vcd",
       "$comment ZENTA logic view DATA SET pattern, not a capture $end"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(static_cast<int>(&row - rows));
    InstrumentRig rig;
    TempDir dir;
    LogicView view(rig.unit);
    view.Form_Load();
    if (row.before == Before::kFailedCapture) rig.fail_next_read();
    if (row.before != Before::kLoad && row.before != Before::kPattern) view.Command7_Click();
    if (row.before == Before::kClearAfterCapture) view.Command9_Click();
    if (row.before == Before::kPattern) view.Command25_Click();
    if (row.typed) {
      rig.host.save_answers.push_back(dir.file(row.typed));
      rig.host.save_choices.push_back(row.choice);
    }
    view.Export_Click();
    EXPECT_EQ(rig.host.save_filters.size(), row.typed ? 1u : 0u);
    if (!row.saved) {
      // A failed exchange was reported by the link before.
      ASSERT_FALSE(rig.host.boxes.empty());
      EXPECT_EQ(rig.host.boxes.back().title, "EXPORT ERROR");
      EXPECT_EQ(rig.host.boxes.back().text.rfind(row.first_line, 0), 0u)
          << rig.host.boxes.back().text;
      continue;
    }
    EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.back().text;
    const std::string text = testing::read_text(dir.file(row.saved));
    EXPECT_EQ(text.substr(0, text.find('\n')), row.first_line);
    const auto files = std::distance(std::filesystem::directory_iterator(dir.path()),
                                     std::filesystem::directory_iterator());
    EXPECT_EQ(files, 1) << "one file, under the name with its extension";
    EXPECT_NE(view.Label_note.find(dir.file(row.saved)), std::string::npos) << view.Label_note;
    EXPECT_EQ(view.Label_note.find("DATA SET") != std::string::npos,
              row.before == Before::kPattern);
  }
}

}  // namespace
}  // namespace zenta

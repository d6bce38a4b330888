// A simulated capture written as VCD and CSV and read back: by sigrok-cli
// for the VCD, so the file opens in the tools people use.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <sstream>

#include "instrument_rig.h"
#include "instruments/capture_export.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::LaRig;
using testing::read_text;
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
  const struct {
    const char* stime;
    bool pos;
    int steps;
  } rows[] = {{"1", true, 1}, {"4", false, 4}, {"0", true, 1}, {"100", true, 100}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.stime);
    LaRig rig;
    TempDir dir;
    rig.view.STIME = row.stime;
    if (!row.pos) rig.view.Option2_Click();
    rig.view.Command7_Click();
    rig.host.save_answers.push_back(dir.file("capture.vcd"));
    rig.view.Export_Click();
    EXPECT_NE(read_text(dir.file("capture.vcd")).find("$timescale 100 us $end\n"),
              std::string::npos);
    const testing::ProcessResult bits =
        testing::run_command("sigrok-cli -I vcd -i " + dir.file("capture.vcd") + " -O bits 2>&1");
    ASSERT_EQ(bits.status, 0) << bits.out;
    // "LA:0101 ..." lines, 64 time steps each.
    std::string read_back;
    for (std::size_t at = 0; (at = bits.out.find("LA:", at)) != std::string::npos;) {
      for (at += 3; at < bits.out.size() && std::strchr("01 ", bits.out[at]); ++at) {
        if (bits.out[at] != ' ') read_back += bits.out[at];
      }
    }
    EXPECT_EQ(read_back, levels_text(rig.view.samples(), row.steps));
    EXPECT_NE(bits.out.find("samplerate: 10000"), std::string::npos) << bits.out;
  }
}

TEST(CaptureExport, CsvHasOneLinePerSampleWithItsTime) {
  LaRig rig;
  TempDir dir;
  rig.view.STIME = "3";
  rig.view.Command7_Click();
  rig.host.save_answers.push_back(dir.file("capture.CSV"));
  rig.view.Export_Click();
  std::istringstream lines(read_text(dir.file("capture.CSV")));
  std::string line, levels;
  std::getline(lines, line);
  EXPECT_EQ(line, "sample,time_us,level");
  for (int count = 0; std::getline(lines, line); ++count) {
    EXPECT_EQ(line.substr(0, line.size() - 2),
              std::to_string(count) + "," + std::to_string(count * 300));
    levels += line.back();
  }
  EXPECT_EQ(levels, levels_text(rig.view.samples(), 1));
}

// EXPORT saves a capture, in the format of the typed extension or else of
// the chosen filter; it refuses what is no capture of the input and marks
// the DATA SET pattern as what it is.
TEST(CaptureExport, SavesWhatTheStoreHoldsAsWhatItIs) {
  enum class Before { kLoad, kCapture, kFailedCapture, kClearAfterCapture, kPattern };
  const char* const vcd = "$comment ZENTA logic view capture, trigger POS $end";
  const char* const csv = "sample,time_us,level";
  struct Row {
    Before before;
    const char* typed;  // nullptr: the dialog is not asked; "": it is cancelled
    std::size_t choice;
    const char* saved;  // file name written; nullptr: nothing
    const char* first;  // line of the file, or "title: text" of the box
  };
  const Row rows[] = {
      {Before::kLoad, nullptr, 0, nullptr, "EXPORT ERROR: Nothing has been captured"},
      {Before::kFailedCapture, nullptr, 0, nullptr, "EXPORT ERROR: The last capture failed"},
      {Before::kClearAfterCapture, nullptr, 0, nullptr, "EXPORT ERROR: Nothing has been captured"},
      {Before::kCapture, "run1", 1, "run1.csv", csv},
      {Before::kCapture, "run1", 0, "run1.vcd", vcd},
      {Before::kCapture, "run1.CSV", 0, "run1.CSV", csv},
      {Before::kCapture, "run1.vcd", 1, "run1.vcd", vcd},
      {Before::kCapture, "run1.txt", 1, "run1.txt", csv},
      {Before::kCapture, "no/folder/x.vcd", 0, nullptr, "FILE ERROR: "},
      {Before::kCapture, "", 0, nullptr, nullptr},
      {Before::kPattern, "p", 0, "p.vcd",
       "$comment ZENTA logic view DATA SET pattern, not a capture $end"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(static_cast<int>(&row - rows));
    LaRig rig;
    TempDir dir;
    LogicView& view = rig.view;
    if (row.before == Before::kFailedCapture) rig.fail_next_read();
    if (row.before != Before::kLoad && row.before != Before::kPattern) view.Command7_Click();
    if (row.before == Before::kClearAfterCapture) view.Command9_Click();
    if (row.before == Before::kPattern) view.Command25_Click();
    if (row.typed && *row.typed) {
      rig.host.save_answers.push_back(dir.file(row.typed));
      rig.host.save_choices.push_back(row.choice);
    }
    const std::size_t boxes = rig.host.boxes.size();  // a failed exchange was reported before
    view.Export_Click();
    EXPECT_EQ(rig.host.save_filters.size(), row.typed ? 1u : 0u);
    const auto files = std::distance(std::filesystem::directory_iterator(dir.path()), {});
    EXPECT_EQ(files, row.saved ? 1 : 0) << "one file, under the name with its extension";
    if (!row.saved) {
      ASSERT_EQ(rig.host.boxes.size(), boxes + (row.first ? 1 : 0));
      if (row.first) {
        const testing::ShownBox& box = rig.host.boxes.back();
        EXPECT_EQ((box.title + ": " + box.text).rfind(row.first, 0), 0u) << box.text;
      }
      continue;
    }
    EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.back().text;
    const std::string text = read_text(dir.file(row.saved));
    EXPECT_EQ(text.substr(0, text.find('\n')), row.first);
    EXPECT_NE(view.Label_note.find(dir.file(row.saved)), std::string::npos) << view.Label_note;
    EXPECT_EQ(view.Label_note.find("DATA SET") != std::string::npos,
              row.before == Before::kPattern);
  }
}

}  // namespace
}  // namespace zenta

// A simulated capture written as VCD and CSV and read back: by sigrok-cli
// for the VCD, so the file opens in the tools people use.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <tuple>

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

// Each row: a capture's period byte and edge, exported from the logic view
// as CSV and as VCD. The VCD timescale stays one VCD allows (1, 10 or 100 of
// a unit), 0.1 ms, so sigrok sees each sample for `period` steps.
TEST(CaptureExport, FilesHoldTheSamplesAtTheSamplePeriod) {
  const bool sigrok = testing::tool_available("sigrok-cli");
  if (!sigrok) std::cout << "sigrok-cli is not installed (Debian package sigrok-cli)\n";
  for (const auto& [stime, pos, steps] :
       {std::tuple{"1", true, 1}, {"4", false, 4}, {"0", true, 1}, {"100", true, 100}}) {
    SCOPED_TRACE(stime);
    LaRig rig;
    TempDir dir;
    rig.view.STIME = stime;
    if (!pos) rig.view.Option2_Click();
    rig.view.Command7_Click();
    rig.host.save_answers = {dir.file("capture.CSV"), dir.file("capture.vcd")};
    rig.view.Export_Click();
    rig.view.Export_Click();
    std::istringstream lines(read_text(dir.file("capture.CSV")));
    std::string line, levels;
    std::getline(lines, line);
    EXPECT_EQ(line, "sample,time_us,level");
    for (int count = 0; std::getline(lines, line); ++count) {
      EXPECT_EQ(line.substr(0, line.size() - 2),
                std::to_string(count) + "," + std::to_string(count * 100 * steps));
      levels += line.back();
    }
    EXPECT_EQ(levels, levels_text(rig.view.samples(), 1));
    EXPECT_NE(read_text(dir.file("capture.vcd")).find("$timescale 100 us $end\n"),
              std::string::npos);
    if (!sigrok) continue;
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
    EXPECT_EQ(read_back, levels_text(rig.view.samples(), steps));
    EXPECT_NE(bits.out.find("samplerate: 10000"), std::string::npos) << bits.out;
  }
}

// EXPORT saves a capture, in the format of the typed extension or else of
// the chosen filter; it refuses what is no capture of the input and marks
// the DATA SET pattern as what it is.
TEST(CaptureExport, SavesWhatTheStoreHoldsAsWhatItIs) {
  enum class Before { kLoad, kCapture, kFailedCapture, kClearAfterCapture, kPattern };
  const char* const vcd = "$comment ZENTA logic view capture, trigger POS $end";
  const char* const csv = "sample,time_us,level";
  // What the store holds; the name typed (nullptr: the dialog is not asked,
  // "": it is cancelled) and the filter chosen; the file written (nullptr:
  // none); its first line, or the box's "title: text".
  using Row = std::tuple<Before, const char*, std::size_t, const char*, const char*>;
  int index = 0;
  for (const auto& [before, typed, choice, saved, first] : std::vector<Row>{
           {Before::kLoad, nullptr, 0, nullptr, "EXPORT ERROR: Nothing has been captured"},
           {Before::kFailedCapture, nullptr, 0, nullptr, "EXPORT ERROR: The last capture failed"},
           {Before::kClearAfterCapture, nullptr, 0, nullptr,
            "EXPORT ERROR: Nothing has been captured"},
           {Before::kCapture, "run1", 1, "run1.csv", csv},
           {Before::kCapture, "run1", 0, "run1.vcd", vcd},
           {Before::kCapture, "run1.CSV", 0, "run1.CSV", csv},
           {Before::kCapture, "run1.vcd", 1, "run1.vcd", vcd},
           {Before::kCapture, "run1.txt", 1, "run1.txt", csv},
           {Before::kCapture, "no/folder/x.vcd", 0, nullptr, "FILE ERROR: "},
           {Before::kCapture, "", 0, nullptr, nullptr},
           {Before::kPattern, "p", 0, "p.vcd",
            "$comment ZENTA logic view DATA SET pattern, not a capture $end"}}) {
    SCOPED_TRACE(index++);
    LaRig rig;
    TempDir dir;
    LogicView& view = rig.view;
    if (before == Before::kFailedCapture) rig.fail_next_read();
    if (before != Before::kLoad && before != Before::kPattern) view.Command7_Click();
    if (before == Before::kClearAfterCapture) view.Command9_Click();
    if (before == Before::kPattern) view.Command25_Click();
    if (typed && *typed) {
      rig.host.save_answers.push_back(dir.file(typed));
      rig.host.save_choices.push_back(choice);
    }
    const std::size_t boxes = rig.host.boxes.size();  // a failed exchange was reported before
    view.Export_Click();
    EXPECT_EQ(rig.host.save_filters.size(), typed ? 1u : 0u);
    const auto files = std::distance(std::filesystem::directory_iterator(dir.path()), {});
    EXPECT_EQ(files, saved ? 1 : 0) << "one file, under the name with its extension";
    if (!saved) {
      ASSERT_EQ(rig.host.boxes.size(), boxes + (first ? 1 : 0));
      if (first) {
        const testing::ShownBox& box = rig.host.boxes.back();
        EXPECT_EQ((box.title + ": " + box.text).rfind(first, 0), 0u) << box.text;
      }
      continue;
    }
    EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.back().text;
    const std::string text = read_text(dir.file(saved));
    EXPECT_EQ(text.substr(0, text.find('\n')), first);
    EXPECT_NE(view.Label_note.find(dir.file(saved)), std::string::npos) << view.Label_note;
    EXPECT_EQ(view.Label_note.find("DATA SET") != std::string::npos, before == Before::kPattern);
  }
}

}  // namespace
}  // namespace zenta

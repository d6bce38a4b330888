// A simulated capture written as VCD and CSV and read back: by sigrok-cli
// for the VCD, so the file opens in the tools people use.
#include <gtest/gtest.h>

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
TEST(CaptureExport, SigrokReadsTheSamplesBackAtTheSamplePeriod) {
  if (!testing::tool_available("sigrok-cli")) {
    GTEST_SKIP() << "sigrok-cli is not installed (Debian package sigrok-cli)";
  }
  struct Row {
    const char* stime;
    bool pos;
    const char* samplerate;
  };
  const Row rows[] = {{"1", true, "10000"}, {"4", false, "2500"}, {"0", true, "10000"}};
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
    const testing::ProcessResult bits =
        testing::run_command("sigrok-cli -I vcd -i " + dir.file("capture.vcd") + " -O bits 2>&1");
    ASSERT_EQ(bits.status, 0) << bits.out;
    // "LA:0101..." lines, 64 samples each (a time step is one sample).
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
    EXPECT_EQ(read_back, levels_text(view.samples(), 1));
    EXPECT_NE(bits.out.find(std::string("samplerate: ") + row.samplerate), std::string::npos)
        << bits.out;
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
  rig.host.save_answers.push_back("/nonexistent-folder/x.vcd");
  view.Export_Click();
  ASSERT_EQ(rig.host.boxes.size(), 1u);
  EXPECT_EQ(rig.host.boxes[0].title, "FILE ERROR");
  view.Export_Click();  // cancelled dialog
  EXPECT_EQ(rig.host.boxes.size(), 1u);
}

}  // namespace
}  // namespace zenta

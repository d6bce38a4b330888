// The logic view: unpacking, the period byte, the drawing as data, the
// pattern and listing operations, and the capture against the simulated unit.
#include <gtest/gtest.h>

#include <algorithm>

#include "instrument_rig.h"

namespace zenta {
namespace {

using testing::InstrumentRig;
using testing::LaRig;

std::vector<DrawLine> trace_lines(const LaDrawing& drawing) {
  std::vector<DrawLine> lines;
  for (const DrawLine& line : drawing.lines) {
    if (line.color == LaTraceColor) lines.push_back(line);
  }
  return lines;
}

TEST(LogicView, UnpackingPutsByte59Bit0AtSample0) {
  struct Row {
    int byte;
    std::uint8_t value;
    std::vector<int> high;  // samples that read 1
  };
  const std::vector<Row> rows = {
      {59, 0x01, {0}},  {59, 0x80, {7}},       {58, 0x01, {8}}, {0, 0x01, {472}},
      {0, 0x80, {479}}, {7, 0x81, {416, 423}}, {60, 0xFF, {}},  {63, 0xFF, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.byte);
    CaptureBytes bytes{};
    bytes[static_cast<std::size_t>(row.byte)] = row.value;
    LaSampleStore store;
    store.fill('x');
    unpack_capture(bytes, store);
    std::vector<int> high;
    for (int i = 0; i < 512; ++i) {
      ASSERT_TRUE(store[static_cast<std::size_t>(i)] == '0' ||
                  store[static_cast<std::size_t>(i)] == '1');
      if (store[static_cast<std::size_t>(i)] == '1') high.push_back(i);
    }
    EXPECT_EQ(high, row.high);
    EXPECT_EQ(store[512], 'x') << "entries past 511 are not the capture's";
  }
}

TEST(LogicView, SamplePeriodByteFromTheTimeText) {
  struct Row {
    const char* text;
    int byte;
    bool rewritten;
  };
  const Row rows[] = {{"150", 100, true}, {"100", 100, false}, {"2.5", 2, false},
                      {"3.5", 4, false},  {"", 0, false},      {"300", 44, false},
                      {"101", 100, true}, {"356", 100, false}, {"-1", 100, true},
                      {"7ms", 7, false},  {"ab", 0, false},    {" 1 2", 12, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const PeriodByte period = sample_period_byte(row.text);
    EXPECT_EQ(period.byte, row.byte);
    EXPECT_EQ(period.rewritten, row.rewritten);
  }
}

TEST(LogicView, GridLabelsAndTraceGeometry) {
  LaRig rig;
  LogicView& view = rig.view;
  // Grid: 51 lines 100 apart from x 100, every tenth green.
  std::vector<int> green, grey;
  for (const DrawLine& line : view.drawing.lines) {
    if (line.color == LaMajorGridColor) green.push_back(line.x1);
    if (line.color == LaGridColor) grey.push_back(line.x1);
    if (line.color != LaTraceColor) {
      EXPECT_EQ(line.x1, line.x2);
      EXPECT_EQ(std::pair(line.y1, line.y2), std::pair(1900, 50));
    }
  }
  EXPECT_EQ(green, (std::vector<int>{100, 1100, 2100, 3100, 4100, 5100}));
  EXPECT_EQ(grey.size(), 45u);
  EXPECT_EQ(view.drawing.texts, (std::vector<DrawText>{{1050, 1500, "0", LaTraceColor},
                                                       {2050, 1500, "100", LaTraceColor},
                                                       {3050, 1500, "200", LaTraceColor},
                                                       {3050 + 1000, 1500, "300", LaTraceColor}}));

  // The trace as the corners it passes through.
  const auto corners = [](std::vector<std::pair<int, int>> points) {
    std::vector<DrawLine> lines;
    for (std::size_t i = 1; i < points.size(); ++i) {
      lines.push_back({points[i - 1].first, points[i - 1].second, points[i].first, points[i].second,
                       LaTraceColor});
    }
    return lines;
  };
  constexpr int kAll = 480;
  const struct {
    const char* name;
    int high;  // the one sample that reads 1; -1: none, kAll: every one
    bool mag;
    std::vector<DrawLine> trace;
  } rows[] = {
      {"all low", -1, false, corners({{100, 1200}, {4900, 1200}})},
      {"all high", kAll, false, corners({{100, 700}, {4900, 700}})},
      {"sample 0 high", 0, false, corners({{100, 700}, {110, 700}, {110, 1200}, {4900, 1200}})},
      {"sample 1 high", 1, false,
       corners({{100, 1200}, {110, 1200}, {110, 700}, {120, 700}, {120, 1200}, {4900, 1200}})},
      {"sample 100 high", 100, false,
       corners({{100, 1200}, {1100, 1200}, {1100, 700}, {1110, 700}, {1110, 1200}, {4900, 1200}})},
      {"sample 100 high, X5", 100, true,
       corners({{100, 1200}, {2100, 1200}, {2100, 700}, {2120, 700}, {2120, 1200}, {9700, 1200}})},
      // An edge on the last pair leaves no run to close.
      {"sample 479 high", 479, false, corners({{100, 1200}, {4890, 1200}, {4890, 700}})},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    view.Command9_Click();
    for (int i = 0; i < kAll; ++i) {
      if (row.high == kAll || row.high == i) view.LaSamples[static_cast<std::size_t>(i)] = '1';
    }
    view.MAG_Check_Click(row.mag);
    EXPECT_EQ(trace_lines(view.drawing), row.trace);
  }
}

TEST(LogicView, DataSetAndSampleDisplay) {
  LaRig rig;
  LogicView& view = rig.view;
  EXPECT_EQ(view.Text1.size(), 71u);
  view.Command10_Click();
  EXPECT_EQ(view.Text3, std::string(401, '0'));

  const std::string pattern = view.Text1;
  view.Command25_Click();
  EXPECT_EQ(view.LaPatternLength, 65);
  EXPECT_EQ(view.LaSamples[0], '0') << "sample 0 keeps its value";
  EXPECT_EQ(view.LaSamples[1], pattern[1]);
  EXPECT_EQ(view.LaSamples[65], pattern[65]) << "a later position overwrites an earlier copy";
  EXPECT_EQ(view.LaSamples[64], pattern[64]);
  EXPECT_EQ(view.LaSamples[321], pattern[65]);
  EXPECT_EQ(view.LaSamples[322], '0');
  view.Command10_Click();
  ASSERT_EQ(view.Text3.size(), 401u);
  EXPECT_EQ(view.Text3.substr(1, 64), pattern.substr(1, 64));

  const struct {
    std::string text;
    std::int16_t length;
    int first, last, step;  // the indexes that read 'y'
  } rows[] = {{"", -6, 0, -1, 1},
              {"yyyyyy", 0, 0, -1, 1},
              {"xyzzzzz", 1, 1, 257, 64},
              // Longer than the store takes five times: cut at index 520.
              {"x" + std::string(299, 'y'), 294, 1, 520, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text.size());
    std::vector<int> expected;
    for (int i = row.first; i <= row.last; i += row.step) expected.push_back(i);
    view.Form_Load();
    view.Text1 = row.text;
    view.drawing.lines.clear();
    view.Command25_Click();
    EXPECT_EQ(view.LaPatternLength, row.length);
    std::vector<int> written;
    for (int i = 0; i < kLaStoreSize; ++i) {
      if (view.LaSamples[static_cast<std::size_t>(i)] == 'y') written.push_back(i);
    }
    EXPECT_EQ(written, expected);
    EXPECT_FALSE(view.drawing.lines.empty()) << "redrawn";
  }
}

TEST(LogicView, CaptureSendsNineExchangesAndDrawsTheSimulatedSignal) {
  struct Row {
    const char* stime;
    bool pos;
    const char* start_packet;
    const char* stime_after;
  };
  const Row rows[] = {{"1", true, "36 01 01 00 00 00 00 00", "1"},
                      {"150", false, "36 64 00 00 00 00 00 00", "100"},
                      {"2.5", true, "36 02 01 00 00 00 00 00", "2.5"},
                      {"", false, "36 00 00 00 00 00 00 00", ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.stime);
    LaRig rig;
    LogicView& view = rig.view;
    view.STIME = row.stime;
    if (!row.pos) view.Option2_Click();
    std::uint32_t lamp_while_painting = 0;
    bool busy_while_painting = false;
    view.Command7_Click([&] {
      lamp_while_painting = view.shape2;
      busy_while_painting = rig.unit.busy();
    });
    EXPECT_EQ(lamp_while_painting, kLaCaptureColor);
    EXPECT_TRUE(busy_while_painting) << "the guard is held before events run";
    EXPECT_EQ(rig.host.events, 1);
    EXPECT_EQ(view.shape2, LaIdleColor);
    EXPECT_EQ(view.STIME, row.stime_after);
    std::vector<std::string> expected = {row.start_packet};
    for (int k = 0; k < 8; ++k)
      expected.push_back("37 0" + std::to_string(k) + " 00 00 00 00 00 00");
    std::vector<std::string> sent = rig.packets();
    EXPECT_EQ(sent, expected);

    // The samples drawn are the ones the unit captured, fetched again by hand.
    CaptureBytes bytes{};
    for (std::uint8_t k = 0; k < 8; ++k) {
      rig.link().SENDCMD(UNIT_LA_READ, k);
      std::copy(rig.link().RxPacket.begin(), rig.link().RxPacket.end(), bytes.begin() + 8 * k);
    }
    EXPECT_EQ(view.samples(), capture_samples(bytes));
    EXPECT_EQ(view.samples()[0], row.pos) << "sample 0 is the level the trigger edge went to";
    EXPECT_GT(trace_lines(view.drawing).size(), 10u) << "a signal, not a flat line";
  }
}

TEST(LogicView, TrigIsRefusedWhileAnotherOperationHoldsTheUnit) {
  LaRig rig;
  LogicView& view = rig.view;
  view.STIME = "150";
  {
    Unit::Operation chip_operation(rig.unit);
    view.Command7_Click();
  }
  EXPECT_TRUE(rig.packets().empty());
  EXPECT_EQ(view.shape2, kLaReadyColor);
  EXPECT_EQ(view.STIME, "150");
  EXPECT_EQ(rig.host.events, 0);
  // And a chip operation asked for while the capture runs does not start.
  bool refused = false;
  view.Command7_Click([&] { refused = !Unit::Operation(rig.unit).started(); });
  EXPECT_TRUE(refused);
}

TEST(LogicView, FailedReadStillUnpacksWhatTheReplyBufferHeld) {
  InstrumentRig rig;
  rig.sim.fail_read_at(4);  // block 2
  const LaCapture result = capture(rig.unit, 1, true);
  EXPECT_EQ(result.result, ExchangeResult::kFailed);
  EXPECT_TRUE(
      std::equal(result.bytes.begin() + 16, result.bytes.begin() + 24, result.bytes.begin() + 8))
      << "block 2 repeats block 1, the last reply that arrived";
  EXPECT_EQ(rig.host.boxes.size(), 1u);
}

}  // namespace
}  // namespace zenta

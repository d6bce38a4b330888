// The logic view: unpacking, the period byte, the drawing as data, the
// pattern and listing operations, and the capture against the simulated unit.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "instrument_rig.h"

namespace zenta {
namespace {

using testing::LaRig;

std::vector<DrawLine> trace_lines(const LaDrawing& drawing) {
  std::vector<DrawLine> lines;
  for (const DrawLine& line : drawing.lines) {
    if (line.color == LaTraceColor) lines.push_back(line);
  }
  return lines;
}

TEST(LogicView, UnpackingPutsByte59Bit0AtSample0) {
  // The capture byte set, its value, and the samples that then read 1.
  using Row = std::tuple<std::size_t, std::uint8_t, std::vector<int>>;
  const Row rows[] = {
      {59, 0x01, {0}},  {59, 0x80, {7}},       {58, 0x01, {8}}, {0, 0x01, {472}},
      {0, 0x80, {479}}, {7, 0x81, {416, 423}}, {60, 0xFF, {}},  {63, 0xFF, {}},
  };
  for (const auto& [byte, value, high] : rows) {
    CaptureBytes bytes{};
    bytes[byte] = value;
    LaSampleStore store;
    store.fill('x');
    unpack_capture(bytes, store);
    std::vector<int> not_low;
    for (int i = 0; i < 512; ++i) {
      if (store[static_cast<std::size_t>(i)] != '0') not_low.push_back(i);
    }
    EXPECT_EQ(not_low, high) << byte;
    EXPECT_TRUE(std::all_of(high.begin(), high.end(), [&](int i) { return store[i] == '1'; }));
    EXPECT_EQ(store[512], 'x') << "entries past 511 are not the capture's";
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
  // The one sample that reads 1 (-1: none, kAll: every one), X5, and the trace.
  using Row = std::tuple<int, bool, std::vector<DrawLine>>;
  for (const auto& [high, mag, trace] : std::vector<Row>{
           {-1, false, corners({{100, 1200}, {4900, 1200}})},
           {kAll, false, corners({{100, 700}, {4900, 700}})},
           {0, false, corners({{100, 700}, {110, 700}, {110, 1200}, {4900, 1200}})},
           {1, false,
            corners({{100, 1200}, {110, 1200}, {110, 700}, {120, 700}, {120, 1200}, {4900, 1200}})},
           {100, false,
            corners(
                {{100, 1200}, {1100, 1200}, {1100, 700}, {1110, 700}, {1110, 1200}, {4900, 1200}})},
           {100, true,
            corners(
                {{100, 1200}, {2100, 1200}, {2100, 700}, {2120, 700}, {2120, 1200}, {9700, 1200}})},
           // An edge on the last pair leaves no run to close.
           {479, false, corners({{100, 1200}, {4890, 1200}, {4890, 700}})}}) {
    SCOPED_TRACE(high);
    view.Command9_Click();
    for (int i = 0; i < kAll; ++i) {
      if (high == kAll || high == i) view.LaSamples[i] = '1';
    }
    view.MAG_Check_Click(mag);
    EXPECT_EQ(trace_lines(view.drawing), trace);
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

  // DATA SET's text, the pattern length, and the indexes that then read 'y'.
  using Row = std::tuple<std::string, std::int16_t, int, int, int>;
  for (const auto& [text, length, first, last, step] :
       std::vector<Row>{{"", -6, 0, -1, 1},
                        {"yyyyyy", 0, 0, -1, 1},
                        {"xyzzzzz", 1, 1, 257, 64},
                        // Longer than the store takes five times: cut at index 520.
                        {"x" + std::string(299, 'y'), 294, 1, 520, 1}}) {
    SCOPED_TRACE(text.size());
    std::vector<int> expected, written;
    for (int i = first; i <= last; i += step) expected.push_back(i);
    view.Form_Load();
    view.Text1 = text;
    view.drawing.lines.clear();
    view.Command25_Click();
    EXPECT_EQ(view.LaPatternLength, length);
    for (int i = 0; i < kLaStoreSize; ++i) {
      if (view.LaSamples[i] == 'y') written.push_back(i);
    }
    EXPECT_EQ(written, expected);
    EXPECT_FALSE(view.drawing.lines.empty()) << "redrawn";
  }
}

// The period byte is the sample-time text's leading number, halves to even,
// its low 8 bits; past 100 it is 100, and a text that made it so then reads
// "100".
TEST(LogicView, CaptureSendsNineExchangesAndDrawsTheSimulatedSignal) {
  // STIME, the edge, the period byte sent, STIME after, the note's interval
  using Row = std::tuple<const char*, bool, int, const char*, const char*>;
  const Row rows[] = {
      {"1", true, 1, "1", "0.1"},        {"150", false, 100, "100", "10.0"},
      {"2.5", true, 2, "2.5", "0.2"},    {"", false, 0, "", "0.1"},
      {"3.5", true, 4, "3.5", "0.4"},    {"300", true, 44, "300", "4.4"},
      {"101", true, 100, "100", "10.0"}, {"356", false, 100, "356", "10.0"},
      {"-1", true, 100, "100", "10.0"},  {"7ms", true, 7, "7ms", "0.7"},
      {"ab", true, 0, "ab", "0.1"},      {" 1 2", true, 12, " 1 2", "1.2"},
      {"100", true, 100, "100", "10.0"},
  };
  for (const auto& [stime, pos, byte, stime_after, interval] : rows) {
    SCOPED_TRACE(stime);
    LaRig rig;
    LogicView& view = rig.view;
    view.STIME = stime;
    if (!pos) view.Option2_Click();
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
    EXPECT_EQ(view.STIME, stime_after);
    EXPECT_EQ(view.Label_note, std::string("Capture: 480 samples, one every ") + interval +
                                   " ms, trigger " + (pos ? "POS" : "NEG"));
    std::vector<std::string> expected = {testing::packet_text({UNIT_LA_START, byte, pos})};
    for (int k = 0; k < 8; ++k) expected.push_back(testing::packet_text({UNIT_LA_READ, k}));
    EXPECT_EQ(rig.packets(), expected);

    // The samples drawn are the ones the unit captured, fetched again by hand.
    CaptureBytes bytes{};
    for (std::uint8_t k = 0; k < 8; ++k) {
      rig.link().SENDCMD(UNIT_LA_READ, k);
      std::copy(rig.link().RxPacket.begin(), rig.link().RxPacket.end(), bytes.begin() + 8 * k);
    }
    EXPECT_EQ(view.samples(), capture_samples(bytes));
    EXPECT_EQ(view.samples()[0], pos) << "sample 0 is the level the trigger edge went to";
    EXPECT_GT(trace_lines(view.drawing).size(), 10u) << "a signal, not a flat line";
  }
}

// Refused while a chip operation holds the unit: nothing is sent and nothing
// changes. A failed read leaves its block as the last reply that arrived.
TEST(LogicView, RefusedOrFailedCapture) {
  LaRig rig;
  LogicView& view = rig.view;
  view.STIME = "150";
  {
    Unit::Operation chip_operation(rig.unit);
    view.Command7_Click();
  }
  EXPECT_TRUE(rig.packets().empty());
  EXPECT_EQ(std::tuple(view.shape2, view.STIME, rig.host.events),
            std::tuple(kLaReadyColor, "150", 0));

  rig.sim.fail_read_at(4);  // block 2
  const LaCapture result = capture(rig.unit, 1, true);
  EXPECT_EQ(result.result, ExchangeResult::kFailed);
  EXPECT_TRUE(
      std::equal(result.bytes.begin() + 16, result.bytes.begin() + 24, result.bytes.begin() + 8));
  EXPECT_EQ(rig.host.boxes.size(), 1u);
}

}  // namespace
}  // namespace zenta

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "common/file_names.h"
#include "common/number_text.h"
#include "fakes.h"
#include "link/trace_driver.h"
#include "link/unit.h"
#include "link/unit_link.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta {
namespace {

TEST(TraceDriver, OneLinePerExchangeAndFailuresMarked) {
  testing::ScriptedDriver inner;
  testing::FakeHost host;
  std::ostringstream out;
  TraceDriver trace(inner, out);
  UnitLink link(trace, host);
  inner.replies.push_back({0x5A, 0x45, 0x4E, 0x54, 0x41, 0x20, 0x31, 0x32});
  link.SENDCMD(0x3F);
  inner.write_results.push_back(0);
  link.SENDCMD(0x3A, 0x01);
  inner.read_results.push_back(0);
  inner.failed_read_bytes = {0xAB, 0, 0, 0, 0, 0, 0, 0};
  link.SENDCMD(0x32, 0x02);
  EXPECT_EQ(out.str(),
            "TX 3F 00 00 00 00 00 00 00 RX 5A 45 4E 54 41 20 31 32\n"
            "TX 3A 01 00 00 00 00 00 00 FAILED\n"
            "TX 32 02 00 00 00 00 00 00 RX AB 00 00 00 00 00 00 00 FAILED\n");
}

// A user following the trace with `tail -f` sees each exchange within a
// tenth of a second, and everything once an operation has ended.
TEST(TraceDriver, ReachesItsFileWhileExchangesHappenAndWhenAnOperationEnds) {
  testing::TempDir dir;
  const std::string path = dir.file("t.trace");
  std::ofstream file(path);
  testing::ScriptedDriver inner;
  testing::FakeHost host;
  TraceDriver trace(inner, file);
  Unit unit(trace, host);
  const auto lines_on_disk = [&path] {
    std::ifstream in(path);
    return std::count(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), '\n');
  };
  {
    Unit::Operation operation(unit);
    unit.link().SENDCMD(0x3A, 0x01);
    unit.link().SENDCMD(0x3B, 0x01);
    EXPECT_EQ(lines_on_disk(), 0);
    std::this_thread::sleep_for(kTraceFlushInterval + std::chrono::milliseconds(20));
    unit.link().SENDCMD(0x3A, 0x00);
    EXPECT_EQ(lines_on_disk(), 3);
    unit.link().SENDCMD(0x3B, 0x00);
    EXPECT_EQ(lines_on_disk(), 3);
  }
  EXPECT_EQ(lines_on_disk(), 4);
}

TEST(NumberText, HexBoxReadingRule) {
  struct Case {
    const char* text;
    std::optional<std::int32_t> value;
  };
  const Case cases[] = {
      {"", 0},
      {"x", 0},
      {"3G", 3},
      {"1fff", 0x1FFF},
      {"FFFF", -1},
      {"8000", -32768},
      {"7FFF", 32767},
      {"12345", 0x12345},
      {"FFFFFFFF", -1},
      {"0001FFFF", 0x1FFFF},
      {"123456789", std::nullopt},
      {"3F3b zz", 0x3F3B},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(read_hex(c.text), c.value);
  }
  EXPECT_EQ(read_hex16("FFFF"), std::optional<std::int16_t>(-1));
  EXPECT_EQ(read_hex16("12345"), std::nullopt);
  EXPECT_EQ(read_hex16("00002000"), std::optional<std::int16_t>(0x2000));
}

TEST(NumberText, LeadingNumberAndRounding) {
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {
      {"6", 6},       {"-1", -1},          {"abc", 0},           {"", 0},       {" 7", 7},
      {"2.5x", 2.5},  {"1 2", 12},         {"1e2", 100},         {"&H10", 16},  {"4.4", 4.4},
      {"-", 0},       {"3e", 3},           {"+2.5e1", 25},       {"-.5", -0.5}, {"1e-999", 0},
      {"-1e-999", 0}, {"1e999", HUGE_VAL}, {"-1e999", -HUGE_VAL}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_DOUBLE_EQ(leading_number(c.text), c.value);
  }
  EXPECT_EQ(round_half_even(2.5), 2);
  EXPECT_EQ(round_half_even(3.5), 4);
  EXPECT_EQ(round_half_even(20.5), 20);
  EXPECT_EQ(round_half_even(-0.5), 0);
  EXPECT_EQ(hex_text(0), "0");
  EXPECT_EQ(hex_text(0x1FFF), "1FFF");
  EXPECT_EQ(hex_text(0x10A0), "10A0");
  EXPECT_EQ(hex_text(-1), "FFFFFFFF");
  EXPECT_EQ(hex_byte(0x0A), "0A");
}

// Texts in files and on the command line: the whole text, with the point.
TEST(NumberText, DecimalsReadAndWrittenWithThePoint) {
  EXPECT_EQ(parse_decimal("4.4"), 4.4);
  EXPECT_EQ(parse_decimal("-1e3"), -1000);
  for (const char* bad : {"", "4,4", "+1", "1.5x", " 1", "inf", "nan", "1e999"}) {
    EXPECT_EQ(parse_decimal(bad), std::nullopt) << bad;
  }
  EXPECT_EQ(fixed_text(0.0005, 3), "0.001");
  EXPECT_EQ(fixed_text(1299.99, 3), "1299.990");
  EXPECT_EQ(fixed_text(-2.25, 0), "-2");
  EXPECT_EQ(general_text(1.136408, 7), "1.136408");
  EXPECT_EQ(general_text(1e20, 7), "1E+20");
  EXPECT_EQ(general_text(0.196078431372549, 15), "0.196078431372549");
}

// A name typed without extension gets the chosen filter's; one typed with
// an extension, or a filter without a fixed one, leaves it as it is.
TEST(FileNames, ChosenFiltersExtensionGoesOnANameWithout) {
  const char* filter = "VCD file|*.vcd|CSV file|*.csv;*.txt|ALL FILES|*.*|Logs|log|";
  const struct {
    const char* path;
    std::size_t choice;
    const char* result;
  } cases[] = {
      {"/w/run1", 0, "/w/run1.vcd"},       {"/w/run1", 1, "/w/run1.csv"},
      {"/w/run1.CSV", 0, "/w/run1.CSV"},   {"/w/run1", 2, "/w/run1"},
      {"/w/run1", 3, "/w/run1"},           {"/w/run1", 7, "/w/run1"},
      {"/w.d/.run1", 1, "/w.d/.run1.csv"}, {"", 1, ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(with_chosen_extension(c.path, filter, c.choice), c.result) << c.path << c.choice;
  }
  EXPECT_EQ(file_extension("/w.d/Run1.VCD"), ".vcd");
  EXPECT_EQ(file_extension("/w.d/run1"), "");
}

}  // namespace
}  // namespace zenta

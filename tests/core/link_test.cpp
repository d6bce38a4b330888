// The link to the unit: one exchange and its failures, the driver's
// verdicts, a unit that is unplugged or stops answering, which ends the
// operation with one message, in the panel and on the command line, instead
// of a message box and a timeout per packet, and the trace of the
// exchanges; and the texts of numbers and file names.
#include "link/unit_link.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "cli_rig.h"
#include "common/file_names.h"
#include "common/number_text.h"
#include "fakes.h"
#include "image/hex_loader.h"
#include "link/trace_driver.h"
#include "link/unit.h"
#include "panel_rig.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::FakeHost;
using testing::PanelRig;
using testing::ScriptedDriver;
using Packet = std::array<std::uint8_t, 8>;

struct LinkFixture : ::testing::Test {
  ScriptedDriver driver;
  FakeHost host;
  UnitLink link{driver, host};
};

// One exchange after an earlier good reply: the status text, the box that
// opens, whether a read is made, and what the reply stores keep: the new
// reply after a success, the earlier one after a failure, while the reply
// buffer holds what the failed read left there.
TEST(UnitLink, ExchangeRows) {
  const struct {
    std::int32_t write_result, read_result;
    bool rcvusb;
    const char* status;
    const char* box;  // "": none
    int reads;
  } cases[] = {
      {8, 8, false, "Read OK!:", "", 1},
      {7, 8, false, "Write NG!:", "USB Write Error", 0},
      {-4, 8, false, "Write NG!:", "USB Write Error", 0},
      {8, 0, false, "Read NG!:", "USB Read Error", 1},
      {8, 9, false, "Read NG!:", "USB Read Error", 1},
      {8, 0, true, "Read NG!:", "Read Error", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.status + std::string(" ") + c.box);
    ScriptedDriver d;
    FakeHost h;
    UnitLink l{d, h};
    d.replies = {{'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'}, {0x12, 0x34, 0x00, 0x7F, 1, 2, 3, 4}};
    ASSERT_EQ(l.SENDCMD(0x3F), kLinkOk);
    const Packet before = l.RxPacket;
    d.reads = 0;
    d.write_results.push_back(c.write_result);
    d.read_results.push_back(c.read_result);
    d.failed_read_bytes = {9, 9, 9, 9, 9, 9, 9, 9};
    const bool ok = !*c.box;
    EXPECT_EQ(c.rcvusb ? l.RCVUSB() : l.SENDCMD(0x04, 0x04), ok ? kLinkOk : kLinkFailed);
    EXPECT_EQ(d.written.back()[0], c.rcvusb ? 0x3F : 0x04);  // RCVUSB only reads
    EXPECT_EQ(l.USBMSG(), c.status);
    EXPECT_EQ(h.boxes.size(), ok ? 0u : 1u);
    for (const auto& box : h.boxes) {
      EXPECT_EQ(box.text + " / " + box.title, c.box + std::string(" / USB ERROR"));
      EXPECT_EQ(box.icon, MessageIcon::kStop);
    }
    EXPECT_EQ(d.reads, c.reads);
    EXPECT_EQ(l.RxPacket, (ok ? Packet{0x12, 0x34, 0x00, 0x7F, 1, 2, 3, 4} : before));
    EXPECT_EQ(l.RxBuffer[0], !ok && c.reads == 1 ? 9 : l.RxPacket[0]);
    EXPECT_EQ(l.RxBuffer[7], !ok && c.reads == 1 ? 9 : l.RxPacket[7]);
    EXPECT_EQ(l.reply_text.head() + " " + std::to_string(l.reply_text.length()),
              ok ? "ZENTA 12 16" : "ZENTA 12 8");
    EXPECT_EQ(l.failures(), ok ? 0u : 1u);
  }
}

TEST_F(LinkFixture, ReplyTextKeepsTheFirstReplyAndCountsTheRestWithoutGrowing) {
  driver.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
  link.SENDCMD(0x3F);
  for (int i = 0; i < 10000; ++i) {
    driver.replies.push_back({'x', 'y', 'z', 0, 0, 0, 0, 0});
    link.SENDCMD(0x3B, 0);
  }
  EXPECT_EQ(link.reply_text.head(), "ZENTA 12");
  EXPECT_EQ(link.reply_text.length(), 8u * 10001u);
  EXPECT_LE(link.reply_text.head().capacity(), 32u);
}

// Each driver result's Japanese text, as the status box shows it, and its
// English reason; outside the table still a failure text, never an index
// past the table.
TEST(DriverResultText, TableAndCodesOutsideIt) {
  const std::tuple<int, const char*, const char*> results[] = {
      {0, "OK!", "success"},
      {-1, "NG(ドライバを既にオープンしている)", "the driver is already open"},
      {-2, "NG(ドライバオープンエラー)", "the driver could not be opened"},
      {-3, "NG(ドライバをオープンしていない)", "the driver is not open"},
      {-4, "NG(書込みエラー)", "a write error"},
      {-5, "NG(読込みエラー)", "a read error"},
      {-6, "NG(テストエラー)", "a test error"},
      {-7, "", "open error -7"},
      {-9, "NG(-9)", "open error -9"},
      {3, "NG(3)", "open error 3"},
  };
  for (const auto& [result, text, reason] : results) {
    EXPECT_EQ(driver_result_text(result) + " / " + driver_result_reason(result),
              std::string(text) + " / " + reason);
  }
}

TEST_F(LinkFixture, OpenShowsTheDriverVerdict) {
  EXPECT_EQ(link.open_driver(), 0);
  EXPECT_EQ(link.USBMSG(), "Driver Open:OK!");
  driver.open_result = -2;
  EXPECT_EQ(link.open_driver(), -2);
  EXPECT_EQ(link.USBMSG(), "Driver Open:NG(ドライバオープンエラー)");
}

class ConditionDriver : public ScriptedDriver {
 public:
  UnitCondition said = UnitCondition::kAnswering;
  UnitCondition condition() const override { return said; }
};

std::deque<std::int32_t> results(const char* text) {
  std::deque<std::int32_t> all;
  std::istringstream in(text);
  for (std::int32_t result; in >> result;) all.push_back(result);
  return all;
}

TEST(LinkLoss, ConsecutiveFailuresAndAGoneUnitEndTheLink) {
  const std::string unplugged = link_loss_text(LinkLoss::kUnplugged);
  const std::string silent = link_loss_text(LinkLoss::kStoppedAnswering);
  const struct {
    const char* name;
    const char* writes;  // results of the driver's writes and reads, in turn; 8 thereafter
    const char* reads;
    UnitCondition condition;
    int sends;
    const char* boxes;  // R read error, W write error, U unplugged, S stopped answering
    LinkLoss loss;
    std::size_t reached;  // packets the driver saw
    std::uint64_t failures;
    bool exact = false;  // the documented link: every exchange tried and said
  } cases[] = {
      {"a single failure is reported as ever", "", "0 8", UnitCondition::kAnswering, 2, "R",
       LinkLoss::kNone, 2, 1},
      {"a success between failures starts the count again", "", "0 0 8 0 0 8",
       UnitCondition::kNotAnswering, 6, "RR", LinkLoss::kNone, 6, 4},
      {"three in a row: one loss message, nothing sent after", "8 0 0", "0",
       UnitCondition::kNotAnswering, 6, "RS", LinkLoss::kStoppedAnswering, 3, 6},
      {"a gone unit: the loss message instead of the failure's", "-1", "", UnitCondition::kGone, 5,
       "U", LinkLoss::kUnplugged, 1, 5},
      {"exact: every exchange is tried and each failure said", "8 0 0", "0", UnitCondition::kGone,
       4, "RWW", LinkLoss::kNone, 4, 3, true},
      {"a write failure counts like a read failure", "0 8", "", UnitCondition::kAnswering, 2, "W",
       LinkLoss::kNone, 2, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ConditionDriver driver;
    driver.said = c.condition;
    driver.write_results = results(c.writes);
    driver.read_results = results(c.reads);
    testing::FakeHost host;
    UnitLink link(driver, host);
    link.stop_on_loss = !c.exact;
    for (int i = 0; i < c.sends; ++i) link.SENDCMD(0x32);
    std::vector<std::string> boxes;
    for (const char* box = c.boxes; *box; ++box) {
      boxes.push_back(*box == 'R'   ? "USB Read Error"
                      : *box == 'W' ? "USB Write Error"
                      : *box == 'U' ? unplugged
                                    : silent);
    }
    std::vector<std::string> shown;
    for (const auto& box : host.boxes) shown.push_back(box.text);
    EXPECT_EQ(shown, boxes);
    EXPECT_EQ(link.loss(), c.loss);
    EXPECT_EQ(driver.written.size(), c.reached);
    EXPECT_EQ(link.failures(), c.failures);

    // The next operation tries the unit again.
    link.clear_loss();
    driver.said = UnitCondition::kAnswering;
    EXPECT_EQ(link.SENDCMD(0x32), kLinkOk);
    EXPECT_EQ(driver.written.size(), c.reached + 1);
  }
}

// The documented link reports every failed exchange; the loss rule belongs
// to the checked mode, whose write ends at the next pause with one message.
// Each later operation tries again and says so once.
TEST(LinkLoss, AFullWriteEndsAtTheNextPauseWithOneMessage) {
  for (const bool unplug : {true, false}) {
    SCOPED_TRACE(unplug ? "unplugged" : "silent");
    PanelRig rig("16F877A", 1, false);
    blank_program_image(rig.state);
    for (int w = 0; w < 0x2000; ++w) rig.state.set_word(w, 0x2800 + (w & 0x7FF));
    rig.state.DataLoaded = 1;
    const int at = static_cast<int>(rig.opened.link().exchanges()) + 500;
    unplug ? rig.unit.unplug_at(at) : rig.unit.fall_silent_at(at);
    const CommandResult result = rig.form.WriteButton_Click();
    const std::vector<std::string> boxes =
        unplug ? std::vector<std::string>{link_loss_text(LinkLoss::kUnplugged)}
               : std::vector<std::string>{"USB Write Error",
                                          link_loss_text(LinkLoss::kStoppedAnswering)};
    EXPECT_EQ(rig.box_texts(), boxes);
    // The exchanges the unit saw, the failed ones included.
    EXPECT_EQ(rig.unit.trace().size(), unplug ? 500u : 502u);
    EXPECT_TRUE(result.stopped);
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(rig.form.view().NotesLabel, kStoppedText);
    EXPECT_FALSE(rig.form.view().busy);

    rig.host.boxes.clear();
    rig.state.WaitTicks = 0;
    rig.form.ERASEButton_Click();
    EXPECT_EQ(rig.host.boxes.size(), unplug ? 1u : 2u);
  }
}

TEST(LinkLoss, TheCommandLineNamesTheLossOnce) {
  for (const bool unplug : {true, false}) {
    cli::testing::SimRun run("16F877A");
    unplug ? run.unit->unplug_at(300) : run.unit->fall_silent_at(300);
    const cli::testing::Outcome outcome = run({"--last", "1FFF", "read"});
    EXPECT_EQ(outcome.status, cli::kExitFailed);
    EXPECT_NE(outcome.err.find(unplug ? "the unit was unplugged during the command"
                                      : "the unit stopped answering during the command"),
              std::string::npos)
        << outcome.err;
    int lines = 0;
    for (std::size_t at = outcome.err.find("USB ERROR:"); at != std::string::npos;
         at = outcome.err.find("USB ERROR:", at + 1)) {
      ++lines;
    }
    EXPECT_EQ(lines, unplug ? 1 : 2) << outcome.err;
    EXPECT_LT(run.unit->trace().size(), 305u);
  }
}

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
  constexpr std::int64_t kNone = -1LL << 40;  // no number at all
  const std::pair<const char*, std::int64_t> cases[] = {{"", 0},
                                                        {"x", 0},
                                                        {"3G", 3},
                                                        {"1fff", 0x1FFF},
                                                        {"FFFF", -1},
                                                        {"8000", -32768},
                                                        {"7FFF", 32767},
                                                        {"12345", 0x12345},
                                                        {"FFFFFFFF", -1},
                                                        {"0001FFFF", 0x1FFFF},
                                                        {"123456789", kNone},
                                                        {"3F3b zz", 0x3F3B}};
  for (const auto& [text, value] : cases)
    EXPECT_EQ(read_hex(text) ? *read_hex(text) : kNone, value) << text;
  EXPECT_EQ(read_hex16("FFFF"), std::optional<std::int16_t>(-1));
  EXPECT_EQ(read_hex16("12345"), std::nullopt);
  EXPECT_EQ(read_hex16("00002000"), std::optional<std::int16_t>(0x2000));
}

TEST(NumberText, LeadingNumberAndRounding) {
  const std::pair<const char*, double> cases[] = {
      {"6", 6},       {"-1", -1},          {"abc", 0},           {"", 0},       {" 7", 7},
      {"2.5x", 2.5},  {"1 2", 12},         {"1e2", 100},         {"&H10", 16},  {"4.4", 4.4},
      {"-", 0},       {"3e", 3},           {"+2.5e1", 25},       {"-.5", -0.5}, {"1e-999", 0},
      {"-1e-999", 0}, {"1e999", HUGE_VAL}, {"-1e999", -HUGE_VAL}};
  for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(leading_number(text), value) << text;
  for (const auto& [value, rounded] : {std::pair{2.5, 2}, {3.5, 4}, {20.5, 20}, {-0.5, 0}}) {
    EXPECT_EQ(round_half_even(value), rounded) << value;
  }
  for (const auto& [value, text] :
       {std::pair{0, "0"}, {0x1FFF, "1FFF"}, {0x10A0, "10A0"}, {-1, "FFFFFFFF"}}) {
    EXPECT_EQ(hex_text(value), text);
  }
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

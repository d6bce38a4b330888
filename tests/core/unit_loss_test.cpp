// A unit that is unplugged or stops answering ends the operation with one
// message, in the panel and on the command line, instead of a message box
// and a timeout per packet.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "cli_rig.h"
#include "fakes.h"
#include "image/hex_loader.h"
#include "link/unit_link.h"
#include "panel_rig.h"
#include "scripted_driver.h"

namespace zenta {
namespace {

using testing::PanelRig;
using testing::ScriptedDriver;

class ConditionDriver : public ScriptedDriver {
 public:
  UnitCondition said = UnitCondition::kAnswering;
  UnitCondition condition() const override { return said; }
};

TEST(LinkLoss, ConsecutiveFailuresAndAGoneUnitEndTheLink) {
  constexpr int kFail = 0;
  constexpr int kOk = 8;
  const std::string read_error = "USB Read Error";
  const std::string write_error = "USB Write Error";
  const std::string unplugged = link_loss_text(LinkLoss::kUnplugged);
  const std::string silent = link_loss_text(LinkLoss::kStoppedAnswering);
  const struct {
    const char* name;
    std::vector<std::int32_t> writes, reads;
    UnitCondition condition;
    int sends;
    std::vector<std::string> boxes;
    LinkLoss loss;
    std::size_t reached;  // packets the driver saw
    std::uint64_t failures;
    bool exact = false;  // the documented link: every exchange tried and said
  } cases[] = {
      {"a single failure is reported as ever",
       {},
       {kFail, kOk},
       UnitCondition::kAnswering,
       2,
       {read_error},
       LinkLoss::kNone,
       2,
       1},
      {"a success between failures starts the count again",
       {},
       {kFail, kFail, kOk, kFail, kFail, kOk},
       UnitCondition::kNotAnswering,
       6,
       {read_error, read_error},
       LinkLoss::kNone,
       6,
       4},
      {"three in a row: one loss message, nothing sent after",
       {kOk, kFail, kFail},
       {kFail},
       UnitCondition::kNotAnswering,
       6,
       {read_error, silent},
       LinkLoss::kStoppedAnswering,
       3,
       6},
      {"a gone unit: the loss message instead of the failure's",
       {-1},
       {},
       UnitCondition::kGone,
       5,
       {unplugged},
       LinkLoss::kUnplugged,
       1,
       5},
      {"exact: every exchange is tried and each failure said",
       {kOk, kFail, kFail},
       {kFail},
       UnitCondition::kGone,
       4,
       {read_error, write_error, write_error},
       LinkLoss::kNone,
       4,
       3,
       true},
      {"a write failure counts like a read failure",
       {kFail, kOk},
       {},
       UnitCondition::kAnswering,
       2,
       {write_error},
       LinkLoss::kNone,
       2,
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ConditionDriver driver;
    driver.said = c.condition;
    driver.write_results.assign(c.writes.begin(), c.writes.end());
    driver.read_results.assign(c.reads.begin(), c.reads.end());
    testing::FakeHost host;
    UnitLink link(driver, host);
    link.stop_on_loss = !c.exact;
    for (int i = 0; i < c.sends; ++i) link.SENDCMD(0x32);
    std::vector<std::string> boxes;
    for (const auto& box : host.boxes) boxes.push_back(box.text);
    EXPECT_EQ(boxes, c.boxes);
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

enum class Fault { kUnplug, kSilent };

TEST(LinkLoss, AFullWriteEndsAtTheNextPauseWithOneMessage) {
  const struct {
    Fault fault;
    std::vector<std::string> boxes;
    std::size_t reached;  // exchanges the unit saw, the failed ones included
  } cases[] = {
      {Fault::kUnplug, {link_loss_text(LinkLoss::kUnplugged)}, 500},
      {Fault::kSilent, {"USB Write Error", link_loss_text(LinkLoss::kStoppedAnswering)}, 502},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault == Fault::kUnplug ? "unplugged" : "silent");
    // The documented link reports every failed exchange: the loss rule
    // belongs to the checked mode.
    PanelRig rig("16F877A", 1, false);
    blank_program_image(rig.state);
    for (int w = 0; w < 0x2000; ++w) rig.state.set_word(w, 0x2800 + (w & 0x7FF));
    rig.state.DataLoaded = 1;
    const int at = static_cast<int>(rig.opened.link().exchanges()) + 500;
    if (c.fault == Fault::kUnplug) {
      rig.unit.unplug_at(at);
    } else {
      rig.unit.fall_silent_at(at);
    }
    const CommandResult result = rig.form.WriteButton_Click();
    EXPECT_EQ(rig.box_texts(), c.boxes);
    EXPECT_EQ(rig.unit.trace().size(), c.reached);
    EXPECT_TRUE(result.stopped);
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(rig.form.view().NotesLabel, kStoppedText);
    EXPECT_FALSE(rig.form.view().busy);

    // Each later operation tries again and says so once.
    rig.host.boxes.clear();
    rig.state.WaitTicks = 0;
    rig.form.ERASEButton_Click();
    EXPECT_EQ(rig.host.boxes.size(), c.fault == Fault::kUnplug ? 1u : 2u);
  }
}

TEST(LinkLoss, TheCommandLineNamesTheLossOnce) {
  const struct {
    const char* unit_text;
    const char* says;
    int usb_error_lines;
  } cases[] = {
      {"unplugged", "the unit was unplugged during the command", 1},
      {"silent", "the unit stopped answering during the command", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.unit_text);
    cli::testing::SimRun run("16F877A");
    if (std::string(c.unit_text) == "unplugged") {
      run.unit->unplug_at(300);
    } else {
      run.unit->fall_silent_at(300);
    }
    const cli::testing::Outcome outcome = run({"--last", "1FFF", "read"});
    EXPECT_EQ(outcome.status, cli::kExitFailed);
    EXPECT_NE(outcome.err.find(c.says), std::string::npos) << outcome.err;
    int lines = 0;
    for (std::size_t at = outcome.err.find("USB ERROR:"); at != std::string::npos;
         at = outcome.err.find("USB ERROR:", at + 1)) {
      ++lines;
    }
    EXPECT_EQ(lines, c.usb_error_lines) << outcome.err;
    EXPECT_LT(run.unit->trace().size(), 305u);
  }
}

}  // namespace
}  // namespace zenta

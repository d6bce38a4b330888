// What keeps a long operation on a fast link fast: paced repaints, a viewer
// snapshot compared only after a change, a trace without a flush per line.
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "common/event_pacer.h"
#include "fakes.h"
#include "image/buffer_view.h"
#include "link/sim/sim_unit.h"
#include "link/trace_driver.h"
#include "link/unit_link.h"
#include "platform/host_rules.h"

namespace zenta {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

TEST(EventPacer, DueAtTheStartThenOncePerInterval) {
  const int t = static_cast<int>(kRepaintInterval.count());
  // No more than about sixty renders a second, and a moving bar.
  ASSERT_GE(t, 16'666);
  ASSERT_LE(t, 50'000);
  // The times of the calls, whether each is due, and the call a reset precedes.
  using Case = std::tuple<const char*, std::vector<int>, std::vector<bool>, int>;
  const Case cases[] = {
      {"first call", {0}, {true}, -1},
      {"inside the interval", {0, 1, t - 1}, {true, false, false}, -1},
      {"at the interval", {0, t, t + t / 2, 2 * t}, {true, true, false, true}, -1},
      {"from the last yes", {0, t * 3 / 5, t * 6 / 5, t * 9 / 5}, {true, false, true, false}, -1},
      {"a reset makes the next due", {0, 10, 20}, {true, true, false}, 1},
  };
  for (const auto& [name, at_us, due, reset_before] : cases) {
    SCOPED_TRACE(name);
    steady_clock::time_point now{};
    EventPacer pacer(kRepaintInterval, [&] { return now; });
    for (std::size_t i = 0; i < at_us.size(); ++i) {
      now = steady_clock::time_point{} + microseconds(1'000'000 + at_us[i]);
      if (static_cast<int>(i) == reset_before) pacer.reset();
      EXPECT_EQ(pacer.due(), due[i]) << "call " << i;
    }
  }
}

TEST(BufferViewRevision, MovesOnlyWhenSomethingShownChanges) {
  BufferViewModel view = make_eeprom_view();
  view.build(16);
  const auto start = view.revision();
  view.set_value(1, 1, -1);  // what the cell already holds
  EXPECT_EQ(view.revision(), start);
  view.set_value(1, 1, 0x42);
  EXPECT_EQ(view.revision(), start + 1);
  view.set_value(1, 1, 0x42);
  view.set_value(0, 1, 0x43);  // the header row holds no value
  EXPECT_EQ(view.revision(), start + 1);
  view.build(16);
  EXPECT_GT(view.revision(), start + 1);
}

// A stream that counts how often it is flushed.
class CountingBuffer : public std::stringbuf {
 public:
  int syncs = 0;

 protected:
  int sync() override {
    ++syncs;
    return std::stringbuf::sync();
  }
};

TEST(TraceDriver, FlushesInBatchesAtFailuresAndAtClose) {
  sim::SimUnit unit("16F877A");
  CountingBuffer buffer;
  std::ostream out(&buffer);
  TraceDriver trace(unit, out);
  testing::FakeHost host;
  UnitLink link(trace, host);
  for (int i = 0; i < kTraceFlushLines - 1; ++i) link.SENDCMD(0x32);
  EXPECT_EQ(buffer.syncs, 0);
  link.SENDCMD(0x32);
  EXPECT_EQ(buffer.syncs, 1);
  unit.fail_read_at(kTraceFlushLines + 2);
  link.SENDCMD(0x32);
  EXPECT_EQ(buffer.syncs, 1);
  link.SENDCMD(0x32);  // the failed one is on disk at once
  EXPECT_EQ(buffer.syncs, 2);
  link.SENDCMD(0x32);
  trace.close();
  EXPECT_EQ(buffer.syncs, 3);
  std::istringstream lines(buffer.str());
  int count = 0;
  for (std::string line; std::getline(lines, line);) ++count;
  EXPECT_EQ(count, kTraceFlushLines + 3);
}

TEST(DialogStart, RememberedFolderAndFilterWhereTheyStillApply) {
  const std::vector<std::string> filters = {"Source Files (*.asm *.c)", "HEX FILES (*.hex)"};
  const auto exists = [](const std::string& folder) { return folder == "/home/u/pic"; };
  // The remembered folder and filter; the folder and filter the dialog starts with.
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"/home/u/pic", "HEX FILES (*.hex)", "/home/u/pic", "HEX FILES (*.hex)"},
      {"", "", "/cwd", ""},
      {"/gone", "HEX FILES (*.hex)", "/cwd", "HEX FILES (*.hex)"},
      {"/home/u/pic", "TEXT (*.txt)", "/home/u/pic", ""},  // another dialog's filter
  };
  for (const auto& [folder, filter, start_folder, start_filter] : cases) {
    const DialogStart start = dialog_start(folder, filter, filters, "/cwd", exists);
    EXPECT_EQ(std::tie(start.folder, start.filter), std::tie(start_folder, start_filter)) << folder;
  }
  EXPECT_NE(dialog_folder_key("OPEN"), dialog_folder_key("SAVE"));
}

}  // namespace
}  // namespace zenta

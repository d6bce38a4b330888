// A program read of a 16F877A through the panel's form, on a simulated unit
// whose transfers take 125 us each (a full-speed USB link), against the same
// read with no window at all. The host is Qt-less: it counts the pauses that
// repaint (the window renders before it lets events run, which covers the
// changes queued since), and each repaint costs what the program viewer's
// snapshot comparison costs. Counters: repaints and the read's time over
// the windowless read's, in percent.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

#include "common/number_text.h"
#include "core/fakes.h"
#include "link/latency_driver.h"
#include "link/sim/sim_unit.h"
#include "panel/main_form.h"

namespace zenta {
namespace {

constexpr std::chrono::microseconds kLatency{125};
constexpr int k16F87xAEntry = 1;

class RepaintCountingHost : public testing::FakeHost {
 public:
  explicit RepaintCountingHost(const BufferViewModel& viewer)
      : viewer_(viewer), shown_(static_cast<std::size_t>((viewer.rows() - 1) * 16), -1) {}

  void process_events() override {
    testing::FakeHost::process_events();
    repaint();
  }
  int repaints = 0;

 private:
  void repaint() {
    ++repaints;
    for (int r = 1; r < viewer_.rows(); ++r) {
      for (int c = 1; c <= 16; ++c) {
        auto& shown = shown_[static_cast<std::size_t>((r - 1) * 16 + c - 1)];
        const std::int32_t value = viewer_.value(r, c);
        if (shown != value) shown = value;
      }
    }
    benchmark::DoNotOptimize(shown_.data());
  }

  const BufferViewModel& viewer_;
  std::vector<std::int32_t> shown_;
};

// The panel's parts around a latency driver, the unit started and the
// 16F87xA entry chosen, as the composition root makes them.
struct Panel {
  Panel()
      : driver(std::make_unique<sim::SimUnit>("16F877A"), kLatency),
        host(program_view),
        unit(driver, host),
        form({unit, host, store, state, tools, program_view, eeprom_view}) {
    store.save(kSettingsApp, kPanelSection, kExactKey, "1");
    form.Form_Load();
    form.PICsel_Click(k16F87xAEntry);
  }
  MemorySettingsStore store;
  ProgrammerState state;
  ToolSettings tools;
  BufferViewModel program_view = make_program_view();
  BufferViewModel eeprom_view = make_eeprom_view();
  LatencyDriver driver;
  RepaintCountingHost host;
  Unit unit;
  MainForm form;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void BM_PanelProgramReadAt125us(benchmark::State& state) {
  Panel panel;
  double panel_seconds = 0;
  double bare_seconds = 0;
  int repaints = 0;
  for (auto _ : state) {
    // The same read without a window: the link's own time.
    {
      SilentReport silent;
      ChipOperations ops(panel.unit, panel.state, silent);
      Unit::Operation operation(panel.unit);
      const auto start = std::chrono::steady_clock::now();
      run_read(ops, read_hex16(panel.form.view().LastAddrText));
      bare_seconds += seconds_since(start);
    }
    const int before = panel.host.repaints;
    const auto start = std::chrono::steady_clock::now();
    panel.form.READ_Click();
    panel_seconds += seconds_since(start);
    repaints += panel.host.repaints - before;
  }
  const double runs = static_cast<double>(state.iterations());
  state.counters["repaints"] = repaints / runs;
  state.counters["over_link_pct"] = 100.0 * (panel_seconds / bare_seconds - 1.0);
  state.counters["read_s"] = panel_seconds / runs;
}
BENCHMARK(BM_PanelProgramReadAt125us)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace zenta

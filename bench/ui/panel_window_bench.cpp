// A program read of a 16F877A through the panel's real main window (Qt,
// offscreen), on a simulated unit whose transfers take 125 us each (a
// full-speed USB link), against the same read with no window. Once with
// the program viewer DATAVIEW closed and once open. The reads alternate
// with windowless ones, so drifts of the machine fall on both alike.
// Counters: over_link_pct, the windowed read's time over the windowless
// one's, in percent; cpu_over_link_pct, the processor time the window adds,
// in percent of the windowless read's time (steady on a busy machine).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>

#include "common/number_text.h"
#include "common/settings_store.h"
#include "link/latency_driver.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "panel/main_form.h"
#include "panel/ui/panel_windows.h"
#include "platform/qt_host.h"
#include "programming/operation_report.h"

namespace zenta {
namespace {

constexpr std::chrono::microseconds kLatency{125};
constexpr int k16F87xAEntry = 1;

// The panel as its composition root makes it, around a latency driver.
struct Panel {
  explicit Panel(bool viewer_open)
      : driver(std::make_unique<sim::SimUnit>("16F877A"), kLatency),
        unit(driver, host),
        parts{unit, host, store, state, tools, program_view, eeprom_view} {
    store.save(kSettingsApp, kPanelSection, kExactKey, "1");
    form = std::make_unique<MainForm>(parts);
    form->Form_Load();
    windows = std::make_unique<PanelWindows>(*form, parts, host, true);
    windows->main_window().show();
    form->PICsel_Click(k16F87xAEntry);
    if (viewer_open) host.show_window(WindowId::kDataView);
    QApplication::processEvents();
    // Times the renders the operation's pauses make.
    render = std::move(host.before_events);
    host.before_events = [this] {
      const auto start = std::chrono::steady_clock::now();
      render();
      render_seconds +=
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      ++renders;
    };
  }
  ~Panel() {
    host.before_events = nullptr;
    windows.reset();
    form.reset();
  }
  LatencyDriver driver;
  QtHost host;
  MemorySettingsStore store;
  ProgrammerState state;
  ToolSettings tools;
  BufferViewModel program_view = make_program_view();
  BufferViewModel eeprom_view = make_eeprom_view();
  Unit unit;
  PanelParts parts;
  std::unique_ptr<MainForm> form;
  std::unique_ptr<PanelWindows> windows;
  std::function<void()> render;
  double render_seconds = 0;
  int renders = 0;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The processor time this thread has used: unlike the elapsed time, it does
// not grow when other programs take the processor, so on a busy machine it
// shows what the window costs.
double thread_seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void BM_WindowProgramReadAt125us(benchmark::State& state) {
  Panel panel(state.range(0) != 0);
  double panel_seconds = 0;
  double bare_seconds = 0;
  double extra_cpu = 0;  // the window's processor time over the windowless read's
  for (auto _ : state) {
    {
      SilentReport silent;
      ChipOperations ops(panel.unit, panel.state, silent);
      Unit::Operation operation(panel.unit);
      const auto start = std::chrono::steady_clock::now();
      const double cpu_start = thread_seconds();
      run_read(ops, read_hex16(panel.form->view().LastAddrText));
      extra_cpu -= thread_seconds() - cpu_start;
      bare_seconds += seconds_since(start);
    }
    const auto start = std::chrono::steady_clock::now();
    const double cpu_start = thread_seconds();
    panel.form->READ_Click();
    // What the read queued is painted before the panel is idle again.
    QApplication::processEvents();
    extra_cpu += thread_seconds() - cpu_start;
    panel_seconds += seconds_since(start);
  }
  const double runs = static_cast<double>(state.iterations());
  state.counters["over_link_pct"] = 100.0 * (panel_seconds / bare_seconds - 1.0);
  state.counters["read_s"] = panel_seconds / runs;
  state.counters["cpu_over_link_pct"] = 100.0 * extra_cpu / bare_seconds;
  state.counters["link_s"] = bare_seconds / runs;
  state.counters["renders"] = panel.renders / runs;
  state.counters["render_ms"] = 1000 * panel.render_seconds / runs;
}
BENCHMARK(BM_WindowProgramReadAt125us)
    ->ArgName("viewer")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace
}  // namespace zenta

int main(int argc, char** argv) {
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

// Exchanges per second through the link on the simulated unit: the ceiling
// of every chip operation when no USB latency is in the way.
#include <benchmark/benchmark.h>

#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit_link.h"
#include "panel/host.h"

namespace {

class QuietHost : public zenta::Host {
 public:
  void message_box(const std::string&, const std::string&, zenta::MessageIcon) override {}
  void process_events() override {}
  void beep() override {}
  std::string open_file_dialog(const std::string&) override { return {}; }
  std::string save_file_dialog(const std::string&) override { return {}; }
  bool start_program(const std::string&, bool) override { return false; }
  bool open_url(const std::string&) override { return false; }
  void show_window(zenta::WindowId) override {}
  bool window_visible(zenta::WindowId) const override { return false; }
  std::string current_folder() const override { return {}; }
};

// The program read's pair: four words, then the address step, in
// programming mode on a powered 16F877A.
void BM_SendcmdReadMix(benchmark::State& state) {
  zenta::sim::SimUnit unit("16F877A");
  QuietHost host;
  zenta::UnitLink link(unit, host);
  link.SENDCMD(zenta::UNIT_VCC, 1);
  link.SENDCMD(zenta::UNIT_MCLR_LEVEL, zenta::kMclr0V);
  link.SENDCMD(zenta::UNIT_PGM_LINES, 1);
  link.SENDCMD(zenta::UNIT_MCLR_LEVEL, zenta::kMclrVpp);
  for (auto _ : state) {
    benchmark::DoNotOptimize(link.SENDCMD(zenta::ICSP_READ_DATA, 4));
    benchmark::DoNotOptimize(link.SENDCMD(zenta::ICSP_INC_ADDR, 0));
    // The trace keeps every exchange; emptying it keeps its storage, so the
    // loop measures exchanges and not the growth of one vector.
    if (unit.trace().size() >= 4096) unit.clear_trace();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * 2);
}
BENCHMARK(BM_SendcmdReadMix);

}  // namespace

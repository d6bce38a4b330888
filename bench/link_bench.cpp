// Exchanges per second through the link on the simulated unit: the ceiling
// of every chip operation when no USB latency is in the way.
#include <benchmark/benchmark.h>

#include "core/fakes.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit_link.h"

namespace {

// The program read's pair: four words, then the address step, in
// programming mode on a powered 16F877A.
void BM_SendcmdReadMix(benchmark::State& state) {
  zenta::sim::SimUnit unit("16F877A");
  zenta::testing::FakeHost host;
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

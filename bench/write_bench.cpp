// A full 16F877A write (erase, write, verify, configuration word) of an 8K
// image on the simulated unit, as the WRITE button runs it.
// Reports the exchanges per write and the host time per exchange.
#include <benchmark/benchmark.h>

#include "core/fakes.h"
#include "link/sim/sim_unit.h"
#include "programming/commands.h"

namespace zenta {
namespace {

// What the protocol gives for an 8K image without blank rows: LED and supply
// on and off plus the final 5 V level, the chip erase, 1024 rows of eighteen
// exchanges, the verify's 2048 reads and 2047 address steps, each with
// programming mode entered (3) and left (2), and the seventeen exchanges of
// the configuration word.
constexpr std::uint64_t kProtocolExchanges =
    5 + (3 + 1 + 2) + (3 + 1024 * 18 + 2) + (3 + 2048 + 2047 + 2) + 17;

void BM_Full16F877AWrite(benchmark::State& bench) {
  std::uint64_t exchanges = 0;
  for (auto _ : bench) {
    bench.PauseTiming();
    sim::SimUnit unit("16F877A");
    zenta::testing::FakeHost host;
    Unit opened(unit, host);
    opened.open();
    ProgrammerState state;
    SilentReport report;
    ChipOperations ops(opened, state, report);
    select_device_parameters(state, 1);
    // Every word in use and none blank, so every row is programmed.
    for (int w = 0; w < 0x2000; ++w) state.set_word(w, (w * 7 + 1) % 0x3FFF);
    state.DataLoaded = 1;
    const std::uint64_t before = opened.link().exchanges();
    bench.ResumeTiming();

    // The LAST box as the device selection leaves it: the entry's last address.
    const CommandResult result = run_write(ops, state.LastAddress);

    bench.PauseTiming();
    exchanges = opened.link().exchanges() - before;
    if (exchanges != kProtocolExchanges) {
      bench.SkipWithError("not the protocol's exchange count");
      break;
    }
    if (!host.boxes.empty() || !result.ok() || unit.program_word(0x1FFE) != state.word(0x1FFE)) {
      bench.SkipWithError("the write did not go through");
      break;
    }
    bench.ResumeTiming();
  }
  bench.counters["exchanges"] = static_cast<double>(exchanges);
  bench.counters["time_per_exchange"] = benchmark::Counter(
      static_cast<double>(exchanges),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Full16F877AWrite)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zenta

// The program viewer's fill and the reading of every cell text, for an
// 8192-word device: what the window pays when a read or a HEX load refills
// an open DATAVIEW and the whole table is drawn.
#include <benchmark/benchmark.h>

#include <memory>

#include "image/buffer_view.h"
#include "image/programmer_state.h"

namespace {

std::unique_ptr<zenta::ProgrammerState> full_device() {
  auto state = std::make_unique<zenta::ProgrammerState>();
  state->ProgramSize = 0x2000;
  for (int w = 0; w < 0x2000; ++w) state->set_word(w, (w * 37) & 0x3FFF);
  return state;
}

void BM_FillProgramView(benchmark::State& bench) {
  const auto state = full_device();
  zenta::BufferViewModel view = zenta::make_program_view();
  view.build(state->ProgramSize / 16);
  for (auto _ : bench) {
    zenta::FILL_PROG_VIEW(view, *state);
    benchmark::DoNotOptimize(view.value(512, 16));
  }
  bench.SetItemsProcessed(bench.iterations() * 0x2000);
}
BENCHMARK(BM_FillProgramView);

void BM_ReadAllProgramCells(benchmark::State& bench) {
  const auto state = full_device();
  zenta::BufferViewModel view = zenta::make_program_view();
  view.build(state->ProgramSize / 16);
  zenta::FILL_PROG_VIEW(view, *state);
  for (auto _ : bench) {
    std::size_t characters = 0;
    for (int r = 0; r < view.rows(); ++r) {
      for (int c = 0; c < view.columns(); ++c) characters += view.cell(r, c).size();
    }
    benchmark::DoNotOptimize(characters);
  }
  bench.SetItemsProcessed(bench.iterations() * view.rows() * view.columns());
}
BENCHMARK(BM_ReadAllProgramCells);

// Fill and read together: one refill of an open viewer drawn in full.
void BM_FillAndReadProgramView(benchmark::State& bench) {
  const auto state = full_device();
  zenta::BufferViewModel view = zenta::make_program_view();
  view.build(state->ProgramSize / 16);
  for (auto _ : bench) {
    zenta::FILL_PROG_VIEW(view, *state);
    std::size_t characters = 0;
    for (int r = 1; r <= 512; ++r) {
      for (int c = 1; c <= 16; ++c) characters += view.cell(r, c).size();
    }
    benchmark::DoNotOptimize(characters);
  }
}
BENCHMARK(BM_FillAndReadProgramView)->Unit(benchmark::kMicrosecond);

}  // namespace

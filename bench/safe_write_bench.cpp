// What the safe-programming checks cost and save: a sixteen-word program
// with its configuration word, as gpasm writes it, loaded and written
// through the panel's form, documented sequence against checked write.
// Reports the exchanges of the write and of its pre-flight.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "core/fakes.h"
#include "image/hex_writer.h"
#include "link/sim/sim_unit.h"
#include "panel/main_form.h"

namespace zenta {
namespace {

struct Case {
  const char* chip;
  int entry;
  int config;
};
constexpr Case kCases[] = {{"16F877A", 1, 0x3F32}, {"16F84A", 3, 0x3FF1}, {"12F675", 6, 0x31C4}};

void BM_SixteenWordWrite(benchmark::State& bench) {
  const Case& c = kCases[bench.range(0)];
  const bool exact = bench.range(1) != 0;
  const std::string hex =
      (std::filesystem::temp_directory_path() / ("zenta-bench-" + std::string(c.chip) + ".hex"))
          .string();
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w)
    words.push_back({w, static_cast<std::uint16_t>(0x2800 + w)});
  words.push_back({0x2007, static_cast<std::uint16_t>(c.config)});
  if (!write_inhx8m_file(hex, words)) bench.SkipWithError("cannot write the image");
  std::uint64_t exchanges = 0, preflight = 0;
  for (auto _ : bench) {
    bench.PauseTiming();
    sim::SimUnit unit(c.chip);
    testing::FakeHost host;
    MemorySettingsStore store;
    store.save(kSettingsApp, kPanelSection, kExactKey, exact ? "1" : "0");
    ProgrammerState state;
    ToolSettings tools;
    BufferViewModel program_view = make_program_view(), eeprom_view = make_eeprom_view();
    Unit opened(unit, host);
    MainForm form({opened, host, store, state, tools, program_view, eeprom_view});
    form.Form_Load();
    form.PICsel_Click(c.entry);
    host.open_answers = {hex};
    form.F_OpenButton_Click();
    unit.clear_trace();
    const std::uint64_t before = opened.link().exchanges();
    bench.ResumeTiming();

    form.WriteButton_Click();

    bench.PauseTiming();
    exchanges = opened.link().exchanges() - before;
    // The pre-flight ends where the documented write begins: LED on.
    preflight = 0;
    for (const auto& exchange : unit.trace()) {
      if (exchange.tx[0] == 0x3B && exchange.tx[1] == 1) break;
      ++preflight;
    }
    if (!exact && !host.boxes.empty()) bench.SkipWithError(host.boxes.front().text.c_str());
    bench.ResumeTiming();
  }
  bench.SetLabel(std::string(c.chip) + (exact ? " exact" : " checked"));
  bench.counters["exchanges"] = static_cast<double>(exchanges);
  bench.counters["preflight"] = static_cast<double>(preflight);
}
BENCHMARK(BM_SixteenWordWrite)
    ->ArgsProduct({{0, 1, 2}, {1, 0}})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
}  // namespace zenta

// Two simulated units with a 1 ms latency per transfer, written at once by
// the command line, against one: the parallel run should cost little more
// than a single one. Reports the ratio of the two times.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli.h"
#include "image/hex_writer.h"

namespace zenta {
namespace {

// 64 words: a short write (about 300 exchanges) keeps the run in seconds.
std::string image_file() {
  static const std::string path = [] {
    const auto file = std::filesystem::temp_directory_path() / "zenta-parallel-bench.hex";
    std::vector<HexWord> words;
    for (std::uint16_t w = 0; w < 64; ++w) words.push_back({w, static_cast<std::uint16_t>(w * 3)});
    std::ofstream(file) << format_inhx8m(words);
    return file.string();
  }();
  return path;
}

double write_seconds(int units) {
  std::vector<std::string> args;
  for (int i = 0; i < units; ++i) args.insert(args.end(), {"--unit", "sim:16F628A,latency=1ms"});
  args.insert(args.end(), {"--device", "16F628A", "-q", "write", image_file()});
  const cli::ParseResult parsed = cli::parse_arguments(args);
  std::ostringstream out, err;
  const auto start = std::chrono::steady_clock::now();
  const int status = cli::run(parsed.options, out, err, false);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return status == cli::kExitOk ? seconds : -1;
}

void BM_TwoUnitsInParallel(benchmark::State& bench) {
  double one = 0, two = 0;
  for (auto _ : bench) {
    one = write_seconds(1);
    two = write_seconds(2);
    if (one < 0 || two < 0) bench.SkipWithError("a write failed");
  }
  bench.counters["one_unit_s"] = one;
  bench.counters["two_units_s"] = two;
  bench.counters["ratio"] = two / one;
}
BENCHMARK(BM_TwoUnitsInParallel)->Iterations(3)->Unit(benchmark::kSecond);

}  // namespace
}  // namespace zenta

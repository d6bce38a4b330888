#include "instruments/capture_export.h"

#include "common/atomic_file.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace zenta {

namespace {
// The period's unit, 0.1 ms, is a timescale VCD allows (1, 10 or 100 of a unit).
constexpr int kPeriodUnitUs = 100;

int period_steps(std::uint8_t period) {
  return period == 0 ? 1 : period;
}
}  // namespace

int sample_interval_us(std::uint8_t period) {
  return period_steps(period) * kPeriodUnitUs;
}

std::string vcd_text(const std::vector<bool>& samples, std::uint8_t period, bool positive_edge,
                     bool pattern) {
  std::string text = "$comment ZENTA logic view ";
  text += pattern         ? "DATA SET pattern, not a capture"
          : positive_edge ? "capture, trigger POS"
                          : "capture, trigger NEG";
  text += " $end\n";
  text += "$timescale " + std::to_string(kPeriodUnitUs) + " us $end\n";
  const std::size_t step = static_cast<std::size_t>(period_steps(period));
  text += "$scope module zenta $end\n$var wire 1 ! LA $end\n$upscope $end\n$enddefinitions $end\n";
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (i == 0 || samples[i] != samples[i - 1]) {
      text += "#" + std::to_string(i * step) + "\n" + (samples[i] ? "1" : "0") + "!\n";
    }
  }
  text += "#" + std::to_string(samples.size() * step) + "\n";
  return text;
}

std::string csv_text(const std::vector<bool>& samples, std::uint8_t period) {
  std::string text = "sample,time_us,level\n";
  const long long interval = sample_interval_us(period);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    text += std::to_string(i) + "," + std::to_string(static_cast<long long>(i) * interval) + "," +
            (samples[i] ? "1" : "0") + "\n";
  }
  return text;
}

}  // namespace zenta

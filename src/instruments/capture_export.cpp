#include "instruments/capture_export.h"

#include "common/atomic_file.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace zenta {

int sample_interval_us(std::uint8_t period) {
  return (period == 0 ? 1 : period) * 100;
}

std::string vcd_text(const std::vector<bool>& samples, std::uint8_t period, bool positive_edge) {
  std::string text;
  text += "$comment ZENTA logic view capture, trigger ";
  text += positive_edge ? "POS" : "NEG";
  text += " $end\n";
  text += "$timescale " + std::to_string(sample_interval_us(period)) + " us $end\n";
  text += "$scope module zenta $end\n$var wire 1 ! LA $end\n$upscope $end\n$enddefinitions $end\n";
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (i == 0 || samples[i] != samples[i - 1]) {
      text += "#" + std::to_string(i) + "\n" + (samples[i] ? "1" : "0") + "!\n";
    }
  }
  text += "#" + std::to_string(samples.size()) + "\n";
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

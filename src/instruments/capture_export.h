#pragma once
// A capture written out for other tools: VCD (PulseView, GTKWave, sigrok)
// and CSV. Sample i was taken i x period x 0.1 ms after the trigger.
#include <cstdint>
#include <string>
#include <vector>

namespace zenta {

// The unit samples every period x 0.1 ms; a period byte of 0 samples as
// fast as 1 does.
int sample_interval_us(std::uint8_t period);

// One wire "LA" in module "zenta"; the timescale is the period's unit of
// 0.1 ms and sample i stands at i x period. Only changes are written, and
// a last time stamp closes the final sample.
// A DATA SET `pattern` says so in its comment instead of naming a trigger.
std::string vcd_text(const std::vector<bool>& samples, std::uint8_t period, bool positive_edge,
                     bool pattern = false);
// "sample,time_us,level", one line per sample.
std::string csv_text(const std::vector<bool>& samples, std::uint8_t period);

}  // namespace zenta

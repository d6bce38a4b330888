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

// One wire "LA" in module "zenta"; the timescale is the sample interval,
// so each sample is one time step. Only changes are written, and a last
// time stamp closes the final sample.
std::string vcd_text(const std::vector<bool>& samples, std::uint8_t period, bool positive_edge);
// "sample,time_us,level", one line per sample.
std::string csv_text(const std::vector<bool>& samples, std::uint8_t period);

}  // namespace zenta

// The unit's measuring functions. Every reading is repeatable: no clock and
// no randomness, so a test and a demonstration see the same numbers.
#include <algorithm>

#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

void put_value(std::array<std::uint8_t, 8>& reply, std::uint32_t value) {
  reply[0] = static_cast<std::uint8_t>((value >> 8) & 0xFF);
  reply[1] = static_cast<std::uint8_t>(value & 0xFF);
}

// A/D readings of the MCLR/Vpp input at 0 V, 5 V and Vpp (13 V): the volt
// meter shows raw / 50 x 0.0196 x attenuation, so with the default
// attenuation 4.4 these read 0.0, 5.0 and 13.0 V. The second input reads
// half of 5 V, the supply input 5.0 V.
constexpr std::uint32_t kMclrReadings[] = {0, 2899, 7537};
constexpr std::uint32_t kChannel1Reading = 1449;
constexpr std::uint32_t kVinReading = 2899;

// The logic input carries a 500 Hz square wave: 1 ms high, 1 ms low.
constexpr int kHalfPeriodTenthsMs = 10;
constexpr int kSamples = 480;

}  // namespace

void SimUnit::Impl::ad_read(int channel) {
  switch (channel) {
    case 0:
      put_value(reply, kMclrReadings[std::clamp(mclr, 0, 2)]);
      break;
    case 1:
      put_value(reply, kChannel1Reading);
      break;
    case 3:
      put_value(reply, kVinReading);
      break;
    default:
      break;  // unconnected channels read 0
  }
}

// Samples are taken every period x 0.1 ms (0 is taken as 1), starting at
// the trigger edge, so the first samples show the level the edge went to.
// Sample s = 8j + n goes to bit n of capture byte 59 - j; bytes 60..63 stay
// zero, as the capture never fills them.
void SimUnit::Impl::la_start(int period, bool positive_edge) {
  const int step = std::max(period, 1);
  capture.fill(0);
  for (int s = 0; s < kSamples; ++s) {
    const bool first_half = (s * step / kHalfPeriodTenthsMs) % 2 == 0;
    const bool high = first_half == positive_edge;
    if (high)
      capture[static_cast<std::size_t>(59 - s / 8)] |= static_cast<std::uint8_t>(1 << (s % 8));
  }
}

// Blocks 0..7 cover the 64 capture bytes; a block number past them answers zeros.
void SimUnit::Impl::la_read(int block) {
  if (block < 0 || block > 7) return;
  std::copy_n(capture.begin() + 8 * block, 8, reply.begin());
}

// Gate 0 counts for 100 ms; any other gate byte counts for 1 s. A count
// past 16 bits sets the overflow flag and keeps its low 16 bits.
void SimUnit::Impl::measure_frequency(int gate) {
  const std::uint64_t gate_ms = gate == 0 ? 100 : 1000;
  const std::uint64_t count = std::uint64_t{input_hz} * gate_ms / 1000;
  put_value(reply, static_cast<std::uint32_t>(count & 0xFFFF));
  reply[2] = count > 0xFFFF ? 1 : 0;
}

void SimUnit::Impl::counter_command(int action) {
  switch (action) {
    case kCounterClear:
      counter = 0;
      break;
    case kCounterRead:
      put_value(reply, static_cast<std::uint32_t>(counter & 0xFFFF));
      reply[2] = counter > 0xFFFF ? 1 : 0;
      break;
    case kCounterStart:
      counting = true;
      break;
    case kCounterStop:
      counting = false;
      break;
    default:
      break;  // the unit knows no other action
  }
}

}  // namespace zenta::sim

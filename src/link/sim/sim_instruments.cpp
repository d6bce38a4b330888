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

// The logic input repeats a 100 ms frame, in ticks of 0.1 ms: 10 ms idle
// high, the bytes "ZENTA" as a 1000 baud serial line (start bit low, eight
// data bits least significant first, stop bit high; 10 ticks a bit), then a
// 500 Hz PWM of 25 % duty until the frame ends.
constexpr int kFrameTicks = 1000;
constexpr int kSerialStart = 100;
constexpr int kTicksPerBit = 10;
constexpr char kSerialText[] = "ZENTA";
constexpr int kSerialBytes = sizeof kSerialText - 1;
constexpr int kPwmStart = kSerialStart + kSerialBytes * 10 * kTicksPerBit;
constexpr int kPwmPeriod = 20;
constexpr int kPwmHigh = 5;
constexpr int kSamples = 480;

bool logic_level(long tick) {
  const long t = tick % kFrameTicks;
  if (t < kSerialStart) return true;
  if (t < kPwmStart) {
    const long bit = (t - kSerialStart) / kTicksPerBit;
    const long position = bit % 10;
    if (position == 0) return false;  // start bit
    if (position == 9) return true;   // stop bit
    const auto byte = static_cast<unsigned char>(kSerialText[bit / 10]);
    return ((byte >> (position - 1)) & 1) != 0;
  }
  return (t - kPwmStart) % kPwmPeriod < kPwmHigh;
}

// The first tick at which the input goes to the trigger's level.
long trigger_tick(bool positive_edge) {
  for (long t = 1; t <= kFrameTicks; ++t) {
    if (logic_level(t) == positive_edge && logic_level(t - 1) != positive_edge) return t;
  }
  return 0;
}

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
// the trigger edge, so sample 0 shows the level the edge went to. Sample
// s = 8j + n goes to bit n of capture byte 59 - j; bytes 60..63 stay zero,
// as the capture never fills them.
void SimUnit::Impl::la_start(int period, bool positive_edge) {
  const long step = std::max(period, 1);
  const long start = trigger_tick(positive_edge);
  capture.fill(0);
  for (int s = 0; s < kSamples; ++s) {
    if (logic_level(start + s * step))
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

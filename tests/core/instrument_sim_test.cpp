// The simulated unit's logic and frequency inputs.
#include <gtest/gtest.h>

#include <tuple>

#include "instrument_rig.h"
#include "instruments/logic_view.h"
#include "platform/driver_factory.h"

namespace zenta {
namespace {

using testing::InstrumentRig;

std::string first_samples(const std::vector<bool>& samples, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += samples[i] ? '1' : '0';
  return text;
}

// Each level of `levels` repeated `times` times.
std::string held(const std::string& levels, std::size_t times) {
  std::string text;
  for (char level : levels) text.append(times, level);
  return text;
}

// The input sends "ZENTA" at 1000 baud (10 ticks of 0.1 ms a bit) after
// idling high; 'Z' is 0x5A, sent least significant bit first: 0 1 0 1 1 0 1 0.
TEST(SimLogicInput, CaptureStartsAtTheTriggerEdgeAndFollowsThePeriod) {
  for (const auto& [period, pos, first] : std::vector<std::tuple<std::uint8_t, bool, std::string>>{
           // NEG: the start bit's falling edge, then the bits of 'Z'.
           {1, false, held("0010", 10)},
           {0, false, held("001", 10)},
           {2, false, held("001011", 5)},
           {5, false, held("0010110101", 2)},
           // POS: the first rising edge is bit 1 of 'Z'.
           {1, true, held("1011", 10)},
           {10, true, "10110101"}}) {
    SCOPED_TRACE(std::to_string(period) + (pos ? " POS" : " NEG"));
    InstrumentRig rig;
    const LaCapture result = capture(rig.unit, period, pos);
    ASSERT_EQ(result.result, ExchangeResult::kDone);
    EXPECT_EQ(first_samples(capture_samples(result.bytes), first.size()), first);
    EXPECT_TRUE(std::all_of(result.bytes.begin() + 60, result.bytes.end(),
                            [](std::uint8_t b) { return b == 0; }));
  }
}

// After the text, a 500 Hz PWM of 25 % duty: sampled every 0.5 ms from
// its start, one sample in four is high.
TEST(SimLogicInput, PwmAfterTheTextIsHighForAQuarterOfEachPeriod) {
  InstrumentRig rig;
  const LaCapture result = capture(rig.unit, 5, false);  // from the start bit, at tick 100
  EXPECT_EQ(first_samples(capture_samples(result.bytes), 112).substr(100), "100010001000");
}

// The input frequency the unit text sets, counted during the gate: 0.1 s
// for gate byte 0, 1 s for any other; past 16 bits the count keeps its low
// 16 bits and the over-range flag is set.
TEST(SimFrequencyInput, UnitTextSetsItAndTheGateCountsIt) {
  for (const auto& [unit_text, gate, count, over] :
       std::vector<std::tuple<const char*, std::uint8_t, std::uint16_t, bool>>{
           {"sim:16F877A,freq=1000", 1, 1000, false},
           {"sim:16F628A,freq=70000", 1, 70000 - 65536, true},
           {"sim:16F877A", 7, 12500, false},
           {"sim:16F877A,freq=655350", 0, 0xFFFF, false},
           {"sim:16F877A,freq=700000", 0, 0x1170, true}}) {
    SCOPED_TRACE(unit_text);
    DriverChoice choice = make_driver(unit_text);
    ASSERT_NE(choice.driver, nullptr) << choice.error;
    testing::FakeHost host;
    Unit unit(*choice.driver, host);
    const MeterReply reply = measure_frequency(unit, gate);
    EXPECT_EQ(std::tuple(reply.value, reply.over_range), std::tuple(count, over));
  }
  for (const char* bad : {"sim:16F877A,freq=", "sim:16F877A,freq=12k"}) {
    EXPECT_NE(make_driver(bad).error.find("freq"), std::string::npos) << bad;
  }
}

}  // namespace
}  // namespace zenta

// The simulated unit's logic and frequency inputs.
#include <gtest/gtest.h>

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

// The input sends "ZENTA" at 1000 baud (10 ticks of 0.1 ms a bit) after
// idling high; 'Z' is 0x5A, sent least significant bit first: 0 1 0 1 1 0 1 0.
TEST(SimLogicInput, CaptureStartsAtTheTriggerEdgeAndFollowsThePeriod) {
  struct Row {
    std::uint8_t period;
    bool pos;
    std::string first;
  };
  const std::string start_bit(10, '0');
  const Row rows[] = {
      // NEG: the start bit's falling edge, then the bits of 'Z'.
      {1, false, start_bit + std::string(10, '0') + std::string(10, '1') + std::string(10, '0')},
      {0, false, start_bit + std::string(10, '0') + std::string(10, '1')},
      {2, false,
       "00000"
       "00000"
       "11111"
       "00000"
       "11111"
       "11111"},
      {5, false,
       "00"
       "00"
       "11"
       "00"
       "11"
       "11"
       "00"
       "11"
       "00"
       "11"},
      // POS: the first rising edge is bit 1 of 'Z'.
      {1, true, std::string(10, '1') + std::string(10, '0') + std::string(20, '1')},
      {10, true,
       "1011010"
       "1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.period) + (row.pos ? " POS" : " NEG"));
    InstrumentRig rig;
    const LaCapture result = capture(rig.unit, row.period, row.pos);
    ASSERT_EQ(result.result, ExchangeResult::kDone);
    EXPECT_EQ(first_samples(capture_samples(result.bytes), row.first.size()), row.first);
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
  const struct {
    const char* unit;
    std::uint8_t gate;
    std::uint16_t count;
    bool over;
  } rows[] = {{"sim:16F877A,freq=1000", 1, 1000, false},
              {"sim:16F628A,freq=70000", 1, 70000 - 65536, true},
              {"sim:16F877A", 7, 12500, false},
              {"sim:16F877A,freq=655350", 0, 0xFFFF, false},
              {"sim:16F877A,freq=700000", 0, 0x1170, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.unit);
    DriverChoice choice = make_driver(row.unit);
    ASSERT_NE(choice.driver, nullptr) << choice.error;
    testing::FakeHost host;
    Unit unit(*choice.driver, host);
    const MeterReply reply = measure_frequency(unit, row.gate);
    EXPECT_EQ(reply.value, row.count);
    EXPECT_EQ(reply.over_range, row.over);
  }
  for (const char* bad : {"sim:16F877A,freq=", "sim:16F877A,freq=12k"}) {
    EXPECT_NE(make_driver(bad).error.find("freq"), std::string::npos) << bad;
  }
}

}  // namespace
}  // namespace zenta

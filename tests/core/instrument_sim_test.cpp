// The simulated unit's logic input and the instrument options of the unit text.
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

TEST(SimLogicInput, UnitTextSetsTheFrequencyInput) {
  struct Row {
    const char* unit;
    bool made;
    std::uint16_t count_1s;  // UNIT_FREQ with the 1 s gate
  };
  const Row rows[] = {
      {"sim:16F877A,freq=1000", true, 1000}, {"sim:16F628A,freq=70000", true, 70000 - 65536},
      {"sim:16F877A", true, 12500},          {"sim:16F877A,freq=", false, 0},
      {"sim:16F877A,freq=12k", false, 0},    {"sim:16F877A,speed=3", false, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.unit);
    DriverChoice choice = make_driver(row.unit);
    ASSERT_EQ(choice.driver != nullptr, row.made) << choice.error;
    if (!choice.driver) {
      EXPECT_NE(choice.error.find("freq"), std::string::npos) << choice.error;
      continue;
    }
    testing::FakeHost host;
    Unit unit(*choice.driver, host);
    const MeterReply reply = measure_frequency(unit, 1);
    EXPECT_EQ(reply.value, row.count_1s);
  }
}

}  // namespace
}  // namespace zenta

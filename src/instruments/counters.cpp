#include "instruments/counters.h"

#include "link/command_codes.h"

namespace zenta {

CountShown count_shown(const MeterReply& reply) {
  CountShown shown;
  shown.count = static_cast<float>(reply.value);
  if (reply.over_range) {
    shown.count += static_cast<float>(kOverRangeAddend);
    shown.lamp = kLampLightRed;
  }
  return shown;
}

FrequencyText frequency_text(float count, Gate gate) {
  if (gate == Gate::k100ms) return {format_fixed(count / 100.0f, 3), "KHz"};
  return {format_fixed(count, 0), "Hz"};
}

void FrequencyCounter::Form_Load() {
  autoread.load();
  gate = Gate::k100ms;
}

void FrequencyCounter::Timer_AUTO_Timer() {
  if (autoread.on()) measurement(true);
}

// The timer's interval follows the gate, so a 1 s gate is never asked
// again before it has closed.
void FrequencyCounter::measurement(bool from_timer) {
  autoread.interval_ms = gate == Gate::k100ms ? kAutoIntervalMs : kSlowGateIntervalMs;
  const MeterReply reply = measure_frequency(unit_, static_cast<std::uint8_t>(gate));
  if (reply.result == ExchangeResult::kFailed) autoread.failed();
  if (reply.result != ExchangeResult::kDone) return;
  const CountShown shown = count_shown(reply);
  over_lamp = shown.lamp;
  const FrequencyText text = frequency_text(shown.count, gate);
  VMtext = text.value;
  Label_unit = text.unit;
  if (from_timer) log.add(gate == Gate::k100ms ? "100mS" : "1S", shown.count, VMtext);
}

void FrequencyCounter::Form_Unload() {
  autoread.close();
  log.stop();
}

void EventCounter::Form_Load() {
  autoread.load();
  counter_command(unit_, kCounterClear);
}

void EventCounter::Timer_AUTO_Timer() {
  if (autoread.on()) reading(true);
}

void EventCounter::reading(bool from_timer) {
  const MeterReply reply = counter_command(unit_, kCounterRead);
  if (reply.result == ExchangeResult::kFailed) autoread.failed();
  if (reply.result != ExchangeResult::kDone) return;
  const CountShown shown = count_shown(reply);
  over_lamp = shown.lamp;
  VMtext = format_fixed(shown.count, 0);
  if (from_timer) log.add("Cnt", shown.count, VMtext);
}

void EventCounter::Form_Unload() {
  autoread.close();
  log.stop();
}

}  // namespace zenta

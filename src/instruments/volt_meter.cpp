#include "instruments/volt_meter.h"

#include <algorithm>

#include "common/number_text.h"

namespace zenta {

// The unit's converter reports 0..65535 taken as unsigned; a reading past
// the bar's end (raw 12750) keeps the bar full.
VoltReading volt_reading(std::uint16_t raw, float attenuation) {
  VoltReading reading;
  const float raw_value = raw;
  reading.raw_text = number_text(raw_value, 7);
  const float scaled = raw_value / 50.0f;
  reading.bar = std::clamp(static_cast<int>(round_half_even(scaled)), 0, kVoltBarMax);
  reading.scaled_text = number_text(5.0 / 255.0 * static_cast<double>(scaled), 15);
  const float v = scaled * 0.0196f;
  reading.v_text = number_text(v, 7);
  const float volts = v * attenuation;
  reading.volts_text = format_fixed(volts, 1);
  return reading;
}

void VoltMeter::Form_Load() {
  channel = 2;
  width = kVmNarrowWidth;
  height = kVmHeight;
  autoread.load();
  VmAtt = static_cast<float>(leading_number(Text_COMP));
  const std::string stored = settings_.get(kSettingsApp, kSettingsSection, kVoltAttKey);
  if (!stored.empty()) {
    Text_COMP = stored;
    VmAtt = static_cast<float>(leading_number(Text_COMP));
  } else {
    settings_.save(kSettingsApp, kSettingsSection, kVoltAttKey, Text_COMP);
  }
}

void VoltMeter::Timer_AUTO_Timer() {
  if (autoread.on()) reading(true);
}

void VoltMeter::reading(bool from_timer) {
  VmAtt = static_cast<float>(leading_number(Text_COMP));
  const MeterReply reply = read_ad(unit_, kVoltChannels[static_cast<std::size_t>(channel)]);
  if (reply.result == ExchangeResult::kFailed) autoread.failed();
  if (reply.result != ExchangeResult::kDone) return;
  const VoltReading shown = volt_reading(reply.value, VmAtt);
  Text3 = shown.raw_text;
  bar = shown.bar;
  Text2 = shown.scaled_text;
  Text1 = shown.v_text;
  VMtext = shown.volts_text;
  if (from_timer)
    log.add(kVoltChannelNames[static_cast<std::size_t>(channel)], reply.value, VMtext);
}

void VoltMeter::Command_COMP_Click() {
  if (leading_number(comp_tag) != 0) {
    width = kVmNarrowWidth;
    comp_tag = "0";
  } else {
    width = kVmWideWidth;
    comp_tag = "1";
  }
  height = kVmHeight;
}

void VoltMeter::Text_COMP_Change(const std::string& text) {
  Text_COMP = text;
  settings_.save(kSettingsApp, kSettingsSection, kVoltAttKey, text);
}

void VoltMeter::Volt_Bar_MouseDown() {
  width = kVmDiagnosticWidth;
  height = kVmDiagnosticHeight;
}

void VoltMeter::Form_Unload() {
  autoread.close();
  log.stop();
}

}  // namespace zenta

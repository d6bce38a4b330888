// The unit's instruments from the command line: the logic capture, the volt
// meter, the frequency counter and the event counter, on the same core
// functions their windows use.
#include <string>

#include "cli/commands.h"
#include "common/atomic_file.h"
#include "common/number_text.h"
#include "common/settings_store.h"
#include "instruments/capture_export.h"
#include "instruments/counters.h"
#include "instruments/logic_view.h"
#include "instruments/volt_meter.h"
#include "platform/settings_file.h"

namespace zenta::cli {

namespace {

constexpr std::size_t kSamplesPerLine = 80;

int exchange_failed(Session& s, const char* what) {
  s.record.fail(std::string("the ") + what + " exchange with the unit failed");
  return kExitFailed;
}

int capture_command(Session& s) {
  const auto period = static_cast<std::uint8_t>(s.options.period);
  const LaCapture captured = capture(s.unit, period, s.options.positive_edge);
  if (captured.result != ExchangeResult::kDone) return exchange_failed(s, "capture's");
  const std::vector<bool> samples = capture_samples(captured.bytes);
  std::string levels;
  for (const bool high : samples) levels += high ? '1' : '0';
  s.record.values.emplace_back("samples", levels);
  s.record.message = std::to_string(samples.size()) + " samples, one every " +
                     std::to_string(sample_interval_us(period)) + " us";
  const std::string& path = s.options.output_file;
  if (path.empty()) {
    for (std::size_t i = 0; i < levels.size(); i += kSamplesPerLine) {
      s.out << levels.substr(i, kSamplesPerLine) << '\n';
    }
    return kExitOk;
  }
  const std::string text = path.ends_with(".csv")
                               ? csv_text(samples, period)
                               : vcd_text(samples, period, s.options.positive_edge);
  std::string reason;
  if (!write_file_atomically(path, text, &reason)) {
    s.record.fail("cannot write '" + path + "': " + reason, "refused");
    return kExitFailed;
  }
  return kExitOk;
}

// --att, else what the panel's volt meter reads: its stored VOLTATT, read
// as the meter reads it.
float attenuation(const Options& options) {
  if (options.att) return *options.att;
  std::string stored =
      stored_setting(panel_settings_file(kSettingsApp), kSettingsSection, kVoltAttKey);
  if (stored.empty()) stored = kDefaultVoltAtt;
  return static_cast<float>(leading_number(stored));
}

int volts_command(Session& s) {
  const auto channel = static_cast<std::size_t>(s.options.channel);
  const MeterReply reply = read_ad(s.unit, kVoltChannels[channel]);
  if (reply.result != ExchangeResult::kDone) return exchange_failed(s, "A/D");
  const VoltReading reading = volt_reading(reply.value, attenuation(s.options));
  s.record.values.emplace_back("channel", kVoltChannelNames[channel]);
  s.record.values.emplace_back("raw", std::to_string(reply.value));
  s.record.values.emplace_back("volts", reading.volts_text);
  s.record.message = std::string(kVoltChannelNames[channel]) + " " + reading.volts_text + " V";
  return kExitOk;
}

int freq_command(Session& s) {
  const Gate gate = s.options.slow_gate ? Gate::k1s : Gate::k100ms;
  const MeterReply reply = measure_frequency(s.unit, static_cast<std::uint8_t>(gate));
  if (reply.result != ExchangeResult::kDone) return exchange_failed(s, "frequency counter's");
  const CountShown shown = count_shown(reply);
  const FrequencyText text = frequency_text(shown.count, gate);
  s.record.values.emplace_back("frequency", text.value);
  s.record.values.emplace_back("frequency_unit", text.unit);
  s.record.message = text.value + " " + text.unit + (reply.over_range ? " (over range)" : "");
  return kExitOk;
}

int count_command(Session& s) {
  const std::string& action = s.options.counter_action;
  const std::uint8_t code = action == "clear"   ? kCounterClear
                            : action == "start" ? kCounterStart
                            : action == "stop"  ? kCounterStop
                                                : kCounterRead;
  const MeterReply reply = counter_command(s.unit, code);
  if (reply.result != ExchangeResult::kDone) return exchange_failed(s, "event counter's");
  if (action != "read") {
    s.record.message = "Counter " + action;
    return kExitOk;
  }
  const CountShown shown = count_shown(reply);
  const std::string count = std::to_string(static_cast<long long>(shown.count));
  s.record.values.emplace_back("count", count);
  s.record.message = count + (reply.over_range ? " (over range)" : "");
  return kExitOk;
}

}  // namespace

int run_instrument(Session& s) {
  switch (s.options.command) {
    case Command::kCapture:
      return capture_command(s);
    case Command::kVolts:
      return volts_command(s);
    case Command::kFreq:
      return freq_command(s);
    case Command::kCount:
      return count_command(s);
    default:
      return kExitUsage;
  }
}

}  // namespace zenta::cli

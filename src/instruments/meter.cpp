#include "instruments/meter.h"

#include <chrono>
#include <cmath>

#include "common/file_names.h"
#include "common/number_text.h"
#include "link/command_codes.h"

namespace zenta {

namespace {

MeterReply exchange(Unit& unit, std::uint8_t code, std::uint8_t b1) {
  Unit::Operation operation(unit);
  if (!operation) return {};
  UnitLink& link = unit.link();
  MeterReply reply;
  if (link.SENDCMD(code, b1) != kLinkOk) {
    reply.result = ExchangeResult::kFailed;
    return reply;
  }
  reply.result = ExchangeResult::kDone;
  reply.value = static_cast<std::uint16_t>(link.RxPacket[0] * 256 + link.RxPacket[1]);
  reply.over_range = link.RxPacket[2] != 0;
  return reply;
}

}  // namespace

MeterReply read_ad(Unit& unit, std::uint8_t channel) {
  return exchange(unit, UNIT_AD_READ, channel);
}
MeterReply measure_frequency(Unit& unit, std::uint8_t gate) {
  return exchange(unit, UNIT_FREQ, gate);
}
MeterReply counter_command(Unit& unit, std::uint8_t action) {
  return exchange(unit, UNIT_COUNTER, action);
}

void AutoRead::load() {
  *this = AutoRead{};
}

void AutoRead::press() {
  if (leading_number(tag) != 0) {
    lamp = kLampGrey;
    tag = "0";
  } else {
    lamp = kLampOrange;
    tag = "1";
  }
  timer_enabled = true;
}

bool AutoRead::on() const {
  return leading_number(tag) == 1;
}

void AutoRead::close() {
  lamp = kLampGrey;
  tag = "0";
  timer_enabled = false;
}

std::string format_fixed(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  // Through the shortest text of the single-precision value, so 0.05 as a
  // float (0.0500000007) and an exact half both round as written.
  const double shown = parse_decimal(general_text(value, 7)).value_or(value);
  const double rounded = std::round(shown * scale) / scale;
  return fixed_text(rounded == 0 ? 0.0 : rounded, decimals);
}

std::string number_text(double value, int digits) {
  return general_text(value, digits);
}

MeterLog::MeterLog() {
  clock = [] {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
  };
}

bool MeterLog::start(const std::string& path) {
  stop();
  file_.open(path, std::ios::out | std::ios::trunc);
  if (!file_) return false;
  path_ = path;
  start_ = clock();
  file_ << "time_s,input,raw,shown\n";
  file_.flush();
  return true;
}

void MeterLog::stop() {
  if (file_.is_open()) file_.close();
}

void MeterLog::add(const std::string& source, double raw, const std::string& shown) {
  if (!file_.is_open()) return;
  file_ << fixed_text(clock() - start_, 3) << ',' << source << ',' << number_text(raw, 15) << ','
        << shown << '\n';
  // Flushed line by line: a log that is cut off still holds every reading so far.
  file_.flush();
}

void toggle_log(MeterLog& log, Host& host) {
  if (log.active()) {
    log.stop();
    return;
  }
  constexpr const char* kFilter = "CSV file|*.csv|";
  const SaveAnswer answer = host.save_file_choice(kFilter);
  if (answer.path.empty()) return;
  const std::string path = with_chosen_extension(answer.path, kFilter, answer.choice);
  if (!log.start(path)) {
    host.message_box("Cannot write " + path, "LOG ERROR", MessageIcon::kStop);
  }
}

}  // namespace zenta

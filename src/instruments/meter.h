#pragma once
// What the volt meter, the frequency counter and the event counter share:
// the one-packet exchange on the unit, the AUTO rule, the number formats
// and the reading log.
#include <cstdint>
#include <fstream>
#include <functional>
#include <string>

#include "common/host.h"
#include "link/unit.h"

namespace zenta {

inline constexpr std::uint32_t kLampGrey = 0x808080;
inline constexpr std::uint32_t kLampOrange = 0xFF8000;
inline constexpr std::uint32_t kLampLightRed = 0xFF8080;
inline constexpr std::uint32_t kMeterBackColor = 0x404040;
inline constexpr std::uint32_t kMeterTextColor = 0x00FFFF;
inline constexpr int kAutoIntervalMs = 500;
inline constexpr int kSlowGateIntervalMs = 1500;
// A count past 16 bits is the unit's low 16 bits plus this, with the lamp.
inline constexpr double kOverRangeAddend = 65535;

enum class ExchangeResult { kDone, kFailed, kBusy };

// One instrument packet and the reply bytes the meters read: a 16-bit
// value, high byte first, and the over-range flag in byte 2.
struct MeterReply {
  ExchangeResult result = ExchangeResult::kBusy;
  std::uint16_t value = 0;
  bool over_range = false;
};

// Each sends one packet inside the unit's operation guard; kBusy (nothing
// sent) while another operation holds the unit.
MeterReply read_ad(Unit& unit, std::uint8_t channel);
MeterReply measure_frequency(Unit& unit, std::uint8_t gate);
MeterReply counter_command(Unit& unit, std::uint8_t action);

// The AUTO button, its lamp and its timer, as all three meters have them.
// The state is the button's tag text, "1" or "0"; what counts is its value.
struct AutoRead {
  std::string tag = "0";
  std::uint32_t lamp = kLampGrey;
  bool timer_enabled = false;
  int interval_ms = kAutoIntervalMs;

  void load();
  // Toggles the tag and the lamp; the timer is enabled either way and stays
  // running, idle, when AUTO goes off.
  void press();
  // Whether a tick reads.
  bool on() const;
  // A failed exchange stops the timer but leaves the tag and the lamp, so
  // reading resumes only after two presses.
  void failed() { timer_enabled = false; }
  void close();
};

// Fixed decimals, at least one integer digit, halves away from zero:
// "#0.0" is 1, "##0.000" is 3, "#####0" is 0.
std::string format_fixed(double value, int decimals);
// Shortest text of a number with up to `digits` significant digits.
std::string number_text(double value, int digits);

// The readings a meter takes while AUTO runs, as CSV lines: seconds since
// the log began, the channel or gate, the raw value, the shown value.
class MeterLog {
 public:
  // Seconds since some fixed start; a steady clock unless a test sets it.
  std::function<double()> clock;

  MeterLog();
  // Opens (replacing) the file and writes the header; false when it cannot.
  bool start(const std::string& path);
  void stop();
  bool active() const { return file_.is_open(); }
  const std::string& path() const { return path_; }
  void add(const std::string& source, double raw, const std::string& shown);

 private:
  std::ofstream file_;
  std::string path_;
  double start_ = 0;
};

// The log button's caption and behaviour shared by the meters: asks for a
// file when no log runs, stops the running one otherwise.
void toggle_log(MeterLog& log, Host& host);
inline const char* log_caption(const MeterLog& log) {
  return log.active() ? "STOP LOG" : "LOG";
}

}  // namespace zenta

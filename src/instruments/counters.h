#pragma once
// The frequency counter Form_FCNT and the event counter Form_CNT: pulses on
// the unit's logic input, counted over a gate or between START and STOP.
#include <cstdint>
#include <string>

#include "instruments/meter.h"
#include "link/command_codes.h"
#include "link/unit.h"

namespace zenta {

inline constexpr int kFcntWidth = 3600;
inline constexpr int kFcntHeight = 2900;
inline constexpr int kCntWidth = 3600;
inline constexpr int kCntHeight = 2970;

// Gate bytes: "100mS" 0, "1S" 1.
enum class Gate : std::uint8_t { k100ms = 0, k1s = 1 };

// A 16-bit count and the over-range flag, as the two counters show them.
struct CountShown {
  float count = 0;  // with 65535 added when over range
  std::uint32_t lamp = kLampGrey;
};
CountShown count_shown(const MeterReply& reply);

// The frequency's text and unit for a count over the gate: kHz with three
// decimals for 100 ms, whole Hz for 1 s.
struct FrequencyText {
  std::string value;
  std::string unit;
};
FrequencyText frequency_text(float count, Gate gate);

class FrequencyCounter {
 public:
  FrequencyCounter(Unit& unit, Host& host) : unit_(unit), host_(host) {}

  Gate gate = Gate::k100ms;
  std::string VMtext = "0";
  std::string Label_unit = "KHz";
  std::uint32_t over_lamp = kLampGrey;
  AutoRead autoread;
  MeterLog log;

  void Form_Load();
  void Option_GATEH_Click() { gate = Gate::k100ms; }
  void Option_GATEL_Click() { gate = Gate::k1s; }
  void Command_READ_Click() { measurement(false); }
  void Command_AUTO_Click() { autoread.press(); }
  void Timer_AUTO_Timer();
  void Command_LOG_Click() { toggle_log(log, host_); }
  void Form_Unload();

 private:
  void measurement(bool from_timer);
  Unit& unit_;
  Host& host_;
};

class EventCounter {
 public:
  EventCounter(Unit& unit, Host& host) : unit_(unit), host_(host) {}

  std::string VMtext = "0";
  std::uint32_t over_lamp = kLampGrey;
  AutoRead autoread;
  MeterLog log;

  // Opening the window clears the unit's count.
  void Form_Load();
  void Command_START_Click() { counter_command(unit_, kCounterStart); }
  void Command_STOP_Click() { counter_command(unit_, kCounterStop); }
  void Command_RESET_Click() { counter_command(unit_, kCounterClear); }
  void Command_READ_Click() { reading(false); }
  void Command_AUTO_Click() { autoread.press(); }
  void Timer_AUTO_Timer();
  void Command_LOG_Click() { toggle_log(log, host_); }
  // Sends nothing: a started count keeps counting.
  void Form_Unload();

 private:
  void reading(bool from_timer);
  Unit& unit_;
  Host& host_;
};

}  // namespace zenta

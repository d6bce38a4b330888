#pragma once
// The volt meter VM: one of three A/D inputs shown as a voltage, on a bar,
// and in a diagnostic view, scaled by the attenuation kept in the settings
// store under "VOLTATT".
#include <array>
#include <cstdint>
#include <string>

#include "common/settings_store.h"
#include "instruments/meter.h"
#include "link/unit.h"

namespace zenta {

// Channel bytes of the options "Vpp", "Sab" and "Vin"; byte 2 is never sent.
inline constexpr std::array<std::uint8_t, 3> kVoltChannels = {0, 1, 3};
inline constexpr std::array<const char*, 3> kVoltChannelNames = {"Vpp", "Sab", "Vin"};
inline constexpr int kVmNarrowWidth = 3825;
inline constexpr int kVmWideWidth = 5100;
inline constexpr int kVmHeight = 2655;
inline constexpr int kVmDiagnosticWidth = 3600;
inline constexpr int kVmDiagnosticHeight = 3500;
inline constexpr int kVoltBarMax = 255;
// The attenuation's settings key, and its text until one is stored.
inline constexpr const char* kVoltAttKey = "VOLTATT";
inline constexpr const char* kDefaultVoltAtt = "4.4";

// What one reading shows, from the raw value and the attenuation.
struct VoltReading {
  std::string raw_text;     // Text3
  int bar = 0;              // Volt_Bar, 0..255
  std::string scaled_text;  // Text2: scaled x 5 / 255
  std::string v_text;       // Text1: scaled x 0.0196
  std::string volts_text;   // VMtext, "#0.0"
};
VoltReading volt_reading(std::uint16_t raw, float attenuation);

class VoltMeter {
 public:
  VoltMeter(Unit& unit, Host& host, SettingsStore& settings)
      : unit_(unit), host_(host), settings_(settings) {}

  // What the window shows.
  int channel = 2;  // Option_CH index
  std::string VMtext = "0";
  int bar = 0;
  std::string Text1 = "Text1", Text2 = "Text1", Text3 = "Text1";
  std::string Text_COMP = kDefaultVoltAtt;
  std::string comp_tag = "0";
  int width = kVmNarrowWidth;
  int height = kVmHeight;
  AutoRead autoread;
  float VmAtt = 0;
  MeterLog log;

  void Form_Load();
  void Option_CH_Click(int index) { channel = index; }
  void Command_READ_Click() { reading(false); }
  void Command_AUTO_Click() { autoread.press(); }
  void Timer_AUTO_Timer();
  void Command_COMP_Click();
  void Text_COMP_Change(const std::string& text);
  void Volt_Bar_MouseDown();
  void Command_LOG_Click() { toggle_log(log, host_); }
  void Form_Unload();

 private:
  void reading(bool from_timer);

  Unit& unit_;
  Host& host_;
  SettingsStore& settings_;
};

}  // namespace zenta

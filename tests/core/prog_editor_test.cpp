// Device selection, the configuration word editor, the address boxes, the
// unit controls and Timer1, driven through the main form.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <tuple>

#include "panel_rig.h"
#include "programming/config_word.h"
#include "scripted_driver.h"

namespace zenta::testing {
namespace {

TEST(DeviceSelection, ResetsTheEditorButKeepsBorAndTheImage) {
  PanelRig rig("16F84A", 3);
  EXPECT_EQ(rig.form.view().NotesLabel, "Device=16F84A (562)");
  EXPECT_EQ(rig.form.view().Text_Device, "16F84A  (562)");
  rig.form.PRTsel_Click(true);
  rig.form.BORsel_Click(true);
  rig.state.DataLoaded = 1;
  rig.state.set_word(3, 0x1234);
  rig.form.view().FilenameTextbox = "x.hex";
  const int saves = rig.store.saves();
  rig.form.PICsel_Click(0);
  const MainView& v = rig.form.view();
  EXPECT_EQ(v.ConfigAddrText, "3F3B");
  EXPECT_EQ(v.Text_Configbit, "11 1111 0011 1011");
  EXPECT_EQ(rig.state.ConfigWord, 0x3F3B);
  EXPECT_FALSE(v.PRTsel);
  EXPECT_TRUE(v.BORsel);
  // The image stays in the buffer but is no longer loaded data.
  EXPECT_EQ(rig.state.DataLoaded, 0);
  EXPECT_EQ(v.FilenameTextbox, "");
  EXPECT_EQ(rig.state.word(3), 0x1234);
  EXPECT_EQ(rig.store.get("ZENTA", "DATA", "DEVICE"), "0");
  rig.form.PICsel_Click(0);  // the stored entry again: nothing written
  EXPECT_EQ(rig.store.saves(), saves + 1);

  rig.form.PICsel_Click(6);
  EXPECT_EQ(v.LastAddrText, "3FE");
  EXPECT_EQ(v.ConfigAddrText, "01D7");

  // The last-address box is held to the program size; alone it never sets
  // the last address.
  rig.form.PICsel_Click(1);
  const std::pair<const char*, const char*> typed_shown[] = {
      {"2001", "2000"},  {"2000", "2000"}, {"1FFF", "1FFF"},      {"FFFF", "FFFF"},
      {"12345", "2000"}, {"", ""},         {"123456789", "2000"}, {"0x10", "0x10"}};
  for (auto [typed, shown] : typed_shown) {
    rig.form.LastAddrText_Change(typed);
    EXPECT_EQ(v.LastAddrText, shown) << typed;
  }
  EXPECT_EQ(rig.state.LastAddress, 0x1FFF);
}

TEST(ConfigEditor, OptionsAndTypedTextThroughTheDevicePatterns) {
  // Steps: o<n> oscillator n; w, p, r, b<0|1> watchdog, power-up timer,
  // protection, brown-out off or on. Typed text is entered first and stays
  // as typed until an option rewrites it. Entry 2 has no brown-out option.
  // Device, typed text, steps, configuration word.
  const std::tuple<int, const char*, const char*, int> cases[] = {
      {0, nullptr, "w1", 0x3F3F},    {0, nullptr, "w1w0", 0x3F3B}, {0, nullptr, "o2", 0x3F3A},
      {0, nullptr, "o3o0", 0x3F3B},  {0, nullptr, "r1", 0x0F0B},   {0, nullptr, "r1r0", 0x3F3B},
      {0, nullptr, "p1", 0x3F33},    {6, nullptr, "r1", 0x0157},   {6, nullptr, "b0", 0x0197},
      {6, nullptr, "b0b1", 0x01D7},  {6, nullptr, "w1", 0x01DF},   {5, nullptr, "o0", 0x3F7B},
      {2, nullptr, "b0", 0x3FFB},    {0, "ffff", "", 0x3FFF},      {0, "", "", 0x0000},
      {0, "3G", "", 0x0003},         {0, " 12", "", 0x0000},       {0, "3f3b", "w1", 0x3F3F},
      {0, "123456789AB", "", 0x09AB}};
  using Toggle = void (MainForm::*)(bool);
  const std::map<char, Toggle> toggles = {{'w', &MainForm::WDTsel_Click},
                                          {'p', &MainForm::PUTsel_Click},
                                          {'r', &MainForm::PRTsel_Click},
                                          {'b', &MainForm::BORsel_Click}};
  for (const auto& [device, typed, steps, word] : cases) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "%04X", word);
    const std::string text = typed && !*steps ? typed : hex;
    SCOPED_TRACE(::testing::Message() << "device " << device << " -> " << text);
    PanelRig rig("16F877A", device);
    if (typed) rig.form.ConfigAddrText_Change(typed);
    for (const char* s = steps; *s; s += 2) {
      if (*s == 'o') {
        rig.form.OSCsel_Click(s[1] - '0');
      } else {
        (rig.form.*toggles.at(*s))(s[1] == '1');
      }
    }
    EXPECT_EQ(rig.state.ConfigWord, word);
    EXPECT_EQ(rig.state.ConfigHigh * 256 + rig.state.ConfigLow, word);
    EXPECT_EQ(rig.form.view().ConfigAddrText, text);
    EXPECT_EQ(rig.form.view().Text_Configbit, config_binary_text(static_cast<std::uint16_t>(word)));
  }
}

// Every setting of the option controls, on every entry, reads back from the
// word it makes; an option the entry lacks (same On and Off) reads as off.
TEST(ConfigEditor, ControlsReadBackFromEveryWordTheyMake) {
  for (const DeviceRecord& record : DeviceCatalogue()) {
    const ConfigOptionPatterns& p = record.patterns;
    for (int setting = 0; setting < 64; ++setting) {
      const int oscillator = setting & 3;
      const bool wdt = setting & 4, put = setting & 8, protect = setting & 16, bor = setting & 32;
      std::uint16_t word = apply_oscillator(record.default_config_word, p, oscillator);
      word = apply_option(word, p, ConfigOption::kWdt, wdt);
      word = apply_option(word, p, ConfigOption::kPut, put);
      word = apply_option(word, p, ConfigOption::kProtect, protect);
      word = apply_option(word, p, ConfigOption::kBor, bor);
      SCOPED_TRACE(::testing::Message() << record.caption << " word " << word);
      const ConfigControls controls = controls_of_word(word, p);
      EXPECT_EQ(controls.oscillator, oscillator);
      EXPECT_EQ(controls.wdt, wdt);
      EXPECT_EQ(controls.put, put);
      EXPECT_EQ(controls.protect, protect);
      EXPECT_EQ(controls.bor, bor && p.BorOn != p.BorOff);
    }
  }
  // An oscillator none of the four buttons stands for: the 16F628A's
  // internal one (FOSC 100), and partial code protection.
  EXPECT_EQ(controls_of_word(0x3F70, device_record(5).patterns).oscillator, -1);
  EXPECT_TRUE(controls_of_word(0x2F3B, device_record(0).patterns).protect);
}

TEST(UnitControls, ADReadingIsShownDividedBy50HalfToEven) {
  const std::pair<Packet, const char*> cases[] = {
      {{0x00, 0x00}, "0"}, {{0x04, 0x01}, "20"}, {{0x04, 0x33}, "22"}, {{0xFF, 0xFF}, "1311"}};
  for (const auto& [reply, shown] : cases) {
    FormParts<ScriptedDriver> parts;
    ScriptedDriver& driver = parts.driver;
    MainForm& form = parts.form;
    driver.replies = {{}, reply};  // 0x32 0x01, then the A/D reading
    form.Command_Vset_Click(1);
    EXPECT_EQ(driver.written, (std::vector<Packet>{{0x32, 0x01}, {0x39, 0x00}}));
    EXPECT_EQ(form.view().Text_AD, shown);
  }
}

TEST(UnitControls, Timer1CountsDownWaitTicksAndTheResetLamp) {
  PanelRig rig("16F877A", 1);
  MainView& v = rig.form.view();
  rig.state.WaitTicks = 2;
  rig.form.Command_RESET_Click();
  EXPECT_EQ(rig.sent(), (std::vector<Packet>{{0x32, 0x00}, {0x32, 0x01}, {0x39, 0x00}}));
  std::string shown, yellow;
  for (int tick = 0; tick < 9; ++tick) {
    if (tick == 3) rig.form.Command_RESET_Click();  // restarts the count at 5
    yellow += v.RESET_LAMP == kLampYellow ? 'Y' : '-';
    rig.form.Timer1_Timer();
    shown += v.Text2;
  }
  EXPECT_EQ(shown, "210000000");
  EXPECT_EQ(yellow, "YYYYYYYY-");
  EXPECT_EQ(v.RESET_LAMP, kLampGreen);
  EXPECT_EQ(rig.state.WaitTicks, 0);
}

}  // namespace
}  // namespace zenta::testing

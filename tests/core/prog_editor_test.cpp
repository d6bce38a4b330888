// Device selection, the configuration word editor, the address boxes, the
// unit controls and Timer1, driven through the main form.
#include <gtest/gtest.h>

#include "panel_rig.h"
#include "programming/config_word.h"
#include "scripted_driver.h"

namespace zenta::testing {
namespace {

TEST(DeviceSelection, CopiesTheEntryAndResetsTheEditor) {
  PanelRig rig("16F84A", 2);
  EXPECT_EQ(rig.state.DeviceFamily, "16F84");
  EXPECT_EQ(rig.state.EraseMode, "0");
  rig.form.PICsel_Click(3);
  EXPECT_EQ(rig.state.DeviceFamily, "16F84");
  EXPECT_EQ(rig.state.EraseMode, "2");
  EXPECT_EQ(rig.state.WriteMode, "1");
  EXPECT_EQ(rig.form.view().NotesLabel, "Device=16F84A (562)");
  EXPECT_EQ(rig.form.view().Text_Device, "16F84A  (562)");

  // Options changed on one entry do not survive the next selection, except
  // BOR; the image stays in the buffer but is no longer loaded data.
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
  EXPECT_EQ(v.OSCsel, 0);
  EXPECT_EQ(rig.state.DataLoaded, 0);
  EXPECT_EQ(v.FilenameTextbox, "");
  EXPECT_EQ(rig.state.word(3), 0x1234);
  EXPECT_EQ(rig.store.saves(), saves + 1);
  EXPECT_EQ(rig.store.get("ZENTA", "DATA", "DEVICE"), "0");
  rig.form.PICsel_Click(0);  // the stored entry again: nothing written
  EXPECT_EQ(rig.store.saves(), saves + 1);

  rig.form.PICsel_Click(6);
  EXPECT_EQ(rig.state.LastAddress, 0x3FE);
  EXPECT_EQ(v.LastAddrText, "3FE");
  EXPECT_EQ(v.StartAddrText, "0");
  EXPECT_EQ(v.ConfigAddrText, "01D7");
  EXPECT_EQ(rig.state.ConfigHigh, 0x01);
  EXPECT_EQ(rig.state.ConfigLow, 0xD7);
  EXPECT_EQ(rig.state.ProgramSize, 0x1000);
  EXPECT_EQ(rig.state.EepromLastAddress, 0x7F);
}

TEST(ConfigEditor, OptionsThroughTheDevicePatterns) {
  enum Op { kOsc, kWdt, kPut, kPrt, kBor, kType };
  struct Step {
    Op op;
    int arg;
    const char* text = nullptr;
  };
  struct Case {
    int device;
    std::vector<Step> steps;
    int word;
    const char* text;
  };
  const Case cases[] = {
      {0, {{kWdt, 1}}, 0x3F3F, "3F3F"},
      {0, {{kWdt, 1}, {kWdt, 0}}, 0x3F3B, "3F3B"},
      {0, {{kOsc, 2}}, 0x3F3A, "3F3A"},
      {0, {{kOsc, 1}}, 0x3F39, "3F39"},
      {0, {{kOsc, 3}}, 0x3F38, "3F38"},
      {0, {{kOsc, 3}, {kOsc, 0}}, 0x3F3B, "3F3B"},
      {0, {{kPrt, 1}}, 0x0F0B, "0F0B"},
      {0, {{kPrt, 1}, {kPrt, 0}}, 0x3F3B, "3F3B"},
      {0, {{kPut, 1}}, 0x3F33, "3F33"},
      {6, {{kPrt, 1}}, 0x0157, "0157"},
      {6, {{kPrt, 1}, {kPrt, 0}}, 0x01D7, "01D7"},
      {6, {{kBor, 1}}, 0x01D7, "01D7"},
      {6, {{kBor, 0}}, 0x0197, "0197"},
      {6, {{kWdt, 1}}, 0x01DF, "01DF"},
      {5, {{kOsc, 0}}, 0x3F7B, "3F7B"},
      {2, {{kBor, 1}}, 0x3FFB, "3FFB"},
      {2, {{kBor, 0}}, 0x3FFB, "3FFB"},
      // Typed text stays as typed; the next option rewrites it.
      {0, {{kType, 0, "ffff"}}, 0x3FFF, "ffff"},
      {0, {{kType, 0, ""}}, 0x0000, ""},
      {0, {{kType, 0, "3f3b"}, {kWdt, 1}}, 0x3F3F, "3F3F"},
      {0, {{kType, 0, "123456789AB"}}, 0x09AB, "123456789AB"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "device " << c.device << " -> " << c.text);
    PanelRig rig("16F877A", c.device);
    for (const Step& s : c.steps) {
      switch (s.op) {
        case kOsc:
          rig.form.OSCsel_Click(s.arg);
          break;
        case kWdt:
          rig.form.WDTsel_Click(s.arg != 0);
          break;
        case kPut:
          rig.form.PUTsel_Click(s.arg != 0);
          break;
        case kPrt:
          rig.form.PRTsel_Click(s.arg != 0);
          break;
        case kBor:
          rig.form.BORsel_Click(s.arg != 0);
          break;
        case kType:
          rig.form.ConfigAddrText_Change(s.text);
          break;
      }
    }
    EXPECT_EQ(rig.state.ConfigWord, c.word);
    EXPECT_EQ(rig.state.ConfigHigh, c.word >> 8);
    EXPECT_EQ(rig.state.ConfigLow, c.word & 0xFF);
    EXPECT_EQ(rig.form.view().ConfigAddrText, c.text);
    EXPECT_EQ(rig.form.view().Text_Configbit,
              config_binary_text(static_cast<std::uint16_t>(c.word)));
  }
}

TEST(ConfigEditor, LastAddressBoxIsHeldToTheProgramSize) {
  PanelRig rig("16F877A", 1);
  const std::pair<const char*, const char*> cases[] = {
      {"2001", "2000"},  {"2000", "2000"}, {"1FFF", "1FFF"},      {"FFFF", "FFFF"},
      {"12345", "2000"}, {"", ""},         {"123456789", "2000"}, {"0x10", "0x10"}};
  for (auto [typed, shown] : cases) {
    rig.form.LastAddrText_Change(typed);
    EXPECT_EQ(rig.form.view().LastAddrText, shown) << typed;
  }
  EXPECT_EQ(rig.state.LastAddress, 0x1FFF);  // the box alone never sets it
}

TEST(ConfigEditor, TestAreaToggle) {
  PanelRig rig("16F877A", 1);
  MainView& v = rig.form.view();
  rig.form.kage_Click();  // the empty tag collapses: no visible change
  EXPECT_EQ(v.kage_tag, "0");
  EXPECT_EQ(v.height_twips, 5400);
  rig.form.kage_Click();
  EXPECT_EQ(v.kage_tag, "1");
  EXPECT_EQ(v.height_twips, 6900);
  rig.form.Label_KRVname_Click();
  EXPECT_EQ(v.kage_tag, "0");
  EXPECT_EQ(v.height_twips, 5400);
}

TEST(UnitControls, SupplyLedAndLevels) {
  PanelRig rig("16F877A", 1);
  rig.form.Command_VCC_Click();
  rig.form.Command_VCC_Click();
  rig.form.Command_LED_Click();
  rig.form.Command_Vset_Click(2);
  rig.form.Command_Vset_Click(3);  // no such button: nothing sent
  EXPECT_EQ(rig.sent(), (std::vector<Packet>{
                            {0x3A, 0x00}, {0x3A, 0x01}, {0x3B, 0x01}, {0x32, 0x02}, {0x39, 0x00}}));
  EXPECT_EQ(rig.form.view().Command_VCC, "VCC on");
  EXPECT_EQ(rig.form.view().Command_LED, "LED on");
  EXPECT_TRUE(rig.form.outcome().refused);
}

TEST(UnitControls, ADReadingIsShownDividedBy50HalfToEven) {
  const std::pair<Packet, const char*> cases[] = {{{0x00, 0x00}, "0"},
                                                  {{0x03, 0xE8}, "20"},
                                                  {{0x04, 0x01}, "20"},
                                                  {{0x04, 0x33}, "22"},
                                                  {{0xFF, 0xFF}, "1311"}};
  for (const auto& [reply, shown] : cases) {
    ScriptedDriver driver;
    FakeHost host;
    MemorySettingsStore store;
    ProgrammerState state;
    MainForm form(driver, host, store, state);
    driver.replies = {{}, reply};  // 0x32 0x01, then the A/D reading
    form.Command_Vset_Click(1);
    EXPECT_EQ(form.view().Text_AD, shown);
  }
}

TEST(UnitControls, Timer1CountsDownWaitTicksAndTheResetLamp) {
  PanelRig rig("16F877A", 1);
  MainView& v = rig.form.view();
  rig.state.WaitTicks = 2;
  std::vector<std::string> shown;
  for (int i = 0; i < 3; ++i) {
    rig.form.Timer1_Timer();
    shown.push_back(v.Text2);
  }
  EXPECT_EQ(shown, (std::vector<std::string>{"2", "1", "0"}));
  EXPECT_EQ(rig.state.WaitTicks, 0);

  rig.unit.clear_trace();
  rig.form.Command_RESET_Click();
  EXPECT_EQ(rig.sent(), (std::vector<Packet>{{0x32, 0x00}, {0x32, 0x01}, {0x39, 0x00}}));
  std::vector<bool> yellow;
  for (int tick = 0; tick < 9; ++tick) {
    if (tick == 3) rig.form.Command_RESET_Click();  // restarts the count at 5
    yellow.push_back(v.RESET_LAMP == kLampYellow);
    rig.form.Timer1_Timer();
  }
  yellow.push_back(v.RESET_LAMP == kLampYellow);
  EXPECT_EQ(yellow, (std::vector<bool>{1, 1, 1, 1, 1, 1, 1, 1, 0, 0}));
  EXPECT_EQ(v.RESET_LAMP, kLampGreen);
}

}  // namespace
}  // namespace zenta::testing

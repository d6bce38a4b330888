// The panel's form: its start-up, LOAD_HEX and the file choice, the device
// selection and the configuration word editor, and the unit controls.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <sstream>
#include <tuple>

#include "fakes.h"
#include "link/sim/sim_unit.h"
#include "packets.h"
#include "panel_rig.h"
#include "programming/config_word.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

// Counts reads as well as writes, to show that a failed start touches nothing.
class CountingStore : public MemorySettingsStore {
 public:
  int gets = 0;
  std::string get(const std::string& a, const std::string& s, const std::string& k) override {
    ++gets;
    return MemorySettingsStore::get(a, s, k);
  }
};

struct Panel : FormParts<ScriptedDriver, FakeHost, CountingStore> {
  std::string setting(const char* key) { return store.get(kSettingsApp, kSettingsSection, key); }
  void store_setting(const char* key, const std::string& value) {
    store.save(kSettingsApp, kSettingsSection, key, value);
  }
};

TEST(Startup, NoUnitEndsBeforeAnythingElseWhateverTheCode) {
  for (const std::int32_t code : {-2, -12, 4}) {
    SCOPED_TRACE(code);
    Panel p;
    p.driver.open_result = code;
    EXPECT_FALSE(p.form.Form_Load());
    ASSERT_EQ(p.host.boxes.size(), 1u);
    EXPECT_EQ(p.host.boxes[0].text + " / " + p.host.boxes[0].title, "Unit not Found / USB ERROR");
    EXPECT_EQ(p.driver.written.size() + p.driver.closes + p.store.gets + p.store.saves(), 0u);
  }
}

// The unit powers the target when it is plugged in, so the identification
// that the start-up runs already sees the chip in the socket.
TEST(Startup, NamesTheChipInTheSocket) {
  const std::pair<const char*, const char*> cases[] = {{"16F628A", "Device=16F628A (1062)"},
                                                       {"12F675", "Device=12F675 (FC4)"},
                                                       {"16F877", "Device=16F877 (9A2)"},
                                                       {"none", "Device=16F84 (3FFF)"}};
  for (const auto& [chip, notes] : cases) {
    FormParts<sim::SimUnit> panel(chip);
    ASSERT_TRUE(panel.form.Form_Load());
    EXPECT_EQ(panel.form.view().NotesLabel, notes);
  }
}

TEST(Startup, PacketOrderAndStateOnACleanStore) {
  Panel p;
  p.driver.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
  ASSERT_TRUE(p.form.Form_Load());
  // The firmware's identification, the restored device's ID read, supply
  // on and LED off.
  EXPECT_EQ(p.driver.written, seq(Packet{0x3F}, config_space_read(6), kSupplyOn, kLedOff));
  const MainView& v = p.form.view();
  EXPECT_EQ(p.unit.FirmwareVersion() + " | " + v.Command_VCC + " | " + v.Command_LED + " | " +
                std::to_string(v.PICsel) + " | " + v.Label7 + " | " +
                std::to_string(v.height_twips),
            "ZENTA 12 | VCC on | LED off | 1 | TopDIR = /home/user/work | 5400");
  // First run: the six tool defaults are stored and used at once.
  const auto defaults = tool_values(startup_tool_defaults());
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    EXPECT_EQ(p.setting(kToolKeys[i]), defaults[i]) << kToolKeys[i];
  }
  EXPECT_TRUE(p.store.contains("F_EDIT"));
  EXPECT_EQ(p.tools.AsmFolder, startup_tool_defaults().AsmFolder);
  EXPECT_EQ(p.setting("DEVICE"), "1");
  EXPECT_TRUE(p.host.boxes.empty());
}

// A stored but empty assembler folder counts as a first run: all six
// defaults are written again; otherwise the six keys are read unchanged.
TEST(Startup, ToolSettingsAreReadOrDefaulted) {
  for (const std::string first : {"", "/opt/asm"}) {
    SCOPED_TRACE(first);
    Panel p;
    for (const char* key : kToolKeys) p.store_setting(key, "mine");
    p.store_setting("F_ASM", first);
    ASSERT_TRUE(p.form.Form_Load());
    const bool first_run = first.empty();
    EXPECT_EQ(p.setting("CMD_ASM"), first_run ? startup_tool_defaults().AsmCommand : "mine");
    EXPECT_EQ(p.setting("F_EDIT"), first_run ? "" : "mine");
    EXPECT_EQ(p.tools.AsmCommand, first_run ? startup_tool_defaults().AsmCommand : "mine");
    EXPECT_EQ(p.tools.AsmFolder, first_run ? startup_tool_defaults().AsmFolder : "/opt/asm");
  }
}

// The stored entry is restored when it is one; the choice, the family and
// what stays stored.
TEST(Startup, StoredDeviceValues) {
  const std::pair<const char*, std::string> cases[] = {
      {"6", "6 12F629 6"},     {"7", "7 16F819 7"},  {"9", "1 16F87xA 1"}, {"-1", "1 16F87xA 1"},
      {"abc", "0 16F87x abc"}, {"2.5", "2 16F84 2"}, {" 3", "3 16F84  3"},
  };
  for (const auto& [stored, expected] : cases) {
    Panel p;
    p.store_setting("DEVICE", stored);
    ASSERT_TRUE(p.form.Form_Load());
    EXPECT_EQ(std::to_string(p.form.view().PICsel) + " " + p.state.DeviceFamily + " " +
                  p.setting("DEVICE"),
              expected);
  }
}

TEST(Startup, FailedIdentificationLeavesTheFirmwareVersionEmptyAndGoesOn) {
  Panel p;
  p.driver.read_results.push_back(0);
  ASSERT_TRUE(p.form.Form_Load());
  EXPECT_EQ(p.unit.FirmwareVersion(), "");
  ASSERT_FALSE(p.host.boxes.empty());
  EXPECT_EQ(p.host.boxes[0].text, "USB Read Error");
  EXPECT_EQ(p.driver.written.back(), kLedOff);
  p.form.shutdown();
  EXPECT_EQ(p.driver.closes, 1);
}

// In exact mode the start-up is the documented one from its first packet: a
// unit that stops answering gets one box per failed exchange, and every
// step's packet is still tried, down to the supply on and the LED off.
TEST(Startup, ExactModeTriesEveryStepOfAUnitThatStopsAnswering) {
  for (const int at : {2, 3, 4}) {
    SCOPED_TRACE(at);
    FormParts<sim::SimUnit> panel("16F628A");
    panel.store.save(kSettingsApp, kPanelSection, kExactKey, "1");
    panel.driver.fall_silent_at(at);
    ASSERT_TRUE(panel.form.Form_Load());
    const auto& trace = panel.driver.trace();
    ASSERT_GE(trace.size(), 17u);
    EXPECT_EQ(Packets({trace[trace.size() - 2].tx, trace.back().tx}),
              (Packets{kSupplyOn, kLedOff}));
    EXPECT_EQ(panel.host.boxes.size(), trace.size() - static_cast<std::size_t>(at) + 1);
    for (const auto& box : panel.host.boxes) EXPECT_EQ(box.text, "USB Write Error");
    EXPECT_EQ(panel.form.USBMSG(), "Write NG!:");
  }
}

TEST(LoadHex, RecordsAddressesAndFailures) {
  const struct {
    const char* name;
    const char* text;  // nullptr: no file is written
    int last_address;
    const char* bytes;  // "index=value ..." in hexadecimal, afterwards
    const char* boxes;  // LAST and START after a good load; nullptr: the load fails
    const char* file = "a.hex";
  } cases[] = {
      {"end record only", ":00000001FF\n", 0, "0=FF 1=3F 4E1F=3F 4E20=55", "0 0"},
      {"configuration word", ":02400E00323F3F\n:00000001FF\n", 0x2008, "400E=32 400F=3F",
       "2000 2007"},
      {"extended address is data", ":020000040000FA\n:00000001FF\n", 0, "0=0 1=0", "0 0"},
      {"count 0 stores one byte, no end record", ":00000A0012\n", 5, "A=12 B=3F", "5 5"},
      {"first record at byte 3", ":01000300AA\n", 2, "3=AA", "2 2"},
      {"commas and blanks", "  :01000000AA, :01000100BB\r\n:00000001FF\r\n", 0, "0=AA 1=BB", "0 0"},
      {"blank line ends quietly", ":01000000AA\n\n:01000200BB\n", 0, "0=AA 2=FF", "0 0"},
      {"record ends in the last byte", ":014E2000AA\n", 10000, "4E20=AA", "2000 2710"},
      {"record past index 20000", ":01000000AA\n:024E2000AABB\n:00000001FF\n", 0, "0=AA 4E20=AA",
       nullptr},
      {"negative address", ":02800000AABB\n", 0, "0=FF", nullptr},
      {"missing file", nullptr, 0, "0=FF", nullptr},
      {"a folder", nullptr, 0, "0=FF", nullptr, "."},
      {"no name", nullptr, 0, "0=FF", nullptr, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    PanelRig rig("16F877A", 1);
    rig.state.ProgramBuffer[20000] = 0x55;
    rig.form.view().StartAddrText = "keep";
    if (c.text) write_text(dir.file(c.file), c.text);
    rig.state.HexFileName = *c.file ? dir.file(c.file) : "";
    const bool ok = c.boxes != nullptr;
    rig.state.DataLoaded = ok ? 0 : 1;  // a good load sets it, a failed one keeps it
    EXPECT_EQ(rig.form.LOAD_HEX(), ok);
    EXPECT_EQ(rig.state.DataLoaded, 1);
    EXPECT_EQ(rig.state.LastAddress, c.last_address);
    std::istringstream bytes(c.bytes);
    for (std::string pair; bytes >> pair;) {
      const std::size_t index = std::stoul(pair.substr(0, pair.find('=')), nullptr, 16);
      EXPECT_EQ(rig.state.ProgramBuffer[index],
                std::stoi(pair.substr(pair.find('=') + 1), nullptr, 16))
          << pair;
    }
    const MainView& v = rig.form.view();
    if (!ok) {
      EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});
      EXPECT_EQ(v.StartAddrText, "keep");
    } else {
      EXPECT_TRUE(rig.host.boxes.empty());
      EXPECT_EQ(v.LastAddrText + " " + v.StartAddrText, c.boxes);
    }
  }
}

TEST(FileChoice, SourcesAreRememberedAndTheirHexFilesDerived) {
  TempDir dir;
  write_text(dir.file("blink.hex"), ":02000000FF0AF5\n:00000001FF\n");
  PanelRig rig("16F877A", 1);
  MainView& v = rig.form.view();
  rig.host.open_answers = {dir.file("prog.Hex")};  // mixed case: the HEX named before, none
  rig.form.F_OpenButton_Click();
  EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});

  // A source is remembered; blink.HEX does not exist, but blink.hex does.
  for (const char* source : {"blink.c", "blink.asm"}) {
    rig.host.open_answers = {dir.file(source)};
    rig.form.F_OpenButton_Click();
    EXPECT_EQ(rig.state.TargetFileName, dir.file(source));
    rig.state.set_word(0, 0);
    rig.form.HexSet_Button_Click();
    EXPECT_EQ(rig.state.HexFileName, dir.file("blink.HEX"));
    EXPECT_EQ(v.NotesLabel, "Set HEX file");
    EXPECT_EQ(rig.state.word(0), 0x0AFF);
  }

  // After a read the box is empty: the derivation keeps the name it had.
  rig.state.HexFileName = dir.file("blink.hex");
  v.FilenameTextbox = "";
  EXPECT_TRUE(rig.form.HexSet_Button_Click());
  EXPECT_EQ(rig.state.HexFileName, dir.file("blink.hex"));
}

// Selecting an entry resets the option controls and the configuration box
// to the entry's default, keeps BOR and the image in the buffer (no longer
// loaded data), and stores the choice once. The last-address box is held to
// the program size; alone it never sets the last address.
TEST(DeviceSelection, ResetsTheEditorButKeepsBorAndTheImage) {
  PanelRig rig("16F84A", 3);
  const MainView& v = rig.form.view();
  EXPECT_EQ(v.NotesLabel + " | " + v.Text_Device, "Device=16F84A (562) | 16F84A  (562)");
  rig.form.PRTsel_Click(true);
  rig.form.BORsel_Click(true);
  rig.state.DataLoaded = 1;
  rig.state.set_word(3, 0x1234);
  rig.form.view().FilenameTextbox = "x.hex";
  const int saves = rig.store.saves();
  rig.form.PICsel_Click(0);
  EXPECT_EQ(v.ConfigAddrText + " " + v.Text_Configbit, "3F3B 11 1111 0011 1011");
  EXPECT_EQ(rig.state.ConfigWord, 0x3F3B);
  EXPECT_EQ(std::make_tuple(v.PRTsel, v.BORsel, rig.state.DataLoaded, v.FilenameTextbox),
            std::make_tuple(false, true, 0, std::string()));
  EXPECT_EQ(rig.state.word(3), 0x1234);
  EXPECT_EQ(rig.store.get("ZENTA", "DATA", "DEVICE"), "0");
  rig.form.PICsel_Click(0);  // the stored entry again: nothing written
  EXPECT_EQ(rig.store.saves(), saves + 1);
  rig.form.PICsel_Click(6);
  EXPECT_EQ(v.LastAddrText + " " + v.ConfigAddrText, "3FE 01D7");
  rig.form.PICsel_Click(1);
  for (const auto& [typed, shown] : {std::pair{"2001", "2000"},
                                     {"2000", "2000"},
                                     {"1FFF", "1FFF"},
                                     {"FFFF", "FFFF"},
                                     {"12345", "2000"},
                                     {"", ""},
                                     {"123456789", "2000"},
                                     {"0x10", "0x10"}}) {
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
    EXPECT_EQ(rig.state.ConfigHigh() * 256 + rig.state.ConfigLow(), word);
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

// The volt meter, the frequency counter and the event counter: readings,
// formats, packets against the simulated unit, the AUTO rule and the log.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "instrument_rig.h"
#include "instruments/counters.h"
#include "instruments/volt_meter.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::InstrumentRig;

TEST(VoltMeter, ReadingsFromRawValueAndAttenuation) {
  // Raw value and attenuation; then Text3, the bar, Text1, Text2 and the volts.
  using Row =
      std::tuple<std::uint16_t, float, const char*, int, const char*, const char*, const char*>;
  for (const auto& [raw, att, raw_text, bar, v_text, scaled_text, volts] :
       std::vector<Row>{{0, 4.4f, "0", 0, "0", "0", "0.0"},
                        {0x31CE, 4.4f, "12750", 255, "4.998", "5", "22.0"},
                        {0x01F4, 1.0f, "500", 10, "0.196", "0.196078431372549", "0.2"},
                        {0x01F4, 0.0f, "500", 10, "0.196", "0.196078431372549", "0.0"},
                        {2899, 4.4f, "2899", 58, "1.136408", "1.13686273612228", "5.0"},
                        {0xFFFF, 1.0f, "65535", 255, "25.68972", "25.6999990425858", "25.7"}}) {
    const VoltReading r = volt_reading(raw, att);
    EXPECT_EQ(std::tie(r.raw_text, r.bar, r.v_text, r.scaled_text, r.volts_text),
              std::tuple(raw_text, bar, v_text, scaled_text, volts))
        << raw;
  }
}

TEST(VoltMeter, ChannelBytesAttenuationSettingAndWindowSizes) {
  InstrumentRig rig;
  MemorySettingsStore store;
  VoltMeter vm(rig.unit, rig.host, store);
  vm.Form_Load();
  EXPECT_EQ(store.get("ZENTA", "DATA", "VOLTATT"), "4.4") << "first opening stores the default";
  EXPECT_EQ(vm.channel, 2);
  for (int index : {0, 1, 2}) {
    vm.Option_CH_Click(index);
    vm.Command_READ_Click();
  }
  EXPECT_EQ(rig.packets(),
            (std::vector<std::string>{"39 00 00 00 00 00 00 00", "39 01 00 00 00 00 00 00",
                                      "39 03 00 00 00 00 00 00"}));
  EXPECT_EQ(vm.VMtext, "5.0") << "the simulated supply input";

  vm.Text_COMP_Change("5");
  VoltMeter again(rig.unit, rig.host, store);
  again.Form_Load();
  EXPECT_EQ(again.Text_COMP, "5");
  again.Command_READ_Click();
  EXPECT_EQ(again.VMtext, "5.7");

  for (const auto& [event, width, height] :
       std::vector<std::tuple<void (VoltMeter::*)(), int, int>>{
           {&VoltMeter::Command_COMP_Click, 5100, 2655},
           {&VoltMeter::Command_COMP_Click, 3825, 2655},
           {&VoltMeter::Volt_Bar_MouseDown, 3600, 3500},
           {&VoltMeter::Command_COMP_Click, 5100, 2655}}) {
    (again.*event)();
    EXPECT_EQ(std::pair(again.width, again.height), std::pair(width, height));
  }
}

// What the frequency counter sends and shows for each count the unit
// returns; past 16 bits the unit keeps the low 16 and the window adds 65535.
TEST(Counters, FrequencyReadingsFromTheUnit) {
  InstrumentRig rig;
  FrequencyCounter f(rig.unit, rig.host);
  f.Form_Load();
  EXPECT_TRUE(rig.packets().empty()) << "opening sends nothing";
  using Row = std::tuple<std::uint32_t, bool, const char*, const char*, std::uint32_t>;
  for (const auto& [hz, one_second, text, unit, lamp] :
       std::vector<Row>{{100000, false, "100.000", "KHz", kLampGrey},
                        {1310710, false, "1310.700", "KHz", kLampLightRed},
                        {50, false, "0.050", "KHz", kLampGrey},
                        {1000, true, "1000", "Hz", kLampGrey},
                        {65636, true, "65635", "Hz", kLampLightRed},
                        {10, false, "0.010", "KHz", kLampGrey}}) {
    SCOPED_TRACE(hz);
    rig.sim.set_input_frequency(hz);
    one_second ? f.Option_GATEL_Click() : f.Option_GATEH_Click();
    f.Command_READ_Click();
    EXPECT_EQ(std::tie(f.VMtext, f.Label_unit, f.over_lamp), std::tuple(text, unit, lamp));
    EXPECT_EQ(f.autoread.interval_ms, one_second ? 1500 : 500);
    EXPECT_EQ(rig.packets(), std::vector{testing::packet_text({0x3C, one_second})});
  }
}

TEST(Counters, EventCounterClearsOnOpeningAndButtonsLeaveTheWindow) {
  InstrumentRig rig;
  EventCounter cnt(rig.unit, rig.host);
  cnt.Form_Load();
  EXPECT_EQ(rig.packets(), std::vector<std::string>{"3D 00 00 00 00 00 00 00"});
  cnt.VMtext = "untouched";
  cnt.Command_START_Click();
  cnt.Command_STOP_Click();
  cnt.Command_RESET_Click();
  EXPECT_EQ(cnt.VMtext, "untouched");
  EXPECT_EQ(rig.packets(),
            (std::vector<std::string>{"3D 02 00 00 00 00 00 00", "3D 03 00 00 00 00 00 00",
                                      "3D 00 00 00 00 00 00 00"}));
  cnt.Command_START_Click();
  cnt.Command_READ_Click();
  const std::string counted = cnt.VMtext;
  EXPECT_EQ(counted, "37") << "counted from the exchange after the start";
  cnt.Command_STOP_Click();
  cnt.Command_READ_Click();
  cnt.Command_READ_Click();
  EXPECT_EQ(cnt.VMtext, std::to_string(std::stoi(counted) + 37)) << "the stop counts, then no more";
  cnt.Form_Unload();
  EXPECT_FALSE(rig.sim.counter_running());
}

// The AUTO rule, the same for the three meters: what each press, tick,
// refused and failed exchange does to the tag, the lamp, the timer and the
// display.
TEST(Counters, AutoRuleOfEveryMeter) {
  struct Meter {
    const char* name;
    std::function<void()> press, tick;
    std::function<AutoRead&()> autoread;
    std::function<std::string&()> shown;
  };
  InstrumentRig rig;
  MemorySettingsStore store;
  VoltMeter vm(rig.unit, rig.host, store);
  FrequencyCounter f(rig.unit, rig.host);
  EventCounter cnt(rig.unit, rig.host);
  vm.Form_Load();
  f.Form_Load();
  cnt.Form_Load();
  const std::vector<Meter> meters = {
      {"VM", [&] { vm.Command_AUTO_Click(); }, [&] { vm.Timer_AUTO_Timer(); },
       [&]() -> AutoRead& { return vm.autoread; }, [&]() -> std::string& { return vm.VMtext; }},
      {"FCNT", [&] { f.Command_AUTO_Click(); }, [&] { f.Timer_AUTO_Timer(); },
       [&]() -> AutoRead& { return f.autoread; }, [&]() -> std::string& { return f.VMtext; }},
      {"CNT", [&] { cnt.Command_AUTO_Click(); }, [&] { cnt.Timer_AUTO_Timer(); },
       [&]() -> AutoRead& { return cnt.autoread; }, [&]() -> std::string& { return cnt.VMtext; }},
  };
  for (const Meter& m : meters) {
    SCOPED_TRACE(m.name);
    AutoRead& a = m.autoread();
    EXPECT_EQ(std::tuple(a.tag, a.lamp, a.timer_enabled), std::tuple("0", kLampGrey, false));
    rig.packets();
    m.tick();
    EXPECT_TRUE(rig.packets().empty()) << "a tick with AUTO off reads nothing";
    m.press();
    EXPECT_EQ(std::tuple(a.tag, a.lamp, a.timer_enabled), std::tuple("1", kLampOrange, true));
    m.tick();
    {
      Unit::Operation chip_operation(rig.unit);
      m.tick();
    }
    EXPECT_TRUE(a.timer_enabled) << "a refusal is not a failure";
    EXPECT_EQ(rig.packets().size(), 1u) << "none while a chip operation holds the unit";
    m.shown() = "kept";
    rig.fail_next_read();
    m.tick();
    EXPECT_EQ(std::tuple(a.tag, a.lamp, a.timer_enabled), std::tuple("1", kLampOrange, false));
    EXPECT_EQ(m.shown(), "kept");
    m.press();
    EXPECT_EQ(std::tuple(a.tag, a.lamp, a.timer_enabled), std::tuple("0", kLampGrey, true));
    m.tick();
    m.press();
    m.tick();
    EXPECT_EQ(rig.packets().size(), 2u) << "the failed one, then one after two presses";
    EXPECT_NE(m.shown(), "kept");
  }
  EXPECT_EQ(rig.host.boxes.size(), 3u);
  vm.Form_Unload();
  EXPECT_EQ(std::tuple(vm.autoread.tag, vm.autoread.lamp), std::tuple("0", kLampGrey));
}

TEST(Counters, LogWritesTheAutoReadingsOnly) {
  InstrumentRig rig;
  testing::TempDir dir;
  const std::string path = dir.file("log.csv");
  rig.host.save_answers.push_back(dir.file("log"));  // the filter's extension is added
  FrequencyCounter f(rig.unit, rig.host);
  f.Form_Load();
  double now = 100;
  f.log.clock = [&now] { return now; };
  f.Command_LOG_Click();
  ASSERT_TRUE(f.log.active());
  // On disk at once, line by line: a log cut off holds every reading so far.
  EXPECT_EQ(testing::read_text(path), "time_s,input,raw,shown\n");
  f.Command_READ_Click();  // not logged
  f.Command_AUTO_Click();
  now = 100.5;
  f.Timer_AUTO_Timer();
  EXPECT_EQ(testing::read_text(path), "time_s,input,raw,shown\n0.500,100mS,1250,12.500\n");
  f.Option_GATEL_Click();
  now = 102;
  f.Timer_AUTO_Timer();
  f.Command_LOG_Click();
  EXPECT_FALSE(f.log.active());
  f.Timer_AUTO_Timer();  // after the stop: not logged
  EXPECT_EQ(testing::read_text(path),
            "time_s,input,raw,shown\n0.500,100mS,1250,12.500\n2.000,1S,12500,12500\n");
}

}  // namespace
}  // namespace zenta

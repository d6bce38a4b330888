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
  struct Row {
    std::uint16_t raw;
    float att;
    const char* raw_text;
    int bar;
    const char* v_text;
    const char* scaled_text;
    const char* volts;
  };
  const Row rows[] = {
      {0, 4.4f, "0", 0, "0", "0", "0.0"},
      {0x31CE, 4.4f, "12750", 255, "4.998", "5", "22.0"},
      {0x01F4, 1.0f, "500", 10, "0.196", "0.196078431372549", "0.2"},
      {0x01F4, 0.0f, "500", 10, "0.196", "0.196078431372549", "0.0"},
      {2899, 4.4f, "2899", 58, "1.136408", "1.13686273612228", "5.0"},
      {0xFFFF, 1.0f, "65535", 255, "25.68972", "25.6999990425858", "25.7"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.raw);
    const VoltReading reading = volt_reading(row.raw, row.att);
    EXPECT_EQ(reading.raw_text, row.raw_text);
    EXPECT_EQ(reading.bar, row.bar);
    EXPECT_EQ(reading.v_text, row.v_text);
    EXPECT_EQ(reading.scaled_text, row.scaled_text);
    EXPECT_EQ(reading.volts_text, row.volts);
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
  EXPECT_FLOAT_EQ(again.VmAtt, 5.0f);
  again.Command_READ_Click();
  EXPECT_EQ(again.VMtext, "5.7");

  struct Step {
    void (VoltMeter::*event)();
    int width, height;
  };
  const Step steps[] = {{&VoltMeter::Command_COMP_Click, 5100, 2655},
                        {&VoltMeter::Command_COMP_Click, 3825, 2655},
                        {&VoltMeter::Volt_Bar_MouseDown, 3600, 3500},
                        {&VoltMeter::Command_COMP_Click, 5100, 2655}};
  for (const Step& step : steps) {
    (again.*step.event)();
    EXPECT_EQ(std::pair(again.width, again.height), std::pair(step.width, step.height));
  }
}

TEST(Counters, FrequencyAndCountTexts) {
  struct Row {
    Gate gate;
    std::uint16_t value;
    bool over;
    const char* text;
    const char* unit;
    std::uint32_t lamp;
  };
  const Row rows[] = {
      {Gate::k100ms, 0x03E8, false, "10.000", "KHz", kLampGrey},
      {Gate::k1s, 0x03E8, false, "1000", "Hz", kLampGrey},
      {Gate::k100ms, 0xFFFF, true, "1310.700", "KHz", kLampLightRed},
      {Gate::k100ms, 0x0005, false, "0.050", "KHz", kLampGrey},
      {Gate::k1s, 0x0064, true, "65635", "Hz", kLampLightRed},
      {Gate::k100ms, 0x0001, false, "0.010", "KHz", kLampGrey},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const CountShown shown = count_shown({ExchangeResult::kDone, row.value, row.over});
    EXPECT_EQ(shown.lamp, row.lamp);
    const FrequencyText text = frequency_text(shown.count, row.gate);
    EXPECT_EQ(text.value, row.text);
    EXPECT_EQ(text.unit, row.unit);
  }
}

TEST(Counters, FrequencyPacketsIntervalAndOverRangeFromTheUnit) {
  InstrumentRig rig;
  FrequencyCounter f(rig.unit, rig.host);
  f.Form_Load();
  EXPECT_TRUE(rig.packets().empty()) << "opening sends nothing";
  rig.sim.set_input_frequency(100000);
  f.Command_READ_Click();
  EXPECT_EQ(f.VMtext, "100.000");
  EXPECT_EQ(f.autoread.interval_ms, 500);
  f.Option_GATEL_Click();
  f.Command_READ_Click();
  EXPECT_EQ(f.autoread.interval_ms, 1500);
  EXPECT_EQ(f.Label_unit, "Hz");
  EXPECT_EQ(f.over_lamp, kLampLightRed);
  EXPECT_EQ(f.VMtext, std::to_string(100000 % 65536 + 65535)) << "low 16 bits plus 65535";
  EXPECT_EQ(rig.packets(),
            (std::vector<std::string>{"3C 00 00 00 00 00 00 00", "3C 01 00 00 00 00 00 00"}));
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
  EXPECT_NE(cnt.VMtext, "0") << "counts while started";
  const std::string counted = cnt.VMtext;
  cnt.Command_STOP_Click();
  cnt.Command_READ_Click();
  cnt.Command_READ_Click();
  EXPECT_EQ(cnt.VMtext, std::to_string(std::stoi(counted) + 37 * 1))
      << "the stop counts, then no more";
  cnt.Form_Unload();
  EXPECT_TRUE(rig.sim.counter_running() == false);
}

// The AUTO rule, the same for the three meters: what each press, tick and
// failed exchange does to the tag, the lamp, the timer and the display.
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
    EXPECT_EQ(rig.packets().size(), 1u);
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

TEST(Counters, MetersAreRefusedWhileAnOperationHoldsTheUnit) {
  InstrumentRig rig;
  MemorySettingsStore store;
  VoltMeter vm(rig.unit, rig.host, store);
  vm.Form_Load();
  vm.Command_AUTO_Click();
  Unit::Operation chip_operation(rig.unit);
  vm.Timer_AUTO_Timer();
  vm.Command_READ_Click();
  EXPECT_TRUE(rig.packets().empty());
  EXPECT_TRUE(vm.autoread.timer_enabled) << "a refusal is not a failure";
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

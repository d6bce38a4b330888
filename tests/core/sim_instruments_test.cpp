// The simulated unit's instruments, and its chip saved to and loaded from a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "sim_rig.h"

namespace zenta::testing {
namespace {

TEST(SimInstruments, AdChannelsReadTheirInputsAndChannel0FollowsMclr) {
  struct Case {
    int mclr;
    std::uint8_t channel;
    int reading;
  };
  const std::vector<Case> cases = {{0, 0, 0},    {1, 0, 2899}, {2, 0, 7537}, {0, 1, 1449},
                                   {2, 3, 2899}, {1, 2, 0},    {1, 7, 0}};
  SimRig rig;
  for (const Case& c : cases) {
    rig.send({UNIT_MCLR_LEVEL, static_cast<std::uint8_t>(c.mclr)});
    rig.send({UNIT_AD_READ, c.channel});
    EXPECT_EQ(rig.word_of_reply(0), c.reading) << "MCLR " << c.mclr << " channel " << +c.channel;
  }
}

// The capture fetched and unpacked as the logic view does: sample 8j + n is
// bit n of capture byte 59 - j.
std::string capture(SimRig& rig, std::uint8_t period, bool positive) {
  rig.send({UNIT_LA_START, period, static_cast<std::uint8_t>(positive ? 1 : 0)});
  std::array<std::uint8_t, 64> bytes{};
  for (std::uint8_t k = 0; k < 8; ++k) {
    rig.send({UNIT_LA_READ, k});
    std::copy(rig.link.RxPacket.begin(), rig.link.RxPacket.end(), bytes.begin() + 8 * k);
  }
  EXPECT_TRUE(std::all_of(bytes.begin() + 60, bytes.end(), [](auto b) { return b == 0; }));
  std::string samples(480, '0');
  for (int j = 0; j < 60; ++j) {
    for (int n = 0; n < 8; ++n) {
      if (bytes[static_cast<std::size_t>(59 - j)] & (1 << n))
        samples[static_cast<std::size_t>(8 * j + n)] = '1';
    }
  }
  return samples;
}

TEST(SimInstruments, LogicCaptureShowsTheSquareWaveFromTheTriggerEdge) {
  struct Case {
    std::uint8_t period;
    bool positive;
    std::string first;
    char last;
    long highs;
  };
  // 1 ms high, 1 ms low, sampled every period x 0.1 ms.
  const std::vector<Case> cases = {
      {1, true, "1111111111000000000011", '0', 240},
      {0, true, "1111111111000000000011", '0', 240},
      {1, false, "0000000000111111111100", '1', 240},
      {5, false, "0011001100", '1', 240},
      {15, true, "1001100110", '1', 240},
      {20, true, "1111111111", '1', 480},
  };
  SimRig rig;
  for (const Case& c : cases) {
    SCOPED_TRACE("period " + std::to_string(c.period) + (c.positive ? " POS" : " NEG"));
    const std::string samples = capture(rig, c.period, c.positive);
    EXPECT_EQ(samples.substr(0, c.first.size()), c.first);
    EXPECT_EQ(samples.back(), c.last);
    EXPECT_EQ(std::count(samples.begin(), samples.end(), '1'), c.highs);
  }
  rig.send({UNIT_LA_READ, 8});
  EXPECT_EQ(rig.link.RxPacket, Packet{});
}

TEST(SimInstruments, FrequencyCountsTheInputDuringTheGate) {
  struct Case {
    std::uint32_t hz;
    std::uint8_t gate;
    Packet reply;
  };
  const std::vector<Case> cases = {
      {12500, 0, {0x04, 0xE2, 0}}, {12500, 1, {0x30, 0xD4, 0}},  {655350, 0, {0xFF, 0xFF, 0}},
      {65536, 1, {0x00, 0x00, 1}}, {700000, 0, {0x11, 0x70, 1}}, {1000000, 1, {0x42, 0x40, 1}},
      {12500, 2, {0x30, 0xD4, 0}},  // any gate byte but 0 is the 1 s gate
  };
  SimRig rig;
  rig.send({UNIT_FREQ, 0});
  EXPECT_EQ(rig.link.RxPacket, (Packet{0x04, 0xE2, 0})) << "12.5 kHz until set";
  for (const Case& c : cases) {
    rig.unit.set_input_frequency(c.hz);
    rig.send({UNIT_FREQ, c.gate});
    EXPECT_EQ(rig.link.RxPacket, c.reply) << c.hz << " Hz, gate " << +c.gate;
  }
}

TEST(SimInstruments, EventCounterCountsEveryExchangeWhileStarted) {
  struct Step {
    Packet packet;
    int count;  // read back after the packet; -1: not a read
  };
  const Packet read{UNIT_COUNTER, kCounterRead};
  const std::vector<Step> steps = {
      {{UNIT_COUNTER, kCounterClear}, -1},
      {read, 0},
      {{UNIT_COUNTER, kCounterStart}, -1},  // counting starts after this exchange
      {read, 37},
      {read, 74},
      {{UNIT_WAIT, 4}, -1},
      {read, 148},
      {{UNIT_COUNTER, kCounterStop}, -1},  // the stop exchange still counts
      {read, 185},
      {read, 185},
      {{UNIT_COUNTER, kCounterClear}, -1},
      {read, 0},
  };
  SimRig rig;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    rig.send(steps[i].packet);
    if (steps[i].count >= 0) {
      EXPECT_EQ(rig.link.RxPacket, (Packet{static_cast<std::uint8_t>(steps[i].count >> 8),
                                           static_cast<std::uint8_t>(steps[i].count & 0xFF), 0}))
          << "step " << i;
    }
  }
  EXPECT_FALSE(rig.unit.counter_running());
  // Past 65535 the flag is set and the count keeps its low 16 bits.
  rig.send({UNIT_COUNTER, kCounterStart});
  EXPECT_TRUE(rig.unit.counter_running());
  for (int i = 0; i < 1771; ++i) rig.send({UNIT_WAIT, 4});
  rig.send(read);
  EXPECT_EQ(rig.link.RxPacket, (Packet{0x00, 0x1C, 1})) << "37 x 1772 = 65564";
}

// ---- the chip in a file ----

std::string temp_path(const std::string& name) {
  return ::testing::TempDir() + "zenta_sim_" + name;
}

std::string read_text(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path) << text;
}

TEST(SimFile, SavedChipLoadsBackIntoAnotherUnit) {
  sim::SimUnit unit("12F675");
  unit.set_program_word(0, 0x2805);
  unit.set_program_word(0x3FF, 0x3444);
  unit.set_program_word(0x2002, 0x0123);
  unit.set_config_word(0x11D4);
  unit.set_eeprom_byte(127, 0x5A);
  const std::string path = temp_path("round_trip.txt");
  ASSERT_TRUE(unit.save(path));

  sim::SimUnit other("12f675");
  ASSERT_TRUE(other.load(path));
  for (int a = 0; a < 0x400; ++a) ASSERT_EQ(other.program_word(a), unit.program_word(a)) << a;
  for (int a = 0x2000; a < 0x2008; ++a) EXPECT_EQ(other.program_word(a), unit.program_word(a));
  for (int e = 0; e < 128; ++e) ASSERT_EQ(other.eeprom_byte(e), unit.eeprom_byte(e)) << e;
  EXPECT_EQ(other.config_word(), 0x11D4);
  EXPECT_EQ(other.program_word(0x3FF), 0x3444);
  EXPECT_FALSE(unit.save(temp_path("no_such_folder/chip.txt")));
}

TEST(SimFile, LoadRefusesAnotherChipOrAMalformedFileAndKeepsTheChip) {
  sim::SimUnit saved("16F628A");
  saved.set_program_word(5, 0x0505);
  const std::string good_path = temp_path("good.txt");
  ASSERT_TRUE(saved.save(good_path));
  const std::string good = read_text(good_path);

  const auto replace = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
  };
  const std::size_t row1 = good.find("p 0008");
  const std::size_t row2 = good.find("p 0010");
  const std::string row1_line = good.substr(row1, row2 - row1);
  struct Case {
    std::string name;
    std::string text;
  };
  const std::vector<Case> cases = {
      {"another chip", replace("chip 16F628A", "chip 16F628")},
      {"another header", replace("ZENTA simulated chip 1", "ZENTA simulated chip 2")},
      {"word too wide", replace("0505", "4505")},
      {"not a hex digit", replace("0505", "05G5")},
      {"byte too wide", replace("e 0000 FF", "e 0000 100")},
      {"missing row", replace(row1_line, "")},
      {"rows out of order", replace(row1_line, "") + row1_line},
      {"short row", replace("p 0000 3FFF", "p 0000")},
      {"no end", good.substr(0, good.size() - 4)},
      {"empty", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    sim::SimUnit unit("16F628A");
    unit.set_program_word(5, 0x1111);
    const std::string path = temp_path("bad.txt");
    write_text(path, c.text);
    EXPECT_FALSE(unit.load(path));
    EXPECT_EQ(unit.program_word(5), 0x1111);
  }
  sim::SimUnit unit("16F628A");
  EXPECT_FALSE(unit.load(temp_path("missing.txt")));
  ASSERT_TRUE(unit.load(good_path));
  EXPECT_EQ(unit.program_word(5), 0x0505);
}

}  // namespace
}  // namespace zenta::testing

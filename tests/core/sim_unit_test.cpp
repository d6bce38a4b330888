// The simulated chip driven with raw packets: erases, writes, the address
// counter, configuration space, and a chip that does not listen.
#include "link/sim/sim_unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "programming/device_id.h"
#include "sim_rig.h"

namespace zenta::testing {
namespace {

TEST(SimChip, EachEraseClearsWhatThatFamilyClearsAndProtectionBlocks) {
  const Packet blank{ICSP_LOAD_DATA, 0x3F, 0xFF}, setup{ICSP_BULK_SETUP1},
      cycle{ICSP_BEGIN_ERASE_PROG}, bulk{ICSP_BULK_ERASE_PROG}, chip_erase{ICSP_CHIP_ERASE},
      config{ICSP_LOAD_CONFIG, 0x3F, 0xFF}, step{ICSP_INC_ADDR, 0};
  const std::vector<Packet> at_config_word = {config, step, step, step, step, step, step, step};
  const auto then = [](std::vector<Packet> first, const std::vector<Packet>& more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
  };
  enum Program { kKept, kErased, kWord0Blank };
  struct Case {
    std::string name, chip;
    std::vector<Packet> packets;
    int config_before;
    Program program;
    bool ids_erased;
    int config_after;
    bool eeprom_erased;
  };
  const std::vector<Case> cases = {
      // Setup + cycle from user memory: program memory only, protection stays.
      {"87x setup", "16F877", {blank, setup, cycle, setup}, 0x3F0B, kErased, false, 0x3F0B, false},
      // From the configuration word: everything, protection included.
      {"87x setup at 2007", "16F877", then(at_config_word, {setup, cycle, setup}), 0x3F0B, kErased,
       true, 0x3FFF, true},
      {"628 setup at 2007", "16F628", then(at_config_word, {setup, cycle, setup}), 0x036B, kErased,
       true, 0x3FFF, true},
      // The 12F675 knows no setup command: the 0x08 programs the blank latch.
      {"675 setup",
       "12F675",
       {blank, setup, cycle, setup},
       0x11D4,
       kWord0Blank,
       false,
       0x11D4,
       false},
      {"87xA chip erase", "16F877A", {chip_erase}, 0x1E3B, kErased, true, 0x3FFF, true},
      {"819 chip erase", "16F819", {chip_erase}, 0x1E37, kErased, false, 0x3FFF, false},
      {"84 knows no chip erase", "16F84", {chip_erase}, 0x3FFB, kKept, false, 0x3FFB, false},
      // Bulk erase carried out by the 0x08 after it; refused under protection.
      {"628 bulk", "16F628", {blank, bulk, cycle}, 0x3F6B, kErased, false, 0x3F6B, false},
      {"628 bulk protected", "16F628", {blank, bulk, cycle}, 0x036B, kKept, false, 0x036B, false},
      {"87xA bulk protected", "16F877A", {blank, bulk, cycle}, 0x1F3B, kKept, false, 0x1F3B, false},
      {"819 bulk without 08", "16F819", {blank, bulk}, 0x3F37, kKept, false, 0x3F37, false},
      // The 16F84A's bulk erase never touches the configuration word.
      {"84A bulk protected", "16F84A", {blank, bulk, cycle}, 0x000B, kErased, false, 0x000B, false},
      // At once, with the configuration word; the data too when it was protected.
      {"628A bulk", "16F628A", {blank, bulk}, 0x1E7B, kErased, false, 0x3FFF, true},
      {"628A bulk in configuration space",
       "16F628A",
       {config, bulk},
       0x3F7B,
       kErased,
       true,
       0x3FFF,
       false},
      // The calibration word and the band-gap bits go with it.
      {"675 bulk", "12F675", {blank, bulk}, 0x11D4, kErased, false, 0x3FFF, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig(c.chip);
    const sim::ChipModel& chip = rig.unit.chip();
    for (int a = 0; a < chip.program_words; ++a) rig.unit.set_program_word(a, 0x2800 | (a & 0xFF));
    for (int i = 0; i < 4; ++i) rig.unit.set_program_word(0x2000 + i, 0x0010 + i);
    rig.unit.set_config_word(c.config_before);
    for (int e = 0; e < chip.eeprom_bytes; ++e) rig.unit.set_eeprom_byte(e, e & 0x7F);
    rig.power_and_enter();
    rig.send_all(c.packets);
    rig.leave();
    for (int a = 0; a < chip.program_words; ++a) {
      const bool blank_now = c.program == kErased || (c.program == kWord0Blank && a == 0);
      ASSERT_EQ(rig.unit.program_word(a), blank_now ? 0x3FFF : 0x2800 | (a & 0xFF)) << a;
    }
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(rig.unit.program_word(0x2000 + i), c.ids_erased ? 0x3FFF : 0x0010 + i);
    }
    EXPECT_EQ(rig.unit.config_word(), c.config_after);
    for (int e = 0; e < chip.eeprom_bytes; ++e) {
      ASSERT_EQ(rig.unit.eeprom_byte(e), c.eeprom_erased ? 0xFF : (e & 0x7F)) << "byte " << e;
    }
    EXPECT_EQ(rig.unit.device_id_word(), chip.device_id | chip.revision);
  }
}

// The panel's write procedures, packet for packet: on the 16F87xA rows of
// eight latched words, a row of blanks skipped; elsewhere one cycle a word.
void write_image(SimRig& rig, const std::vector<int>& image, std::uint8_t cycle) {
  const bool rows = cycle == ICSP_END_PROG;
  for (auto a = image.begin(); a != image.end(); ++a) {
    const auto high = static_cast<std::uint8_t>(*a >> 8), low = static_cast<std::uint8_t>(*a);
    if (!rows || *a != 0x3FFF) rig.send({ICSP_LOAD_DATA, high, low});
    if (!rows) rig.send({cycle});
    if (rows && (a - image.begin()) % 8 == 7 &&
        std::any_of(a - 7, a + 1, [](int w) { return w != 0x3FFF; })) {
      rig.send_all({{ICSP_BEGIN_PROG_ONLY}, {ICSP_END_PROG}});
    }
    rig.send({ICSP_INC_ADDR, 1});
  }
}

TEST(SimChip, EachWriteProcedureLeavesTheMemoryTheChipWouldHold) {
  const int b = 0x3FFF, old = 0x0805;
  // Row 0 mixed, row 1 blank (skipped), row 2 only its word 3 set: row 0's
  // latches must not reach row 2.
  const std::vector<int> image = {0x2805, b, 0x0000, 0x1234, b, b, 0x3FFE, 0x0001, b, b, b, b,
                                  b,      b, b,      b,      b, b, b,      0x0A5A, b, b, b, b};
  struct Case {
    std::string chip;
    int cycle, cycles;  // cycle ICSP_END_PROG: the row procedure
    bool replaces;      // the cycle erases the word before programming it
  };
  const std::vector<Case> cases = {{"16F877A", ICSP_END_PROG, 2, false},
                                   {"16F84A", ICSP_BEGIN_ERASE_PROG, 24, true},
                                   // The 16F62xA's 0x08 only programs.
                                   {"16F628A", ICSP_BEGIN_ERASE_PROG, 24, false},
                                   {"16F628", ICSP_BEGIN_PROG_ONLY, 24, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip);
    SimRig rig(c.chip);
    for (int a = 0; a < rig.unit.chip().program_words; ++a) rig.unit.set_program_word(a, old);
    rig.power_and_enter();
    write_image(rig, image, c.cycle);
    rig.leave();
    // Only an erase/program cycle can set bits; programming alone ANDs.
    for (std::size_t a = 0; a < image.size(); ++a) {
      const int expected = c.replaces ? image[a] : image[a] & old;
      EXPECT_EQ(rig.unit.program_word(static_cast<int>(a)), expected) << "word " << a;
    }
    EXPECT_EQ(rig.unit.program_word(static_cast<int>(image.size())), old);
    EXPECT_EQ(rig.unit.program_cycles(), c.cycles);
  }
}

TEST(SimAddressCounter, WrapsAtEachFamilysTopAndStaysInConfigurationSpace) {
  struct Case {
    std::string name, chip;
    std::vector<Packet> setup, repeated;
    int repeat, address;
  };
  const Packet inc{ICSP_INC_ADDR, 1};
  const std::vector<Case> cases = {
      {"b1 0 and 1 both step one", "16F877A", {}, {{ICSP_INC_ADDR, 0}, inc}, 1, 2},
      {"a read of 4 leaves the fourth", "16F877A", {}, {{ICSP_READ_DATA, 4}}, 1, 3},
      {"87xA: 0x1FFF wraps to 0", "16F877A", {}, {inc}, 0x2000, 0},
      {"84A counts past its 1K words", "16F84A", {}, {inc}, 0x400, 0x400},
      {"84A: 0x1FFF wraps to 0", "16F84A", {}, {inc}, 0x2000, 0},
      {"628A wraps at its 2K words", "16F628A", {}, {inc}, 0x800, 0},
      {"648A wraps at its 4K words", "16F648A", {}, {inc}, 0xFFF, 0xFFF},
      {"819 runs on into configuration space", "16F819", {}, {inc}, 0x2000, 0x2000},
      {"0x3FFF wraps to 0x2000", "16F877", {{ICSP_LOAD_CONFIG}}, {inc}, 0x2005, 0x2005},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig(c.chip);
    rig.power_and_enter();
    rig.send_all(c.setup);
    for (int r = 0; r < c.repeat; ++r) rig.send_all(c.repeated);
    EXPECT_EQ(rig.unit.address(), c.address);
  }
}

// A word programmed with the counter at `counter` lands on the cell the
// chip decodes there, and reads back from that counter value as well.
TEST(SimAddressCounter, AddressesPastTheImplementedMemoryAlias) {
  struct Case {
    std::string chip;
    int counter, lands;  // lands -1: no cell, the write is lost
  };
  const std::vector<Case> cases = {
      {"16F84A", 0x400, 0x000},   {"16F84A", 0x1BFF, 0x3FF}, {"16F873A", 0x1009, 0x009},
      {"16F628", 0x0FFF, 0x7FF},  {"16F877", 0x2008, 0x008}, {"16F877", 0x3FFF, 0x1FFF},
      {"12F675", 0x2027, 0x2007}, {"12F675", 0x2008, -1},    {"16F84A", 0x2004, -1},
      {"16F84A", 0x2006, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip + " at " + std::to_string(c.counter));
    SimRig rig(c.chip);
    const int before = rig.unit.program_word(c.counter);
    rig.power_and_enter();
    if (c.counter >= 0x2000) rig.send({ICSP_LOAD_CONFIG, 0x3F, 0xFF});
    for (int a = c.counter >= 0x2000 ? 0x2000 : 0; a < c.counter; ++a) rig.send({ICSP_INC_ADDR, 0});
    rig.send_all({{ICSP_LOAD_DATA, 0x10, 0x34}, {ICSP_BEGIN_ERASE_PROG}});
    EXPECT_EQ(rig.read_word(), c.lands < 0 ? before : 0x1034);
    rig.leave();
    if (c.lands >= 0) {
      EXPECT_EQ(rig.unit.program_word(c.lands), 0x1034);
    }
    EXPECT_EQ(rig.unit.device_id_word(), rig.unit.chip().device_id | rig.unit.chip().revision);
  }
}

TEST(SimChip, CodeProtectionHidesProgramAndDataButNotConfigurationSpace) {
  struct Case {
    std::string chip;
    int config;
    bool program_hidden, data_hidden;
  };
  const std::vector<Case> cases = {
      {"16F877A", 0x1F3B, true, false}, {"16F877A", 0x3E3B, false, true},
      {"16F877", 0x3F2B, true, false},  {"16F84A", 0x3FEB, true, true},
      {"16F84A", 0x3FF3, false, false}, {"16F628", 0x376B, true, false},
      {"16F628A", 0x3E7B, false, true}, {"16F819", 0x1F37, true, false},
      {"12F675", 0x1154, true, false},  {"12F675", 0x10D4, false, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip + " config " + std::to_string(c.config));
    SimRig rig(c.chip);
    const int top = rig.unit.chip().program_words - 1;
    rig.unit.set_program_word(0, 0x2805);
    rig.unit.set_program_word(1, 0x0123);
    rig.unit.set_program_word(top, 0x3444);
    rig.unit.set_program_word(0x2001, 0x0007);
    rig.unit.set_config_word(c.config);
    // The data memory decodes the counter's low bits: read where it will stand.
    rig.unit.set_eeprom_byte(top % rig.unit.chip().eeprom_bytes, 0x5A);
    rig.power_and_enter();
    rig.send({ICSP_READ_DATA, 2});
    const Packet program = c.program_hidden ? Packet{} : Packet{0x28, 0x05, 0x01, 0x23};
    EXPECT_EQ(rig.link.RxPacket, program);
    for (int a = 1; a < top; ++a) rig.send({ICSP_INC_ADDR, 0});
    // The 12F629 family keeps its calibration word readable.
    const bool calibration = rig.unit.chip().family == sim::Family::k12F629;
    EXPECT_EQ(rig.read_word(), c.program_hidden && !calibration ? 0 : 0x3444);
    rig.send({ICSP_READ_EE, 1});
    EXPECT_EQ(rig.link.RxPacket[0], c.data_hidden ? 0 : 0x5A);
    rig.send({ICSP_LOAD_CONFIG, 0x3F, 0xFF});
    rig.send({ICSP_INC_ADDR, 0});
    EXPECT_EQ(rig.read_word(), 0x0007);
    for (int i = 0; i < 6; ++i) rig.send({ICSP_INC_ADDR, 0});
    EXPECT_EQ(rig.read_word(), c.config);
  }
}

TEST(SimChip, AChipOutOfProgrammingModeReadsAllOnesAndIgnoresWrites) {
  struct Case {
    std::string name, chip;
    std::vector<Packet> setup;
  };
  const Packet vcc_on{UNIT_VCC, 1}, mclr0{UNIT_MCLR_LEVEL, 0}, vpp{UNIT_MCLR_LEVEL, 2},
      lines1{UNIT_PGM_LINES, 1};
  const std::vector<Case> cases = {
      {"unpowered", "16F877A", {{UNIT_VCC, 0}, mclr0, lines1, vpp}},
      {"empty socket", "none", {vcc_on, mclr0, lines1, vpp}},
      {"MCLR back to 5 V", "16F877A", {vcc_on, mclr0, lines1, vpp, {UNIT_MCLR_LEVEL, 1}}},
      {"supply cut", "16F877A", {vcc_on, mclr0, lines1, vpp, {UNIT_VCC, 0}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig(c.chip);
    rig.unit.set_program_word(0, 0x1234);
    rig.send_all(c.setup);
    rig.send({ICSP_READ_DATA, 4});
    EXPECT_EQ(rig.link.RxPacket, (Packet{0x3F, 0xFF, 0x3F, 0xFF, 0x3F, 0xFF, 0x3F, 0xFF}));
    rig.send({ICSP_READ_EE, 8});
    EXPECT_EQ(rig.link.RxPacket, (Packet{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    rig.send_all({{ICSP_LOAD_DATA, 0, 0}, {ICSP_BEGIN_ERASE_PROG}, {ICSP_CHIP_ERASE}});
    EXPECT_EQ(rig.unit.program_word(0), c.chip == "none" ? 0x3FFF : 0x1234);
  }
}

}  // namespace
}  // namespace zenta::testing

// The simulated chip driven with raw packets: erases, writes, the address
// counter, configuration space, and a chip that does not listen.
#include "link/sim/sim_unit.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "sim_rig.h"

namespace zenta::testing {
namespace {

TEST(SimChip, EachEraseProcedureBlanksWhatTheChipErases) {
  const Packet blank{ICSP_LOAD_DATA, 0x3F, 0xFF}, setup{ICSP_BULK_SETUP1},
      cycle{ICSP_BEGIN_ERASE_PROG}, bulk{ICSP_BULK_ERASE_PROG};
  struct Case {
    std::string chip;
    std::vector<Packet> packets;
    int config_before, config_after;  // the user IDs go where the configuration word goes
    bool eeprom_erased;
  };
  const std::vector<Case> cases = {
      // Erase code "0": everything, but the 12F675 keeps its band-gap bits.
      {"16F877", {blank, setup, cycle, setup}, 0x3F3B, 0x3FFF, true},
      {"12F675", {blank, setup, cycle, setup}, 0x11D4, 0x1FFF, true},
      // "1": chip erase.
      {"16F877A", {{ICSP_CHIP_ERASE}}, 0x3F3B, 0x3FFF, true},
      // "2": bulk erase of program memory, then a cycle of the blank latch.
      {"16F628", {blank, bulk, cycle}, 0x3F6B, 0x3F6B, false},
      // "3": bulk erase alone; the calibration word goes with program memory.
      {"12F675", {blank, bulk}, 0x11D4, 0x11D4, false},
      // Bulk erase pointed into configuration space takes the IDs and the word.
      {"16F628A", {{ICSP_LOAD_CONFIG, 0x3F, 0xFF}, bulk}, 0x3F7B, 0x3FFF, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip + " after " + std::to_string(c.packets.size()) + " packets");
    SimRig rig(c.chip);
    const sim::ChipModel& chip = rig.unit.chip();
    for (int a = 0; a < chip.program_words; ++a) rig.unit.set_program_word(a, 0x2800 | (a & 0xFF));
    for (int i = 0; i < 4; ++i) rig.unit.set_program_word(0x2000 + i, 0x0010 + i);
    rig.unit.set_config_word(c.config_before);
    for (int e = 0; e < chip.eeprom_bytes; ++e) rig.unit.set_eeprom_byte(e, e & 0x7F);
    rig.power_and_enter();
    rig.send_all(c.packets);
    rig.leave();
    for (int a = 0; a < chip.program_words; ++a) ASSERT_EQ(rig.unit.program_word(a), 0x3FFF) << a;
    const bool ids_erased = c.config_after != c.config_before;
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(rig.unit.program_word(0x2000 + i), ids_erased ? 0x3FFF : 0x0010 + i);
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
  };
  const std::vector<Case> cases = {{"16F877A", ICSP_END_PROG, 2},
                                   {"16F628A", ICSP_BEGIN_ERASE_PROG, 24},
                                   {"16F628", ICSP_BEGIN_PROG_ONLY, 24}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip);
    SimRig rig(c.chip);
    for (int a = 0; a < rig.unit.chip().program_words; ++a) rig.unit.set_program_word(a, old);
    rig.power_and_enter();
    write_image(rig, image, c.cycle);
    rig.leave();
    // Only an erase/program cycle can set bits; programming alone ANDs.
    for (std::size_t a = 0; a < image.size(); ++a) {
      const int expected = c.cycle == ICSP_BEGIN_ERASE_PROG ? image[a] : image[a] & old;
      EXPECT_EQ(rig.unit.program_word(static_cast<int>(a)), expected) << "word " << a;
    }
    EXPECT_EQ(rig.unit.program_word(static_cast<int>(image.size())), old);
    EXPECT_EQ(rig.unit.program_cycles(), c.cycles);
  }
}

TEST(SimAddressCounter, StepsRunsIntoConfigurationSpaceAndWrapsThere) {
  struct Case {
    std::string name;
    std::vector<Packet> setup, repeated;
    int repeat, address;
  };
  const std::vector<Case> cases = {
      {"b1 0 and 1 both step one", {}, {{ICSP_INC_ADDR, 0}, {ICSP_INC_ADDR, 1}}, 1, 2},
      {"a read of 4 leaves the fourth", {}, {{ICSP_READ_DATA, 4}}, 1, 3},
      {"0x1FFF runs on to 0x2000", {}, {{ICSP_INC_ADDR, 1}}, 0x2000, 0x2000},
      {"0x3FFF wraps to 0x2000", {{ICSP_LOAD_CONFIG}}, {{ICSP_INC_ADDR, 0}}, 0x2005, 0x2005},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig;
    rig.power_and_enter();
    rig.send_all(c.setup);
    for (int r = 0; r < c.repeat; ++r) rig.send_all(c.repeated);
    EXPECT_EQ(rig.unit.address(), c.address);
  }
}

TEST(SimAddressCounter, UnimplementedWordsReadBlankAndIgnoreWrites) {
  SimRig rig("16F84A");
  rig.unit.set_program_word(0x3FF, 0x03FF);
  rig.power_and_enter();
  for (int i = 0; i < 0x3FF; ++i) rig.send({ICSP_INC_ADDR, 1});
  rig.send({ICSP_READ_DATA, 2});
  EXPECT_EQ(rig.link.RxPacket, (Packet{0x03, 0xFF, 0x3F, 0xFF}));
  rig.send_all({{ICSP_LOAD_DATA, 0, 0}, {ICSP_BEGIN_ERASE_PROG}});
  EXPECT_EQ(rig.read_word(), 0x3FFF) << "0x400 lies past the 1K words";
  // 0 programmed into 0x2000..0x2008: 0x2004, 0x2005 and 0x2008 do not
  // exist, and the device ID cannot be written.
  rig.send({ICSP_LOAD_CONFIG});
  const std::vector<int> expected = {0, 0,     0, 0, 0x3FFF, 0x3FFF, rig.unit.device_id_word(),
                                     0, 0x3FFF};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    rig.send_all({{ICSP_LOAD_DATA, 0, 0}, {ICSP_BEGIN_ERASE_PROG}});
    EXPECT_EQ(rig.read_word(), expected[i]) << "address 0x" << std::hex << 0x2000 + i;
    rig.send({ICSP_INC_ADDR, 0});
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
      {"unpowered", "16F877A", {mclr0, lines1, vpp}},
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

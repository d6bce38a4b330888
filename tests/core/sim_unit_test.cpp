// The simulated chip driven with raw packets: erases, writes, the address
// counter, configuration space, and a chip that does not listen.
#include "link/sim/sim_unit.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "sim_rig.h"

namespace zenta::testing {
namespace {

constexpr int kNone = -1;

// Fills every memory of the chip with recognisable, non-blank contents.
void fill_chip(sim::SimUnit& unit, int config) {
  for (int a = 0; a < unit.chip().program_words; ++a) unit.set_program_word(a, 0x2800 | (a & 0xFF));
  for (int i = 0; i < 4; ++i) unit.set_program_word(0x2000 + i, 0x0010 + i);
  unit.set_config_word(config);
  for (int e = 0; e < unit.chip().eeprom_bytes; ++e) unit.set_eeprom_byte(e, e & 0x7F);
}

struct EraseCase {
  std::string chip;
  std::vector<Packet> packets;
  int config_before;
  bool ids_erased;
  int config_after;  // kNone: unchanged
  bool eeprom_erased;
};

TEST(SimChipErase, EachEraseProcedureBlanksWhatTheChipErases) {
  const Packet load_blank{ICSP_LOAD_DATA, 0x3F, 0xFF};
  const Packet setup{ICSP_BULK_SETUP1};
  const Packet cycle{ICSP_BEGIN_ERASE_PROG};
  const Packet bulk{ICSP_BULK_ERASE_PROG};
  const Packet to_config{ICSP_LOAD_CONFIG, 0x3F, 0xFF};
  const std::vector<EraseCase> cases = {
      // Erase code "0": the older devices' sequence takes everything.
      {"16F877", {load_blank, setup, cycle, setup}, 0x3F3B, true, 0x3FFF, true},
      {"16F84", {load_blank, setup, cycle, setup}, 0x3FF1, true, 0x3FFF, true},
      // ... and keeps the 12F629/675's band-gap bits.
      {"12F675", {load_blank, setup, cycle, setup}, 0x11D4, true, 0x1FFF, true},
      // "1": chip erase.
      {"16F877A", {Packet{ICSP_CHIP_ERASE}}, 0x3F3B, true, 0x3FFF, true},
      // "2": bulk erase of program memory at address 0, then a cycle of the blank latch.
      {"16F84A", {load_blank, bulk, cycle}, 0x3FF1, false, kNone, false},
      {"16F628", {load_blank, bulk, cycle}, 0x3F6B, false, kNone, false},
      // "3": bulk erase alone; the calibration word goes with program memory.
      {"16F628A", {load_blank, bulk}, 0x3F7B, false, kNone, false},
      {"12F675", {load_blank, bulk}, 0x11D4, false, kNone, false},
      {"16F819", {load_blank, bulk}, 0x3F37, false, kNone, false},
      // Bulk erase pointed into configuration space also clears IDs and the word.
      {"16F628A", {to_config, bulk}, 0x3F7B, true, 0x3FFF, false},
  };
  for (const EraseCase& c : cases) {
    SCOPED_TRACE(c.chip + " after " + std::to_string(c.packets.size()) + " packets");
    SimRig rig(c.chip);
    fill_chip(rig.unit, c.config_before);
    rig.power_and_enter();
    rig.send_all(c.packets);
    rig.leave();
    const sim::ChipModel& chip = rig.unit.chip();
    for (int a = 0; a < chip.program_words; ++a) {
      ASSERT_EQ(rig.unit.program_word(a), 0x3FFF) << "word " << a;
    }
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(rig.unit.program_word(0x2000 + i), c.ids_erased ? 0x3FFF : 0x0010 + i);
    }
    EXPECT_EQ(rig.unit.config_word(), c.config_after == kNone ? c.config_before : c.config_after);
    for (int e = 0; e < chip.eeprom_bytes; ++e) {
      ASSERT_EQ(rig.unit.eeprom_byte(e), c.eeprom_erased ? 0xFF : (e & 0x7F)) << "byte " << e;
    }
    EXPECT_EQ(rig.unit.device_id_word(), chip.device_id | chip.revision);
    EXPECT_TRUE(rig.host.boxes.empty());
  }
}

// The write procedures of the panel, packet for packet.
void write_rows(SimRig& rig, const std::vector<int>& image) {
  for (std::size_t a = 0; a < image.size();) {
    int blanks = 0;
    for (int i = 0; i < 8; ++i, ++a) {
      const int word = image[a];
      if (word == 0x3FFF) {
        ++blanks;
      } else {
        rig.send({ICSP_LOAD_DATA, static_cast<std::uint8_t>(word >> 8),
                  static_cast<std::uint8_t>(word & 0xFF)});
      }
      if (i != 7) rig.send({ICSP_INC_ADDR, 1});
    }
    if (blanks != 8) rig.send_all({{ICSP_BEGIN_PROG_ONLY}, {ICSP_END_PROG}});
    rig.send({ICSP_INC_ADDR, 1});
  }
}

void write_words(SimRig& rig, const std::vector<int>& image, std::uint8_t cycle) {
  for (const int word : image) {
    rig.send({ICSP_LOAD_DATA, static_cast<std::uint8_t>(word >> 8),
              static_cast<std::uint8_t>(word & 0xFF)});
    rig.send({cycle});
    rig.send({ICSP_INC_ADDR, 1});
  }
}

struct WriteCase {
  std::string name;
  std::string chip;
  std::function<void(SimRig&, const std::vector<int>&)> write;
  int old_word;  // every program word before the write
  std::vector<int> image;
  std::vector<int> expected;
  int cycles;
};

TEST(SimChipWrite, EachWriteProcedureLeavesTheMemoryTheChipWouldHold) {
  const auto rows = [](SimRig& rig, const std::vector<int>& image) { write_rows(rig, image); };
  const auto erase_program = [](SimRig& rig, const std::vector<int>& image) {
    write_words(rig, image, ICSP_BEGIN_ERASE_PROG);
  };
  const auto program_only = [](SimRig& rig, const std::vector<int>& image) {
    write_words(rig, image, ICSP_BEGIN_PROG_ONLY);
  };
  const int b = 0x3FFF;
  // Row 0 mixed, row 1 blank (skipped), row 2 only its word 3 set.
  const std::vector<int> rows_image = {0x2805, b, 0x0000, 0x1234, b, b, 0x3FFE, 0x0001, b, b, b, b,
                                       b,      b, b,      b,      b, b, b,      0x0A5A, b, b, b, b};
  const std::vector<int> words_image = {0x2805, 0x3FFF, 0x0000, 0x1234, 0x0F0F};
  const std::vector<int> anded = {0x0805 & 0x2805, 0x0805, 0x0000, 0x0805 & 0x1234,
                                  0x0805 & 0x0F0F};
  // A skipped row keeps what the chip held; programmed rows AND with it.
  std::vector<int> rows_over_old(24);
  for (int a = 0; a < 24; ++a)
    rows_over_old[static_cast<std::size_t>(a)] = 0x0805 & rows_image[static_cast<std::size_t>(a)];
  const std::vector<WriteCase> cases = {
      {"rows of 8, blank chip", "16F877A", rows, b, rows_image, rows_image, 2},
      {"rows of 8, programmed chip", "16F877A", rows, 0x0805, rows_image, rows_over_old, 2},
      {"erase/program per word", "16F628A", erase_program, 0x0805, words_image, words_image, 5},
      {"erase/program per word", "12F675", erase_program, b, words_image, words_image, 5},
      {"program-only per word, blank chip", "16F877", program_only, b, words_image, words_image, 5},
      {"program-only ANDs with the old word", "16F628", program_only, 0x0805, words_image, anded,
       5},
  };
  for (const WriteCase& c : cases) {
    SCOPED_TRACE(c.name + " on " + c.chip);
    SimRig rig(c.chip);
    for (int a = 0; a < rig.unit.chip().program_words; ++a)
      rig.unit.set_program_word(a, c.old_word);
    rig.power_and_enter();
    c.write(rig, c.image);
    rig.leave();
    const int n = static_cast<int>(c.expected.size());
    for (int a = 0; a < n; ++a) {
      EXPECT_EQ(rig.unit.program_word(a), c.expected[static_cast<std::size_t>(a)]) << "word " << a;
    }
    EXPECT_EQ(rig.unit.program_word(n), c.old_word) << "the word after the image";
    EXPECT_EQ(rig.unit.program_cycles(), c.cycles);
    rig.enter();
    EXPECT_EQ(rig.read_program(n), c.expected) << "read back";
  }
}

TEST(SimChipWrite, RowCyclesUseOnlyTheirOwnRowAndResetTheLatches) {
  SimRig rig("16F877A");
  rig.power_and_enter();
  // Word 9 loaded in row 1; the erase/program cycle replaces all of row 1.
  for (int i = 0; i < 9; ++i) rig.send({ICSP_INC_ADDR, 1});
  rig.send({ICSP_LOAD_DATA, 0x01, 0x23});
  rig.unit.set_program_word(12, 0x0000);
  rig.unit.set_program_word(7, 0x0000);
  rig.send({ICSP_BEGIN_ERASE_PROG});
  EXPECT_EQ(rig.unit.program_word(9), 0x0123);
  EXPECT_EQ(rig.unit.program_word(12), 0x3FFF) << "replaced by its blank latch";
  EXPECT_EQ(rig.unit.program_word(7), 0x0000) << "row 0 untouched";
  // The latches were reset: a second cycle writes blanks and clears nothing.
  rig.send({ICSP_BEGIN_PROG_ONLY});
  EXPECT_EQ(rig.unit.program_word(9), 0x0123);
}

TEST(SimChipConfig, ConfigurationWriteAndIdReadFollowTheChip) {
  struct Case {
    std::string chip;
    int id;
    std::uint8_t cycle;
    int written;
    int read_back;
  };
  const std::vector<Case> cases = {
      {"16F877A", 0x0E27, ICSP_BEGIN_ERASE_PROG, 0x3F3B, 0x3F3B},
      {"16F877", 0x09A3, ICSP_BEGIN_PROG_ONLY, 0x3F3B, 0x3F3B},
      {"16F84", 0x3FFF, ICSP_BEGIN_ERASE_PROG, 0x3FFB, 0x3FFB},
      {"12F675", 0x0FC4, ICSP_BEGIN_ERASE_PROG, 0x01D7, 0x01D7},
      // A program-only cycle cannot set the band-gap bits it would need.
      {"12F629", 0x0F84, ICSP_BEGIN_PROG_ONLY, 0x3FD7, 0x31D7},
      {"16F819", 0x04E1, ICSP_BEGIN_ERASE_PROG, 0x3F37, 0x3F37},
      {"none", 0x3FFF, ICSP_BEGIN_ERASE_PROG, 0x3F3B, 0x3FFF},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip);
    SimRig rig(c.chip);
    rig.power_and_enter();
    rig.go_to_config(6);
    rig.send({UNIT_WAIT, 10});
    EXPECT_EQ(rig.read_word(), c.id);
    rig.leave();

    rig.enter();
    rig.go_to_config(7);
    rig.send({ICSP_LOAD_DATA, static_cast<std::uint8_t>(c.written >> 8),
              static_cast<std::uint8_t>(c.written & 0xFF)});
    rig.send({c.cycle});
    rig.send({UNIT_WAIT, 10});
    EXPECT_EQ(rig.read_word(), c.read_back);
    rig.send_all({{UNIT_MCLR_LEVEL, 0}, {UNIT_PGM_LINES, 1}});
    EXPECT_EQ(rig.unit.program_cycles(), 0) << "configuration space is not program memory";
  }
}

TEST(SimChipConfig, ConfigurationSpaceCellsAndTheirWritability) {
  SimRig rig("16F628A");
  rig.power_and_enter();
  rig.go_to_config(0);
  // Program 0x0000 into every cell from 0x2000 to 0x2008 and read each back.
  const std::vector<int> expected = {0, 0, 0, 0, 0x3FFF, 0x3FFF, 0x1062, 0, 0x3FFF};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    rig.send({ICSP_LOAD_DATA, 0, 0});
    rig.send({ICSP_BEGIN_ERASE_PROG});
    EXPECT_EQ(rig.read_word(), expected[i]) << "address 0x" << std::hex << 0x2000 + i;
    rig.send({ICSP_INC_ADDR, 0});
  }
}

TEST(SimAddressCounter, StepsAndWrapsAsTheChipsCounterDoes) {
  struct Case {
    std::string name;
    std::vector<Packet> setup;
    std::vector<Packet> repeated;
    int repeat;
    int address;
  };
  const Packet to_config{ICSP_LOAD_CONFIG, 0x3F, 0xFF};
  const std::vector<Case> cases = {
      {"entry starts at 0", {}, {}, 0, 0},
      {"b1 0 and 1 both step one", {}, {{ICSP_INC_ADDR, 0}, {ICSP_INC_ADDR, 1}}, 1, 2},
      {"program memory runs on into configuration space", {}, {{ICSP_INC_ADDR, 1}}, 0x2000, 0x2000},
      {"read of 4 leaves the fourth", {}, {{ICSP_READ_DATA, 4}}, 1, 3},
      {"EEPROM read of 8 leaves the eighth", {}, {{ICSP_READ_EE, 8}}, 1, 7},
      {"load config moves to 0x2000", {{ICSP_INC_ADDR, 1}, to_config}, {}, 0, 0x2000},
      {"configuration space counts on", {to_config}, {{ICSP_INC_ADDR, 0}}, 7, 0x2007},
      {"configuration space wraps to 0x2000",
       {to_config},
       {{ICSP_READ_DATA, 4}, {ICSP_INC_ADDR, 0}},
       0x800,
       0x2000},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig;
    rig.power_and_enter();
    rig.send_all(c.setup);
    for (int r = 0; r < c.repeat; ++r) rig.send_all(c.repeated);
    EXPECT_EQ(rig.unit.address(), c.address);
    // Leaving and entering again starts over at 0.
    rig.leave();
    rig.enter();
    EXPECT_EQ(rig.unit.address(), 0);
  }
}

TEST(SimAddressCounter, ReadsIntoConfigurationSpaceAndBeyondTheImplementedSize) {
  SimRig rig("16F84A");
  rig.unit.set_program_word(0x2000, 0x0100);
  rig.unit.set_program_word(0x2001, 0x0101);
  rig.unit.set_program_word(0x3FF, 0x03FF);
  rig.unit.set_eeprom_byte(0, 0xA0);
  rig.power_and_enter();
  for (int i = 0; i < 0x1FFE; ++i) rig.send({ICSP_INC_ADDR, 1});
  rig.send({ICSP_READ_DATA, 4});
  EXPECT_EQ(rig.link.RxPacket, (Packet{0x3F, 0xFF, 0x3F, 0xFF, 0x01, 0x00, 0x01, 0x01}));
  // 0x400 lies past the 16F84A's 1K words: reads blank, ignores writes.
  rig.leave();
  rig.enter();
  for (int i = 0; i < 0x3FF; ++i) rig.send({ICSP_INC_ADDR, 1});
  rig.send({ICSP_READ_DATA, 2});
  EXPECT_EQ(rig.link.RxPacket, (Packet{0x03, 0xFF, 0x3F, 0xFF, 0, 0, 0, 0}));
  rig.send_all({{ICSP_LOAD_DATA, 0, 0}, {ICSP_BEGIN_ERASE_PROG}});
  EXPECT_EQ(rig.read_word(), 0x3FFF);
  // The 64-byte data memory sees address 64 as its byte 0.
  rig.leave();
  rig.enter();
  for (int i = 0; i < 64; ++i) rig.send({ICSP_INC_ADDR, 0});
  rig.send({ICSP_READ_EE, 1});
  EXPECT_EQ(rig.link.RxPacket[0], 0xA0);
}

TEST(SimChipListening, AChipOutOfProgrammingModeReadsAllOnesAndIgnoresWrites) {
  struct Case {
    std::string name;
    std::string chip;
    std::vector<Packet> setup;
  };
  const Packet vcc_on{UNIT_VCC, 1}, vcc_off{UNIT_VCC, 0};
  const Packet mclr0{UNIT_MCLR_LEVEL, 0}, mclr5{UNIT_MCLR_LEVEL, 1}, vpp{UNIT_MCLR_LEVEL, 2};
  const Packet lines1{UNIT_PGM_LINES, 1}, lines2{UNIT_PGM_LINES, 2};
  const std::vector<Case> cases = {
      {"unpowered", "16F877A", {mclr0, lines1, vpp}},
      {"lines in mode 2", "16F877A", {vcc_on, mclr0, lines2, vpp}},
      {"empty socket", "none", {vcc_on, mclr0, lines1, vpp}},
      {"after MCLR back to 5 V", "16F877A", {vcc_on, mclr0, lines1, vpp, mclr5}},
      {"supply cut in programming mode", "16F877A", {vcc_on, mclr0, lines1, vpp, vcc_off}},
      {"supply back with MCLR still at Vpp",
       "16F877A",
       {vcc_on, mclr0, lines1, vpp, vcc_off, vcc_on}},
      {"Vpp raised twice without a fall", "16F877A", {vcc_on, mclr0, lines2, vpp, lines1, vpp}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimRig rig(c.chip);
    rig.unit.set_program_word(0, 0x1234);
    rig.unit.set_eeprom_byte(0, 0x55);
    rig.send_all(c.setup);
    EXPECT_FALSE(rig.unit.in_programming_mode());
    rig.send({ICSP_READ_DATA, 4});
    EXPECT_EQ(rig.link.RxPacket, (Packet{0x3F, 0xFF, 0x3F, 0xFF, 0x3F, 0xFF, 0x3F, 0xFF}));
    rig.send({ICSP_READ_EE, 8});
    EXPECT_EQ(rig.link.RxPacket, (Packet{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    rig.send_all({{ICSP_LOAD_DATA, 0, 0}, {ICSP_BEGIN_ERASE_PROG}, {ICSP_CHIP_ERASE}});
    rig.send({ICSP_INC_ADDR, 1});
    if (c.chip != "none") {
      EXPECT_EQ(rig.unit.program_word(0), 0x1234);
      EXPECT_EQ(rig.unit.eeprom_byte(0), 0x55);
    }
    EXPECT_EQ(rig.unit.address(), 0);
  }
}

TEST(SimChipModels, EveryChipOfTheIdTableReadsItsOwnKey) {
  const std::vector<std::pair<std::string, int>> table = {
      {"16F818", 0x04C0},  {"16F819", 0x04E0},  {"16F84A", 0x0560},  {"16F627", 0x07A0},
      {"16F628", 0x07C0},  {"16F872", 0x08E0},  {"16F874", 0x0920},  {"16F873", 0x0960},
      {"16F877", 0x09A0},  {"16F876", 0x09E0},  {"16F870", 0x0D00},  {"16F871", 0x0D20},
      {"16F876A", 0x0E00}, {"16F877A", 0x0E20}, {"16F873A", 0x0E40}, {"16F874A", 0x0E60},
      {"12F629", 0x0F80},  {"12F675", 0x0FC0},  {"16F627A", 0x1040}, {"16F628A", 0x1060},
      {"16F630", 0x10C0},  {"16F676", 0x10E0},  {"16F648A", 0x1100},
  };
  for (const auto& [name, key] : table) {
    SCOPED_TRACE(name);
    SimRig rig(name);
    rig.power_and_enter();
    rig.go_to_config(6);
    const int id = rig.read_word();
    EXPECT_EQ((id & 0xFF00) == 0x0E00 ? id & 0x7FF0 : id & 0x7FE0, key);
  }
  EXPECT_EQ(sim::chip_models().size(), table.size() + 1) << "the table and the 16F84";
}

TEST(SimChipModels, NamesAndPowerUpState) {
  EXPECT_EQ(sim::find_chip("16f877a")->name, "16F877A");
  EXPECT_EQ(sim::find_chip("None")->program_words, 0);
  EXPECT_FALSE(sim::find_chip("16F999"));
  EXPECT_THROW({ sim::SimUnit bad("16F999"); }, std::invalid_argument);

  sim::SimUnit unit("12F675");
  EXPECT_FALSE(unit.vcc());
  EXPECT_FALSE(unit.led());
  EXPECT_EQ(unit.mclr_level(), 0);
  EXPECT_EQ(unit.pgm_lines(), 0);
  EXPECT_EQ(unit.config_word(), 0x31FF);
  EXPECT_EQ(unit.program_word(0x3FF), 0x3480);
  EXPECT_EQ(unit.program_word(0x3FE), 0x3FFF);
  EXPECT_EQ(unit.program_word(0x2000), 0x3FFF);
  EXPECT_EQ(unit.eeprom_byte(127), 0xFF);
  EXPECT_EQ(unit.eeprom_byte(128), -1);
}

}  // namespace
}  // namespace zenta::testing

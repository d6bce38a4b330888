// The chip operations' packets, byte for byte, as the simulated unit
// received them from the panel; and where the operations start and stop:
// the row holding the last address, the verify's last compared word, the
// bar's end, and the ranges refused before the first packet, driven on a
// Unit over the simulated unit and the chip read back afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>

#include "image/hex_loader.h"
#include "link/command_codes.h"
#include "ops_rig.h"
#include "packets.h"
#include "panel_rig.h"

namespace zenta::testing {
namespace {

// One word's load, programming cycle and step to the next address.
Packets word_cycle(int word, std::uint8_t cycle) {
  return {load(word), {cycle}, kInc};
}
const Packets kRowCycle = {{0x18}, {0x17}, kInc};

TEST(ChipErase, SequencePerEraseMode) {
  // Device, erase mode forced when not empty, packets inside programming mode.
  const std::tuple<int, std::string, Packets> cases[] = {
      {0, "", {load(0x3FFF), {0x01}, {0x08}, {0x01}}},
      {1, "", {{0x1F}}},
      {3, "", {load(0x3FFF), {0x09}, {0x08}}},
      {5, "", {load(0x3FFF), {0x09}}},
      {1, "4", {}},
  };
  for (const auto& [device, erase_mode, erase] : cases) {
    PanelRig rig("16F877A", device);
    if (!erase_mode.empty()) rig.state.EraseMode = erase_mode;
    rig.run(&ChipOperations::CHIP_ERASE);
    EXPECT_EQ(rig.sent(), seq(kEnter, erase, kLeaveRead)) << device;
    EXPECT_EQ(rig.form.view().NotesLabel, "Chip Erase Complete");
  }
}

// Operations that leave programming mode as a write does, with the notes
// and the address box they end on.
TEST(ChipOperations, WriteVerifyAndIdentificationSequences) {
  using Memory = std::map<int, int>;
  const Memory row1 = {{11, 0x2F05}}, word7 = {{7, 0x0123}}, word0 = {{0, 0x2F05}};
  const Memory words03 = {{0, 0x2800}, {3, 0x0123}}, none;
  const Packet group = {0x04, 0x04};
  const struct {
    const char* name;
    char op;  // w write, v verify, i identification
    int device;
    int last_address;
    Memory image;  // the words that are not blank
    Packets body;  // inside programming mode
    const char* notes;
    const char* current;
  } cases[] = {
      {"rows: a blank row, then one word in the next", 'w', 1, 9, row1,
       seq(Packets(11, kInc), load(0x2F05), Packets(4, kInc), kRowCycle), "Write Complete", "8"},
      {"rows: last address -1 writes row 0", 'w', 1, -1, word7,
       seq(Packets(7, kInc), load(0x0123), kRowCycle), "Write Complete", "0"},
      {"erase/program per word, one past the last", 'w', 3, 2, words03,
       seq(word_cycle(0x2800, 0x08), word_cycle(0x3FFF, 0x08), word_cycle(0x3FFF, 0x08),
           word_cycle(0x0123, 0x08)),
       "Write Complete", "3"},
      {"program-only per word, last address -1", 'w', 0, -1, word0, word_cycle(0x2F05, 0x18),
       "Write Complete", "0"},
      {"verify: groups of four up to the last address", 'v', 1, 5, none, seq(group, kInc, group),
       "Verify Complete", nullptr},
      {"verify: last address -1", 'v', 1, -1, none, seq(group, kInc), "Verify Complete", nullptr},
      {"identification", 'i', 1, 0, none, seq(kLoadConfig, Packets(6, kStay), kReadWord),
       "Device=16F877A (E27)", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    PanelRig rig("16F877A", c.device);
    blank_program_image(rig.state);
    for (auto [w, value] : c.image) rig.state.set_word(w, value);
    rig.state.LastAddress = static_cast<std::int16_t>(c.last_address);
    if (c.op == 'w') rig.run([](ChipOperations& ops) { ops.WRITE_PROG(); });
    if (c.op == 'v') rig.run(&ChipOperations::VERIFY_PROG);
    if (c.op == 'i') rig.form.Command_ID_Click();
    EXPECT_EQ(rig.sent(), seq(kEnter, c.body, kLeaveWrite));
    EXPECT_EQ(rig.form.view().NotesLabel, c.notes);
    if (c.current) {
      EXPECT_EQ(rig.form.view().CurrentAddrText, c.current);
    }
  }
}

TEST(WriteConfig, SequencePerWriteMode) {
  const std::pair<int, Packets> cases[] = {
      {1, {{0x08}}}, {3, {{0x08}}}, {0, {{0x18}, {0x38, 0x04}}}};
  for (const auto& [device, cycle] : cases) {
    PanelRig rig("16F876", device);
    rig.form.ConfigAddrText_Change("3F3A");
    rig.run(&ChipOperations::WRITE_CONFIG);
    EXPECT_EQ(rig.sent(), seq(kEnter, kLoadConfig, Packets(7, kStay), load(0x3F3A), cycle,
                              kReadWord, kLeaveConfig))
        << device;
    EXPECT_EQ(rig.form.view().NotesLabel, "Config Write Complete");
  }
}

// READ stops at the LAST box and leaves the word there as it was; READ
// EEPROM takes the device's 64 bytes, eight at a time.
TEST(Reads, ProgramAndEepromSequences) {
  PanelRig rig("16F84A", 3);
  for (int w = 0; w < 8; ++w) rig.unit.set_program_word(w, 0x2800 + w);
  rig.state.set_word(6, 0x1111);
  rig.form.LastAddrText_Change("6");
  rig.form.READ_Click();
  const Packets power_on = {kLedOn, kSupplyOn}, power_off = {kSupplyOff, kLedOff};
  const Packet group = {0x04, 0x04};
  EXPECT_EQ(rig.sent(), seq(power_on, kEnter, group, kStay, group, kLeaveRead, power_off));
  for (int w = 0; w < 6; ++w) EXPECT_EQ(rig.state.word(w), 0x2800 + w) << w;
  EXPECT_EQ(rig.state.word(6), 0x1111);
  EXPECT_EQ(rig.form.view().NotesLabel, "Read Complete");
  EXPECT_EQ(rig.host.shown, std::vector<WindowId>{WindowId::kDataView});

  rig.unit.clear_trace();
  for (int e = 0; e < 64; ++e) rig.unit.set_eeprom_byte(e, e ^ 0x5A);
  rig.state.EepromBuffer[64] = 0x77;
  rig.form.READ_EEPROM_Click();
  EXPECT_EQ(rig.sent(),
            seq(power_on, kEnter, times(8, {{0x05, 0x08}, kStay}), kLeaveRead, power_off));
  EXPECT_EQ(rig.state.EepromBuffer[63], 63 ^ 0x5A);
  EXPECT_EQ(rig.state.EepromBuffer[64], 0x77);
  EXPECT_EQ(rig.form.view().NotesLabel, "EE Read Complete");
}

TEST(WriteCommand, BracketAndRefusals) {
  PanelRig rig("16F84A", 3);
  blank_program_image(rig.state);
  rig.state.set_word(0, 0x2805);
  rig.state.DataLoaded = 1;
  rig.state.WaitTicks = 5;
  EXPECT_TRUE(rig.form.WriteButton_Click().refused);  // silently
  rig.state.WaitTicks = 0;
  for (const char* text : {"80000000", "270F"}) {  // beyond 16 bits; past the buffer
    rig.form.view().LastAddrText = text;
    EXPECT_TRUE(rig.form.WriteButton_Click().refused);
  }
  EXPECT_TRUE(rig.sent().empty());
  EXPECT_EQ(rig.box_texts(), std::vector<std::string>(2, "Last address out of range"));
  rig.host.boxes.clear();

  // Supply on, erase, write, verify, configuration, supply off, MCLR at 5 V.
  rig.form.LastAddrText_Change("2");
  rig.form.WriteButton_Click();
  const Packets all = rig.sent();
  ASSERT_EQ(all.size(), 2u + 8 + 17 + 6 + 17 + 3);
  EXPECT_EQ(Packets(all.begin(), all.begin() + 2), (Packets{kLedOn, kSupplyOn}));
  EXPECT_EQ(Packets(all.end() - 3, all.end()), (Packets{kSupplyOff, kLedOff, {0x32, 0x01}}));
  EXPECT_TRUE(rig.host.boxes.empty());
}

// Word w of the test image: distinct, 14 bits, never blank.
int image_word(int w) {
  return 0x1000 + (w * 37) % 0x1000;
}

std::map<int, int> image_of(int words) {
  std::map<int, int> image;
  for (int w = 0; w < words; ++w) image[w] = image_word(w);
  return image;
}

int count(const sim::SimUnit& unit, const Packet& packet) {
  const Packets all = sent(unit);
  return static_cast<int>(std::count(all.begin(), all.end(), packet));
}

// The write reaches the word at LAST in each mode: whole rows of eight up to
// the row holding it, single words one past it. The verify that follows
// passes, and the write's own bar counts its rows or words.
TEST(OperationBounds, WriteReachesTheWordAtLastInEveryMode) {
  const struct {
    const char* chip;
    int device;
    int last;
  } cases[] = {
      {"16F877A", 1, 7},  {"16F877A", 1, 8},  {"16F877A", 1, 9},
      {"16F877A", 1, 15}, {"16F877A", 1, 16}, {"16F877", 0, 8},
      {"16F877", 0, 4},   {"16F84A", 3, 8},   {"16F84A", 3, 5},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.chip) + " last " + std::to_string(c.last));
    OpsRig rig(c.chip, c.device);
    rig.image(image_of(64));
    const CommandResult result = run_write(rig.ops, static_cast<std::int16_t>(c.last));
    EXPECT_TRUE(result.ok());
    // Row mode programs whole rows; the word-by-word modes one word past LAST.
    const int written_end = c.device == 1 ? (c.last | 7) : c.last + 1;
    for (int w = 0; w < 40; ++w) {
      EXPECT_EQ(rig.unit.program_word(w), w <= written_end ? image_word(w) : 0x3FFF) << w;
    }
    // The write's own bar ends full before the verify starts its own.
    const auto& steps = rig.report.steps;
    const auto write_end =
        std::find_if(steps.begin(), steps.end(), [](auto s) { return s.first == s.second; });
    ASSERT_NE(write_end, steps.end());
    const int bar = c.device == 1 ? count(rig.unit, {ICSP_BEGIN_PROG_ONLY}) : written_end + 1;
    EXPECT_EQ(write_end->second, bar);
  }
}

// The verify compares words 0 up to LAST - 1, four to a read: a difference
// at LAST - 1 is found, one at LAST is not, and no read goes past the group
// holding LAST - 1.
TEST(OperationBounds, VerifyComparesUpToTheWordBeforeLast) {
  for (const int last : {1, 3, 4, 5, 7, 8, 9, 12}) {
    for (const bool differ_before_last : {true, false}) {
      SCOPED_TRACE("last " + std::to_string(last) + (differ_before_last ? " before" : " at"));
      OpsRig rig("16F877A", 1);
      rig.image(image_of(32));
      for (int w = 0; w < 32; ++w) rig.unit.set_program_word(w, image_word(w));
      const int changed = differ_before_last ? last - 1 : last;
      rig.unit.set_program_word(changed, 0x0123);
      rig.state.LastAddress = static_cast<std::int16_t>(last);
      const CommandResult result = run_verify(rig.ops);
      if (differ_before_last) {
        ASSERT_TRUE(result.mismatch.has_value());
        EXPECT_EQ(result.mismatch->address, changed);
        EXPECT_EQ(result.mismatch->read, 0x0123);
        EXPECT_EQ(rig.report.notes_shown.back(), "Verify Error");
      } else {
        EXPECT_FALSE(result.mismatch.has_value());
        EXPECT_EQ(count(rig.unit, {ICSP_READ_DATA, 4}), (last + 3) / 4);
        EXPECT_EQ(count(rig.unit, kInc), (last + 3) / 4 - 1);
        EXPECT_EQ(rig.report.notes_shown.back(), "Verify Complete");
        // The LED shows the unit at work from the first packet to the last.
        EXPECT_EQ(sent(rig.unit).front(), kLedOn);
        EXPECT_EQ(sent(rig.unit).back(), kLedOff);
      }
    }
  }
}

// Addresses the buffer's 10000 words hold are run; one past is refused with
// a box before any packet. The write goes one word past LAST (word by word)
// or to the end of its row, and its verify to LAST - 1; the read stores
// words up to its end address - 1; the full verify runs through its last
// word.
TEST(OperationBounds, RangesPastTheBufferAreRefusedBeforeAnyPacket) {
  constexpr int kNone = INT_MIN;  // the box's text is no 16-bit number
  const struct {
    const char* op;
    int device;  // 1: rows of eight; 3: erase/program per word; 0: program-only per word
    int value;
    bool refused;
  } cases[] = {
      {"write", 1, 9999, false},      {"write", 1, 10000, true},      {"write", 3, 9998, false},
      {"write", 3, 9999, true},       {"write", 0, 9998, false},      {"write", 0, 9999, true},
      {"write", 1, kNone, true},      {"read", 1, 10000, false},      {"read", 1, 10001, true},
      {"read", 1, kNone, true},       {"verify", 1, 10000, false},    {"verify", 1, 10001, true},
      {"verify all", 1, 9999, false}, {"verify all", 1, 10000, true}, {"verify all", 1, -1, false},
      {"verify all", 1, -2, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.op) + " " + std::to_string(c.value));
    OpsRig rig("16F877A", c.device);
    const auto value =
        c.value == kNone ? std::nullopt : std::optional(static_cast<std::int16_t>(c.value));
    const std::string op = c.op;
    CommandResult result;
    if (op == "write") result = run_write(rig.ops, value);
    if (op == "read") result = run_read(rig.ops, value);
    if (op == "verify all") result = run_verify_all(rig.ops, c.value, std::nullopt);
    if (op == "verify") {
      rig.state.LastAddress = *value;
      result = run_verify(rig.ops);
    }
    EXPECT_EQ(result.refused, c.refused);
    EXPECT_EQ(rig.unit.trace().empty(), c.refused);
    const std::vector<std::string> boxes = {"Last address out of range"};
    EXPECT_EQ(rig.report.boxes, c.refused ? boxes : std::vector<std::string>{});
  }
}

// With nothing to compare (LAST 0 or -1) the verify takes one group of
// four, as does a read to end address 0; their bars still end full, then
// empty.
TEST(OperationBounds, NothingToCompareStillReadsOneGroupAndEndsTheBarFull) {
  const std::vector<std::pair<int, int>> full_then_empty = {{4, 4}, {0, 0}};
  for (const int last : {-1, 0}) {
    OpsRig rig("16F877A", 1);
    rig.state.LastAddress = static_cast<std::int16_t>(last);
    EXPECT_TRUE(run_verify(rig.ops).ok());
    EXPECT_EQ(count(rig.unit, {ICSP_READ_DATA, 4}), 1) << last;
    EXPECT_EQ(rig.report.steps, full_then_empty) << last;
  }
  OpsRig rig("16F877A", 1);
  EXPECT_EQ(run_read(rig.ops, 0).read->next_address, 4);
  EXPECT_EQ(rig.report.steps, full_then_empty);
}

// The full verify reads four words at a time through its last word (5,
// inside the second group), then the configuration word, and names its
// first difference in a box and on the notes line; the words after the last
// are not compared.
TEST(OperationBounds, FullVerifyShowsItsFirstDifference) {
  const struct {
    int chip_word3, chip_config;
    std::optional<int> mismatch_at;
  } cases[] = {
      {image_word(3), 0x3F3B, std::nullopt},
      {0x0123, 0x3F3B, 3},
      {image_word(3), 0x3F3A, 0x2007},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mismatch_at.value_or(-1));
    OpsRig rig("16F877A", 1);
    rig.image(image_of(8));
    for (int w = 0; w < 8; ++w) rig.unit.set_program_word(w, image_word(w));
    rig.unit.set_program_word(6, 0x0042);
    rig.unit.set_program_word(3, c.chip_word3);
    rig.unit.set_config_word(c.chip_config);
    const CommandResult result = run_verify_all(rig.ops, 5, 0x3F3B);
    ASSERT_EQ(result.mismatch.has_value(), c.mismatch_at.has_value());
    const Packets words =
        seq(kLedOn, kSupplyOn, kEnter, Packet{0x04, 0x04}, kInc, Packet{0x04, 0x04}, kLeaveWrite);
    if (c.mismatch_at) {
      EXPECT_EQ(result.mismatch->address, *c.mismatch_at);
      EXPECT_EQ(rig.report.boxes, std::vector<std::string>{"Verify Data ERROR"});
      EXPECT_EQ(rig.report.notes_shown.back(), "Verify Error");
    } else {
      EXPECT_TRUE(rig.report.boxes.empty());
      EXPECT_EQ(rig.report.notes_shown, (std::vector<std::string>{"Verify", "Verify Complete"}));
      EXPECT_EQ(sent(rig.unit), seq(words, config_space_read(7), kSupplyOff, kLedOff));
    }
    EXPECT_EQ(rig.report.steps.front(), std::make_pair(4, 6));
    EXPECT_EQ(rig.report.steps.back(), std::make_pair(0, 0));
  }
}

// A read or a full verify asked to stop between groups says so, keeps the
// words it stored, and leaves the target powered down.
TEST(OperationBounds, StoppedReadOrVerifySaysHowFarItGot) {
  for (const int stop_at : {1, 3}) {
    for (const bool read : {true, false}) {
      SCOPED_TRACE(std::to_string(stop_at) + (read ? " read" : " verify"));
      OpsRig rig("16F877A", 1);
      rig.image(image_of(64));
      for (int w = 0; w < 64; ++w) rig.unit.set_program_word(w, image_word(w));
      if (read) blank_program_image(rig.state);
      rig.report.stop_when = [&rig, stop_at] { return rig.report.pauses >= stop_at; };
      const CommandResult result =
          read ? run_read(rig.ops, 64) : run_verify_all(rig.ops, 63, std::nullopt);
      EXPECT_TRUE(result.stopped);
      EXPECT_FALSE(result.mismatch);
      EXPECT_EQ(count(rig.unit, {ICSP_READ_DATA, 4}), stop_at);
      if (read) {
        EXPECT_TRUE(result.read->stopped_early);
        EXPECT_EQ(result.read->next_address, 4 * stop_at);
        for (int w = 0; w < 4 * stop_at; ++w) EXPECT_EQ(rig.state.word(w), image_word(w)) << w;
      }
      EXPECT_EQ(rig.report.notes_shown.back(), kStoppedText);
      EXPECT_EQ(sent(rig.unit).back(), kLedOff);
      EXPECT_FALSE(rig.unit.vcc());
    }
  }
  OpsRig rig("16F877A", 1);
  const CommandResult whole = run_read(rig.ops, 64);
  EXPECT_FALSE(whole.stopped || whole.read->stopped_early);
  EXPECT_EQ(whole.read->next_address, 64);
}

}  // namespace
}  // namespace zenta::testing

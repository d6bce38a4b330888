// Packet sequences of the chip operations, byte for byte, as the simulated
// unit received them.
#include <gtest/gtest.h>

#include <tuple>

#include "image/hex_loader.h"
#include "panel_rig.h"

namespace zenta::testing {
namespace {

using Packets = std::vector<Packet>;

const Packets kEnter = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}};
const Packets kLeaveWrite = {{0x32, 0x01}, {0x31, 0x01}};
const Packets kLeaveRead = {{0x32, 0x01}, {0x31, 0x02}};
const Packets kLeaveConfig = {{0x32, 0x00}, {0x31, 0x01}};
const Packets kPowerOn = {{0x3B, 0x01}, {0x3A, 0x01}};
const Packets kPowerOff = {{0x3A, 0x00}, {0x3B, 0x00}};
const Packet kInc = {0x06, 0x01};
const Packet kStay = {0x06, 0x00};
const Packet kLoadConfig = {0x00, 0x3F, 0xFF};
const Packets kReadWord = {{0x38, 0x0A}, {0x04, 0x01}};
const Packets kRowCycle = {{0x18}, {0x17}, kInc};

// The packets and packet lists given, one after the other.
template <typename... Parts>
Packets seq(const Parts&... parts) {
  Packets all;
  for (const Packets& part : {Packets{parts}...}) all.insert(all.end(), part.begin(), part.end());
  return all;
}
Packet load(int word) {
  return {0x02, static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word & 0xFF)};
}
// One word's load, programming cycle and step to the next address.
Packets word_cycle(int word, std::uint8_t cycle) {
  return {load(word), {cycle}, kInc};
}

TEST(ChipErase, SequencePerEraseMode) {
  // Device, erase mode forced when not null, packets inside programming mode, count.
  const std::tuple<int, const char*, Packets, std::size_t> cases[] = {
      {0, nullptr, {load(0x3FFF), {0x01}, {0x08}, {0x01}}, 9},
      {1, nullptr, {{0x1F}}, 6},
      {3, nullptr, {load(0x3FFF), {0x09}, {0x08}}, 8},
      {5, nullptr, {load(0x3FFF), {0x09}}, 7},
      {1, "4", {}, 5},
  };
  for (const auto& [device, erase_mode, erase, count] : cases) {
    SCOPED_TRACE(count);
    PanelRig rig("16F877A", device);
    if (erase_mode) rig.state.EraseMode = erase_mode;
    rig.run(&ChipOperations::CHIP_ERASE);
    EXPECT_EQ(rig.sent(), seq(kEnter, erase, kLeaveRead));
    EXPECT_EQ(rig.sent().size(), count);
    EXPECT_EQ(rig.form.view().NotesLabel, "Chip Erase Complete");
  }
}

// Operations that leave programming mode as a write does.
TEST(ChipOperations, WriteVerifyAndIdentificationSequences) {
  using Op = std::function<void(PanelRig&)>;
  const Op write = [](PanelRig& rig) { rig.run(&ChipOperations::WRITE_PROG); };
  const Op verify = [](PanelRig& rig) { rig.run(&ChipOperations::VERIFY_PROG); };
  const Packet group = {0x04, 0x04};
  struct Case {
    const char* name;
    Op op;
    int device;
    int last_address;
    std::vector<std::pair<int, int>> words;  // image words that are not blank
    Packets body;                            // inside programming mode
    const char* notes;
    const char* current = nullptr;
  };
  const Case cases[] = {
      Case{"rows: a blank row, then one word in the next",
           write,
           1,
           9,
           {{11, 0x2F05}},
           seq(Packets(11, kInc), load(0x2F05), Packets(4, kInc), kRowCycle),
           "Write Complete",
           "8"},
      Case{"rows: last address -1 writes row 0",
           write,
           1,
           -1,
           {{7, 0x0123}},
           seq(Packets(7, kInc), load(0x0123), kRowCycle),
           "Write Complete",
           "0"},
      Case{"erase/program per word, one past the last",
           write,
           3,
           2,
           {{0, 0x2800}, {3, 0x0123}},
           seq(word_cycle(0x2800, 0x08), word_cycle(0x3FFF, 0x08), word_cycle(0x3FFF, 0x08),
               word_cycle(0x0123, 0x08)),
           "Write Complete",
           "3"},
      Case{"program-only per word, last address -1",
           write,
           0,
           -1,
           {{0, 0x2F05}},
           word_cycle(0x2F05, 0x18),
           "Write Complete",
           "0"},
      Case{"verify: groups of four up to the last address",
           verify,
           1,
           5,
           {},
           seq(group, kInc, group),
           "Verify Complete"},
      Case{"verify: last address -1", verify, 1, -1, {}, seq(group, kInc), "Verify Complete"},
      Case{"identification",
           [](PanelRig& rig) { rig.form.Command_ID_Click(); },
           1,
           0,
           {},
           seq(kLoadConfig, Packets(6, kStay), kReadWord),
           "Device=16F877A (E27)"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    PanelRig rig("16F877A", c.device);
    blank_program_image(rig.state);
    for (auto [w, value] : c.words) rig.state.set_word(w, value);
    rig.state.LastAddress = static_cast<std::int16_t>(c.last_address);
    c.op(rig);
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
    SCOPED_TRACE(device);
    PanelRig rig("16F876", device);
    rig.form.ConfigAddrText_Change("3F3A");
    rig.run(&ChipOperations::WRITE_CONFIG);
    EXPECT_EQ(rig.sent(), seq(kEnter, kLoadConfig, Packets(7, kStay), load(0x3F3A), cycle,
                              kReadWord, kLeaveConfig));
    EXPECT_EQ(rig.sent().size(), cycle.size() == 1 ? 17u : 18u);
    EXPECT_EQ(rig.form.view().NotesLabel, "Config Write Complete");
  }
}

TEST(Reads, ProgramAndEepromSequences) {
  PanelRig rig("16F84A", 3);
  for (int w = 0; w < 8; ++w) rig.unit.set_program_word(w, 0x2800 + w);
  rig.state.set_word(6, 0x1111);
  rig.form.LastAddrText_Change("6");
  rig.form.READ_Click();
  EXPECT_EQ(rig.sent(), seq(kPowerOn, kEnter, Packet{0x04, 0x04}, kStay, Packet{0x04, 0x04},
                            kLeaveRead, kPowerOff));
  EXPECT_EQ(rig.sent().size(), 12u);
  for (int w = 0; w < 6; ++w) EXPECT_EQ(rig.state.word(w), 0x2800 + w) << w;
  EXPECT_EQ(rig.state.word(6), 0x1111);
  EXPECT_EQ(rig.form.view().NotesLabel, "Read Complete");
  EXPECT_EQ(rig.host.shown, std::vector<WindowId>{WindowId::kDataView});

  rig.unit.clear_trace();
  for (int e = 0; e < 64; ++e) rig.unit.set_eeprom_byte(e, e ^ 0x5A);
  rig.state.EepromBuffer[64] = 0x77;
  rig.form.READ_EEPROM_Click();
  Packets groups;
  for (int i = 0; i < 8; ++i) groups.insert(groups.end(), {{0x05, 0x08}, kStay});
  EXPECT_EQ(rig.sent(), seq(kPowerOn, kEnter, groups, kLeaveRead, kPowerOff));
  EXPECT_EQ(rig.sent().size(), 25u);
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

  // Supply on, erase, write, verify, configuration, supply off.
  rig.form.LastAddrText_Change("2");
  rig.form.WriteButton_Click();
  const Packets sent = rig.sent();
  ASSERT_EQ(sent.size(), 2u + 8 + 17 + 6 + 17 + 3);
  EXPECT_EQ(Packets(sent.begin(), sent.begin() + 2), kPowerOn);
  EXPECT_EQ(Packets(sent.end() - 3, sent.end()), seq(kPowerOff, Packet{0x32, 0x01}));
  EXPECT_TRUE(rig.host.boxes.empty());
}

}  // namespace
}  // namespace zenta::testing

// Packet sequences of the chip operations, byte for byte, as the simulated
// unit received them.
#include <gtest/gtest.h>

#include "common/number_text.h"
#include "image/hex_loader.h"
#include "panel_rig.h"

namespace zenta::testing {
namespace {

using Packets = std::vector<Packet>;

const Packets kEnter = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}};
const Packets kLeaveWrite = {{0x32, 0x01}, {0x31, 0x01}};
const Packets kLeaveRead = {{0x32, 0x01}, {0x31, 0x02}};
const Packets kLeaveConfig = {{0x32, 0x00}, {0x31, 0x01}};

Packets join(std::initializer_list<Packets> parts) {
  Packets all;
  for (const Packets& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}
Packets repeat(const Packet& p, int times) {
  return Packets(static_cast<std::size_t>(times), p);
}

TEST(ChipErase, SequencePerEraseMode) {
  const Packet load_blank = {0x02, 0x3F, 0xFF};
  struct Case {
    int device;
    const char* erase_mode;  // forced when not null
    Packets erase;
    std::size_t count;
  };
  const Case cases[] = {
      {0, nullptr, {load_blank, {0x01}, {0x08}, {0x01}}, 9},
      {1, nullptr, {{0x1F}}, 6},
      {3, nullptr, {load_blank, {0x09}, {0x08}}, 8},
      {5, nullptr, {load_blank, {0x09}}, 7},
      {1, "4", {}, 5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.count);
    PanelRig rig("16F877A", c.device);
    if (c.erase_mode) rig.state.EraseMode = c.erase_mode;
    rig.form.CHIP_ERASE();
    EXPECT_EQ(rig.sent(), join({kEnter, c.erase, kLeaveRead}));
    EXPECT_EQ(rig.sent().size(), c.count);
    EXPECT_EQ(rig.form.view().NotesLabel, "Chip Erase Complete");
  }
  // The button powers the chip around it and leaves the LED alone.
  PanelRig rig("16F877A", 1);
  rig.unit.set_program_word(0, 0x1234);
  rig.form.ERASEButton_Click();
  EXPECT_EQ(rig.sent(), join({{{0x3A, 0x01}}, kEnter, {{0x1F}}, kLeaveRead, {{0x3A, 0x00}}}));
  EXPECT_EQ(rig.form.view().Command_VCC, "VCC off");
  EXPECT_EQ(rig.unit.program_word(0), 0x3FFF);
}

TEST(WriteProg, SequencePerWriteMode) {
  const Packet inc = {0x06, 0x01};
  struct Case {
    const char* name;
    int device;
    int last_address;
    std::vector<std::pair<int, int>> words;  // image words that are not blank
    Packets body;
    const char* current;
  };
  const Case cases[] = {
      {"rows: a blank row, then one word in the next",
       1,
       9,
       {{11, 0x2F05}},
       join({repeat(inc, 8),
             repeat(inc, 3),
             {{0x02, 0x2F, 0x05}},
             repeat(inc, 4),
             {{0x18}, {0x17}, inc}}),
       "8"},
      {"rows: last address -1 writes row 0",
       1,
       -1,
       {{7, 0x0123}},
       join({repeat(inc, 7), {{0x02, 0x01, 0x23}, {0x18}, {0x17}, inc}}),
       "0"},
      {"erase/program per word, one past the last",
       3,
       2,
       {{0, 0x2800}, {3, 0x0123}},
       {{0x02, 0x28, 0x00},
        {0x08},
        inc,
        {0x02, 0x3F, 0xFF},
        {0x08},
        inc,
        {0x02, 0x3F, 0xFF},
        {0x08},
        inc,
        {0x02, 0x01, 0x23},
        {0x08},
        inc},
       "3"},
      {"program-only per word, last address -1",
       0,
       -1,
       {{0, 0x2F05}},
       {{0x02, 0x2F, 0x05}, {0x18}, inc},
       "0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    PanelRig rig("16F877A", c.device);
    blank_program_image(rig.state);
    for (auto [w, value] : c.words) rig.state.set_word(w, value);
    rig.state.LastAddress = static_cast<std::int16_t>(c.last_address);
    rig.form.WRITE_PROG();
    EXPECT_EQ(rig.sent(), join({kEnter, c.body, kLeaveWrite}));
    EXPECT_EQ(rig.form.view().CurrentAddrText, c.current);
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
  }
}

TEST(WriteConfig, SequencePerWriteMode) {
  struct Case {
    int device;
    Packets cycle;
  };
  const Case cases[] = {{1, {{0x08}}}, {3, {{0x08}}}, {0, {{0x18}, {0x38, 0x04}}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.device);
    PanelRig rig("16F876", c.device);
    rig.form.ConfigAddrText_Change("3F3A");
    rig.form.WRITE_CONFIG();
    const Packets expected = join({kEnter,
                                   {{0x00, 0x3F, 0xFF}},
                                   repeat({0x06, 0x00}, 7),
                                   {{0x02, 0x3F, 0x3A}},
                                   c.cycle,
                                   {{0x38, 0x0A}, {0x04, 0x01}},
                                   kLeaveConfig});
    EXPECT_EQ(rig.sent(), expected);
    EXPECT_EQ(rig.sent().size(), c.cycle.size() == 1 ? 17u : 18u);
    EXPECT_EQ(rig.unit.config_word(), 0x3F3A);
    EXPECT_EQ(rig.form.view().NotesLabel, "Config Write Complete");
    EXPECT_FALSE(rig.form.outcome().config_error);
  }
}

TEST(Identification, SequenceAndName) {
  PanelRig rig("16F877A", 1);
  rig.form.Command_ID_Click();
  EXPECT_EQ(rig.sent(), join({kEnter,
                              {{0x00, 0x3F, 0xFF}},
                              repeat({0x06, 0x00}, 6),
                              {{0x38, 0x0A}, {0x04, 0x01}},
                              kLeaveWrite}));
  EXPECT_EQ(rig.form.view().NotesLabel, "Device=16F877A (E27)");
  EXPECT_EQ(rig.form.view().Text_Device, "16F877A  (E27)");
  EXPECT_EQ(rig.state.DeviceId, 0x0E27);
}

TEST(Verify, GroupsOfFourUpToTheLastAddress) {
  struct Case {
    int last_address;
    Packets body;
  };
  const Case cases[] = {{5, {{0x04, 0x04}, {0x06, 0x01}, {0x04, 0x04}}},
                        {4, {{0x04, 0x04}}},
                        {-1, {{0x04, 0x04}, {0x06, 0x01}}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.last_address);
    PanelRig rig("16F877A", 1);
    blank_program_image(rig.state);
    rig.state.LastAddress = static_cast<std::int16_t>(c.last_address);
    rig.form.VERIFY_PROG();
    EXPECT_EQ(rig.sent(), join({kEnter, c.body, kLeaveWrite}));
    EXPECT_EQ(rig.form.view().NotesLabel, "Verify Complete");
  }
}

TEST(Reads, ProgramAndEepromSequences) {
  PanelRig rig("16F84A", 3);
  for (int w = 0; w < 8; ++w) rig.unit.set_program_word(w, 0x2800 + w);
  rig.state.set_word(6, 0x1111);
  rig.form.view().FilenameTextbox = "blink.hex";
  rig.state.DataLoaded = 1;
  rig.form.LastAddrText_Change("6");
  rig.form.READ_Click();
  EXPECT_EQ(rig.sent(), join({{{0x3B, 0x01}, {0x3A, 0x01}},
                              kEnter,
                              {{0x04, 0x04}, {0x06, 0x00}, {0x04, 0x04}},
                              kLeaveRead,
                              {{0x3A, 0x00}, {0x3B, 0x00}}}));
  for (int w = 0; w < 6; ++w) EXPECT_EQ(rig.state.word(w), 0x2800 + w) << w;
  EXPECT_EQ(rig.state.word(6), 0x1111);
  const MainView& v = rig.form.view();
  EXPECT_EQ(v.CurrentAddrText, "6");
  EXPECT_EQ(v.NotesLabel, "Read Complete");
  EXPECT_EQ(v.FilenameTextbox, "");
  EXPECT_EQ(rig.state.DataLoaded, 0);
  EXPECT_EQ(rig.host.shown, std::vector<WindowId>{WindowId::kDataView});
  EXPECT_EQ(rig.form.program_view().cell(1, 2), "2801 ");
  // What was read is no image to write.
  rig.form.WriteButton_Click();
  EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"I have no data"});

  rig.unit.clear_trace();
  for (int e = 0; e < 64; ++e) rig.unit.set_eeprom_byte(e, e ^ 0x5A);
  rig.state.EepromBuffer[64] = 0x77;
  rig.form.READ_EEPROM_Click();
  Packets groups;
  for (int i = 0; i < 8; ++i) groups.insert(groups.end(), {{0x05, 0x08}, {0x06, 0x00}});
  EXPECT_EQ(rig.sent(), join({{{0x3B, 0x01}, {0x3A, 0x01}},
                              kEnter,
                              groups,
                              kLeaveRead,
                              {{0x3A, 0x00}, {0x3B, 0x00}}}));
  EXPECT_EQ(rig.state.EepromBuffer[63], 63 ^ 0x5A);
  EXPECT_EQ(rig.state.EepromBuffer[64], 0x77);
  EXPECT_EQ(v.NotesLabel, "EE Read Complete");
  EXPECT_EQ(rig.host.shown.back(), WindowId::kEepromView);
  EXPECT_EQ(rig.form.eeprom_view().cell(4, 16), hex_byte(63 ^ 0x5A) + " ");
}

TEST(WriteCommand, BracketAndRefusals) {
  PanelRig rig("16F84A", 3);
  blank_program_image(rig.state);
  rig.state.set_word(0, 0x2805);
  rig.state.DataLoaded = 1;
  rig.state.WaitTicks = 5;
  rig.form.WriteButton_Click();  // silently refused
  EXPECT_TRUE(rig.sent().empty());
  EXPECT_TRUE(rig.host.boxes.empty());
  EXPECT_TRUE(rig.form.outcome().refused);

  rig.state.WaitTicks = 0;
  for (const char* text : {"80000000", "270F"}) {  // beyond 16 bits; past the buffer
    rig.form.view().LastAddrText = text;
    rig.form.WriteButton_Click();
    EXPECT_TRUE(rig.sent().empty()) << text;
    EXPECT_EQ(rig.host.boxes.back().text, "Last address out of range");
  }
  rig.host.boxes.clear();

  rig.form.LastAddrText_Change("2");
  rig.form.WriteButton_Click();
  const Packets sent = rig.sent();
  ASSERT_EQ(sent.size(), 2u + 8 + 17 + 6 + 17 + 3);
  EXPECT_EQ(Packets(sent.begin(), sent.begin() + 2), (Packets{{0x3B, 0x01}, {0x3A, 0x01}}));
  EXPECT_EQ(Packets(sent.end() - 3, sent.end()),
            (Packets{{0x3A, 0x00}, {0x3B, 0x00}, {0x32, 0x01}}));
  EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
  EXPECT_EQ(rig.form.view().NotesColor, kLavender);
  EXPECT_EQ(rig.unit.program_word(0), 0x2805);
  EXPECT_TRUE(rig.host.boxes.empty());
  EXPECT_FALSE(rig.form.outcome().refused);
}

}  // namespace
}  // namespace zenta::testing

// LOAD_HEX, the file choice and the HEX-file derivation, on files written
// into a temporary folder.
#include <gtest/gtest.h>

#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

TEST(LoadHex, RecordsAddressesAndFailures) {
  struct Case {
    const char* name;
    const char* text;  // nullptr: no file is written
    bool ok;
    int last_address;
    std::vector<std::pair<int, int>> bytes;  // index, value expected afterwards
    const char* last_text = nullptr;         // the address boxes after a good load
    const char* start_text = nullptr;
    const char* file = "a.hex";
  };
  const Case cases[] = {
      Case{"end record only",
           ":00000001FF\n",
           true,
           0,
           {{0, 0xFF}, {1, 0x3F}, {19999, 0x3F}, {20000, 0x55}},
           "0",
           "0"},
      Case{"configuration word",
           ":02400E00323F3F\n:00000001FF\n",
           true,
           0x2008,
           {{0x400E, 0x32}, {0x400F, 0x3F}},
           "2000",
           "2007"},
      Case{"extended address is data",
           ":020000040000FA\n:00000001FF\n",
           true,
           0,
           {{0, 0}, {1, 0}},
           "0",
           "0"},
      Case{"count 0 stores one byte, no end record",
           ":00000A0012\n",
           true,
           5,
           {{10, 0x12}, {11, 0x3F}},
           "5",
           "5"},
      Case{"first record at byte 3", ":01000300AA\n", true, 2, {{3, 0xAA}}, "2", "2"},
      Case{"commas and blanks",
           "  :01000000AA, :01000100BB\r\n:00000001FF\r\n",
           true,
           0,
           {{0, 0xAA}, {1, 0xBB}},
           "0",
           "0"},
      Case{"blank line ends quietly",
           ":01000000AA\n\n:01000200BB\n",
           true,
           0,
           {{0, 0xAA}, {2, 0xFF}},
           "0",
           "0"},
      Case{"record ends in the last byte",
           ":014E2000AA\n",
           true,
           10000,
           {{20000, 0xAA}},
           "2000",
           "2710"},
      Case{"record past index 20000",
           ":01000000AA\n:024E2000AABB\n:00000001FF\n",
           false,
           0,
           {{0, 0xAA}, {20000, 0xAA}}},
      Case{"negative address", ":02800000AABB\n", false, 0, {{0, 0xFF}}},
      Case{"missing file", nullptr, false, 0, {{0, 0xFF}}},
      Case{"a folder", nullptr, false, 0, {{0, 0xFF}}, nullptr, nullptr, "."},
      Case{"no name", nullptr, false, 0, {{0, 0xFF}}, nullptr, nullptr, ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    PanelRig rig("16F877A", 1);
    rig.state.ProgramBuffer[20000] = 0x55;
    rig.form.view().StartAddrText = "keep";
    if (c.text) write_text(dir.file(c.file), c.text);
    rig.state.HexFileName = *c.file ? dir.file(c.file) : "";
    rig.state.DataLoaded = c.ok ? 0 : 1;  // a good load sets it, a failed one keeps it
    EXPECT_EQ(rig.form.LOAD_HEX(), c.ok);
    EXPECT_EQ(rig.state.DataLoaded, 1);
    EXPECT_EQ(rig.state.LastAddress, c.last_address);
    for (auto [index, value] : c.bytes) {
      EXPECT_EQ(rig.state.ProgramBuffer[static_cast<std::size_t>(index)], value) << index;
    }
    if (!c.ok) {
      EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});
      EXPECT_EQ(rig.form.view().StartAddrText, "keep");
      continue;
    }
    EXPECT_TRUE(rig.host.boxes.empty());
    EXPECT_EQ(rig.form.view().LastAddrText, c.last_text);
    EXPECT_EQ(rig.form.view().StartAddrText, c.start_text);
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

}  // namespace
}  // namespace zenta::testing

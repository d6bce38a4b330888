// LOAD_HEX, the file choice and the HEX-file derivation, on files written
// into a temporary folder.
#include <gtest/gtest.h>

#include "common/number_text.h"
#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

struct LoadCase {
  const char* name;
  std::string text;
  bool ok;
  int last_address;
  std::vector<std::pair<int, int>> bytes;  // index, value expected afterwards
  const char* last_text = nullptr;         // LastAddrText after a good load
  const char* start_text = nullptr;
};

TEST(LoadHex, RecordsAddressesAndFailures) {
  const LoadCase cases[] = {
      {"end record only",
       ":00000001FF\n",
       true,
       0,
       {{0, 0xFF}, {1, 0x3F}, {19999, 0x3F}},
       "0",
       "0"},
      {"two words",
       ":0400000000308A0042\n:00000001FF\n",
       true,
       2,
       {{0, 0x00}, {1, 0x30}, {2, 0x8A}, {3, 0x00}, {4, 0xFF}},
       "2",
       "0"},
      {"ends at byte 5", ":06000000010203040506E5\n:00000001FF\n", true, 2, {{5, 6}}, "2", "0"},
      {"configuration word",
       ":02400E00323F3F\n:00000001FF\n",
       true,
       0x2008,
       {{0x400E, 0x32}, {0x400F, 0x3F}},
       "2000",
       "2007"},
      {"extended address is data", ":020000040000FA\n:00000001FF\n", true, 0, {{0, 0}, {1, 0}}},
      {"count 0 stores one byte", ":00000A0012\n", true, 5, {{10, 0x12}, {11, 0x3F}}, "5", "5"},
      {"first record at byte 3", ":01000300AA\n", true, 2, {{3, 0xAA}}, "2", "2"},
      {"commas and blanks",
       "  :01000000AA, :01000100BB\r\n:00000001FF\r\n",
       true,
       0,
       {{0, 0xAA}, {1, 0xBB}}},
      {"blank line ends quietly", ":01000000AA\n\n:01000200BB\n", true, 0, {{0, 0xAA}, {2, 0xFF}}},
      {"file ends without end record", ":01000400CC\n", true, 2, {{4, 0xCC}}},
      {"record ends in the last byte", ":014E2000AA\n", true, 10000, {{20000, 0xAA}}, "2000"},
      {"record past index 20000",
       ":01000000AA\n:024E2000AABB\n:00000001FF\n",
       false,
       0,
       {{0, 0xAA}, {20000, 0xAA}}},
      {"negative address", ":02800000AABB\n", false, 0, {{0, 0xFF}}},
  };
  for (const LoadCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    PanelRig rig("16F877A", 1);
    rig.state.ProgramBuffer[20000] = 0x55;
    rig.form.view().StartAddrText = "keep";
    write_text(dir.file("a.hex"), c.text);
    rig.state.HexFileName = dir.file("a.hex");
    rig.form.LOAD_HEX();
    EXPECT_EQ(rig.form.outcome().load_error, !c.ok);
    EXPECT_EQ(rig.state.DataLoaded, c.ok ? 1 : 0);
    EXPECT_EQ(rig.state.LastAddress, c.last_address);
    for (auto [index, value] : c.bytes) {
      EXPECT_EQ(rig.state.ProgramBuffer[static_cast<std::size_t>(index)], value) << index;
    }
    if (!c.ok) {
      EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});
      EXPECT_EQ(rig.host.boxes[0].title, "FILE ERROR");
      EXPECT_EQ(rig.form.view().StartAddrText, "keep");
      continue;
    }
    EXPECT_TRUE(rig.host.boxes.empty());
    if (c.last_text) {
      EXPECT_EQ(rig.form.view().LastAddrText, c.last_text);
    }
    if (c.start_text) {
      EXPECT_EQ(rig.form.view().StartAddrText, c.start_text);
    }
    EXPECT_EQ(rig.form.view().CurrentAddrText, hex_text(c.last_address));
    if (c.bytes.empty() || c.bytes[0].first != 20000) {
      EXPECT_EQ(rig.state.ProgramBuffer[20000], 0x55);
    }
  }
}

TEST(LoadHex, ShowsProgressFieldsAndRefillsAVisibleViewer) {
  TempDir dir;
  PanelRig rig("16F877A", 1);
  write_text(dir.file("a.hex"), ":0200100003FF00\n:00000001FF\n");
  rig.state.HexFileName = dir.file("a.hex");
  rig.host.visible.insert(WindowId::kDataView);
  rig.form.LOAD_HEX();
  EXPECT_EQ(rig.form.view().Text2, ":00000001FF");
  EXPECT_EQ(rig.form.view().Text_ADMON, "17  255");
  EXPECT_EQ(rig.form.program_view().cell(1, 9), "FF03 ");
}

TEST(LoadHex, UnreadableFilesFailAndKeepTheLoadedFlag) {
  TempDir dir;
  PanelRig rig("16F877A", 1);
  rig.state.DataLoaded = 1;
  for (const std::string& name : {dir.file("missing.hex"), dir.path().string(), std::string()}) {
    rig.host.boxes.clear();
    rig.state.HexFileName = name;
    rig.form.LOAD_HEX();
    EXPECT_TRUE(rig.form.outcome().load_error) << name;
    EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});
    EXPECT_EQ(rig.state.DataLoaded, 1);
    EXPECT_EQ(rig.state.word(0), 0x3FFF);
  }
}

TEST(FileChoice, SourcesAreRememberedAndHexFilesLoaded) {
  TempDir dir;
  write_text(dir.file("blink.hex"), ":02000000FF0AF5\n:00000001FF\n");
  PanelRig rig("16F877A", 1);
  MainView& v = rig.form.view();

  rig.form.F_OpenButton_Click();  // cancelled: nothing changes
  EXPECT_EQ(rig.host.open_filters.back(), "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|");
  EXPECT_EQ(v.FilenameTextbox, "");

  rig.host.open_answers = {dir.file("prog.Hex")};  // mixed case: the HEX named before, none
  rig.form.F_OpenButton_Click();
  EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Open or Read the FILE"});

  rig.host.open_answers = {dir.file("blink.c")};
  rig.form.F_OpenButton_Click();
  EXPECT_EQ(rig.state.TargetFileName, dir.file("blink.c"));
  EXPECT_EQ(rig.state.DataLoaded, 0);

  // blink.HEX does not exist, but blink.hex does.
  rig.form.HexSet_Button_Click();
  EXPECT_EQ(rig.state.HexFileName, dir.file("blink.HEX"));
  EXPECT_EQ(v.TEST, dir.file("blink.HEX"));
  EXPECT_EQ(v.NotesLabel, "Set HEX file");
  EXPECT_EQ(rig.state.DataLoaded, 1);
  EXPECT_EQ(rig.state.word(0), 0x0AFF);

  rig.host.open_answers = {dir.file("blink.asm")};
  rig.form.F_OpenButton_Click();
  rig.form.HexSet_Button_Click();
  EXPECT_EQ(rig.state.HexFileName, dir.file("blink.HEX"));

  // After a read the box is empty: the derivation keeps the name it had.
  rig.state.HexFileName = dir.file("blink.hex");
  v.FilenameTextbox = "";
  rig.form.HexSet_Button_Click();
  EXPECT_EQ(rig.state.HexFileName, dir.file("blink.hex"));
  EXPECT_FALSE(rig.form.outcome().load_error);

  rig.host.open_answers = {dir.file("blink.hex")};
  rig.state.HexFileName.clear();
  rig.form.F_OpenButton_Click();
  EXPECT_EQ(rig.state.HexFileName, dir.file("blink.hex"));
  EXPECT_EQ(v.NotesLabel, "");
  EXPECT_EQ(v.NotesColor, kLavender);
  EXPECT_EQ(rig.box_texts().size(), 1u);
}

}  // namespace
}  // namespace zenta::testing

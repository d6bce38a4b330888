// Pure logic of programming: the catalogue's patterns, the configuration
// word's text forms, device names, HEX fields, case-insensitive file names
// and the buffer viewers' cells.
#include <gtest/gtest.h>

#include <sstream>

#include "common/file_names.h"
#include "image/buffer_view.h"
#include "image/hex_loader.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "programming/device_id.h"
#include "temp_dir.h"

namespace zenta {
namespace {

// Every option's value may set only bits its own mask clears, and no two
// options may clear the same bit; otherwise one option would undo another.
TEST(DeviceCatalogue, OptionPatternsAreDisjointAndInsideTheirMasks) {
  for (const DeviceRecord& r : DeviceCatalogue()) {
    SCOPED_TRACE(r.caption);
    const auto& p = r.patterns;
    struct Option {
      std::uint16_t mask;
      std::vector<std::uint16_t> values;
    };
    const Option options[] = {{p.OscMask, {p.OscRC, p.OscHS, p.OscXT, p.OscLP}},
                              {p.WdtMask, {p.WdtOn, p.WdtOff}},
                              {p.PutMask, {p.PutOn, p.PutOff}},
                              {p.ProtectMask, {p.ProtectOn, p.ProtectOff}},
                              {p.BorMask, {p.BorOn, p.BorOff}}};
    std::uint16_t cleared_so_far = 0;
    for (const Option& o : options) {
      const std::uint16_t cleared = ~o.mask & kConfigBits;
      EXPECT_EQ(cleared & cleared_so_far, 0);
      cleared_so_far |= cleared;
      for (std::uint16_t v : o.values) EXPECT_EQ(v & ~cleared, 0) << std::hex << v;
    }
    EXPECT_EQ(config_word_from_text(r.default_config_text), r.default_config_word);
    EXPECT_LE(r.last_address + 1, r.program_size);
  }
  EXPECT_EQ(find_device("16f62xa"), 5);
  EXPECT_EQ(find_device("12F629/675"), 6);
  EXPECT_EQ(find_device("7"), 7);
  EXPECT_EQ(find_device("8"), std::nullopt);
  EXPECT_EQ(find_device("16F877A"), std::nullopt);
}

TEST(ConfigWord, TextForms) {
  EXPECT_EQ(config_binary_text(0x3F3B), "11 1111 0011 1011");
  EXPECT_EQ(config_binary_text(0x0001), "00 0000 0000 0001");
  EXPECT_EQ(config_hex_text(0x01, 0xD7), "01D7");
  struct Case {
    const char* text;
    std::uint16_t word;
  };
  const Case cases[] = {{"ffff", 0x3FFF}, {"", 0},           {"1", 1},
                        {"3G", 3},        {"x", 0},          {"3f3b", 0x3F3B},
                        {"10000", 0},     {"12345", 0x2345}, {"FFFFFFFFFF", 0x3FFF},
                        {" 12", 0}};
  for (const Case& c : cases) EXPECT_EQ(config_word_from_text(c.text), c.word) << c.text;
}

TEST(DeviceId, Names) {
  struct Case {
    std::uint16_t id;
    const char* name;
  };
  const Case cases[] = {{0x09A3, "16F877"},  {0x0E27, "16F877A"}, {0x0E35, "16F84"},
                        {0x3FFF, "16F84"},   {0x04E1, "16F819"},  {0x10C4, "16F630"},
                        {0x0E0F, "16F876A"}, {0x0FDF, "12F675"},  {0x1100, "16F648A"},
                        {0x89A3, "16F84"},   {0x0000, "16F84"}};
  for (const Case& c : cases) EXPECT_EQ(device_id_name(c.id), c.name) << std::hex << c.id;
}

TEST(HexLoader, FieldsEndAtLineEndsAndCommasAfterLeadingBlanks) {
  std::istringstream in("a,b\n  \tc\r\n\n,d\nlast");
  HexFieldReader reader(in);
  std::vector<std::string> fields;
  while (auto field = reader.next()) fields.push_back(*field);
  EXPECT_EQ(fields, (std::vector<std::string>{"a", "b", "c", "", "", "d", "last"}));
  EXPECT_FALSE(reader.failed());
}

TEST(FileNames, DerivedNamesMatchWithoutRegardToCase) {
  testing::TempDir dir;
  testing::write_text(dir.file("blink.hex"), ":00000001FF\n");
  EXPECT_EQ(resolve_case_insensitive(dir.file("blink.HEX")), dir.file("blink.hex"));
  EXPECT_EQ(resolve_case_insensitive(dir.file("blink.hex")), dir.file("blink.hex"));
  EXPECT_EQ(resolve_case_insensitive(dir.file("other.HEX")), dir.file("other.HEX"));
  EXPECT_EQ(resolve_case_insensitive(dir.file("no/such/blink.HEX")), dir.file("no/such/blink.HEX"));
  EXPECT_EQ(resolve_case_insensitive(""), "");
}

TEST(BufferView, CellsLabelsAndFrozenRows) {
  ProgrammerState state;
  state.ProgramSize = 0x0400;
  state.set_word(5, 0x2803);
  state.set_word(0x3FF, 0x0123);
  BufferViewModel view = make_program_view();
  FILL_PROG_VIEW(view, state);  // builds first: 64 labelled rows
  EXPECT_EQ(view.cell(0, 0), "");
  EXPECT_EQ(view.cell(0, 1), "+0");
  EXPECT_EQ(view.cell(0, 16), "+F");
  EXPECT_EQ(view.cell(1, 0), "    0");
  EXPECT_EQ(view.cell(64, 0), "  3F0");
  EXPECT_EQ(view.cell(65, 0), "");
  EXPECT_EQ(view.cell(1, 6), "2803 ");
  EXPECT_EQ(view.cell(64, 16), "0123 ");
  EXPECT_EQ(view.cell(1, 1), "0000 ");
  // A larger device fills more rows, but their labels wait for a rebuild.
  state.ProgramSize = 0x2000;
  state.set_word(0x1FFF, 0x3FFF);
  FILL_PROG_VIEW(view, state);
  EXPECT_EQ(view.cell(512, 16), "3FFF ");
  EXPECT_EQ(view.cell(512, 0), "");
  // A smaller one leaves the rows past its end as they were.
  state.ProgramSize = 0x0400;
  state.set_word(0x1FFF, 0x0000);
  FILL_PROG_VIEW(view, state);
  EXPECT_EQ(view.cell(512, 16), "3FFF ");
  view.unload();
  view.build(512);
  EXPECT_EQ(view.cell(512, 0), " 1FF0");
  EXPECT_EQ(view.cell(512, 16), "");

  state.EepromBuffer[0x1F] = 0x0A;
  BufferViewModel ee = make_eeprom_view();
  FILL_EE_VIEW(ee, state);
  EXPECT_EQ(ee.cell(2, 16), "0A ");
  EXPECT_EQ(ee.cell(2, 0), " 10");
  EXPECT_EQ(ee.cell(16, 0), " F0");
  EXPECT_EQ(ee.cell(1, 0), "  0");
}

}  // namespace
}  // namespace zenta

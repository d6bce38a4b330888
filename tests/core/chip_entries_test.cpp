// The device catalogue's facts, and each chip the simulated unit can hold
// under the device entry it belongs to: the command line finds that entry by the chip's ID and
// reads the chip's own EEPROM, and the safe write accepts the chip there, refuses it elsewhere,
// keeps the calibration word where it has one and writes an image up to the chip's last word but
// not past it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "cli_rig.h"
#include "image/hex_check.h"
#include "image/hex_writer.h"
#include "ops_rig.h"
#include "panel_rig.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "programming/device_id.h"
#include "programming/safe_programming.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

struct ChipCase {
  const char* chip;
  int entry;
  int eeprom_bytes;  // the chip's data EEPROM, from its data sheet
  bool calibrated;   // holds a factory calibration word at 0x3FF
};

const ChipCase kChips[] = {
    {"16F870", 0, 64, false},   {"16F871", 0, 64, false},   {"16F872", 0, 64, false},
    {"16F873", 0, 128, false},  {"16F874", 0, 128, false},  {"16F876", 0, 256, false},
    {"16F877", 0, 256, false},  {"16F873A", 1, 128, false}, {"16F874A", 1, 128, false},
    {"16F876A", 1, 256, false}, {"16F877A", 1, 256, false}, {"16F84", 2, 64, false},
    {"16F84A", 3, 64, false},   {"16F627", 4, 128, false},  {"16F628", 4, 128, false},
    {"16F627A", 5, 128, false}, {"16F628A", 5, 128, false}, {"16F648A", 5, 256, false},
    {"12F629", 6, 128, true},   {"12F675", 6, 128, true},   {"16F630", 6, 128, true},
    {"16F676", 6, 128, true},   {"16F818", 7, 128, false},  {"16F819", 7, 256, false},
};
constexpr int kCalibration = 0x3480;  // RETLW 0x80

int ee_value(int address) {
  return (address * 11 + 0x40) & 0xFF;
}

// --device auto takes the entry that programs the chip that answered, with
// one ID read for both the choice and the answer. A read into a file takes
// the chip's own memories, not its entry's larger ones, which would read
// the first words and bytes again.
TEST(ChipEntries, CommandLineFindsEachChipsEntryAndReadsItsOwnMemories) {
  TempDir dir;
  for (const ChipCase& c : kChips) {
    SCOPED_TRACE(c.chip);
    cli::testing::SimRun run(c.chip);
    if (c.entry != 2) {
      const cli::testing::Outcome id = run({"--json", "--device", "auto", "id"});
      const auto json = nlohmann::json::parse(id.out);
      EXPECT_EQ(json["chip"], c.chip);
      EXPECT_EQ(json["device"], device_record(c.entry).caption);
      EXPECT_EQ(run.unit->trace().size(), 16u);
    }
    const int words = run.unit->chip().program_words;
    for (int w = 0; w < words; ++w) run.unit->set_program_word(w, (w * 7 + 1) & 0x3FFF);
    for (int a = 0; a < c.eeprom_bytes; ++a) run.unit->set_eeprom_byte(a, ee_value(a));
    ASSERT_EQ(run({"--device", c.chip, "read", "-o", dir.file("chip.hex")}).status, 0);
    const HexCheck file = check_hex_text(read_text(dir.file("chip.hex")), {0x2000, 256, ""});
    EXPECT_EQ(static_cast<int>(file.program.size()), words);
    EXPECT_EQ(file.program.rbegin()->second, ((words - 1) * 7 + 1) & 0x3FFF);
    std::map<int, std::uint8_t> eeprom;
    for (int a = 0; a < c.eeprom_bytes; ++a) {
      if (ee_value(a) != 0xFF)
        eeprom[a] = static_cast<std::uint8_t>(ee_value(a));  // blank: left out
    }
    EXPECT_EQ(file.eeprom, eeprom);
  }
  // The EEPROM table's layout, and the same bytes as an INHX8M file at word
  // 0x2100 on.
  cli::testing::SimRun run("16F84A");
  for (int a = 0; a < 64; ++a) run.unit->set_eeprom_byte(a, ee_value(a));
  const std::string table = run({"--device", "16F84A", "read-eeprom"}).out;
  EXPECT_NE(table.find("\n30: 50 5B 66 71 7C 87 92 9D A8 B3 BE C9 D4 DF EA F5\nEE Read"),
            std::string::npos)
      << table;
  EXPECT_EQ(run({"--device", "16F84A", "read-eeprom", "-o", dir.file("ee.hex")}).status, 0);
  std::vector<HexWord> bytes;
  for (std::uint16_t a = 0; a < 64; ++a) bytes.push_back({0x2100u + a, std::uint16_t(ee_value(a))});
  EXPECT_EQ(read_text(dir.file("ee.hex")), format_inhx8m(bytes));
}

// Under its own entry the chip gets the image and keeps its calibration;
// under any other the write is refused before the chip is touched, with a
// box that names the entry to select.
TEST(ChipEntries, SafeWriteAcceptsTheChipOnlyUnderItsEntry) {
  TempDir dir;
  std::vector<HexWord> image;
  for (std::uint16_t w = 0; w < 16; ++w) image.push_back({w, std::uint16_t(0x2000 + 3 * w)});
  ASSERT_TRUE(write_inhx8m_file(dir.file("image.hex"), image));
  std::vector<std::pair<const char*, int>> runs = {{"none", 1}};
  for (const ChipCase& c : kChips) {
    runs.push_back({c.chip, c.entry});
    runs.push_back({c.chip, (c.entry + 1) % kDeviceCount});
  }
  for (const auto& [chip, entry] : runs) {
    SCOPED_TRACE(std::string(chip) + " under " + device_record(entry).caption);
    const auto own = chip_by_name(chip);
    PanelRig rig(chip, entry, false);
    rig.unit.set_program_word(0x3FF, kCalibration);
    rig.host.open_answers = {dir.file("image.hex")};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.host.boxes.clear();
    rig.unit.clear_trace();
    const CommandResult result = rig.form.WriteButton_Click();
    if (own && own->entry == entry) {
      EXPECT_TRUE(result.ok()) << (rig.box_texts().empty() ? "" : rig.box_texts()[0]);
      for (int w = 0; w < 16; ++w) EXPECT_EQ(rig.unit.program_word(w), 0x2000 + 3 * w) << w;
      EXPECT_EQ(rig.unit.program_word(0x3FF), own->calibrated() ? kCalibration : 0x3FFF);
      continue;
    }
    // The 16F84 has no ID word, so elsewhere it reads as no chip at all.
    const std::string says =
        !own || !own->id
            ? "No chip answered (ID 3FFF): check the chip in the socket and the target supply"
            : "A " + std::string(chip) + " is in the socket; the selected device is " +
                  device_record(entry).caption + ". Select " + device_record(*own->entry).caption +
                  ".";
    EXPECT_TRUE(result.refused);
    EXPECT_EQ(rig.box_texts(), std::vector<std::string>{says});
    EXPECT_EQ(rig.form.view().NotesLabel, "Write refused");
    // Nothing but the chip check's ID read reached the unit.
    EXPECT_EQ(rig.sent(), seq(kSupplyOn, config_space_read(6), kSupplyOff));
    if (own) {
      EXPECT_EQ(rig.unit.program_word(0x3FF), kCalibration);
    }
  }
}

// Boot loaders live at the top of memory: an image that uses a chip's last
// word, and only that far, (with words 0 and 7 and a configuration word, which the row devices
// would meet again if the walk wrapped) is written whole on every chip; one
// word more would land on word 0, so such an image is refused untouched.
TEST(ChipEntries, ImagesUpToTheChipsLastWordAreWrittenWholeAndNoFurther) {
  for (const ChipDescription& chip : devices().chips) {
    SCOPED_TRACE(chip.name);
    const int last = chip.program_words - 1;
    const std::map<int, int> image = {{0, 0x1234}, {7, 0x2345}, {last - 1, 0x0ABC}, {last, 0x3456}};
    OpsRig rig(chip.name, *chip.entry);
    if (chip.calibrated()) rig.unit.set_program_word(0x3FF, kCalibration);
    rig.image(image, 0x3F72);
    rig.state.set_word(0x2000, 0x0001);  // a user ID, which is no program word
    rig.state.set_word(0x2007, 0x3F72);  // where the loader puts __CONFIG
    rig.ops.checked = true;
    Preflight preflight;
    EXPECT_TRUE(run_checked_write(rig.ops, {*chip.entry, chip}, std::nullopt, preflight).ok());
    EXPECT_EQ(preflight.last_address, chip.program_words);
    // Blank words are stepped over: the loads are the image's four words,
    // the configuration word, the erase's blank and what a calibrated chip
    // gets back.
    const Packets all = sent(rig.unit);
    EXPECT_LE(std::count_if(all.begin(), all.end(), [](const Packet& p) { return p[0] == 0x02; }),
              8);
    for (int w = 0; w < chip.program_words; ++w) {
      const auto it = image.find(w);
      ASSERT_EQ(rig.unit.program_word(w), it != image.end() ? it->second : 0x3FFF) << w;
    }
    if (chip.program_words == 0x2000) continue;  // 0x2000 on is configuration space
    OpsRig past(chip.name, *chip.entry);
    past.unit.set_program_word(0, 0x1234);
    past.image({{0, 0x2805}, {chip.program_words, 0x2000}});
    EXPECT_TRUE(run_checked_write(past.ops, {*chip.entry, chip}, std::nullopt, preflight).refused);
    char says[80];
    std::snprintf(says, sizeof says,
                  "The image has program words up to %04X; the %s has %d (0000-%04X)",
                  chip.program_words, chip.name.c_str(), chip.program_words, last);
    EXPECT_EQ(preflight.refusal, says);
    EXPECT_EQ(past.unit.program_word(0), 0x1234);
  }
}

// The oscillator choice reaches the FOSC bits the same way on every device:
// LP 0, XT 1, HS 2, the other bits as they were. (That each option sets
// only its own bits shows in the option controls reading back every word
// they make.)
TEST(DeviceCatalogue, OscillatorChoiceSetsTheSameFoscOnEveryDevice) {
  for (const DeviceRecord& r : DeviceCatalogue()) {
    EXPECT_EQ(config_word_from_text(r.default_config_text), r.default_config_word) << r.caption;
    EXPECT_LE(r.last_address + 1, r.program_size) << r.caption;
    for (const auto& [index, fosc] : {std::pair{1, 0x1}, {2, 0x2}, {3, 0x0}}) {
      const std::uint16_t word = apply_oscillator(r.default_config_word, r.patterns, index);
      const std::uint16_t osc_bits = word & ~r.patterns.OscMask & kConfigBits;
      // Bit 4 is the third FOSC bit where the device has one.
      EXPECT_EQ((osc_bits & 0x7) | ((osc_bits >> 2) & 0x4), fosc) << r.caption << index;
      EXPECT_EQ(word & r.patterns.OscMask, r.default_config_word & r.patterns.OscMask);
    }
  }
}

// An entry's facts on one line: what the operations take from it.
std::string facts(const DeviceRecord& r) {
  const ConfigOptionPatterns& p = r.patterns;
  char text[300];
  std::snprintf(text, sizeof text,
                "%s %s erase %s write %s size %X start %X last %X '%s' ee %X config '%s' %04X | "
                "osc %04X %X %X %X %X | wdt %04X %X %X | put %04X %X %X | protect %04X %X %X | "
                "bor %04X %X %X",
                r.caption, r.family, r.erase_code, r.write_code, r.program_size, r.start_address,
                r.last_address, r.last_address_text, r.eeprom_last_address, r.default_config_text,
                r.default_config_word, p.OscMask, p.OscRC, p.OscHS, p.OscXT, p.OscLP, p.WdtMask,
                p.WdtOn, p.WdtOff, p.PutMask, p.PutOn, p.PutOff, p.ProtectMask, p.ProtectOn,
                p.ProtectOff, p.BorMask, p.BorOn, p.BorOff);
  return text;
}

// The 16F818/819 entry, field by field.
TEST(DeviceCatalogue, The16F818EntryHoldsItsFacts) {
  EXPECT_EQ(facts(device_record(7)),
            "16F818/819 16F819 erase 3 write 1 size 1000 start 0 last 7FF '7FF' ee 7F config "
            "'3F37' 3F37 | osc 3FEC 13 2 1 0 | wdt 3FFB 4 0 | put 3FF7 0 8 | protect 1FFF 0 2000 "
            "| bor 3FBF 40 0");
}

TEST(DeviceId, NamesIgnoreTheRevision) {
  const std::pair<std::uint16_t, const char*> cases[] = {
      {0x09A3, "16F877"}, {0x0E27, "16F877A"}, {0x0E0F, "16F876A"}, {0x1100, "16F648A"},
      {0x0E35, "16F84"},  {0x89A3, "16F84"},   {0x3FFF, "16F84"}};
  for (auto [id, name] : cases) EXPECT_EQ(device_id_name(id), name) << std::hex << id;
}

}  // namespace
}  // namespace zenta::testing

// Each chip the simulated unit can hold, under the device entry it belongs
// to: the command line picks that entry by the chip's name and reads the
// entry's EEPROM size, and the panel's safe write accepts the chip there,
// refuses it elsewhere, and keeps the calibration word where it has one.
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "cli_rig.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "panel_rig.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
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

int ee_value(int address) {
  return (address * 11 + 0x40) & 0xFF;
}

// The bytes of the command line's EEPROM table, in address order.
std::vector<int> table_bytes(const std::string& text) {
  std::vector<int> bytes;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::istringstream cells(line.substr(colon + 1));
    std::string cell;
    while (cells >> cell) bytes.push_back(std::stoi(cell, nullptr, 16));
  }
  return bytes;
}

TEST(ChipEntries, ReadEepromByChipNameBringsBackTheChipsOwnBytes) {
  for (const ChipCase& c : kChips) {
    SCOPED_TRACE(c.chip);
    cli::testing::SimRun run(c.chip);
    const int chip_bytes = run.unit->chip().eeprom_bytes;
    for (int a = 0; a < chip_bytes; ++a) run.unit->set_eeprom_byte(a, ee_value(a));
    const cli::testing::Outcome outcome = run({"--device", c.chip, "read-eeprom"});
    ASSERT_EQ(outcome.status, cli::kExitOk) << outcome.err;
    const std::vector<int> bytes = table_bytes(outcome.out);
    // The chip's own size: a larger entry's would read the first bytes again.
    ASSERT_EQ(static_cast<int>(bytes.size()), c.eeprom_bytes);
    for (int a = 0; a < chip_bytes; ++a) {
      EXPECT_EQ(bytes[static_cast<std::size_t>(a)], ee_value(a)) << a;
    }
  }
}

std::string sixteen_words(TempDir& dir) {
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w) {
    words.push_back({w, static_cast<std::uint16_t>(0x2000 + 3 * w)});
  }
  const std::string path = dir.file("image.hex");
  EXPECT_TRUE(write_inhx8m_file(path, words));
  return path;
}

TEST(ChipEntries, SafeWriteAcceptsTheChipOnlyUnderItsEntry) {
  constexpr int kCalibration = 0x3480;  // RETLW 0x80
  for (const ChipCase& c : kChips) {
    for (const int entry : {c.entry, (c.entry + 1) % kDeviceCount}) {
      SCOPED_TRACE(std::string(c.chip) + " under " + device_record(entry).caption);
      TempDir dir;
      PanelRig rig(c.chip, entry, false);
      rig.unit.set_program_word(0x3FF, kCalibration);
      rig.host.open_answers = {sixteen_words(dir)};
      ASSERT_TRUE(rig.form.F_OpenButton_Click());
      rig.host.boxes.clear();
      const CommandResult result = rig.form.WriteButton_Click();
      if (entry != c.entry) {
        EXPECT_TRUE(result.refused);
        ASSERT_EQ(rig.box_texts().size(), 1u);
        // The 16F84 has no ID word, so elsewhere it reads as no chip at all.
        const std::string says =
            c.entry == 2 ? std::string("No chip answered")
                         : std::string("Select ") + device_record(c.entry).caption + ".";
        EXPECT_NE(rig.box_texts()[0].find(says), std::string::npos) << rig.box_texts()[0];
        EXPECT_EQ(rig.unit.program_word(0x3FF), kCalibration);
        continue;
      }
      EXPECT_TRUE(result.ok()) << (rig.box_texts().empty() ? "" : rig.box_texts()[0]);
      for (int w = 0; w < 16; ++w) EXPECT_EQ(rig.unit.program_word(w), 0x2000 + 3 * w) << w;
      EXPECT_EQ(rig.unit.program_word(0x3FF), c.calibrated ? kCalibration : 0x3FFF);
    }
  }
}

// An image running past the chip's memory is written only as far as the
// chip reaches, so the words past its end cannot wrap onto word 0.
TEST(ChipEntries, SafeWriteStopsTheImageAtTheChipsEnd) {
  for (const ChipCase& c : kChips) {
    SCOPED_TRACE(c.chip);
    PanelRig rig(c.chip, c.entry, false);
    const int chip_words = rig.unit.chip().program_words;
    // An image that fills the chip is written to its last word; one word
    // more would land on word 0, so such an image is refused.
    for (const int words : {chip_words, chip_words + 1}) {
      if (words > 0x2000) continue;  // 0x2000 on is configuration space, not program memory
      blank_program_image(rig.state);
      for (int w = 0; w < words; ++w) rig.state.set_word(w, 0x2000 + (w & 0xFF));
      Preflight preflight;
      rig.run([&](ChipOperations& ops) {
        preflight = preflight_write(ops, {c.entry, std::nullopt});
      });
      EXPECT_EQ(preflight.refused, words > chip_words) << words;
      if (!preflight.refused) {
        EXPECT_EQ(preflight.last_address, chip_words);
      }
    }
  }
}

// The oscillator choice reaches the chip's FOSC bits the same way on every
// device: LP 0, XT 1, HS 2, whatever the device's other bits.
TEST(ChipEntries, OscillatorChoiceSetsTheSameFoscOnEveryDevice) {
  const std::pair<int, std::uint16_t> choices[] = {{1, 0x1}, {2, 0x2}, {3, 0x0}};
  for (const DeviceRecord& record : DeviceCatalogue()) {
    for (const auto& [index, fosc] : choices) {
      SCOPED_TRACE(std::string(record.caption) + " choice " + std::to_string(index));
      const std::uint16_t word =
          apply_oscillator(record.default_config_word, record.patterns, index);
      const std::uint16_t osc_bits = word & ~record.patterns.OscMask & kConfigBits;
      // Bit 4 is the third FOSC bit where the device has one.
      EXPECT_EQ((osc_bits & 0x7) | ((osc_bits >> 2) & 0x4), fosc);
      EXPECT_EQ(word & record.patterns.OscMask,
                record.default_config_word & record.patterns.OscMask);
    }
  }
}

}  // namespace
}  // namespace zenta::testing

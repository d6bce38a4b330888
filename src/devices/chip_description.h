#pragma once
// What the panel knows of one chip: facts only, read from the device
// descriptions. The families' behaviour is code elsewhere: the algorithms
// in programming/, the silicon in link/sim/.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zenta {

// Configuration space of the midrange chips: user IDs from 0x2000, the
// device ID at 0x2006, the configuration word at 0x2007, and data EEPROM
// bytes at 0x2100 in a HEX file.
inline constexpr int kConfigSpaceBase = 0x2000;
inline constexpr int kDeviceIdAddress = 0x2006;
inline constexpr int kConfigWordAddress = 0x2007;
inline constexpr int kEepromHexBase = 0x2100;

enum class EraseAlgorithm {
  kBulkSetup,  // Load 3FFF, 01, 07, 08, 01, 07
  kChipErase,  // 1F
  kBulkBegin,  // Load 3FFF, 09, 08
  kBulk,       // Load 3FFF, 09
};
enum class WriteAlgorithm {
  kRows,          // a latch of several words, one cycle per row
  kEraseProgram,  // one erase/program cycle (08) per word
  kProgramOnly,   // one program-only cycle (18) per word
};

struct ConfigField {
  std::string name;
  std::uint16_t bits = 0;
};

struct ConfigWordFacts {
  int address = kConfigWordAddress;
  std::uint16_t implemented = 0x3FFF;
  std::uint16_t default_word = 0x3FFF;
  std::vector<ConfigField> fields;
};

// The oscillator calibration word (a RETLW) and the band-gap bits of the
// configuration word, which the bulk erase clears.
struct CalibrationFacts {
  int address = 0;
  std::uint16_t band_gap = 0;
};

struct ChipDescription {
  std::string name;                 // "16F628A"
  std::string family;               // "16F62xA"
  std::string document;             // the programming document the facts come from (DS number)
  std::string source;               // the file it was read from
  std::optional<std::uint16_t> id;  // ID word without revision; none: no ID word
  std::uint16_t revision_bits = 0x1F;
  int program_words = 0;
  int eeprom_bytes = 0;
  std::vector<ConfigWordFacts> config;
  std::optional<CalibrationFacts> calibration;
  EraseAlgorithm erase = EraseAlgorithm::kBulk;
  WriteAlgorithm write = WriteAlgorithm::kEraseProgram;
  int latch_words = 1;
  std::optional<std::pair<double, double>> vpp;  // volts on MCLR, min and max
  std::optional<int> entry;                      // catalogue entry of the documented mode

  bool calibrated() const { return calibration.has_value(); }
  // Whether an ID word answered is this chip's, whatever its revision.
  bool answers(std::uint16_t id_word) const { return id && (id_word & ~revision_bits) == *id; }
  // The configuration word's bits a write may change and a verify compares:
  // band-gap bits belong to the chip.
  std::uint16_t config_mask() const {
    return static_cast<std::uint16_t>(0x3FFF & ~(calibration ? calibration->band_gap : 0));
  }
};

}  // namespace zenta

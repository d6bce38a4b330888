#pragma once
// A strict reading of an Intel HEX (INHX8M) file against one chip's memory,
// for the checks made before a write. The panel's loader stays as lenient
// as it is; this says what is wrong with a file, line by line, and what the
// file holds for the chip: program words, user IDs, configuration word and
// EEPROM bytes.
#include <cstdint>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zenta {

// The memory of the chip a file is meant for: program words 0 to
// program_words - 1, configuration space 0x2000-0x2007 and the data EEPROM
// at word 0x2100 on.
struct HexChipSpace {
  int program_words = 0x2000;
  int eeprom_bytes = 256;
  // What the limits are those of, for messages: "16F628A" or "16F62xA
  // entry"; "chip" when empty.
  std::string name;
};

struct HexFinding {
  int line = 0;  // 1-based; past the last line for what the file lacks
  std::string reason;
  bool error = true;  // false: worth saying, but the file may be written
  // "blink.hex line 3: <reason>"
  std::string message(const std::string& file) const;
};

struct HexCheck {
  std::vector<HexFinding> findings;
  std::map<int, std::uint16_t> program;   // by word address
  std::map<int, std::uint16_t> user_ids;  // 0x2000-0x2003
  std::optional<std::uint16_t> config;    // 0x2007
  std::map<int, std::uint8_t> eeprom;     // by EEPROM address
  bool ok() const;                        // no finding is an error
};

// No HEX file for these chips comes near this size; a larger input is
// refused unread rather than held in memory.
inline constexpr std::size_t kLargestHexFile = 16 * 1024 * 1024;

HexCheck check_hex(std::istream& in, const HexChipSpace& space);
// The same for a file's text read beforehand.
HexCheck check_hex_text(const std::string& text, const HexChipSpace& space);

}  // namespace zenta

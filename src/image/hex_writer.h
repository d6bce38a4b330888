#pragma once
// Writes program and EEPROM images as Intel HEX, INHX8M: 14-bit words at
// byte address 2 x word address, low byte first, data records of at most 16
// bytes that never cross a 16-byte boundary, and the end record. The panel's
// HEX loader and the gputils tools read it back.
#include <cstdint>
#include <string>
#include <vector>

#include "image/programmer_state.h"

namespace zenta {

// One word at a word address (0 to 0x7FFF, which INHX8M can address
// without extended records).
struct HexWord {
  std::uint32_t address = 0;
  std::uint16_t value = 0;
};

// Data EEPROM byte i lies at word address 0x2100 + i with a high byte of 0,
// where gputils puts it (byte address 0x4200 + 2i).
inline constexpr std::uint32_t kEepromWordAddress = 0x2100;

// The INHX8M text of the words, in ascending address order; a gap in the
// addresses starts a new record. Words above 0x7FFF are left out.
std::string format_inhx8m(const std::vector<HexWord>& words);

// Words 0 to count - 1 of ProgramBuffer, blank words (0x3FFF) left out:
// they are what an erased chip holds anyway.
std::vector<HexWord> program_hex_words(const ProgrammerState& state, int count);
// EEPROM bytes 0 to count - 1 at their gputils addresses, erased bytes
// (0xFF) left out.
std::vector<HexWord> eeprom_hex_words(const ProgrammerState& state, int count);

// Writes format_inhx8m(words) to the file through a temporary file renamed
// over it; false, with the reason when asked, when it cannot be written.
bool write_inhx8m_file(const std::string& path, const std::vector<HexWord>& words,
                       std::string* reason = nullptr);

}  // namespace zenta

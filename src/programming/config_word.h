#pragma once
// Arithmetic of the 14-bit configuration word: applying an option through
// the selected device's patterns, and the word's text forms.
#include <cstdint>
#include <string>

#include "programming/device_catalogue.h"

namespace zenta {

inline constexpr std::uint16_t kConfigBits = 0x3FFF;

enum class ConfigOption { kWdt, kPut, kProtect, kBor };

// Oscillator choice 0 RC, 1 XT, 2 HS, 3 LP: the mask clears the oscillator
// bits and the choice's value is or-ed in; any other index ors in nothing.
std::uint16_t apply_oscillator(std::uint16_t word, const ConfigOptionPatterns& patterns, int index);
// A check box option: the mask clears its bits, then its On value (checked)
// or its Off value (unchecked) is or-ed in.
std::uint16_t apply_option(std::uint16_t word, const ConfigOptionPatterns& patterns,
                           ConfigOption option, bool checked);

// The option controls that show a word: the oscillator choice whose value
// the word holds (-1 when it holds none of the four, as an internal
// oscillator), and each check box checked unless the word holds what
// unchecking it gives (so partial code protection shows as protected).
struct ConfigControls {
  int oscillator = -1;
  bool wdt = false;
  bool put = false;
  bool protect = false;
  bool bor = false;
};
ConfigControls controls_of_word(std::uint16_t word, const ConfigOptionPatterns& patterns);

// Two upper-case digits of the high byte, then two of the low byte: 01D7.
std::string config_hex_text(int high, int low);
// Bits 13..0 in groups of 2, 4, 4 and 4: 0x3F3B gives "11 1111 0011 1011".
std::string config_binary_text(std::uint16_t word);

// The word a typed configuration text stands for: hexadecimal digits of
// either case up to the first other character (none give 0), of which the
// low 14 bits are kept. For up to four digits this is the signed 16-bit
// reading masked to 14 bits; longer texts keep the low 14 bits of the number
// their digits spell, so no text, however long, is refused or overflows.
std::uint16_t config_word_from_text(const std::string& text);

}  // namespace zenta

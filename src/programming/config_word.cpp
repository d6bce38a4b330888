#include "programming/config_word.h"

#include "common/number_text.h"

namespace zenta {

std::uint16_t apply_oscillator(std::uint16_t word, const ConfigOptionPatterns& p, int index) {
  word &= p.OscMask;
  switch (index) {
    case 0:
      return word | p.OscRC;
    case 1:
      return word | p.OscXT;
    case 2:
      return word | p.OscHS;
    case 3:
      return word | p.OscLP;
    default:
      return word;
  }
}

std::uint16_t apply_option(std::uint16_t word, const ConfigOptionPatterns& p, ConfigOption option,
                           bool checked) {
  switch (option) {
    case ConfigOption::kWdt:
      return (word & p.WdtMask) | (checked ? p.WdtOn : p.WdtOff);
    case ConfigOption::kPut:
      return (word & p.PutMask) | (checked ? p.PutOn : p.PutOff);
    case ConfigOption::kProtect:
      return (word & p.ProtectMask) | (checked ? p.ProtectOn : p.ProtectOff);
    case ConfigOption::kBor:
      return (word & p.BorMask) | (checked ? p.BorOn : p.BorOff);
  }
  return word;
}

ConfigControls controls_of_word(std::uint16_t word, const ConfigOptionPatterns& patterns) {
  ConfigControls controls;
  for (int index = 3; index >= 0; --index) {
    if (apply_oscillator(word, patterns, index) == word) controls.oscillator = index;
  }
  const auto checked = [&](ConfigOption option) {
    return apply_option(word, patterns, option, false) != word;
  };
  controls.wdt = checked(ConfigOption::kWdt);
  controls.put = checked(ConfigOption::kPut);
  controls.protect = checked(ConfigOption::kProtect);
  controls.bor = checked(ConfigOption::kBor);
  return controls;
}

std::string config_hex_text(int high, int low) {
  return hex_byte(high) + hex_byte(low);
}

std::string config_binary_text(std::uint16_t word) {
  std::string text;
  for (int bit = 13; bit >= 0; --bit) {
    text += ((word >> bit) & 1) ? '1' : '0';
    if (bit == 12 || bit == 8 || bit == 4) text += ' ';
  }
  return text;
}

std::uint16_t config_word_from_text(const std::string& text) {
  std::uint32_t value = 0;
  for (char c : text) {
    const int digit = hex_digit(c);
    if (digit < 0) break;
    value = ((value << 4) | static_cast<std::uint32_t>(digit)) & 0xFFFF;
  }
  return static_cast<std::uint16_t>(value & kConfigBits);
}

}  // namespace zenta

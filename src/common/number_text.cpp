#include "common/number_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace zenta {

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::optional<std::int32_t> read_hex(const std::string& text) {
  std::uint64_t value = 0;
  int digits = 0;
  for (char c : text) {
    const int d = hex_digit(c);
    if (d < 0) break;
    if (++digits > 8) return std::nullopt;
    value = value * 16 + static_cast<std::uint64_t>(d);
  }
  if (digits <= 4) return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

std::optional<std::int16_t> read_hex16(const std::string& text) {
  const auto value = read_hex(text);
  if (!value || *value < INT16_MIN || *value > INT16_MAX) return std::nullopt;
  return static_cast<std::int16_t>(*value);
}

double leading_number(const std::string& text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  if (text.compare(i, 2, "&H") == 0 || text.compare(i, 2, "&h") == 0) {
    const auto value = read_hex(text.substr(i + 2));
    return value ? *value : 0.0;
  }
  // Collect sign, digits, one point and an exponent, skipping blanks inside.
  std::string number;
  bool seen_digit = false, seen_point = false, seen_exp = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ' || c == '\t') continue;
    if (std::isdigit(static_cast<unsigned char>(c))) {
      number += c;
      seen_digit = true;
    } else if ((c == '+' || c == '-') && (number.empty() || number.back() == 'e')) {
      number += c;
    } else if (c == '.' && !seen_point && !seen_exp) {
      number += c;
      seen_point = true;
    } else if ((c == 'e' || c == 'E' || c == 'd' || c == 'D') && seen_digit && !seen_exp) {
      number += 'e';
      seen_exp = true;
    } else {
      break;
    }
  }
  if (!seen_digit) return 0.0;
  // An exponent without digits after it counts for nothing.
  while (!number.empty() &&
         (number.back() == 'e' || number.back() == '+' || number.back() == '-')) {
    number.pop_back();
  }
  if (number.front() == '+') number.erase(0, 1);
  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error == std::errc::result_out_of_range) {
    // Too large gives infinity, too small zero, as the text's sign says.
    const bool negative = number.front() == '-';
    const std::size_t e = number.find('e');
    // The exponent has digits after it: a bare one was taken off above.
    const bool tiny = e != std::string::npos && number[e + 1] == '-';
    value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    return negative ? -value : value;
  }
  return value;
}

std::optional<double> parse_decimal(std::string_view text) {
  if (text.empty() || text.front() == '+') return std::nullopt;
  double value = 0;
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) return std::nullopt;
  return value;
}

// Room for the largest double's 309 integer digits and the decimals asked.
std::string fixed_text(double value, int decimals) {
  std::array<char, 400> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                          std::chars_format::fixed, std::clamp(decimals, 0, 60));
  return std::string(text.data(), error == std::errc() ? end : text.data());
}

std::string general_text(double value, int digits) {
  std::array<char, 64> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                          std::chars_format::general, digits);
  std::string result(text.data(), error == std::errc() ? end : text.data());
  for (char& c : result) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return result;
}

double round_half_even(double value) {
  if (!std::isfinite(value)) return value;
  return std::nearbyint(value);  // the default rounding mode is to nearest, ties to even
}

// Formatted by hand: an operation names each word's address as it goes,
// thousands of times a second on a fast link.
std::string hex_text(std::int64_t value) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  auto bits = static_cast<std::uint32_t>(value);
  char text[8];
  int start = 8;
  do {
    text[--start] = kDigits[bits & 0xF];
    bits >>= 4;
  } while (bits != 0);
  return std::string(text + start, text + 8);
}

std::string hex_byte(int value) {
  char text[4];
  std::snprintf(text, sizeof text, "%02X", value & 0xFF);
  return text;
}

}  // namespace zenta

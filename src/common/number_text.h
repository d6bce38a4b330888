#pragma once
// The panel's rules for reading and writing numbers in text boxes.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zenta {

// Value of one hexadecimal digit of either case; -1 for any other character.
int hex_digit(char c);

// Hexadecimal box reading rule: digits of either case up to the first other
// character; no digits give 0. Up to four digits are a signed 16-bit number
// (FFFF is -1), five to eight a signed 32-bit number. More than eight
// digits fit no number the panel works with: nullopt.
std::optional<std::int32_t> read_hex(const std::string& text);

// The same text taken as a signed 16-bit number, as the write and the read
// take the last-address box; nullopt when the value does not fit 16 bits.
std::optional<std::int16_t> read_hex16(const std::string& text);

// Leading decimal number of a text (sign, digits, decimal point, exponent;
// leading blanks skipped); 0 when there is none. "&H" starts a hexadecimal
// number. The point is always the decimal point, whatever the locale.
double leading_number(const std::string& text);

// Numbers in files, protocol values and the documented texts are read and
// written with a point, never with the locale's separator (the panel's
// toolkit sets the C library's locale from the environment at start-up).
// The whole text as a finite decimal number ("4.4", "-1e3"); nullopt for
// anything else, a comma included.
std::optional<double> parse_decimal(std::string_view text);
// As printf's "%.*f" in the C locale.
std::string fixed_text(double value, int decimals);
// As printf's "%.*G" in the C locale: up to `digits` significant digits.
std::string general_text(double value, int digits);

// Round to the nearest integer, an exact half going to the even neighbour.
double round_half_even(double value);

// Upper-case hexadecimal without prefix or leading zeros ("0" for zero).
// Negative values give their 32-bit two's complement.
std::string hex_text(std::int64_t value);

// Two upper-case hexadecimal digits of the low byte.
std::string hex_byte(int value);

}  // namespace zenta

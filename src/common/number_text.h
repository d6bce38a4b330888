#pragma once
// The panel's rules for reading and writing numbers in text boxes.
#include <cstdint>
#include <optional>
#include <string>

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
// number.
double leading_number(const std::string& text);

// Round to the nearest integer, an exact half going to the even neighbour.
double round_half_even(double value);

// Upper-case hexadecimal without prefix or leading zeros ("0" for zero).
// Negative values give their 32-bit two's complement.
std::string hex_text(std::int64_t value);

// Two upper-case hexadecimal digits of the low byte.
std::string hex_byte(int value);

}  // namespace zenta

#pragma once
// The data converter DataConv: decimal <-> hexadecimal, character <->
// code, and the low byte of the hexadecimal value as a bit pattern. It
// talks to nothing but its own fields. Character codes are Unicode code
// points; texts are UTF-8.
#include <cstdint>
#include <string>

namespace zenta {

// Decimal value of a text: the leading number (sign, digits, point,
// exponent, blanks inside skipped, "&H" for hexadecimal); 0 without one.
double decimal_value(const std::string& text);
// Hexadecimal value of a text: digits of either case up to the first other
// character; one to four digits are a 16-bit two's complement (FFFF is -1),
// five to eight a 32-bit one. None gives 0; so do more than eight, which
// fit no number the converter works with.
std::int32_t hex_value(const std::string& text);
// Upper-case hexadecimal without prefix or leading zeros, the number first
// rounded to an integer with halves to even. Negative numbers give their
// 32-bit two's complement, or their 16-bit one when `code16` (a character
// code). Numbers outside -2^31..2^32-1 fit no hexadecimal text the
// converter writes: "Overflow".
std::string hex_text_of(double value, bool code16 = false);
// Bits 7..0 of the value: "dddd dddd"; higher bits are ignored.
std::string bit_pattern(std::int32_t value);

// Code point of the first character of a UTF-8 text; -1 for an empty text.
std::int32_t first_code_point(const std::string& text);
// UTF-8 text of one code point; empty for a value that names no character
// (negative, a surrogate, past U+10FFFF, or 0).
std::string utf8_of(std::int32_t code_point);

class DataConv {
 public:
  std::string Text1;  // DEC
  std::string Text2;  // HEX
  std::string Text3;  // Char
  std::string Text4;  // code, hexadecimal
  std::string Label_bit = "0000 0000";

  void Form_Load();
  void Command1_Click();  // DEC -> HEX
  void Command3_Click();  // HEX -> DEC
  void Command2_Click();  // Char -> code
  void Command4_Click();  // code -> Char
  // Every change of the HEX field, typed or set by the converter.
  void Text2_Change(const std::string& text);
  void bit_DSP(std::int16_t& value);

 private:
  void set_text2(const std::string& text);
};

}  // namespace zenta

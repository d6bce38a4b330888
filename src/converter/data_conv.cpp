#include "converter/data_conv.h"

#include <cmath>
#include <cstdio>

#include "common/number_text.h"

namespace zenta {

double decimal_value(const std::string& text) {
  return leading_number(text);
}

std::int32_t hex_value(const std::string& text) {
  return read_hex(text).value_or(0);
}

std::string hex_text_of(double value, bool code16) {
  const double whole = round_half_even(value);
  if (!std::isfinite(whole) || whole < -2147483648.0 || whole > 4294967295.0) return "Overflow";
  const auto number = static_cast<std::int64_t>(whole);
  if (code16 && number < 0 && number >= -32768) return hex_text(number & 0xFFFF);
  return hex_text(number);
}

std::string bit_pattern(std::int32_t value) {
  std::string text;
  for (int bit = 7; bit >= 0; --bit) {
    text += ((value >> bit) & 1) ? '1' : '0';
    if (bit == 4) text += ' ';
  }
  return text;
}

std::int32_t first_code_point(const std::string& text) {
  if (text.empty()) return -1;
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  int extra = 0;
  std::int32_t code = 0;
  if (lead < 0x80) return static_cast<std::int32_t>(lead);
  if ((lead & 0xE0) == 0xC0) {
    extra = 1;
    code = static_cast<std::int32_t>(lead & 0x1F);
  } else if ((lead & 0xF0) == 0xE0) {
    extra = 2;
    code = static_cast<std::int32_t>(lead & 0x0F);
  } else if ((lead & 0xF8) == 0xF0) {
    extra = 3;
    code = static_cast<std::int32_t>(lead & 0x07);
  } else {
    return static_cast<std::int32_t>(lead);  // not UTF-8: the byte itself
  }
  if (text.size() <= static_cast<std::size_t>(extra)) return static_cast<std::int32_t>(lead);
  for (int i = 1; i <= extra; ++i) code = (code << 6) | (byte(static_cast<std::size_t>(i)) & 0x3F);
  return code;
}

std::string utf8_of(std::int32_t cp) {
  if (cp <= 0 || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return {};
  std::string text;
  const auto put = [&text](std::int32_t b) { text += static_cast<char>(b); };
  if (cp < 0x80) {
    put(cp);
  } else if (cp < 0x800) {
    put(0xC0 | (cp >> 6));
    put(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    put(0xE0 | (cp >> 12));
    put(0x80 | ((cp >> 6) & 0x3F));
    put(0x80 | (cp & 0x3F));
  } else {
    put(0xF0 | (cp >> 18));
    put(0x80 | ((cp >> 12) & 0x3F));
    put(0x80 | ((cp >> 6) & 0x3F));
    put(0x80 | (cp & 0x3F));
  }
  return text;
}

void DataConv::Form_Load() {
  Text1.clear();
  set_text2("");
  Text3.clear();
  Text4.clear();
}

void DataConv::Command1_Click() {
  set_text2(hex_text_of(decimal_value(Text1)));
  // The bit display needs a 16-bit value; only its low byte is shown, so a
  // wider value keeps its low 16 bits rather than failing.
  auto value = static_cast<std::int16_t>(hex_value(Text2) & 0xFFFF);
  bit_DSP(value);
}

void DataConv::Command3_Click() {
  Text1 = std::to_string(hex_value(Text2));
}

// An empty field has no character: the code field keeps its text.
void DataConv::Command2_Click() {
  const std::int32_t code = first_code_point(Text3);
  if (code >= 0) Text4 = hex_text_of(code, true);
}

// 16-bit codes written as negative numbers (FFFF) name the characters
// above 0x7FFF; a code that names no character leaves the field as it is.
void DataConv::Command4_Click() {
  std::int32_t code = hex_value(Text4);
  if (code < 0 && code >= -32768) code += 65536;
  if (code == 0) {
    Text3.clear();
    return;
  }
  const std::string character = utf8_of(code);
  if (!character.empty()) Text3 = character;
}

void DataConv::Text2_Change(const std::string& text) {
  Text2 = text;
  auto value = static_cast<std::int16_t>(hex_value(Text2) & 0xFFFF);
  bit_DSP(value);
}

void DataConv::bit_DSP(std::int16_t& value) {
  Label_bit = bit_pattern(value);
}

void DataConv::set_text2(const std::string& text) {
  Text2_Change(text);
}

}  // namespace zenta

// The data converter, driven as its buttons drive it.
#include <gtest/gtest.h>

#include <tuple>

#include "converter/data_conv.h"

namespace zenta {
namespace {

TEST(DataConv, DecimalToHexAndBack) {
  // Typed into DEC, then CNV>>: the HEX and the bits shown; DEC after <<CNV.
  using Row = std::tuple<const char*, const char*, const char*, const char*>;
  const Row rows[] = {
      {"255", "FF", "1111 1111", "255"},
      {"-1", "FFFFFFFF", "1111 1111", "-1"},
      {"12.5", "C", "0000 1100", "12"},
      {"13.5", "E", "0000 1110", "14"},
      {"2.5e1", "19", "0001 1001", "25"},
      {"255.7", "100", "0000 0000", "256"},
      {"65535", "FFFF", "1111 1111", "-1"},
      {"65536", "10000", "0000 0000", "65536"},
      {"", "0", "0000 0000", "0"},
      {"1 2 3", "7B", "0111 1011", "123"},
      {"&HA5", "A5", "1010 0101", "165"},
      {"1e3x", "3E8", "1110 1000", "1000"},
      {"-32768", "FFFF8000", "0000 0000", "-32768"},
      {"4294967295", "FFFFFFFF", "1111 1111", "-1"},
      {"4294967296", "Overflow", "0000 0000", "0"},
  };
  DataConv conv;  // each opening clears every field
  for (const auto& [dec, hex, bits, back] : rows) {
    SCOPED_TRACE(dec);
    conv.Text3 = "A";
    conv.Text4 = "41";
    conv.Form_Load();
    EXPECT_EQ(conv.Text1 + conv.Text2 + conv.Text3 + conv.Text4, "");
    EXPECT_EQ(conv.Label_bit, "0000 0000");
    conv.Text1 = dec;
    conv.Command1_Click();
    EXPECT_EQ(std::tie(conv.Text2, conv.Label_bit), std::tuple(hex, bits));
    conv.Command3_Click();
    EXPECT_EQ(conv.Text1, back);
  }
}

TEST(DataConv, TypedHexRunsTheBitDisplayAndReadsBack) {
  // Typed into HEX: the bits shown, and DEC after <<CNV.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"FF", "1111 1111", "255"},      {"FFFF", "1111 1111", "-1"},
      {"8000", "0000 0000", "-32768"}, {"10000", "0000 0000", "65536"},
      {"1G", "0000 0001", "1"},        {"1a5", "1010 0101", "421"},
      {"", "0000 0000", "0"},          {"12345", "0100 0101", "74565"},
      {"123456789", "0000 0000", "0"}, {"7fffffff", "1111 1111", "2147483647"},
  };
  for (const auto& [hex, bits, dec] : rows) {
    DataConv conv;
    conv.Form_Load();
    conv.Label_bit = "x";
    conv.Text2_Change(hex);
    EXPECT_EQ(conv.Label_bit, bits) << hex;
    conv.Label_bit = "untouched";
    conv.Command3_Click();
    EXPECT_EQ(std::tie(conv.Text1, conv.Label_bit), std::tuple(dec, "untouched")) << hex;
  }
}

TEST(DataConv, CharactersAndCodes) {
  // Both ways: the character's code, and the code's character.
  for (const auto& [character, code] : {std::pair{"A", "41"},
                                        {"a", "61"},
                                        {" ", "20"},
                                        {"\xC3\xA9", "E9"},
                                        {"\xE2\x82\xAC", "20AC"},
                                        {"\xF0\x9F\x98\x80", "1F600"}}) {
    DataConv conv;
    conv.Text3 = character;
    conv.Command2_Click();
    EXPECT_EQ(conv.Text4, code);
    conv.Text3 = "?";
    conv.Command4_Click();
    EXPECT_EQ(conv.Text3, character) << code;
  }
  // Only the first character counts.
  DataConv conv;
  conv.Text3 = "AB";
  conv.Command2_Click();
  EXPECT_EQ(conv.Text4, "41");
  // An empty character field keeps the code; a code naming no character keeps the character.
  conv.Text3 = "";
  conv.Command2_Click();
  EXPECT_EQ(conv.Text4, "41");
  conv.Text3 = "z";
  conv.Text4 = "D800";
  conv.Command4_Click();
  EXPECT_EQ(conv.Text3, "z");
  // FFFF is -1 as a 16-bit value, and still names U+FFFF.
  conv.Text4 = "FFFF";
  conv.Command4_Click();
  EXPECT_EQ(conv.Text3, "\xEF\xBF\xBF");
}

}  // namespace
}  // namespace zenta

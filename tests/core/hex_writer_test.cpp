#include "image/hex_writer.h"

#include <gtest/gtest.h>

#include <map>

#include "image/hex_loader.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::TempDir;

// Reads INHX8M text back independently of the writer and checks what every
// reader relies on: count, checksum, data records of 1 to 16 bytes that do
// not cross a 16-byte boundary, the end record last. Returns the bytes by
// byte address and counts the data records into `records`.
std::map<int, int> decode(const std::string& text, int& records) {
  std::map<int, int> bytes;
  std::istringstream lines(text);
  std::string line, last;
  while (std::getline(lines, line)) {
    last = line;
    const auto field = [&](std::size_t at) { return std::stoi(line.substr(at, 2), nullptr, 16); };
    const int count = field(1), address = field(3) * 256 + field(5);
    EXPECT_EQ(line.size(), 11u + 2u * static_cast<unsigned>(count)) << line;
    int sum = 0;
    for (std::size_t i = 1; i + 1 < line.size(); i += 2) sum += field(i);
    EXPECT_EQ(sum % 256, 0) << "checksum of " << line;
    if (field(7) == 1) continue;
    EXPECT_TRUE(line[0] == ':' && field(7) == 0 && count >= 1 && address % 16 + count <= 16)
        << line;
    ++records;
    for (int j = 0; j < count; ++j) bytes[address + j] = field(9 + 2 * static_cast<unsigned>(j));
  }
  EXPECT_EQ(last, ":00000001FF");
  return bytes;
}

TEST(HexWriterTest, SplitsRecordsAtSixteenBytesBoundariesAndGaps) {
  struct Case {
    const char* name;
    std::vector<std::uint32_t> addresses;
    int records;
  };
  const Case cases[] = {
      {"nine words", {0, 1, 2, 3, 4, 5, 6, 7, 8}, 2},
      {"across a boundary", {6, 7, 8, 9}, 2},
      {"gap inside a row", {0, 1, 5, 6}, 2},
      {"end of program memory and configuration", {0x1FFF, 0x2000, 0x2007}, 3},
      {"above what INHX8M addresses", {0x7FFF, 0x8000}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<HexWord> words;
    std::map<int, int> expected;
    for (std::uint32_t w : c.addresses) {
      const auto value = static_cast<std::uint16_t>((w * 7 + 0x1234) & 0x3FFF);
      words.push_back({w, value});
      if (w > 0x7FFF) continue;
      expected[static_cast<int>(2 * w)] = value & 0xFF;
      expected[static_cast<int>(2 * w + 1)] = value >> 8;
    }
    int records = 0;
    EXPECT_EQ(decode(format_inhx8m(words), records), expected);
    EXPECT_EQ(records, c.records);
  }
}

TEST(HexWriterTest, RoundTripsThroughThePanelsLoaderWithoutErasedCells) {
  ProgrammerState written;
  blank_program_image(written);
  // A full row, a zero (data, not blank), the last word of 8K, the configuration word.
  for (int w : {0, 1, 2, 3, 4, 5, 6, 7, 0x123, 0x1FFF}) {
    written.set_word(w, (w * 0x35 + 0x2800) & 0x3FFF);
  }
  written.set_word(9, 0x0000);
  written.set_word(0x2007, 0x3F3A);
  written.EepromBuffer.fill(0xFF);
  written.EepromBuffer[0] = 0x00;
  written.EepromBuffer[0x7F] = 0xC3;
  written.EepromBuffer[0x80] = 0x11;  // past a 128-byte EEPROM
  std::vector<HexWord> words = program_hex_words(written, 0x2008);
  for (const HexWord& w : eeprom_hex_words(written, 128)) words.push_back(w);
  EXPECT_EQ(words.size(), 14u) << "erased cells are left out";

  std::istringstream text(format_inhx8m(words));
  ProgrammerState read;
  blank_program_image(read);
  ASSERT_TRUE(load_hex_records(text, read).ok);
  for (int w = 0; w <= 0x2007; ++w) ASSERT_EQ(read.word(w), written.word(w)) << "word " << w;
  // EEPROM byte i comes back at word 0x2100 + i, as gputils files put it.
  EXPECT_EQ(read.word(0x2100), 0x0000);
  EXPECT_EQ(read.word(0x217F), 0x00C3);
  EXPECT_EQ(read.LastAddress, 0x2180);
}

TEST(HexWriterTest, GpdasmReadsTheFileBack) {
  if (!testing::tool_available("gpdasm")) GTEST_SKIP() << "gputils' gpdasm is not installed";
  TempDir dir;
  const std::string path = dir.file("out.hex");
  ProgrammerState state;
  state.EepromBuffer.fill(0xFF);
  state.EepromBuffer[1] = 0xA5;
  std::vector<HexWord> words = eeprom_hex_words(state, 256);
  words.insert(words.begin(), {{0, 0x3055}, {1, 0x0086}, {0x10, 0x2802}, {0x2007, 0x3F3A}});
  ASSERT_TRUE(write_inhx8m_file(path, words));

  const auto result = testing::run_command("gpdasm -p p16f877a '" + path + "' 2>&1");
  ASSERT_EQ(result.status, 0) << result.out;
  for (const char* line : {"0000:  3055  movlw   0x55", "0001:  0086  movwf   0x06",
                           "0010:  2802  goto    0x0002", "2007:  3f3a",
                           // gpdasm counts data bytes: EEPROM byte 1 stands at 2100 + 2.
                           "2102:  a5"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << "\n" << result.out;
  }
}

}  // namespace
}  // namespace zenta

namespace zenta {
namespace {

// A read that stopped at word N writes words 0 to N-1 and not one more:
// the buffer past N holds whatever was there before, not the chip's word.
TEST(HexWriter, ProgramWordsStopBeforeTheCount) {
  for (const int count : {0, 1, 5, 8}) {
    SCOPED_TRACE(count);
    ProgrammerState state;  // every word 0x0000: none is blank
    std::vector<std::uint32_t> addresses;
    for (const HexWord& word : program_hex_words(state, count)) {
      addresses.push_back(word.address);
    }
    std::vector<std::uint32_t> expected;
    for (int w = 0; w < count; ++w) expected.push_back(static_cast<std::uint32_t>(w));
    EXPECT_EQ(addresses, expected);
  }
}

}  // namespace
}  // namespace zenta

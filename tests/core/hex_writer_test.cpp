#include "image/hex_writer.h"

#include <gtest/gtest.h>

#include <map>

#include "image/hex_loader.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::TempDir;

int hex_value(const std::string& text) {
  return std::stoi(text, nullptr, 16);
}

// Reads INHX8M text back independently of the writer and checks what every
// reader relies on: colon, count, checksum, data records only, the end
// record last, and no record longer than 16 bytes or crossing a 16-byte
// boundary. Returns the bytes by byte address and counts the data records.
std::map<int, int> decode(const std::string& text, int& records) {
  std::map<int, int> bytes;
  std::istringstream lines(text);
  std::string line;
  bool ended = false;
  records = 0;
  while (std::getline(lines, line)) {
    EXPECT_FALSE(ended) << "a record after the end record: " << line;
    EXPECT_EQ(line[0], ':') << line;
    const int count = hex_value(line.substr(1, 2));
    EXPECT_EQ(line.size(), 11u + 2u * static_cast<unsigned>(count)) << line;
    int sum = 0;
    for (std::size_t i = 1; i + 1 < line.size(); i += 2) sum += hex_value(line.substr(i, 2));
    EXPECT_EQ(sum % 256, 0) << "checksum of " << line;
    const int address = hex_value(line.substr(3, 4));
    const int type = hex_value(line.substr(7, 2));
    if (type == 1) {
      EXPECT_EQ(line, ":00000001FF");
      ended = true;
      continue;
    }
    EXPECT_EQ(type, 0) << line;
    EXPECT_GE(count, 1) << line;
    EXPECT_LE(address % 16 + count, 16) << "record crosses a 16-byte boundary: " << line;
    ++records;
    for (int j = 0; j < count; ++j) {
      EXPECT_EQ(bytes.count(address + j), 0u) << "byte written twice: " << line;
      bytes[address + j] = hex_value(line.substr(9 + 2 * static_cast<std::size_t>(j), 2));
    }
  }
  EXPECT_TRUE(ended) << "no end record";
  return bytes;
}

TEST(HexWriterTest, WritesWhatGpasmWritesForTheSameWords) {
  // gpasm -a inhx8m output for movlw 0x55 / movwf PORTB / goto $, __CONFIG
  // 0x3F3A and de 1,2,3 on a 16F877A.
  EXPECT_EQ(format_inhx8m({{0, 0x3055}, {1, 0x0086}, {2, 0x2802}, {0x2007, 0x3F3A}}),
            ":06000000553086000228C5\n:02400E003A3F37\n:00000001FF\n");
  ProgrammerState state;
  state.EepromBuffer.fill(0xFF);
  state.EepromBuffer[0] = 1;
  state.EepromBuffer[1] = 2;
  state.EepromBuffer[2] = 3;
  EXPECT_EQ(format_inhx8m(eeprom_hex_words(state, 256)), ":06420000010002000300B2\n:00000001FF\n");
  EXPECT_EQ(format_inhx8m({}), ":00000001FF\n");
}

TEST(HexWriterTest, SplitsRecordsAtSixteenBytesBoundariesAndGaps) {
  struct Case {
    const char* name;
    std::vector<std::uint32_t> addresses;
    int records;
  };
  auto run = [](std::uint32_t first, std::uint32_t last) {
    std::vector<std::uint32_t> a;
    for (auto w = first; w <= last; ++w) a.push_back(w);
    return a;
  };
  const Case cases[] = {
      {"one row of eight", run(0, 7), 1},
      {"nine words", run(0, 8), 2},
      {"across a boundary", run(4, 12), 2},
      {"gap inside a row", {0, 1, 5, 6}, 2},
      {"both sides of a boundary", {7, 8}, 2},
      {"end of program memory and configuration", {0x1FFF, 0x2000, 0x2007}, 3},
      {"whole 8K program memory", run(0, 0x1FFF), 1024},
      {"above what INHX8M addresses", {0x7FFF, 0x8000}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<HexWord> words;
    std::map<int, int> expected;
    for (std::uint32_t w : c.addresses) {
      const auto value = static_cast<std::uint16_t>((w * 7 + 0x1234) & 0x3FFF);
      words.push_back({w, value});
      if (w <= 0x7FFF) {
        expected[static_cast<int>(2 * w)] = value & 0xFF;
        expected[static_cast<int>(2 * w + 1)] = value >> 8;
      }
    }
    int records = 0;
    EXPECT_EQ(decode(format_inhx8m(words), records), expected);
    EXPECT_EQ(records, c.records);
  }
}

TEST(HexWriterTest, ImagesLeaveOutErasedCellsAndStayInsideTheBuffers) {
  ProgrammerState state;
  for (int w = 0; w < kProgramBufferWords; ++w) state.set_word(w, kBlankWord);
  state.set_word(0, 0x2805);
  state.set_word(3, 0x0000);  // zero is data, not blank
  state.set_word(9999, 0x1234);
  const auto words = program_hex_words(state, 20000);
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0].address, 0u);
  EXPECT_EQ(words[1].address, 3u);
  EXPECT_EQ(words[1].value, 0u);
  EXPECT_EQ(words[2].address, 9999u);
  EXPECT_EQ(program_hex_words(state, 3).size(), 1u);  // word 3 is beyond the count

  state.EepromBuffer.fill(0xFF);
  state.EepromBuffer[0] = 0x00;
  state.EepromBuffer[255] = 0x5A;
  state.EepromBuffer[256] = 0x11;  // the buffer's spare cell is no EEPROM byte of a chip
  const auto bytes = eeprom_hex_words(state, 256);
  ASSERT_EQ(bytes.size(), 2u);
  EXPECT_EQ(bytes[0].address, kEepromWordAddress);
  EXPECT_EQ(bytes[1].address, kEepromWordAddress + 255);
  EXPECT_EQ(bytes[1].value, 0x5A);
  EXPECT_EQ(eeprom_hex_words(state, 128).size(), 1u);
}

TEST(HexWriterTest, RoundTripsThroughThePanelsLoader) {
  ProgrammerState written;
  blank_program_image(written);
  // Scattered words, a full row, the last word of 8K and the configuration word.
  for (int w : {0, 1, 2, 3, 4, 5, 6, 7, 9, 0x123, 0x7FF, 0x1FFF}) {
    written.set_word(w, (w * 0x35 + 0x2800) & 0x3FFF);
  }
  written.set_word(0x2007, 0x3F3A);
  written.EepromBuffer.fill(0xFF);
  written.EepromBuffer[0] = 0x00;
  written.EepromBuffer[0x7F] = 0xC3;
  std::vector<HexWord> words = program_hex_words(written, 0x2008);
  for (const HexWord& w : eeprom_hex_words(written, 128)) words.push_back(w);

  std::istringstream text(format_inhx8m(words));
  ProgrammerState read;
  blank_program_image(read);
  const HexLoadReport report = load_hex_records(text, read);
  ASSERT_TRUE(report.ok);
  for (int w = 0; w <= 0x2007; ++w) {
    ASSERT_EQ(read.word(w), written.word(w)) << "word " << w;
  }
  // EEPROM byte i comes back at word 0x2100 + i, as gputils files put it.
  EXPECT_EQ(read.word(0x2100), 0x0000);
  EXPECT_EQ(read.word(0x2101), kBlankWord);
  EXPECT_EQ(read.word(0x217F), 0x00C3);
  EXPECT_EQ(read.LastAddress, 0x2180);
}

TEST(HexWriterTest, GpdasmReadsTheFileBack) {
  if (!testing::tool_available("gpdasm")) GTEST_SKIP() << "gputils' gpdasm is not installed";
  TempDir dir;
  const std::string path = dir.file("out.hex");
  ProgrammerState state;
  for (int w = 0; w < kProgramBufferWords; ++w) state.set_word(w, kBlankWord);
  state.set_word(0, 0x3055);     // movlw 0x55
  state.set_word(1, 0x0086);     // movwf 0x06
  state.set_word(0x10, 0x2802);  // goto 0x0002
  std::vector<HexWord> words = program_hex_words(state, 0x2000);
  words.push_back({0x2007, 0x3F3A});
  state.EepromBuffer.fill(0xFF);
  state.EepromBuffer[1] = 0xA5;
  for (const HexWord& w : eeprom_hex_words(state, 256)) words.push_back(w);
  ASSERT_TRUE(write_inhx8m_file(path, words));

  const auto result = testing::run_command("gpdasm -p p16f877a '" + path + "' 2>&1");
  ASSERT_EQ(result.status, 0) << result.out;
  for (const char* line : {"0000:  3055  movlw   0x55", "0001:  0086  movwf   0x06",
                           "0010:  2802  goto    0x0002", "2007:  3f3a",
                           // gpdasm counts data bytes: EEPROM byte 1 stands at 2100 + 2.
                           "2102:  a5"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << "\n" << result.out;
  }
  EXPECT_FALSE(write_inhx8m_file(dir.file("no/such/folder/out.hex"), words));
}

}  // namespace
}  // namespace zenta

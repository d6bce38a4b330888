// Intel HEX files: the strict check made before a write, the panel's own
// loader at its edges, and the INHX8M writer read back by the loader and by
// gputils.
#include "image/hex_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "temp_dir.h"

namespace zenta {
namespace {

// A record with its checksum computed, from its bytes as hexadecimal text.
std::string record(const std::string& body) {
  int sum = 0;
  for (std::size_t i = 0; i < body.size(); i += 2) sum += std::stoi(body.substr(i, 2), nullptr, 16);
  char checksum[3];
  std::snprintf(checksum, sizeof checksum, "%02X", (256 - sum % 256) % 256);
  return ":" + body + checksum;
}

const std::string kEnd = ":00000001FF\n";
const std::string kWord0 = record("020000000528") + "\n";  // word 0 = 0x2805
const std::string kTail = kWord0 + kEnd;  // a good record after a faulty one, and the end
// Word 0, then the record given on line 2, then the end.
std::string second(const std::string& body) {
  return kWord0 + record(body) + "\n" + kEnd;
}

TEST(HexCheck, AWellFormedFileGivesItsMemoriesAndNamesTheUnwrittenEeprom) {
  const std::string text = record("020000040000") + "\n" + record("0207FC00FF3F") + "\n" +
                           format_inhx8m({{0, 0x2805},
                                          {1, 0x0000},
                                          {0x3FF, 0x3444},
                                          {0x2000, 0x0001},
                                          {0x2001, 0x0007},
                                          {0x2007, 0x3F72},
                                          {0x2100, 0x5A},
                                          {0x2103, 0x01}});
  std::istringstream in(text);
  const HexCheck check = check_hex(in, {0x400, 128, ""});
  ASSERT_TRUE(check.ok()) << check.findings[0].message("p.hex");
  EXPECT_EQ(check.program,
            (std::map<int, std::uint16_t>{{0, 0x2805}, {1, 0}, {0x3FE, 0x3FFF}, {0x3FF, 0x3444}}));
  EXPECT_EQ(check.user_ids, (std::map<int, std::uint16_t>{{0x2000, 0x0001}, {0x2001, 0x0007}}));
  EXPECT_EQ(check.config, std::optional<std::uint16_t>(0x3F72));
  EXPECT_EQ(check.eeprom, (std::map<int, std::uint8_t>{{0, 0x5A}, {3, 0x01}}));
  ASSERT_EQ(check.findings.size(), 1u);
  EXPECT_FALSE(check.findings[0].error);
  EXPECT_EQ(check.findings[0].message("p.hex"),
            "p.hex line 7: EEPROM data (2 bytes at 0x2100-0x2103) is not written: the write "
            "programs program memory and the configuration word");
}

// Each fault once, as the file's one error, on its line; messages are
// text, no byte of the file's goes into them raw.
TEST(HexCheck, EachFaultIsNamedWithItsLine) {
  // A NUL and a DEL byte inside a record.
  const std::string nul = std::string(
                              ":0200000\0"
                              "00528D1\n",
                              17) +
                          kTail;
  const std::string del =
      ":0200000\x7F"
      "0528D1\n" +
      kTail;
  const struct {
    std::string text;
    int line;
    std::string reason;
  } cases[] = {
      {":020000000529D1\n" + kTail, 1, "checksum D1 is wrong, the record's bytes need D0"},
      {":030000000528CE\n" + kTail, 1, "the count says 3 data bytes, the record holds 2"},
      {":0200000005G8D1\n" + kTail, 1, "character 'G' at column 12"},
      {":02000000,528D1\n" + kTail, 1, "character ',' at column 10"},
      {":020000000528D\n" + kTail, 1, "an even number of digits, at least 10; this one has 13"},
      {":G20000000528D1\n" + kTail, 1, "character 'G' at column 2"},
      {":020000 000528D1\n" + kTail, 1, "character ' ' at column 8"},
      {del, 1, "byte 0x7F at column 9"},
      {kWord0 + ":00000001\n" + kEnd, 2, "even number of digits"},
      {nul, 1, "byte 0x00 at column 9 is not a hexadecimal digit"},
      {second("0400000300001234"), 2, "record type 03"},
      {kWord0 + record("020000040001") + "\n" + kWord0 + kEnd, 3, "word 0x8000 is outside the"},
      {kWord0 + record("020000021000") + "\n" + kWord0 + kEnd, 3, "word 0x8000 is outside the"},
      {record("020001040000") + "\n" + kWord0 + kEnd, 1, "two data bytes and address 0000"},
      {kWord0, 2, "no end record"},
      {kEnd, 2, "no data record"},
      {kWord0 + "0000001FF\n:G\n" + kEnd, 2, "starts with ':'"},  // nothing read after
      {kWord0 + "\n" + kWord0 + kEnd, 2, "blank line before the end record"},
      {second("020800000528"), 2,
       "word 0x400 is outside the chip (program 0-0x3FF, configuration 0x2000-0x2007, EEPROM "
       "0x2100-0x217F)"},
      {second("024008000000"), 2, "word 0x2004 is outside"},
      {second("02400A000000"), 2, "word 0x2005 is outside"},
      {second("02400C000000"), 2, "device ID"},
      {second("024300000100"), 2, "word 0x2180 is outside"},
      {second("020002000540"), 2, "0x4005, wider than 14 bits"},
      {second("024200000501"), 2, "wider than 8 bits"},
      {second("0100030028"), 2, "word 0x1 has only its high byte"},
      {record("02000A000528") + "\n" + second("02000A000629").substr(kWord0.size()), 2,
       "word 0x5 is given again, other than on line 1"},
      {kWord0 + ":" + std::string(kLongestHexRecord, '0') + "\n" + kEnd, 2,
       "longer than any valid"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.reason);
    const HexCheck check = check_hex_text(c.text, {0x400, 128, ""});
    EXPECT_FALSE(check.ok());
    std::vector<HexFinding> errors;
    std::copy_if(check.findings.begin(), check.findings.end(), std::back_inserter(errors),
                 [](const HexFinding& f) { return f.error; });
    ASSERT_EQ(errors.size(), 1u) << errors[0].reason;
    EXPECT_EQ(errors[0].line, c.line);
    EXPECT_NE(errors[0].reason.find(c.reason), std::string::npos) << errors[0].reason;
    for (const char k : errors[0].reason) EXPECT_GE(static_cast<unsigned char>(k), 0x20);
  }
  EXPECT_EQ(
      check_hex_text(second("020800000528"), {0x400, 128, "16F628A"}).findings[0].message("f"),
      "f line 2: word 0x400 is outside the 16F628A (program 0-0x3FF, configuration "
      "0x2000-0x2007, EEPROM 0x2100-0x217F)");
}

// Blanks around a record, CR LF line ends and blank lines after the end are
// what editors leave; none of them is a fault. Comments after the end (as
// some C compilers write them, however long) are named once, by the line
// they start on, and the file is still good.
TEST(HexCheck, HarmlessLayoutIsNoFaultAndTextAfterTheEndIsNamed) {
  const std::string data = "  " + record("020000000528") + " \r\n";
  const std::pair<std::string, int> cases[] = {
      // What follows the end record, and the line named (0: none).
      {"", 0},
      {"\n\n", 0},
      {" \t\r\n\r\n\t\n", 0},
      {"x", 3},
      {"\n; CCS PCM C Compiler\n" + std::string(2000, ';') + "\n", 4},
      {"\r\n \t;PIC16F628A\n;CRC=1A2B\n", 4},
  };
  for (const auto& [after, line] : cases) {
    SCOPED_TRACE(line);
    const HexCheck check = check_hex_text(data + kEnd + after, {0x400, 128, ""});
    EXPECT_TRUE(check.ok());
    EXPECT_EQ(check.program.at(0), 0x2805);
    ASSERT_EQ(check.findings.size(), line ? 1u : 0u);
    if (line) {
      EXPECT_EQ(check.findings[0].message("f.hex"),
                "f.hex line " + std::to_string(line) + ": text after the end record is not loaded");
    }
  }
}

// The panel's own loader decides by a field's first character however long
// the field is, keeping no more of it than a record can use; the checked
// loader applies extended address records instead of storing them.
TEST(HexLoader, LongFieldsAndAddressRecords) {
  std::string longest = "FF000000";
  for (int i = 0; i < 255; ++i) longest += i % 2 ? "3F" : "A5";
  longest = record(longest);
  ASSERT_EQ(longest.size(), kLongestHexRecord);
  const std::string address = record("020000040000") + "\n";
  const std::string segment = record("020000020008") + "\n" + record("0100000011") + "\n";
  const struct {
    std::string text;
    bool extended;
    const char* bytes;  // at 0, 1, 254 and 256; empty: the load fails
    int last_address;
  } cases[] = {
      {longest + "\r\n" + kEnd, false, "A5 3F A5 FF", 127},
      {std::string(600, ' ') + longest + "\n" + kEnd, false, "A5 3F A5 FF", 127},
      {longest + "," + longest + "\n" + kEnd, false, "A5 3F A5 FF", 127},
      {longest + "0\n" + kEnd, false, "A5 3F A5 FF", 127},        // a record with more digits
      {":" + std::string(100000, '0'), false, "00 3F FF FF", 0},  // no line end at all
      // A long comment ends the loading.
      {kWord0 + std::string(600, ';') + "\n" + longest + kEnd, false, "05 28 FF FF", 0},
      {address + kWord0 + kEnd, false, "05 28 FF FF", 0},  // an address record as data
      {kWord0 + address + kEnd, false, "00 00 FF FF", 0},
      {kWord0 + address + kEnd, true, "05 28 FF FF", 0},
      {segment + kEnd, true, "FF 3F FF FF", 64},  // byte 0x80 holds 11
      {record("020000021000") + "\n" + kWord0 + kEnd, true, "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 40));
    ProgrammerState state;
    const HexLoadReport report = load_hex_text(c.text, state, {.extended_addresses = c.extended});
    ASSERT_EQ(report.ok, *c.bytes != 0);
    if (!report.ok) {
      EXPECT_EQ(report.failed_line, 2);
      EXPECT_EQ(report.failure, "byte address 10000 is outside the program buffer (0-4E20)");
      continue;
    }
    char bytes[16];
    std::snprintf(bytes, sizeof bytes, "%02X %02X %02X %02X", state.ProgramBuffer[0],
                  state.ProgramBuffer[1], state.ProgramBuffer[254], state.ProgramBuffer[256]);
    EXPECT_EQ(bytes, std::string(c.bytes));
    EXPECT_EQ(state.LastAddress, c.last_address);
    if (c.last_address == 64) {
      EXPECT_EQ(state.ProgramBuffer[0x80], 0x11);
    }
  }
}

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

TEST(HexWriter, SplitsRecordsAtSixteenBytesBoundariesAndGaps) {
  const std::pair<std::vector<std::uint32_t>, int> cases[] = {
      // The words written, and the data records they take.
      {{0, 1, 2, 3, 4, 5, 6, 7, 8}, 2},
      {{6, 7, 8, 9}, 2},
      {{0, 1, 5, 6}, 2},              // a gap inside a row
      {{0x1FFF, 0x2000, 0x2007}, 3},  // program memory's end and configuration
      {{0x7FFF, 0x8000}, 1},          // above what INHX8M addresses
  };
  for (const auto& [addresses, records] : cases) {
    std::vector<HexWord> words;
    std::map<int, int> expected;
    for (std::uint32_t w : addresses) {
      const auto value = static_cast<std::uint16_t>((w * 7 + 0x1234) & 0x3FFF);
      words.push_back({w, value});
      if (w > 0x7FFF) continue;
      expected[static_cast<int>(2 * w)] = value & 0xFF;
      expected[static_cast<int>(2 * w + 1)] = value >> 8;
    }
    int found = 0;
    EXPECT_EQ(decode(format_inhx8m(words), found), expected);
    EXPECT_EQ(found, records) << addresses.front();
  }
}

// Erased cells are left out; a zero is data. A read that stopped at word N
// writes words 0 to N-1 and not one more. EEPROM byte i comes back at word
// 0x2100 + i, as gputils files put it.
TEST(HexWriter, RoundTripsThroughThePanelsLoaderWithoutErasedCells) {
  ProgrammerState written;
  blank_program_image(written);
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
  EXPECT_EQ(words.size(), 14u);
  ProgrammerState read;
  blank_program_image(read);
  ASSERT_TRUE(load_hex_text(format_inhx8m(words), read).ok);
  for (int w = 0; w <= 0x2007; ++w) ASSERT_EQ(read.word(w), written.word(w)) << "word " << w;
  EXPECT_EQ(read.word(0x2100), 0x0000);
  EXPECT_EQ(read.word(0x217F), 0x00C3);
  EXPECT_EQ(read.LastAddress, 0x2180);
  for (const int count : {0, 1, 5}) {
    ProgrammerState zeros;  // every word 0x0000: none is blank
    const std::vector<HexWord> taken = program_hex_words(zeros, count);
    EXPECT_EQ(taken.size(), std::size_t(count));
    EXPECT_EQ(taken.empty() ? 0 : taken.back().address + 1, std::uint32_t(count));
  }
}

TEST(HexWriter, GpdasmReadsTheFileBack) {
  if (!testing::tool_available("gpdasm")) GTEST_SKIP() << "gputils' gpdasm is not installed";
  testing::TempDir dir;
  ProgrammerState state;
  state.EepromBuffer.fill(0xFF);
  state.EepromBuffer[1] = 0xA5;
  std::vector<HexWord> words = eeprom_hex_words(state, 256);
  words.insert(words.begin(), {{0, 0x3055}, {1, 0x0086}, {0x10, 0x2802}, {0x2007, 0x3F3A}});
  ASSERT_TRUE(write_inhx8m_file(dir.file("out.hex"), words));
  const auto result = testing::run_command("gpdasm -p p16f877a '" + dir.file("out.hex") + "' 2>&1");
  ASSERT_EQ(result.status, 0) << result.out;
  // gpdasm counts data bytes: EEPROM byte 1 stands at 2100 + 2.
  for (const char* line : {"0000:  3055  movlw   0x55", "0001:  0086  movwf   0x06",
                           "0010:  2802  goto    0x0002", "2007:  3f3a", "2102:  a5"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << "\n" << result.out;
  }
}

}  // namespace
}  // namespace zenta

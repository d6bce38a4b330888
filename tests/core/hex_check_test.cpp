// The strict HEX file check, and the loader's refusal of fields no record
// can be as long as.
#include "image/hex_check.h"

#include <gtest/gtest.h>

#include <sstream>

#include "image/hex_loader.h"
#include "image/hex_writer.h"

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
  EXPECT_NE(check.findings[0].reason.find("EEPROM data (2 bytes at 0x2100-0x2103) is not written"),
            std::string::npos)
      << check.findings[0].reason;
}

TEST(HexCheck, EachFaultIsNamedWithItsLine) {
  const std::string data = record("020000000528") + "\n";  // word 0 = 0x2805
  struct Case {
    std::string name, text;
    int line;
    std::string reason;
  };
  const std::vector<Case> cases = {
      {"checksum", ":020000000528D0\n" + kEnd, 1,
       "checksum D0 is wrong, the record's bytes need D1"},
      {"count", ":030000000528CE\n" + kEnd, 1, "the count says 3 data bytes, the record holds 2"},
      {"digit", ":0200000005G8D1\n" + kEnd, 1, "character 'G' at column 12"},
      {"comma", ":02000000,528D1\n" + kEnd, 1, "character ',' at column 10"},
      {"odd length", ":020000000528D\n" + kEnd, 1, "even number of digits"},
      {"short", ":00000001\n", 1, "even number of digits"},
      {"type 03", data + record("0400000300001234") + "\n" + kEnd, 2, "record type 03"},
      {"upper address", data + record("020000040001") + "\n" + data + kEnd, 3,
       "word 0x8000 is outside the chip"},
      {"segment", data + record("020000021000") + "\n" + data + kEnd, 3,
       "word 0x8000 is outside the chip"},
      {"address record's own address", record("020001040000") + "\n" + data + kEnd, 1,
       "two data bytes and address 0000"},
      {"no end", data, 2, "no end record"},
      {"no data", kEnd, 2, "no data record"},
      {"no colon", data + "0000001FF\n" + kEnd, 2, "starts with ':'"},
      {"blank line", data + "\n" + data + kEnd, 2, "blank line before the end record"},
      {"past 1K", data + record("020800000528") + "\n" + kEnd, 2,
       "word 0x400 is outside the chip (program 0-0x3FF, configuration 0x2000-0x2007, EEPROM "
       "0x2100-0x217F)"},
      {"reserved", data + record("02400A000000") + "\n" + kEnd, 2, "word 0x2005 is outside"},
      {"device ID", data + record("02400C000000") + "\n" + kEnd, 2, "device ID"},
      {"past EEPROM", data + record("024300000100") + "\n" + kEnd, 2, "word 0x2180 is outside"},
      {"14 bits", data + record("020002000540") + "\n" + kEnd, 2, "0x4005, wider than 14 bits"},
      {"EEPROM byte", data + record("024200000501") + "\n" + kEnd, 2, "wider than 8 bits"},
      {"half word", data + record("0100030028") + "\n" + kEnd, 2,
       "word 0x1 has only its high byte"},
      {"twice", data + record("020000000629") + "\n" + kEnd, 2,
       "word 0x0 is given again, other than on line 1"},
      {"NUL",
       std::string(":0200000\0"
                   "00528D1\n",
                   17) +
           kEnd,
       1, "byte 0x00 at column 9 is not a hexadecimal digit"},
      {"past the 16F628A", data + record("020800000528") + "\n" + kEnd, 2,
       "word 0x400 is outside the 16F628A (program 0-0x3FF,"},
      {"too long", data + ":" + std::string(kLongestHexRecord, '0') + "\n" + kEnd, 2,
       "longer than any valid"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::istringstream in(c.text);
    const HexCheck check =
        check_hex(in, {0x400, 128, c.name == "past the 16F628A" ? "16F628A" : ""});
    EXPECT_FALSE(check.ok());
    int found = 0;
    for (const HexFinding& finding : check.findings) {
      if (finding.error && finding.line == c.line &&
          finding.reason.find(c.reason) != std::string::npos) {
        ++found;
      }
      // Messages are text: no byte of the file's goes into them raw.
      for (const char k : finding.reason) EXPECT_GE(static_cast<unsigned char>(k), 0x20);
    }
    // Each fault once.
    EXPECT_EQ(found, 1) << (check.findings.empty() ? std::string("no finding")
                                                   : check.findings[0].message("f.hex"));
  }
  EXPECT_EQ((HexFinding{7, "no end record"}.message("blink.hex")),
            "blink.hex line 7: no end record");
}

// Blanks around a record, CR LF line ends and blank lines after the end are
// what editors leave; none of them is a fault. Comments after the end (as
// some C compilers write them, however long) are named, not refused.
TEST(HexCheck, HarmlessLayoutIsNoFaultAndTextAfterTheEndIsNamed) {
  const std::string data = "  " + record("020000000528") + " \r\n";
  const HexCheck plain = check_hex_text(data + kEnd + "\n\n", {0x400, 128, ""});
  EXPECT_TRUE(plain.findings.empty()) << plain.findings[0].message("f.hex");
  EXPECT_EQ(plain.program.at(0), 0x2805);
  const HexCheck commented = check_hex_text(
      data + kEnd + "\n; CCS PCM C Compiler\n" + std::string(2000, ';') + "\n", {0x400, 128, ""});
  EXPECT_TRUE(commented.ok());
  ASSERT_EQ(commented.findings.size(), 1u);
  EXPECT_EQ(commented.findings[0].message("f.hex"),
            "f.hex line 4: text after the end record is not loaded");
}

// The panel's own loader decides by a field's first character however long
// the field is, keeping no more of it than a record can use; the checked
// loader applies extended address records instead of storing them.
TEST(HexLoader, LongFieldsAndAddressRecords) {
  std::string longest = "FF0000";
  longest += "00";
  for (int i = 0; i < 255; ++i) longest += i % 2 ? "3F" : "A5";
  longest = record(longest);
  ASSERT_EQ(longest.size(), kLongestHexRecord);
  const std::string word0 = record("020000000528") + "\n";
  struct Case {
    std::string name, text;
    bool extended;
    int byte0, byte1, byte254;  // -1: the load fails
    int last_address;
  };
  const std::vector<Case> cases = {
      {"the longest record, CR LF", longest + "\r\n" + kEnd, false, 0xA5, 0x3F, 0xA5, 127},
      {"blanks before it are skipped", std::string(600, ' ') + longest + "\n" + kEnd, false, 0xA5,
       0x3F, 0xA5, 127},
      {"fields between commas", longest + "," + longest + "\n" + kEnd, false, 0xA5, 0x3F, 0xA5,
       127},
      {"a record with more digits", longest + "0\n" + kEnd, false, 0xA5, 0x3F, 0xA5, 127},
      {"no line end at all", ":" + std::string(100000, '0'), false, 0x00, 0x3F, 0xFF, 0},
      {"a long comment ends the loading", word0 + std::string(600, ';') + "\n" + longest + kEnd,
       false, 0x05, 0x28, 0xFF, 0},
      {"an address record as data", record("020000040000") + "\n" + word0 + kEnd, false, 0x05, 0x28,
       0xFF, 0},
      {"an address record after the data", word0 + record("020000040000") + "\n" + kEnd, false,
       0x00, 0x00, 0xFF, 0},
      {"an address record applied", word0 + record("020000040000") + "\n" + kEnd, true, 0x05, 0x28,
       0xFF, 0},
      {"a segment applied", record("020000020008") + "\n" + record("0100000011") + "\n" + kEnd,
       true, 0xFF, 0x3F, 0xFF, 64},
      {"a segment past the buffer", record("020000021000") + "\n" + word0 + kEnd, true, -1, 0, 0,
       0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ProgrammerState state;
    const HexLoadReport report = load_hex_text(c.text, state, {.extended_addresses = c.extended});
    ASSERT_EQ(report.ok, c.byte0 >= 0);
    if (!report.ok) {
      EXPECT_EQ(report.failed_line, 2);
      EXPECT_EQ(report.failure, "byte address 10000 is outside the program buffer (0-4E20)");
      continue;
    }
    EXPECT_EQ(state.ProgramBuffer[0], c.byte0);
    EXPECT_EQ(state.ProgramBuffer[1], c.byte1);
    EXPECT_EQ(state.ProgramBuffer[254], c.byte254);
    EXPECT_EQ(state.ProgramBuffer[256], 0xFF);
    EXPECT_EQ(state.LastAddress, c.last_address);
  }
  ProgrammerState state;
  EXPECT_EQ(load_hex_text(record("020000020008") + "\n" + record("0100000011") + "\n" + kEnd, state,
                          {.extended_addresses = true})
                .ok,
            true);
  EXPECT_EQ(state.ProgramBuffer[0x80], 0x11);
}

}  // namespace
}  // namespace zenta

#include "image/hex_check.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "common/number_text.h"
#include "devices/chip_description.h"
#include "image/hex_loader.h"

namespace zenta {

namespace {

constexpr int kConfigBase = 0x2000;
constexpr int kUserIdEnd = 0x2004;
constexpr int kDeviceId = kDeviceIdAddress;
constexpr int kConfigWord = kConfigWordAddress;
constexpr int kEepromBase = 0x2100;

std::string hex(long long value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llX", value);
  return text;
}

struct ByteSeen {
  std::uint8_t value;
  int line;
};

class Checker {
 public:
  explicit Checker(const HexChipSpace& space) : space_(space) {}

  void line(int number, const std::string& text);
  void finish(int lines, bool too_long, bool read_error);
  // After the end record the loader reads nothing: what follows is named,
  // not checked (toolchains put comments there).
  bool ended() const { return ended_; }
  void text_after_end(int line) {
    result.findings.push_back({line, "text after the end record is not loaded", false});
  }
  HexCheck result;

 private:
  void error(int line, std::string reason) { result.findings.push_back({line, std::move(reason)}); }
  bool record(int number, const std::string& text, std::vector<int>& bytes);
  void place_words();

  HexChipSpace space_;
  std::map<long long, ByteSeen> bytes_;  // by byte address
  long long base_ = 0;                   // from the last extended address record
  bool ended_ = false;
  int blank_line_ = 0;  // the first blank line before the end, 0 for none
  int data_records_ = 0;
};

// The record's bytes (count, address, type, data, checksum) when its text is
// well formed; otherwise a finding and false.
bool Checker::record(int number, const std::string& text, std::vector<int>& bytes) {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (hex_digit(text[i]) < 0) {
      // A control character or a byte of a multi-byte character would
      // garble the message: those are named by their value.
      const auto byte = static_cast<unsigned char>(text[i]);
      const std::string shown = byte >= 0x20 && byte < 0x7F
                                    ? "character '" + std::string(1, text[i]) + "'"
                                    : "byte 0x" + hex_byte(byte);
      error(number, shown + " at column " + std::to_string(i + 1) + " is not a hexadecimal digit");
      return false;
    }
  }
  if (text.size() < 11 || text.size() % 2 == 0) {
    error(number, "a record has an even number of digits, at least 10; this one has " +
                      std::to_string(text.size() - 1));
    return false;
  }
  int sum = 0;
  for (std::size_t i = 1; i < text.size(); i += 2) {
    bytes.push_back(hex_digit(text[i]) * 16 + hex_digit(text[i + 1]));
    sum += bytes.back();
  }
  const int count = bytes[0];
  if (static_cast<int>(bytes.size()) != count + 5) {
    error(number, "the count says " + std::to_string(count) + " data bytes, the record holds " +
                      std::to_string(bytes.size() - 5));
    return false;
  }
  if (sum % 256 != 0) {
    const int needed = (bytes.back() - sum) & 0xFF;
    error(number, "checksum " + hex_byte(bytes.back()) + " is wrong, the record's bytes need " +
                      hex_byte(needed));
    return false;
  }
  return true;
}

void Checker::line(int number, const std::string& raw) {
  // Blanks around a record mean nothing to the loader either.
  const std::size_t first = raw.find_first_not_of(" \t");
  const std::string text =
      first == std::string::npos ? "" : raw.substr(first, raw.find_last_not_of(" \t") + 1 - first);
  if (text.empty()) {
    if (!ended_ && blank_line_ == 0) blank_line_ = number;
    return;
  }
  if (blank_line_ > 0) {
    error(blank_line_, "a blank line before the end record: the loader stops reading there");
    blank_line_ = -1;  // said once
  }
  if (text[0] != ':') {
    error(number, "a record starts with ':'; the loader stops reading here");
    ended_ = true;
    return;
  }
  std::vector<int> bytes;
  if (!record(number, text, bytes)) return;
  const int count = bytes[0], address = bytes[1] * 256 + bytes[2], type = bytes[3];
  switch (type) {
    case 0x00:
      ++data_records_;
      for (long long j = 0, said = -1; j < count; ++j) {
        const long long at = base_ + address + j;
        const auto [seen, fresh] =
            bytes_.try_emplace(at, ByteSeen{static_cast<std::uint8_t>(bytes[4 + j]), number});
        // Both bytes of a word given again make one finding.
        if (!fresh && seen->second.value != bytes[4 + j] && at / 2 != said) {
          said = at / 2;
          error(number, "word " + hex(at / 2) + " is given again, other than on line " +
                            std::to_string(seen->second.line));
        }
      }
      break;
    case 0x01:
      ended_ = true;
      break;
    case 0x02:
    case 0x04:
      // The upper address of the data records that follow: a linear
      // address's top 16 bits, or a segment in units of 16 bytes.
      if (count != 2 || address != 0) {
        error(number, "an extended address record (type 0" + std::to_string(type) +
                          ") has two data bytes and address 0000");
        break;
      }
      base_ = static_cast<long long>(bytes[4] * 256 + bytes[5]) << (type == 0x04 ? 16 : 4);
      break;
    default:
      error(number, "record type " + hex_byte(type) + " is not one of 00, 01, 02, 04");
      break;
  }
}

// Pairs the bytes into words, low byte first, and sorts each word into the
// chip's memories.
void Checker::place_words() {
  const int program_end = space_.program_words;
  const int eeprom_end = kEepromBase + space_.eeprom_bytes;
  int eeprom_line = 0, eeprom_first = 0, eeprom_last = 0;
  for (auto it = bytes_.begin(); it != bytes_.end(); ++it) {
    const long long word_at = it->first / 2;
    const int word_address = static_cast<int>(std::min<long long>(word_at, 0x7FFFFFFF));
    const auto low = bytes_.find(word_at * 2);
    const auto high = bytes_.find(word_at * 2 + 1);
    if (it->first % 2 == 1 && low != bytes_.end()) continue;  // taken with its low byte
    const int line = it->second.line;
    if (low == bytes_.end() || high == bytes_.end()) {
      error(line, "word " + hex(word_at) + " has only its " +
                      (low == bytes_.end() ? "high" : "low") + " byte");
      continue;
    }
    const int word = high->second.value * 256 + low->second.value;
    const bool program = word_address < program_end;
    const bool eeprom = word_address >= kEepromBase && word_address < eeprom_end;
    if (!eeprom && word > 0x3FFF) {
      error(line, "word " + hex(word_address) + " is " + hex(word) + ", wider than 14 bits");
      continue;
    }
    if (program) {
      result.program[word_address] = static_cast<std::uint16_t>(word);
    } else if (word_address >= kConfigBase && word_address < kUserIdEnd) {
      result.user_ids[word_address] = static_cast<std::uint16_t>(word);
    } else if (word_address == kConfigWord) {
      result.config = static_cast<std::uint16_t>(word);
    } else if (word_address == kDeviceId) {
      error(line, "word 0x2006 is the chip's device ID, which no write can change");
    } else if (eeprom) {
      if (word > 0xFF) {
        error(line, "EEPROM byte " + hex(word_address - kEepromBase) + " is " + hex(word) +
                        ", wider than 8 bits");
        continue;
      }
      result.eeprom[word_address - kEepromBase] = static_cast<std::uint8_t>(word);
      if (eeprom_line == 0) {
        eeprom_line = line;
        eeprom_first = word_address;
      }
      eeprom_last = word_address;
    } else {
      error(line, "word " + hex(word_at) + " is outside the " +
                      (space_.name.empty() ? std::string("chip") : space_.name) + " (program 0-" +
                      hex(program_end - 1) + ", configuration 0x2000-0x2007, EEPROM 0x2100-" +
                      hex(eeprom_end - 1) + ")");
    }
  }
  if (eeprom_line != 0) {
    result.findings.push_back(
        {eeprom_line,
         "EEPROM data (" + std::to_string(result.eeprom.size()) + " bytes at " + hex(eeprom_first) +
             "-" + hex(eeprom_last) +
             ") is not written: the write programs program memory and the configuration word",
         false});
  }
}

void Checker::finish(int lines, bool too_long, bool read_error) {
  if (too_long) {
    error(lines + 1, "longer than any valid record (" + std::to_string(kLongestHexRecord) +
                         " characters); the loader refuses the file");
  } else if (read_error) {
    error(lines + 1, "the file cannot be read past here");
  } else if (!ended_) {
    error(lines + 1, "no end record (:00000001FF)");
  }
  if (data_records_ == 0) error(lines + 1, "no data record: nothing to write");
  place_words();
}

}  // namespace

std::string HexFinding::message(const std::string& file) const {
  return file + " line " + std::to_string(line) + ": " + reason;
}

bool HexCheck::ok() const {
  for (const HexFinding& finding : findings) {
    if (finding.error) return false;
  }
  return true;
}

HexCheck check_hex(std::istream& in, const HexChipSpace& space) {
  Checker checker(space);
  std::string text;
  bool too_long = false;
  int number = 0;
  while (!checker.ended() && read_hex_line(in, text, kLongestHexRecord, too_long)) {
    checker.line(++number, text);
  }
  if (checker.ended()) {
    // The first line after the end with anything but blanks on it.
    int line = number + 1;
    for (int c = in.get(); c != std::char_traits<char>::eof(); c = in.get()) {
      if (c == '\n') {
        ++line;
      } else if (c != ' ' && c != '\t' && c != '\r') {
        checker.text_after_end(line);
        break;
      }
    }
  }
  checker.finish(number, too_long, in.bad());
  return std::move(checker.result);
}

HexCheck check_hex_text(const std::string& text, const HexChipSpace& space) {
  std::istringstream in(text);
  return check_hex(in, space);
}

}  // namespace zenta

#include "image/hex_writer.h"

#include <algorithm>
#include <cstdio>

#include "common/atomic_file.h"

namespace zenta {

namespace {

constexpr std::size_t kMaxRecordBytes = 16;

void append_record(std::string& text, std::uint16_t byte_address,
                   const std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> record;
  record.push_back(static_cast<std::uint8_t>(data.size()));
  record.push_back(static_cast<std::uint8_t>(byte_address >> 8));
  record.push_back(static_cast<std::uint8_t>(byte_address & 0xFF));
  record.push_back(0x00);  // data record
  record.insert(record.end(), data.begin(), data.end());
  unsigned sum = 0;
  for (std::uint8_t byte : record) sum += byte;
  record.push_back(static_cast<std::uint8_t>((0x100 - (sum & 0xFF)) & 0xFF));
  text += ':';
  char cell[3];
  for (std::uint8_t byte : record) {
    std::snprintf(cell, sizeof cell, "%02X", byte);
    text += cell;
  }
  text += '\n';
}

}  // namespace

std::string format_inhx8m(const std::vector<HexWord>& words) {
  std::string text;
  std::vector<std::uint8_t> data;
  std::uint32_t record_start = 0;  // byte address of data[0]
  const auto flush = [&] {
    if (!data.empty()) append_record(text, static_cast<std::uint16_t>(record_start), data);
    data.clear();
  };
  for (const HexWord& word : words) {
    if (word.address > 0x7FFF) continue;
    const std::uint32_t byte_address = 2 * word.address;
    const bool continues = !data.empty() && byte_address == record_start + data.size();
    if (!continues || data.size() == kMaxRecordBytes || byte_address % kMaxRecordBytes == 0) {
      flush();
      record_start = byte_address;
    }
    data.push_back(static_cast<std::uint8_t>(word.value & 0xFF));
    data.push_back(static_cast<std::uint8_t>(word.value >> 8));
  }
  flush();
  text += ":00000001FF\n";
  return text;
}

std::vector<HexWord> program_hex_words(const ProgrammerState& state, int count) {
  std::vector<HexWord> words;
  count = std::clamp(count, 0, kProgramBufferWords);
  for (int w = 0; w < count; ++w) {
    const int value = state.word(w);
    if (value != kBlankWord) {
      words.push_back({static_cast<std::uint32_t>(w), static_cast<std::uint16_t>(value)});
    }
  }
  return words;
}

std::vector<HexWord> eeprom_hex_words(const ProgrammerState& state, int count) {
  std::vector<HexWord> words;
  count = std::clamp(count, 0, kEepromBufferSize);
  for (int i = 0; i < count; ++i) {
    const std::uint8_t value = state.EepromBuffer[static_cast<std::size_t>(i)];
    if (value != 0xFF) {
      words.push_back({kEepromWordAddress + static_cast<std::uint32_t>(i), value});
    }
  }
  return words;
}

bool write_inhx8m_file(const std::string& path, const std::vector<HexWord>& words,
                       std::string* reason) {
  return write_file_atomically(path, format_inhx8m(words), reason);
}

}  // namespace zenta

#include "cli/output.h"

#include <algorithm>
#include <cstdio>

namespace zenta::cli {

namespace {

template <typename Cell>
std::string table(int count, int per_line, const char* address_format, Cell cell) {
  std::string text;
  char buffer[16];
  for (int start = 0; start < count; start += per_line) {
    std::snprintf(buffer, sizeof buffer, address_format, start);
    text += buffer;
    text += ':';
    for (int i = start; i < std::min(count, start + per_line); ++i) {
      text += ' ';
      text += cell(i, buffer, sizeof buffer);
    }
    text += '\n';
  }
  return text;
}

}  // namespace

std::string program_table(const ProgrammerState& state, int count) {
  count = std::clamp(count, 0, kProgramBufferWords);
  return table(count, 8, "%04X", [&](int w, char* buffer, std::size_t size) {
    std::snprintf(buffer, size, "%04X", state.word(w));
    return std::string(buffer);
  });
}

std::string eeprom_table(const ProgrammerState& state, int count) {
  count = std::clamp(count, 0, kEepromBufferSize);
  return table(count, 16, "%02X", [&](int i, char* buffer, std::size_t size) {
    std::snprintf(buffer, size, "%02X", state.EepromBuffer[static_cast<std::size_t>(i)]);
    return std::string(buffer);
  });
}

}  // namespace zenta::cli

#include "image/hex_loader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/file_names.h"
#include "common/number_text.h"

namespace zenta {

bool read_hex_line(std::istream& in, std::string& line, std::size_t longest_field, bool& too_long) {
  line.clear();
  std::size_t field = 0;
  bool leading = true;
  bool any = false;
  for (int c = in.get(); c != std::char_traits<char>::eof(); c = in.get()) {
    any = true;
    if (c == '\n') break;
    line.push_back(static_cast<char>(c));
    if (c == ',') {
      field = 0;
      leading = true;
    } else if (!leading || (c != ' ' && c != '\t')) {
      leading = false;
      // One more for the CR of a CR LF line end, taken off below.
      if (++field > longest_field + 1) {
        too_long = true;
        return false;
      }
    }
  }
  if (in.bad() || !any) return false;
  // Text written on the panel's home platform ends its lines with CR LF.
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
    if (field > 0) --field;
  }
  if (field > longest_field) {
    too_long = true;
    return false;
  }
  return true;
}

std::optional<std::string> HexFieldReader::next() {
  if (failed_) return std::nullopt;
  if (!line_started_) ++line_;
  // A comma promises one more field, even an empty one at the line's end.
  bool any = after_comma_;
  after_comma_ = false;
  bool leading = true;
  bool truncated = false;
  std::string field;
  for (int c = in_.get();; c = in_.get()) {
    if (c == std::char_traits<char>::eof()) {
      if (in_.bad()) {
        failed_ = true;
        return std::nullopt;
      }
      if (!any) return std::nullopt;
      break;
    }
    any = true;
    if (c == '\n') break;
    if (c == ',') {
      after_comma_ = true;
      break;
    }
    if (leading && (c == ' ' || c == '\t')) continue;
    leading = false;
    if (field.size() < kLongestHexRecord) {
      field.push_back(static_cast<char>(c));
    } else {
      truncated = true;
    }
  }
  line_started_ = after_comma_;
  // Text written on the panel's home platform ends its lines with CR LF.
  if (!after_comma_ && !truncated && !field.empty() && field.back() == '\r') field.pop_back();
  return field;
}

int hex_field(const std::string& field, std::size_t position, std::size_t count) {
  int value = 0;
  for (std::size_t i = position - 1; i < field.size() && i < position - 1 + count; ++i) {
    const char c = field[i];
    const int digit = hex_digit(c);
    if (digit < 0) break;
    value = value * 16 + digit;
  }
  return value;
}

HexRecord parse_hex_record(const std::string& field) {
  HexRecord record;
  if (field.empty() || field[0] != ':') return record;
  if (field.size() >= 9 && field.compare(7, 2, "01") == 0) {
    record.kind = HexRecord::Kind::kEnd;
    return record;
  }
  record.kind = HexRecord::Kind::kData;
  const int count = hex_field(field, 2, 2);
  record.last_offset = count == 0 ? 0 : count - 1;
  record.address = static_cast<std::int16_t>(static_cast<std::uint16_t>(hex_field(field, 4, 4)));
  return record;
}

int hex_record_byte(const std::string& field, int j) {
  return hex_field(field, static_cast<std::size_t>(10 + 2 * j), 2);
}

void blank_program_image(ProgrammerState& state) {
  for (int w = 0; w < kProgramBufferWords; ++w) state.set_word(w, kBlankWord);
}

std::int16_t last_word_of_byte(int end_index) {
  const int half = end_index / 2;
  if (end_index % 2 == 0) return static_cast<std::int16_t>(half);
  return static_cast<std::int16_t>(half % 2 == 0 ? half : half + 1);
}

namespace {

constexpr int kExtendedSegment = 0x02;
constexpr int kExtendedLinear = 0x04;

std::string byte_index_text(long long index) {
  return index < 0 ? "-" + hex_text(static_cast<int>(-index)) : hex_text(static_cast<int>(index));
}

}  // namespace

HexLoadReport load_hex_records(std::istream& in, ProgrammerState& state,
                               const HexLoadOptions& options) {
  HexLoadReport report;
  HexFieldReader reader(in);
  long long base = 0;  // from the last extended address record
  while (auto field = reader.next()) {
    report.last_field = *field;
    const HexRecord record = parse_hex_record(*field);
    if (record.kind != HexRecord::Kind::kData) {
      report.ok = true;
      return report;
    }
    long long address = record.address;
    if (options.extended_addresses) {
      const int type = hex_field(*field, 8, 2);
      if (type == kExtendedSegment || type == kExtendedLinear) {
        const long long upper = hex_field(*field, 10, 4);
        base = type == kExtendedLinear ? upper << 16 : upper << 4;
        continue;
      }
      if (type != 0) continue;
      address = base + static_cast<std::uint16_t>(record.address);
    }
    if (report.first_address == -1) {
      report.first_address = static_cast<int>(std::min<long long>(address, 0x7FFFFFFF));
    }
    for (int j = 0; j <= record.last_offset; ++j) {
      // Addresses are at most 32 bits and the count at most 255: the sum
      // cannot wrap, and every index outside the buffer is refused here.
      const long long index = address + j;
      if (index < 0 || index >= kProgramBufferSize) {
        report.failed_line = reader.line();
        report.failure = "byte address " + byte_index_text(index) +
                         " is outside the program buffer (0-" + hex_text(kProgramBufferSize - 1) +
                         ")";
        return report;
      }
      const int value = hex_record_byte(*field, j);
      state.ProgramBuffer[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(value);
      report.last_byte = std::to_string(index) + "  " + std::to_string(value);
    }
    // E / 2 > LastAddress, compared without halves.
    const int end_index = static_cast<int>(address) + record.last_offset;
    if (end_index > 2 * state.LastAddress) state.LastAddress = last_word_of_byte(end_index);
  }
  report.ok = !reader.failed();
  if (!report.ok) {
    report.failed_line = reader.line() + 1;
    report.failure = "the file cannot be read past here";
  }
  return report;
}

HexLoadReport load_hex_file(const std::string& path, ProgrammerState& state) {
  blank_program_image(state);
  state.LastAddress = 0;
  // The tools write the derived names in their own case (blink.hex for
  // blink.HEX). A directory opens on some systems but cannot be read.
  const std::string resolved = resolve_case_insensitive(path);
  std::error_code error;
  std::ifstream in;
  if (!resolved.empty() && !std::filesystem::is_directory(resolved, error)) in.open(resolved);
  if (!in.is_open()) return {};
  return load_hex_records(in, state);
}

HexLoadReport load_hex_text(const std::string& text, ProgrammerState& state,
                            const HexLoadOptions& options) {
  blank_program_image(state);
  state.LastAddress = 0;
  std::istringstream in(text);
  return load_hex_records(in, state, options);
}

}  // namespace zenta

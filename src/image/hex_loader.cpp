#include "image/hex_loader.h"

#include <filesystem>
#include <fstream>

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
  if (!have_line_) {
    if (!read_hex_line(in_, line_, kLongestHexRecord, too_long_)) {
      failed_ = in_.bad() || too_long_;
      return std::nullopt;
    }
    have_line_ = true;
    pos_ = 0;
  }
  while (pos_ < line_.size() && (line_[pos_] == ' ' || line_[pos_] == '\t')) ++pos_;
  const std::size_t comma = line_.find(',', pos_);
  std::string field;
  if (comma == std::string::npos) {
    field = line_.substr(pos_);
    have_line_ = false;
  } else {
    field = line_.substr(pos_, comma - pos_);
    pos_ = comma + 1;
  }
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

HexLoadReport load_hex_records(std::istream& in, ProgrammerState& state) {
  HexLoadReport report;
  HexFieldReader reader(in);
  while (auto field = reader.next()) {
    report.last_field = *field;
    const HexRecord record = parse_hex_record(*field);
    if (record.kind != HexRecord::Kind::kData) {
      report.ok = true;
      return report;
    }
    if (report.first_address == -1) report.first_address = record.address;
    for (int j = 0; j <= record.last_offset; ++j) {
      // Addresses are 16-bit, the count at most 255: the sum cannot wrap in
      // an int, and every index outside the buffer is refused here.
      const int index = record.address + j;
      if (index < 0 || index >= kProgramBufferSize) return report;
      const int value = hex_record_byte(*field, j);
      state.ProgramBuffer[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(value);
      report.last_byte = std::to_string(index) + "  " + std::to_string(value);
    }
    // E / 2 > LastAddress, compared without halves.
    const int end_index = record.address + record.last_offset;
    if (end_index > 2 * state.LastAddress) state.LastAddress = last_word_of_byte(end_index);
  }
  report.ok = !reader.failed();
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

}  // namespace zenta

// The simulated chip's memories in a small text file, so that a chip can
// outlive one run of the command-line program. Only the chip is kept, not
// the unit's supply, levels or instruments. The file reads:
//
//   ZENTA simulated chip 1
//   chip 16F877A
//   id 3FFF 3FFF 3FFF 3FFF          user IDs 0x2000-0x2003
//   config 3F3B                     configuration word 0x2007
//   p 0000 3FFF 3FFF ... (8 words)  program memory, every row in order
//   e 0000 FF FF ... (16 bytes)     data EEPROM, every line in order
//   end
//
// A file that lacks any of these lines, has them out of order, holds a value
// too wide for its cell, or names another chip is refused as a whole.
#include <fstream>
#include <sstream>

#include "common/atomic_file.h"
#include "common/number_text.h"
#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

constexpr const char* kHeader = "ZENTA simulated chip 1";
constexpr int kWordsPerLine = 8;
constexpr int kBytesPerLine = 16;

std::string hex(unsigned value, int digits) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text(static_cast<std::size_t>(digits), '0');
  for (int i = digits - 1; i >= 0; --i, value >>= 4) {
    text[static_cast<std::size_t>(i)] = kDigits[value & 0xF];
  }
  return text;
}

// A hexadecimal token of 1 to 4 digits no larger than `most`; -1 otherwise.
int parse_hex(const std::string& token, int most) {
  if (token.empty() || token.size() > 4) return -1;
  int value = 0;
  for (char c : token) {
    const int digit = hex_digit(c);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value <= most ? value : -1;
}

// Reads the file's lines one at a time, without line ends.
class LineReader {
 public:
  explicit LineReader(std::istream& in) : in_(in) {}
  bool next(std::string& line) {
    if (!std::getline(in_, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
  }
  // The line's tokens when its first one is `key` and `count` values follow.
  bool values(const std::string& key, std::size_t count, std::vector<std::string>& out) {
    std::string line;
    if (!next(line)) return false;
    std::istringstream tokens(line);
    std::string first;
    if (!(tokens >> first) || first != key) return false;
    out.clear();
    for (std::string token; tokens >> token;) out.push_back(token);
    return out.size() == count;
  }

 private:
  std::istream& in_;
};

}  // namespace

std::string SimUnit::memory_text() const {
  const Impl& unit = *impl_;
  const ChipMemory& memory = unit.memory;
  std::ostringstream out;
  out << kHeader << '\n' << "chip " << unit.model.name << '\n' << "id";
  for (int i = 0; i < kUserIdCount; ++i)
    out << ' ' << hex(memory.read_word(kConfigSpaceBase + i), 4);
  out << '\n' << "config " << hex(memory.read_word(kConfigWordAddress), 4) << '\n';
  for (int row = 0; row < memory.program_size(); row += kWordsPerLine) {
    out << "p " << hex(static_cast<unsigned>(row), 4);
    for (int i = 0; i < kWordsPerLine; ++i) out << ' ' << hex(memory.read_word(row + i), 4);
    out << '\n';
  }
  for (int line = 0; line < memory.eeprom_size(); line += kBytesPerLine) {
    out << "e " << hex(static_cast<unsigned>(line), 4);
    for (int i = 0; i < kBytesPerLine; ++i) out << ' ' << hex(memory.eeprom(line + i), 2);
    out << '\n';
  }
  out << "end\n";
  return out.str();
}

// A run cut short (a full disk, a killed process) must not leave half a
// chip behind: the text goes to a file beside the target, which is renamed
// over it only once it is whole.
bool SimUnit::save(const std::string& path) const {
  return write_file_atomically(path, memory_text());
}

bool SimUnit::load(const std::string& path, std::string* reason) {
  const auto refuse = [&](const std::string& why) {
    if (reason != nullptr) *reason = why;
    return false;
  };
  std::ifstream in(path, std::ios::binary);
  if (!in) return refuse("it cannot be opened");
  // A memory file has a known size; a device or a huge file is not read
  // without end. Twice the written size leaves room for CR LF line ends
  // and blanks added by hand.
  const std::size_t most = 2 * memory_text().size();
  std::string text(most + 1, '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (in.bad()) return refuse("a read error");
  text.resize(static_cast<std::size_t>(in.gcount()));
  if (text.size() > most) {
    return refuse("larger than a memory file of the " + impl_->model.name + " can be (" +
                  std::to_string(most) + " bytes)");
  }
  return load_text(text) || refuse("not a memory file, or one of another chip");
}

bool SimUnit::load_text(const std::string& text) {
  Impl& unit = *impl_;
  std::istringstream in(text);
  LineReader reader(in);
  std::string line;
  if (!reader.next(line) || line != kHeader) return false;
  std::vector<std::string> tokens;
  if (!reader.values("chip", 1, tokens) || !find_chip(tokens[0]) ||
      find_chip(tokens[0])->name != unit.model.name) {
    return false;
  }
  // Fill a fresh copy and keep it only when the whole file was right.
  ChipMemory memory(unit.model);
  if (!reader.values("id", kUserIdCount, tokens)) return false;
  for (int i = 0; i < kUserIdCount; ++i) {
    const int word = parse_hex(tokens[static_cast<std::size_t>(i)], kBlankWord);
    if (word < 0) return false;
    memory.store_word(kConfigSpaceBase + i, static_cast<std::uint16_t>(word));
  }
  if (!reader.values("config", 1, tokens)) return false;
  const int config = parse_hex(tokens[0], kBlankWord);
  if (config < 0) return false;
  memory.store_word(kConfigWordAddress, static_cast<std::uint16_t>(config));

  for (int row = 0; row < memory.program_size(); row += kWordsPerLine) {
    if (!reader.values("p", kWordsPerLine + 1, tokens)) return false;
    if (parse_hex(tokens[0], 0xFFFF) != row) return false;
    for (int i = 0; i < kWordsPerLine; ++i) {
      const int word = parse_hex(tokens[static_cast<std::size_t>(i + 1)], kBlankWord);
      if (word < 0) return false;
      memory.store_word(row + i, static_cast<std::uint16_t>(word));
    }
  }
  for (int start = 0; start < memory.eeprom_size(); start += kBytesPerLine) {
    if (!reader.values("e", kBytesPerLine + 1, tokens)) return false;
    if (parse_hex(tokens[0], 0xFFFF) != start) return false;
    for (int i = 0; i < kBytesPerLine; ++i) {
      const int value = parse_hex(tokens[static_cast<std::size_t>(i + 1)], 0xFF);
      if (value < 0) return false;
      memory.set_eeprom(start + i, static_cast<std::uint8_t>(value));
    }
  }
  if (!reader.next(line) || line != "end") return false;
  unit.memory = memory;
  return true;
}

}  // namespace zenta::sim

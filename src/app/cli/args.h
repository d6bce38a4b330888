#pragma once
// The command line of the zenta program:
//   zenta [--unit UNIT] [--device NAME|INDEX] [--trace FILE] [--sim-memory FILE]
//         COMMAND [ARGS]
// Scripts rely on it; new options may be added, none changed.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zenta::cli {

enum class Command { kNone, kHelp, kVersion, kId, kErase, kWrite, kVerify, kRead, kReadEeprom };

struct Options {
  Command command = Command::kNone;
  std::string unit;                     // --unit; empty: ZENTA_UNIT, then "usb"
  std::string device;                   // --device as given; empty: the default entry
  std::string trace_file;               // --trace
  std::string sim_memory;               // --sim-memory
  std::string hex_file;                 // FILE.hex of write and verify
  std::string output_file;              // -o of read and read-eeprom
  std::optional<std::uint16_t> config;  // write --config, a 14-bit word
  std::optional<std::uint16_t> last;    // --last of write, verify, read
};

struct ParseResult {
  Options options;
  std::string error;  // empty when the command line is good
  bool ok() const { return error.empty(); }
};

// Arguments without the program name. Global options may stand before or
// after the command; a command's own options only with that command.
ParseResult parse_arguments(const std::vector<std::string>& args);

// One to four hexadecimal digits, either case, with an optional 0x.
std::optional<std::uint16_t> parse_hex_word(const std::string& text);

const char* usage_text();

}  // namespace zenta::cli

#pragma once
// The command line of the zenta program:
//   zenta [--unit UNIT]... [--device NAME|INDEX|CHIP|auto] [--trace FILE]
//         [--sim-memory FILE] [--exact] [--json] [-q|-v] COMMAND [ARGS]
// Scripts rely on it; new options may be added, none changed. CLI11 reads
// it from one declaration per option, which also makes the help.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zenta::cli {

enum class Command {
  kNone,
  kHelp,
  kProgramVersion,  // --version: the program's own version, no unit needed
  kVersion,         // the unit's firmware identification
  kId,
  kErase,
  kWrite,
  kVerify,
  kRead,
  kReadEeprom,
  kUnits,
  kUdevRule,  // prints the udev rule for the unit's USB id; no unit needed
  kCapture,
  kVolts,
  kFreq,
  kCount,
  kDevices,
};

// The command's name as typed ("read-eeprom"); "" for help and --version.
const char* command_name(Command command);

enum class Verbosity { kQuiet, kNormal, kVerbose };

struct Options {
  Command command = Command::kNone;
  Command help_for = Command::kNone;  // with kHelp: the command whose help; kNone the program's
  // --unit, once per unit; several run the command on each in parallel.
  // Empty: ZENTA_UNIT, then "usb".
  std::vector<std::string> units;
  std::string device;                   // --device as given; empty: the default entry
  std::string trace_file;               // --trace
  std::string sim_memory;               // --sim-memory
  std::string hex_file;                 // FILE.hex of write and verify
  std::string output_file;              // -o of read and read-eeprom
  std::optional<std::uint16_t> config;  // write --config, a 14-bit word
  std::optional<std::uint16_t> last;    // --last of write, verify, read
  bool exact = false;                   // --exact: the documented sequences, no checks
  bool json = false;                    // --json: one JSON object per command
  Verbosity verbosity = Verbosity::kNormal;
  // Instruments.
  int period = 1;              // capture --period, 0 to 100 (x 0.1 ms)
  bool positive_edge = true;   // capture --edge pos|neg
  int channel = 2;             // volts --channel: 0 vpp, 1 sab, 2 vin
  std::optional<float> att;    // volts --att; without it the panel's stored one
  bool slow_gate = false;      // freq --gate 1s (else 100ms)
  std::string counter_action;  // count clear|start|stop|read
  std::string check_file;      // devices --check FILE
};

struct ParseResult {
  Options options;
  std::string error;  // empty when the command line is good
  bool ok() const { return error.empty(); }
};

// Arguments without the program name. Options may stand before or after the
// command; a command's own options go with that command only.
ParseResult parse_arguments(const std::vector<std::string>& args);

// One to four hexadecimal digits, either case, with an optional 0x.
std::optional<std::uint16_t> parse_hex_word(const std::string& text);

// The help of the program (every command with its options) or of one command,
// made from the same declarations the parser reads.
std::string help_text(Command command = Command::kNone);

}  // namespace zenta::cli

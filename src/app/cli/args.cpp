#include "cli/args.h"

#include "common/number_text.h"

#include <map>

namespace zenta::cli {

namespace {

const std::map<std::string, Command>& command_names() {
  static const std::map<std::string, Command> names = {
      {"help", Command::kHelp},   {"version", Command::kVersion},
      {"id", Command::kId},       {"erase", Command::kErase},
      {"write", Command::kWrite}, {"verify", Command::kVerify},
      {"read", Command::kRead},   {"read-eeprom", Command::kReadEeprom},
  };
  return names;
}

bool takes_file(Command command) {
  return command == Command::kWrite || command == Command::kVerify;
}

bool allows(Command command, const std::string& option) {
  if (option == "--config") return command == Command::kWrite;
  if (option == "--last") {
    return command == Command::kWrite || command == Command::kVerify || command == Command::kRead;
  }
  if (option == "-o") return command == Command::kRead || command == Command::kReadEeprom;
  return false;
}

}  // namespace

std::optional<std::uint16_t> parse_hex_word(const std::string& text) {
  std::string digits = text;
  if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
    digits = digits.substr(2);
  }
  if (digits.empty() || digits.size() > 4) return std::nullopt;
  unsigned value = 0;
  for (char c : digits) {
    const int digit = hex_digit(c);
    if (digit < 0) return std::nullopt;
    value = value * 16 + static_cast<unsigned>(digit);
  }
  return static_cast<std::uint16_t>(value);
}

ParseResult parse_arguments(const std::vector<std::string>& args) {
  ParseResult result;
  Options& options = result.options;
  std::vector<std::pair<std::string, std::string>> command_options;
  std::vector<std::string> operands;
  for (std::size_t i = 0; i < args.size(); ++i) {
    std::string arg = args[i];
    std::string value;
    bool has_value = false;
    // --option=value is the same as --option value.
    const auto equals = arg.find('=');
    if (arg.rfind("--", 0) == 0 && equals != std::string::npos) {
      value = arg.substr(equals + 1);
      arg = arg.substr(0, equals);
      has_value = true;
    }
    if (arg == "--help" || arg == "-h") {
      options.command = Command::kHelp;
      return result;
    }
    const bool global =
        arg == "--unit" || arg == "--device" || arg == "--trace" || arg == "--sim-memory";
    const bool local = arg == "--config" || arg == "--last" || arg == "-o";
    if (!global && !local) {
      if (arg.size() > 1 && arg[0] == '-') {
        result.error = "unknown option '" + arg + "'";
        return result;
      }
      operands.push_back(arg);
      continue;
    }
    if (!has_value) {
      if (i + 1 >= args.size()) {
        result.error = "option '" + arg + "' needs a value";
        return result;
      }
      value = args[++i];
    }
    if (value.empty()) {
      result.error = "option '" + arg + "' needs a value";
      return result;
    }
    if (arg == "--unit") {
      options.unit = value;
    } else if (arg == "--device") {
      options.device = value;
    } else if (arg == "--trace") {
      options.trace_file = value;
    } else if (arg == "--sim-memory") {
      options.sim_memory = value;
    } else {
      command_options.emplace_back(arg, value);
    }
  }

  if (operands.empty()) {
    result.error = "no command given";
    return result;
  }
  const auto named = command_names().find(operands[0]);
  if (named == command_names().end()) {
    result.error = "unknown command '" + operands[0] + "'";
    return result;
  }
  options.command = named->second;
  const std::size_t expected = takes_file(options.command) ? 2 : 1;
  if (operands.size() < expected) {
    result.error = "'" + operands[0] + "' needs a HEX file";
    return result;
  }
  if (operands.size() > expected) {
    result.error = "unexpected argument '" + operands[expected] + "'";
    return result;
  }
  if (expected == 2) options.hex_file = operands[1];

  for (const auto& [option, value] : command_options) {
    if (!allows(options.command, option)) {
      result.error = "option '" + option + "' does not go with '" + operands[0] + "'";
      return result;
    }
    if (option == "-o") {
      options.output_file = value;
      continue;
    }
    const auto word = parse_hex_word(value);
    if (!word) {
      result.error = "option '" + option + "' takes 1 to 4 hexadecimal digits, not '" + value + "'";
      return result;
    }
    if (option == "--config") {
      if (*word > 0x3FFF) {
        result.error = "the configuration word has 14 bits (0 to 3FFF), not '" + value + "'";
        return result;
      }
      options.config = word;
    } else {
      options.last = word;
    }
  }
  return result;
}

const char* usage_text() {
  return R"TEXT(Usage: zenta [--unit UNIT] [--device NAME|INDEX] [--trace FILE] [--sim-memory FILE]
             COMMAND [ARGS]

Commands:
  version                     print the unit's firmware identification
  id                          read and name the device ID ("Device=16F877A (E27)")
  erase                       chip erase, as the panel's ERASE button
  write FILE.hex [--config HHHH] [--last HHHH]
                              load, erase, write, verify, write the configuration word,
                              as the panel's WRITE button
  verify FILE.hex [--last HHHH]
                              compare the chip with the file, as the VERIFY button
  read [-o FILE.hex] [--last HHHH]
                              read program memory; print a hex table or save INHX8M
  read-eeprom [-o FILE.hex]   read the data EEPROM; print a hex table or save INHX8M
                              (byte i at byte address 4200 + 2i, as gputils puts it)

Options:
  --unit UNIT        usb (the default), sim (a simulated 16F877A) or sim:CHIP
                     (sim:16F628A, sim:none for an empty socket); default ZENTA_UNIT
  --device NAME|INDEX
                     device entry by caption (16F87x, 16F87xA, 16F84, 16F84A, 16F62x,
                     16F62xA, 12F629/675, 16F818/819) or index 0 to 7; default 16F87xA
  --trace FILE       write one line per exchange with the unit to FILE
  --sim-memory FILE  keep the simulated chip's memories in FILE across runs
  --config HHHH      configuration word to write; else the file's word 2007, else the
                     device's default
  --last HHHH        last address, as typed into the panel's LAST box; without it
                     write and verify take the box as the loader leaves it, and
                     read reads the device's whole program memory
  -o FILE.hex        save what was read as INHX8M instead of printing it
  -h, --help         print this text

The outcome (the panel's notes line) goes to standard output, messages and
progress to standard error.
Exit status: 0 success; 1 the operation failed (verify mismatch, configuration
read-back, unreadable file, failed exchanges); 2 bad usage; 3 no unit.
)TEXT";
}

}  // namespace zenta::cli

#include "cli/args.h"

#include "common/number_text.h"

#include <cstdlib>
#include <limits>

namespace zenta::cli {

namespace {

// The volt meter's divider factor: above 0 and at most this.
constexpr float kMostAttenuation = 1000.0f;

struct CommandInfo {
  const char* name;
  Command command;
  int operands;  // after the command name
  const char* operand_error;
};

constexpr CommandInfo kCommands[] = {
    {"help", Command::kHelp, 0, ""},
    {"version", Command::kVersion, 0, ""},
    {"id", Command::kId, 0, ""},
    {"erase", Command::kErase, 0, ""},
    {"write", Command::kWrite, 1, "'write' needs a HEX file"},
    {"verify", Command::kVerify, 1, "'verify' needs a HEX file"},
    {"read", Command::kRead, 0, ""},
    {"read-eeprom", Command::kReadEeprom, 0, ""},
    {"units", Command::kUnits, 0, ""},
    {"udev-rule", Command::kUdevRule, 0, ""},
    {"capture", Command::kCapture, 0, ""},
    {"volts", Command::kVolts, 0, ""},
    {"freq", Command::kFreq, 0, ""},
    {"count", Command::kCount, 1, "'count' needs clear, start, stop or read"},
};

const CommandInfo* find_command(const std::string& name) {
  for (const CommandInfo& info : kCommands) {
    if (name == info.name) return &info;
  }
  return nullptr;
}

bool is_global(const std::string& option) {
  return option == "--unit" || option == "--device" || option == "--trace" ||
         option == "--sim-memory";
}

// Options that belong to a command, and the commands they go with.
bool allows(Command command, const std::string& option) {
  if (option == "--config") return command == Command::kWrite;
  if (option == "--last") {
    return command == Command::kWrite || command == Command::kVerify || command == Command::kRead;
  }
  if (option == "-o") {
    return command == Command::kRead || command == Command::kReadEeprom ||
           command == Command::kCapture;
  }
  if (option == "--period" || option == "--edge") return command == Command::kCapture;
  if (option == "--channel" || option == "--att") return command == Command::kVolts;
  if (option == "--gate") return command == Command::kFreq;
  return false;
}

bool is_local(const std::string& option) {
  for (const CommandInfo& info : kCommands) {
    if (allows(info.command, option)) return true;
  }
  return false;
}

// The value of one command option into the options; the error otherwise.
std::string apply_local(Options& options, const std::string& option, const std::string& value) {
  if (option == "-o") {
    options.output_file = value;
    return "";
  }
  if (option == "--period") {
    char* rest = nullptr;
    const long period = std::strtol(value.c_str(), &rest, 10);
    if (*rest != '\0' || period < 0 || period > 100) {
      return "--period takes a sample period of 0 to 100 (x 0.1 ms), not '" + value + "'";
    }
    options.period = static_cast<int>(period);
    return "";
  }
  if (option == "--edge") {
    if (value != "pos" && value != "neg") return "--edge takes pos or neg, not '" + value + "'";
    options.positive_edge = value == "pos";
    return "";
  }
  if (option == "--channel") {
    const char* names[] = {"vpp", "sab", "vin"};
    for (int i = 0; i < 3; ++i) {
      if (value == names[i]) {
        options.channel = i;
        return "";
      }
    }
    return "--channel takes vpp, sab or vin, not '" + value + "'";
  }
  if (option == "--att") {
    // A divider's factor: finite and of a size a divider can have, read
    // with the point whatever the locale.
    const std::optional<double> att = parse_decimal(value);
    if (!att || !(*att > 0 && *att <= kMostAttenuation)) {
      return "--att takes a positive number up to 1000, not '" + value + "'";
    }
    options.att = static_cast<float>(*att);
    return "";
  }
  if (option == "--gate") {
    if (value != "100ms" && value != "1s") return "--gate takes 100ms or 1s, not '" + value + "'";
    options.slow_gate = value == "1s";
    return "";
  }
  const auto word = parse_hex_word(value);
  if (!word) return "option '" + option + "' takes 1 to 4 hexadecimal digits, not '" + value + "'";
  if (option == "--config") {
    if (*word > 0x3FFF) {
      return "the configuration word has 14 bits (0 to 3FFF), not '" + value + "'";
    }
    options.config = word;
  } else {
    options.last = word;
  }
  return "";
}

}  // namespace

const char* command_name(Command command) {
  for (const CommandInfo& info : kCommands) {
    if (info.command == command) return info.name;
  }
  return "";
}

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
  bool quiet = false;
  bool verbose = false;
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
    if (arg == "--version") {
      options.command = Command::kProgramVersion;
      return result;
    }
    const bool flag = arg == "--exact" || arg == "--json" || arg == "-q" || arg == "--quiet" ||
                      arg == "-v" || arg == "--verbose";
    if (flag) {
      if (has_value) {
        result.error = "option '" + arg + "' takes no value";
        return result;
      }
      options.exact = options.exact || arg == "--exact";
      options.json = options.json || arg == "--json";
      quiet = quiet || arg == "-q" || arg == "--quiet";
      verbose = verbose || arg == "-v" || arg == "--verbose";
      continue;
    }
    const bool global = is_global(arg);
    if (!global && !is_local(arg)) {
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
      options.units.push_back(value);
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
  if (quiet && verbose) {
    result.error = "-q and -v do not go together";
    return result;
  }
  options.verbosity = quiet     ? Verbosity::kQuiet
                      : verbose ? Verbosity::kVerbose
                                : Verbosity::kNormal;

  if (operands.empty()) {
    result.error = "no command given";
    return result;
  }
  const CommandInfo* info = find_command(operands[0]);
  if (info == nullptr) {
    result.error = "unknown command '" + operands[0] + "'";
    return result;
  }
  options.command = info->command;
  const std::size_t expected = 1 + static_cast<std::size_t>(info->operands);
  if (operands.size() < expected) {
    result.error = info->operand_error;
    return result;
  }
  if (operands.size() > expected) {
    result.error = "unexpected argument '" + operands[expected] + "'";
    return result;
  }
  if (options.command == Command::kCount) {
    const std::string& action = operands[1];
    if (action != "clear" && action != "start" && action != "stop" && action != "read") {
      result.error = "'count' takes clear, start, stop or read, not '" + action + "'";
      return result;
    }
    options.counter_action = action;
  } else if (expected == 2) {
    options.hex_file = operands[1];
  }
  if ((options.command == Command::kUnits || options.command == Command::kUdevRule) &&
      !options.units.empty()) {
    result.error = options.command == Command::kUnits
                       ? "'units' lists every unit; it takes no --unit"
                       : "'udev-rule' takes no --unit";
    return result;
  }

  for (const auto& [option, value] : command_options) {
    if (!allows(options.command, option)) {
      result.error = "option '" + option + "' does not go with '" + operands[0] + "'";
      return result;
    }
    result.error = apply_local(options, option, value);
    if (!result.ok()) return result;
  }
  if (options.command == Command::kCapture && !options.output_file.empty() &&
      !options.output_file.ends_with(".vcd") && !options.output_file.ends_with(".csv")) {
    result.error = "capture -o writes FILE.vcd or FILE.csv, not '" + options.output_file + "'";
    return result;
  }
  return result;
}

const char* usage_text() {
  return R"TEXT(Usage: zenta [--unit UNIT]... [--device NAME|INDEX|CHIP|auto] [--trace FILE]
             [--sim-memory FILE] [--exact] [--json] [-q|-v] COMMAND [ARGS]

Commands:
  version                     print the unit's firmware identification
  id                          read and name the device ID ("Device=16F877A (E27)")
  erase                       chip erase, as the panel's ERASE button
  write FILE.hex [--config HHHH] [--last HHHH]
                              load, erase, write, verify, write the configuration word,
                              as the panel's WRITE button
  verify FILE.hex [--last HHHH]
                              compare every word through the file's last program word
                              (or --last), then its configuration word
  read [-o FILE.hex] [--last HHHH]
                              read program memory; print a hex table, or save program
                              memory, configuration word and EEPROM as INHX8M
  read-eeprom [-o FILE.hex]   read the data EEPROM; print a hex table or save INHX8M
                              (byte i at byte address 4200 + 2i, as gputils puts it)
  units                       list the units plugged in on USB
  udev-rule                   print the udev rule that lets a user open the unit
                              (for /etc/udev/rules.d/60-zenta.rules; ZENTA_USB_ID applies)
  capture [--period N] [--edge pos|neg] [-o FILE.vcd|FILE.csv]
                              480 logic samples, one every N x 0.1 ms (N 0 to 100)
  volts [--channel vpp|sab|vin] [--att X]
                              one A/D reading (default vin; attenuation: X, else the
                              panel's stored volt meter setting, else 4.4)
  freq [--gate 100ms|1s]      the frequency on the logic input
  count clear|start|stop|read the event counter

Options:
  --unit UNIT        usb (the default), usb:SERIAL, sim (a simulated 16F877A) or
                     sim:CHIP[,freq=HZ][,latency=1ms] (sim:none for an empty socket);
                     default ZENTA_UNIT. Given more than once: each unit in parallel,
                     one result line per unit prefixed with its name
  --device NAME|INDEX|CHIP|auto
                     device entry by caption (16F87x, 16F87xA, 16F84, 16F84A, 16F62x,
                     16F62xA, 12F629/675, 16F818/819), index 0 to 7, chip (16F628A,
                     PIC16F628A) or auto (from the chip's ID); default 16F87xA
  --trace FILE       write one line per exchange with the unit to FILE
  --sim-memory FILE  keep the simulated chip's memories in FILE across runs
  --exact            the documented packet sequences only, without the checks
  --json             print one JSON object per command instead of text
  -q, --quiet        no progress and no outcome line, unless it is the answer
  -v, --verbose      each step of the operation and the exchange count
  --config HHHH      configuration word to write; else the file's word 2007, else the
                     device's default
  --last HHHH        last address, as typed into the panel's LAST box
  -o FILE            save what was read or captured instead of printing it; written
                     only when the whole read succeeded
  --version          print the program's version
  -h, --help         print this text

The outcome line goes to standard output on success; a failure prints why on
standard error instead. Ctrl-C ends a command as a failure does.
Exit status: 0 success; 1 the operation failed (a check refused, verify mismatch,
configuration read-back, bad file, failed exchanges, interrupted); 2 bad usage;
3 no unit.
)TEXT";
}

}  // namespace zenta::cli

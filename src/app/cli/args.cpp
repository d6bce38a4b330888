#include "cli/args.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

#include "common/number_text.h"

namespace zenta::cli {

namespace {

// The volt meter's divider factor: above 0 and at most this.
constexpr float kMostAttenuation = 1000.0f;

// Bad usage found while reading a value; its text is the whole reason.
struct Usage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// --version: the program's version, whatever else the line holds.
struct ProgramVersionAsked {};

struct CommandInfo {
  const char* name;
  Command command;
  const char* help;
  const char* operand_error;  // when its operand is missing
};

constexpr CommandInfo kCommands[] = {
    {"help", Command::kHelp, "print this text", ""},
    {"version", Command::kVersion, "print the unit's firmware identification", ""},
    {"id", Command::kId, "read and name the device ID (\"Device=16F877A (E27)\")", ""},
    {"erase", Command::kErase, "chip erase, as the panel's ERASE button", ""},
    {"write", Command::kWrite,
     "load, erase, write, verify, write the configuration word, as the panel's WRITE button",
     "'write' needs a HEX file"},
    {"verify", Command::kVerify,
     "compare every word through the file's last program word (or --last), then its "
     "configuration word",
     "'verify' needs a HEX file"},
    {"read", Command::kRead,
     "read program memory; print a hex table, or save program memory, configuration word and "
     "EEPROM as INHX8M",
     ""},
    {"read-eeprom", Command::kReadEeprom,
     "read the data EEPROM; print a hex table or save INHX8M (byte i at byte address 4200 + 2i, "
     "as gputils puts it)",
     ""},
    {"units", Command::kUnits, "list the units plugged in on USB", ""},
    {"devices", Command::kDevices,
     "list the chips described (data/devices, ~/.config/zenta/devices)", ""},
    {"udev-rule", Command::kUdevRule,
     "print the udev rule that lets a user open the unit (for "
     "/etc/udev/rules.d/60-zenta.rules; ZENTA_USB_ID applies)",
     ""},
    {"capture", Command::kCapture, "480 logic samples, one every N x 0.1 ms", ""},
    {"volts", Command::kVolts,
     "one A/D reading (default vin; attenuation: X, else the panel's stored volt meter setting, "
     "else 4.4)",
     ""},
    {"freq", Command::kFreq, "the frequency on the logic input", ""},
    {"count", Command::kCount, "the event counter", "'count' needs clear, start, stop or read"},
};

const CommandInfo& info_of(Command command) {
  for (const CommandInfo& info : kCommands) {
    if (info.command == command) return info;
  }
  return kCommands[0];
}

constexpr const char* kFooter = R"TEXT(Options may stand before or after the command.
The outcome line goes to standard output on success; a failure prints why on
standard error instead. Ctrl-C ends a command as a failure does.
Exit status: 0 success; 1 the operation failed (a check refused, verify mismatch,
configuration read-back, bad file, failed exchanges, interrupted); 2 bad usage;
3 no unit.)TEXT";

// The index of `text` among `words`; the reason otherwise.
std::size_t one_of(const std::string& text, std::initializer_list<const char*> words,
                   const std::string& reason) {
  std::size_t index = 0;
  for (const char* word : words) {
    if (text == word) return index;
    ++index;
  }
  throw Usage(reason + ", not '" + text + "'");
}

std::uint16_t hex_value(const std::string& option, const std::string& text) {
  const auto word = parse_hex_word(text);
  if (!word)
    throw Usage("option '" + option + "' takes 1 to 4 hexadecimal digits, not '" + text + "'");
  return *word;
}

// The whole command line as CLI11 declarations: each option once, with its
// type, its help and the reader that checks and stores its value.
class Parser {
 public:
  explicit Parser(Options& options) : options_(options) {
    app_.description("Programs flash PIC16/PIC12 chips with the ZENTA USB programmer unit.");
    app_.footer(kFooter);
    app_.fallthrough();  // the global options also after the command
    app_.require_subcommand(0, 1);
    app_.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    formatter_->column_width(28);
    formatter_->label("REQUIRED", "");
    formatter_->label("SUBCOMMAND", "COMMAND");
    app_.formatter(formatter_);
    app_.set_help_flag("-h,--help", "print this text");
    app_.add_flag_callback(
        "--version", [] { throw ProgramVersionAsked{}; }, "print the program's version");

    value(app_, "--unit", "UNIT",
          "usb (the default), usb:SERIAL, sim (a simulated 16F877A),\n"
          "sim:CHIP[,freq=HZ][,latency=1ms] (sim:none: an empty socket);\n"
          "default ZENTA_UNIT. Given more than once: each unit in parallel,\n"
          "one result line per unit prefixed with its name",
          [this](const std::string& unit) { options_.units.push_back(unit); })
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    value(app_, "--device", "NAME|INDEX|CHIP|auto",
          "device entry by caption (16F87x, 16F87xA, 16F84, 16F84A,\n"
          "16F62x, 16F62xA, 12F629/675, 16F818/819), index 0 to 7,\n"
          "chip (16F628A, PIC16F628A) or auto (from the chip's ID);\n"
          "default 16F87xA",
          [this](const std::string& device) { options_.device = device; });
    value(app_, "--trace", "FILE", "write one line per exchange with the unit to FILE",
          [this](const std::string& file) { options_.trace_file = file; });
    value(app_, "--sim-memory", "FILE", "keep the simulated chip's memories in FILE across runs",
          [this](const std::string& file) { options_.sim_memory = file; });
    flag("--exact", "the documented packet sequences only, without the checks", options_.exact);
    flag("--json", "print one JSON object per command instead of text", options_.json);
    flag("-q,--quiet", "no progress and no outcome line, unless it is the answer", quiet_);
    flag("-v,--verbose", "each step of the operation and the exchange count", verbose_);

    for (const CommandInfo& info : kCommands) {
      CLI::App* sub = app_.add_subcommand(info.name, info.help);
      sub->set_help_flag("-h,--help", "print this command's help");
      sub->footer("");
      sub->group("Commands");
      commands_.push_back(sub);
      if (info.command == Command::kHelp) sub->group("");  // the same as --help
      add_command_options(info.command, *sub);
    }
  }

  CLI::App& app() { return app_; }
  const CLI::Formatter& formatter() const { return *formatter_; }

  Command command() const {
    for (std::size_t i = 0; i < commands_.size(); ++i) {
      if (commands_[i]->parsed()) return kCommands[i].command;
    }
    return Command::kNone;
  }

  CLI::App* sub(Command command) {
    for (std::size_t i = 0; i < commands_.size(); ++i) {
      if (kCommands[i].command == command) return commands_[i];
    }
    return nullptr;
  }

  bool quiet() const { return quiet_; }
  bool verbose() const { return verbose_; }

 private:
  // An option with one value; `read` stores it or throws why it is bad.
  static CLI::Option* value(CLI::App& app, const std::string& name, const char* type,
                            const char* help, std::function<void(const std::string&)> read) {
    return app.add_option(name)->description(help)->type_name(type)->each(
        [name, read](const std::string& text) {
          if (text.empty()) throw Usage("option '" + name + "' needs a value");
          read(text);
        });
  }

  void flag(const std::string& names, const char* help, bool& to) {
    app_.add_flag(names, to, help);
  }

  void output_option(CLI::App& sub, const char* type, const char* help, bool capture) {
    value(sub, "-o", type, help, [this, capture](const std::string& file) {
      if (capture && !file.ends_with(".vcd") && !file.ends_with(".csv")) {
        throw Usage("capture -o writes FILE.vcd or FILE.csv, not '" + file + "'");
      }
      options_.output_file = file;
    });
  }

  void last_option(CLI::App& sub) {
    value(sub, "--last", "HHHH", "last address, as typed into the panel's LAST box",
          [this](const std::string& text) { options_.last = hex_value("--last", text); });
  }

  void hex_operand(CLI::App& sub) {
    sub.add_option("FILE.hex", options_.hex_file, "the INHX8M image")->type_name("")->required();
  }

  void add_command_options(Command command, CLI::App& sub) {
    constexpr const char* kSaved =
        "save what was read instead of printing it; written only when the whole read succeeded";
    switch (command) {
      case Command::kWrite:
        hex_operand(sub);
        value(sub, "--config", "HHHH",
              "configuration word to write; else the file's word 2007, else the device's "
              "default",
              [this](const std::string& text) {
                const std::uint16_t word = hex_value("--config", text);
                if (word > 0x3FFF) {
                  throw Usage("the configuration word has 14 bits (0 to 3FFF), not '" + text + "'");
                }
                options_.config = word;
              });
        last_option(sub);
        break;
      case Command::kVerify:
        hex_operand(sub);
        last_option(sub);
        break;
      case Command::kRead:
        output_option(sub, "FILE.hex", kSaved, false);
        last_option(sub);
        break;
      case Command::kReadEeprom:
        output_option(sub, "FILE.hex", kSaved, false);
        break;
      case Command::kDevices:
        value(sub, "--check", "FILE", "check a device description file and say what is wrong",
              [this](const std::string& file) { options_.check_file = file; });
        break;
      case Command::kCapture:
        value(sub, "--period", "N", "sample period, 0 to 100 (x 0.1 ms); default 1",
              [this](const std::string& text) {
                char* rest = nullptr;
                const long period = std::strtol(text.c_str(), &rest, 10);
                if (*rest != '\0' || period < 0 || period > 100) {
                  throw Usage("--period takes a sample period of 0 to 100 (x 0.1 ms), not '" +
                              text + "'");
                }
                options_.period = static_cast<int>(period);
              });
        value(
            sub, "--edge", "pos|neg", "the edge the capture starts on; default pos",
            [this](const std::string& text) {
              options_.positive_edge = one_of(text, {"pos", "neg"}, "--edge takes pos or neg") == 0;
            });
        output_option(sub, "FILE.vcd|FILE.csv", "save the samples instead of printing them", true);
        break;
      case Command::kVolts:
        value(sub, "--channel", "vpp|sab|vin", "the A/D channel; default vin",
              [this](const std::string& text) {
                options_.channel = static_cast<int>(
                    one_of(text, {"vpp", "sab", "vin"}, "--channel takes vpp, sab or vin"));
              });
        value(sub, "--att", "X", "the divider's attenuation, above 0 and up to 1000",
              [this](const std::string& text) {
                // A divider's factor: finite and of a size a divider can have,
                // read with the point whatever the locale.
                const std::optional<double> att = parse_decimal(text);
                if (!att || !(*att > 0 && *att <= kMostAttenuation)) {
                  throw Usage("--att takes a positive number up to 1000, not '" + text + "'");
                }
                options_.att = static_cast<float>(*att);
              });
        break;
      case Command::kFreq:
        value(sub, "--gate", "100ms|1s", "the counting time; default 100ms",
              [this](const std::string& text) {
                options_.slow_gate = one_of(text, {"100ms", "1s"}, "--gate takes 100ms or 1s") == 1;
              });
        break;
      case Command::kCount:
        sub.add_option_function<std::string>(
               "ACTION",
               [this](const std::string& action) {
                 one_of(action, {"clear", "start", "stop", "read"},
                        "'count' takes clear, start, stop or read");
                 options_.counter_action = action;
               },
               "clear|start|stop|read")
            ->type_name("")
            ->required();
        break;
      default:
        break;
    }
  }

  Options& options_;
  CLI::App app_{"", "zenta"};
  std::shared_ptr<CLI::Formatter> formatter_ = std::make_shared<CLI::Formatter>();
  std::vector<CLI::App*> commands_;
  bool quiet_ = false;
  bool verbose_ = false;
};

// "--last=10" names the option --last.
std::string option_of(const std::string& arg) {
  return arg.substr(0, arg.find('='));
}

// CLI11's word for an argument it did not place, in this program's terms.
std::string leftover_reason(Parser& parser, Command command, const std::string& arg) {
  const bool option = arg.size() > 1 && arg[0] == '-';
  if (!option) {
    return command == Command::kNone ? "unknown command '" + arg + "'"
                                     : "unexpected argument '" + arg + "'";
  }
  const std::string name = option_of(arg);
  for (const CommandInfo& info : kCommands) {
    if (parser.sub(info.command)->get_option_no_throw(name) == nullptr) continue;
    if (command == Command::kNone) return "no command given";
    return "option '" + name + "' does not go with '" + command_name(command) + "'";
  }
  return "unknown option '" + name + "'";
}

// The option an argument names, if any: global or of some command.
const CLI::Option* option_named(Parser& parser, const std::string& arg, bool* global = nullptr) {
  if (global != nullptr) *global = false;
  if (arg.size() < 2 || arg[0] != '-') return nullptr;
  const std::string name = option_of(arg);
  if (const CLI::Option* option = parser.app().get_option_no_throw(name)) {
    if (global != nullptr) *global = true;
    return option;
  }
  for (const CommandInfo& info : kCommands) {
    if (const CLI::Option* option = parser.sub(info.command)->get_option_no_throw(name)) {
      return option;
    }
  }
  return nullptr;
}

// A command's options may stand before the command, as they always could;
// CLI11 reads them only after it, so they move there.
std::vector<std::string> command_options_after_command(Parser& parser,
                                                       const std::vector<std::string>& args) {
  std::vector<std::string> ordered, early;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool command = std::any_of(std::begin(kCommands), std::end(kCommands),
                                     [&](const CommandInfo& info) { return arg == info.name; });
    if (arg == "--" || command) {
      if (command) ordered.push_back(arg);
      ordered.insert(ordered.end(), early.begin(), early.end());
      ordered.insert(ordered.end(), args.begin() + static_cast<std::ptrdiff_t>(command ? i + 1 : i),
                     args.end());
      return ordered;
    }
    bool global = false;
    const CLI::Option* option = option_named(parser, arg, &global);
    std::vector<std::string>& to = option != nullptr && !global ? early : ordered;
    to.push_back(arg);
    const bool value_follows =
        option != nullptr && option->get_expected_max() != 0 && arg.find('=') == std::string::npos;
    if (value_follows && i + 1 < args.size()) to.push_back(args[++i]);
  }
  ordered.insert(ordered.end(), early.begin(), early.end());
  return ordered;
}

// CLI11's reason for a parse error, in this program's terms.
std::string reason_of(const CLI::ParseError& error, Parser& parser, Command command) {
  const std::string what = error.what();
  // CLI11 names the option first: "--unit: 1 required TEXT missing".
  const std::string name = what.substr(0, what.find(':'));
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    const std::vector<std::string> left = parser.app().remaining();
    if (!left.empty()) return leftover_reason(parser, command, left.front());
  } else if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
    if (command != Command::kNone) return info_of(command).operand_error;
  } else if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    return "option '" + name + "' needs a value";
  }
  return what;
}

}  // namespace

const char* command_name(Command command) {
  return command == Command::kNone || command == Command::kProgramVersion ? ""
                                                                          : info_of(command).name;
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
  Parser parser(options);
  // CLI11 reads "--unit=" as "--unit" followed by a value, the next argument,
  // and "--exact=true" as "--exact": both are bad usage here.
  for (const std::string& arg : args) {
    if (arg == "--") break;
    const std::size_t equals = arg.find('=');
    if (!arg.starts_with("--") || equals == std::string::npos) continue;
    const std::string name = arg.substr(0, equals);
    const CLI::Option* option = option_named(parser, arg);
    if (option == nullptr) continue;
    if (option->get_expected_max() == 0) {
      result.error = "option '" + name + "' takes no value";
      return result;
    }
    if (equals + 1 == arg.size()) {
      result.error = "option '" + name + "' needs a value";
      return result;
    }
  }
  const std::vector<std::string> ordered = command_options_after_command(parser, args);
  // CLI11 takes the arguments last first.
  std::vector<std::string> reversed(ordered.rbegin(), ordered.rend());
  try {
    parser.app().parse(reversed);
  } catch (const CLI::CallForHelp&) {
    options = Options();
    options.help_for = parser.command();
    options.command = Command::kHelp;
    return result;
  } catch (const CLI::ParseError& error) {
    result.error = reason_of(error, parser, parser.command());
    return result;
  } catch (const Usage& usage) {
    result.error = usage.what();
    return result;
  } catch (const ProgramVersionAsked&) {
    options = Options();
    options.command = Command::kProgramVersion;
    return result;
  }
  options.command = parser.command();
  if (options.command == Command::kHelp) return result;
  if (parser.quiet() && parser.verbose()) {
    result.error = "-q and -v do not go together";
    return result;
  }
  options.verbosity = parser.quiet()     ? Verbosity::kQuiet
                      : parser.verbose() ? Verbosity::kVerbose
                                         : Verbosity::kNormal;
  if (options.command == Command::kNone) {
    result.error = "no command given";
  } else if (options.command == Command::kUnits && !options.units.empty()) {
    result.error = "'units' lists every unit; it takes no --unit";
  } else if (options.command == Command::kUdevRule && !options.units.empty()) {
    result.error = "'udev-rule' takes no --unit";
  }
  return result;
}

std::string help_text(Command command) {
  Options options;
  Parser parser(options);
  CLI::App* sub =
      command == Command::kNone || command == Command::kHelp ? nullptr : parser.sub(command);
  if (sub == nullptr) {
    return parser.formatter().make_help(&parser.app(), "zenta", CLI::AppFormatMode::All);
  }
  // A command's help with the options that go with every command.
  return sub->help("zenta") + "Global options:" +
         parser.formatter()
             .make_groups(&parser.app(), CLI::AppFormatMode::Normal)
             .substr(std::string("\nOptions:").size()) +
         "\n" + kFooter + "\n";
}

}  // namespace zenta::cli

#include "cli/cli.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/record.h"
#include "common/input_file.h"
#include "common/interrupt.h"
#include "devices/device_library.h"
#include "image/programmer_state.h"
#include "link/sim/sim_unit.h"
#include "link/trace_driver.h"
#include "link/unit.h"
#include "platform/driver_factory.h"
#include "platform/udev_rule.h"
#include "platform/usb_units.h"
#include "programming/device_catalogue.h"

#ifdef _WIN32
#include <io.h>
#define ZENTA_ISATTY(fd) _isatty(fd)
#else
#include <unistd.h>
#define ZENTA_ISATTY(fd) isatty(fd)
#endif

namespace zenta::cli {

namespace {

std::string errno_text() {
  return errno != 0 ? std::strerror(errno) : "a write error";
}

// Standard output that keeps the reason of its first failed write: the
// failure shows when the data leave the program, long before its end.
class StandardOutput : public std::streambuf {
 public:
  int error = 0;

 protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return sync() == 0 ? 0 : c;
    const char ch = traits_type::to_char_type(c);
    return xsputn(&ch, 1) == 1 ? c : traits_type::eof();
  }
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const auto size = static_cast<std::size_t>(count);
    if (std::fwrite(text, 1, size, stdout) == size) return count;
    remember();
    return 0;
  }
  int sync() override {
    if (std::fflush(stdout) == 0) return 0;
    remember();
    return -1;
  }

 private:
  void remember() {
    if (error == 0) error = errno != 0 ? errno : EIO;
  }
};

int usage_error(std::ostream& err, const std::string& message) {
  err << "zenta: " << message << "\nTry 'zenta --help'.\n";
  return kExitUsage;
}

// Only the front end, which made the driver, knows that it is simulated.
sim::SimUnit* simulated_unit(const DriverChoice& choice) {
  if (choice.sim_unit != nullptr) return choice.sim_unit;
  return choice.simulated ? dynamic_cast<sim::SimUnit*>(choice.driver.get()) : nullptr;
}

// Commands whose outcome line is their answer, printed even with -q.
bool answers(const Options& options) {
  const Command command = options.command;
  return command == Command::kVersion || command == Command::kId || command == Command::kVolts ||
         command == Command::kFreq ||
         (command == Command::kCount && options.counter_action == "read");
}

std::string default_unit() {
  const std::string unit = unit_spec_from_environment();
  return unit.empty() ? "usb" : unit;
}

// The record's outcome as the user sees it: the JSON object, or the outcome
// line on success and the reason on failure, never both.
void print_outcome(const Options& options, const RunRecord& record, std::ostream& out,
                   std::ostream& err) {
  if (options.json) {
    out << json_text(record) << '\n';
  } else if (!record.ok()) {
    err << "zenta: " << record.message << '\n';
  } else if (!record.message.empty() &&
             (options.verbosity != Verbosity::kQuiet || answers(options))) {
    out << record.message << '\n';
  }
  if (options.verbosity == Verbosity::kVerbose) {
    err << "zenta: " << record.exchanges << " exchanges in " << record.seconds << " s\n";
  }
  out.flush();
}

// The unit's name in a file name: "sim:16F628A#2" gives "sim-16F628A-2".
std::string file_part(const std::string& name) {
  std::string part;
  for (const char c : name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
    part += plain ? c : '-';
  }
  return part;
}

// "x.hex" for the unit "sim:16F628A" gives "x.sim-16F628A.hex".
std::string file_for_unit(const std::string& path, const std::string& name) {
  if (path.empty()) return path;
  const std::filesystem::path file(path);
  std::filesystem::path result = file.parent_path() / file.stem();
  result += "." + file_part(name) + file.extension().string();
  return result.string();
}

// Each --unit's name in the result lines; a unit given twice gets #2, #3.
std::vector<std::string> unit_names(const std::vector<std::string>& units) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < units.size(); ++i) {
    int same = 1;
    for (std::size_t j = 0; j < i; ++j) same += units[j] == units[i] ? 1 : 0;
    names.push_back(same == 1 ? units[i] : units[i] + "#" + std::to_string(same));
  }
  return names;
}

void prefix_lines(std::ostream& to, const std::string& text, const std::string& prefix) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) to << prefix << line << '\n';
}

int run_program_version(std::ostream& out) {
  out << "zenta " << ZENTA_VERSION_MAJOR << '.' << ZENTA_VERSION_MINOR << '\n';
  return kExitOk;
}

// The rule for the id the usb driver would look for, so a unit under
// another id (ZENTA_USB_ID) gets a rule that matches it.
int print_udev_rule(std::ostream& out, [[maybe_unused]] std::ostream& err) {
#ifdef ZENTA_HAVE_LIBUSB
  std::string error;
  const auto id = usb_id_from_environment(error);
  if (!id) return usage_error(err, error);
  out << udev_rule_text(*id);
#else
  out << udev_rule_text();
#endif
  return kExitOk;
}

// Every chip described, with its family, memories, entry and document; a
// file that was refused is named with its errors. With --check, one file.
int list_devices(const Options& options, std::ostream& out, std::ostream& err) {
  DeviceLibrary library;
  if (!options.check_file.empty()) {
    const InputFile file = read_input_file(options.check_file, 1 << 20);
    if (!file.ok)
      return usage_error(err, "cannot read '" + options.check_file + "': " + file.reason);
    library = parse_device_file(file.text, options.check_file);
  } else {
    library = devices();
  }
  for (const DeviceFileError& error : library.errors) err << "zenta: " << error.text() << '\n';
  for (const ChipDescription& chip : library.chips) {
    char line[160];
    std::snprintf(line, sizeof line, "%-9s %-8s %5d words %4d EEPROM bytes  %-11s %s\n",
                  chip.name.c_str(), chip.family.c_str(), chip.program_words, chip.eeprom_bytes,
                  chip.entry ? device_record(*chip.entry).caption : "(no entry)",
                  chip.document.c_str());
    out << line;
  }
  if (!options.check_file.empty() && library.errors.empty()) {
    err << "zenta: " << options.check_file << ": " << library.chips.size() << " chip"
        << (library.chips.size() == 1 ? "" : "s") << ", no errors\n";
  }
  return library.errors.empty() ? kExitOk : kExitFailed;
}

int list_plugged_units(const Options& options, std::ostream& out, std::ostream& err) {
  std::vector<PluggedUnit> units;
#ifdef ZENTA_HAVE_LIBUSB
  std::string error;
  const auto id = usb_id_from_environment(error);
  if (!id) return usage_error(err, error);
  Console console(err, false);
  units = list_units(*id, console);
  console.finish();
#endif
  if (options.json) {
    out << json_text(units) << '\n';
  } else {
    for (const PluggedUnit& plugged : units) {
      out << "usb:" << plugged.serial << "  firmware "
          << (plugged.firmware.empty() ? "?" : plugged.firmware) << "  (bus " << plugged.bus
          << ", address " << plugged.address << ")\n";
    }
  }
  if (units.empty()) {
    err << "zenta: no unit is plugged in on USB\n";
    return kExitNoUnit;
  }
  return kExitOk;
}

// Two names for one file: the same path, or two paths to one existing file.
bool same_file(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return false;
  std::error_code error;
  if (std::filesystem::equivalent(a, b, error)) return true;
  const auto full = [](const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored)
        .lexically_normal();
  };
  return full(a) == full(b);
}

// A file the command writes must not be one it reads or another it writes:
// `--trace prog.hex write prog.hex` would empty the image before it is read.
std::optional<std::string> files_in_two_roles(const Options& options) {
  const std::pair<const char*, const std::string*> files[] = {
      {"the trace (--trace)", &options.trace_file},
      {"the output (-o)", &options.output_file},
      {"the image", &options.hex_file},
      {"the simulated chip's memory (--sim-memory)", &options.sim_memory},
  };
  for (std::size_t written = 0; written < 2; ++written) {
    for (std::size_t other = written + 1; other < std::size(files); ++other) {
      if (same_file(*files[written].second, *files[other].second)) {
        return "'" + *files[written].second + "' is both " + files[written].first + " and " +
               files[other].first + "; give it another name";
      }
    }
  }
  return std::nullopt;
}

// One unit: open it, run the command, close it, report.
int run_unit(const Options& options, DriverChoice& choice, const std::string& name,
             std::ostream& out, std::ostream& err, bool err_terminal) {
  // A bad device is bad usage, found before the unit is touched.
  const std::optional<DeviceChoice> device = device_choice(options.device);
  if (!device) {
    return usage_error(err,
                       "unknown device '" + options.device + "' (use " + device_choices() + ")");
  }
  if (const auto clash = files_in_two_roles(options)) return usage_error(err, *clash);
  sim::SimUnit* sim = simulated_unit(choice);
  RunRecord record;
  record.command = command_name(options.command);
  record.unit = name;
  const auto fail_early = [&](const std::string& why, int status) {
    record.fail(why, status == kExitNoUnit ? "no-unit" : "refused");
    record.status = status;
    print_outcome(options, record, out, err);
    return status;
  };
  if (!options.sim_memory.empty()) {
    if (sim == nullptr) {
      return usage_error(err, "--sim-memory goes only with a simulated unit (--unit sim...)");
    }
    std::error_code ignored;
    std::string reason;
    if (std::filesystem::exists(options.sim_memory, ignored) &&
        !sim->load(options.sim_memory, &reason)) {
      return fail_early(
          "cannot load the simulated chip from '" + options.sim_memory + "': " + reason,
          kExitFailed);
    }
  }

  std::ofstream trace_file;
  std::unique_ptr<TraceDriver> trace;
  if (!options.trace_file.empty()) {
    trace_file.open(options.trace_file, std::ios::trunc);
    if (!trace_file) {
      return fail_early("cannot write the trace file '" + options.trace_file + "'", kExitFailed);
    }
    trace = std::make_unique<TraceDriver>(*choice.driver, trace_file);
  }
  UnitDriver& driver = trace ? static_cast<UnitDriver&>(*trace) : *choice.driver;

  const bool verbose = options.verbosity == Verbosity::kVerbose;
  const bool bar = err_terminal && options.verbosity == Verbosity::kNormal;
  Console console(err, bar, verbose);
  auto state = std::make_unique<ProgrammerState>();
  Unit unit(driver, console);
  // With --exact every exchange is tried and each failure said, as the
  // panel's documented link does.
  unit.link().stop_on_loss = !options.exact;

  // The panel's start-up opens the unit the same way; the rest of it
  // (supply on, LED off, stored device) is the panel's idle state, not a
  // command's. The panel's stored settings are never touched.
  if (const std::int32_t opened = unit.open(); opened != kDriverOk) {
    // The driver tells absent, busy and not permitted apart; without its
    // word the general advice stands.
    std::string hint = unit.link().open_failure_hint();
    if (hint.empty()) {
      hint = "Plug the unit in and check that you may use it (permissions, udev rules).";
    }
    return fail_early("Unit not Found (" + unit.link().USBMSG() + ": " +
                          driver_result_reason(opened) + ")\n" + hint +
                          "\nOr use --unit sim for the simulated unit.",
                      kExitNoUnit);
  }
  // With --json the data go into the record only.
  std::ostringstream sink;
  Session session{unit, *state,        console, options,     options.json ? sink : out,
                  err,  device->entry, record,  device->chip};
  const auto start = std::chrono::steady_clock::now();
  record.status = run_command(session);
  record.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  console.finish();
  unit.close();
  record.exchanges = unit.link().exchanges();
  // Exchanges that failed outside the commands' own counts still fail the run.
  if (const auto failures = unit.link().failures(); failures != 0 && record.ok()) {
    record.fail(std::to_string(failures) + " exchange" + (failures == 1 ? "" : "s") +
                " with the unit failed");
  }
  if (trace_file.is_open()) {
    // A full disk shows only when the buffered lines go out.
    errno = 0;
    trace_file.close();
    if (trace_file.fail() && record.ok()) {
      record.fail("cannot write the trace file '" + options.trace_file + "': " + errno_text());
    }
  }
  if (sim != nullptr && !options.sim_memory.empty() && !sim->save(options.sim_memory) &&
      record.ok()) {
    record.fail("cannot save the simulated chip to '" + options.sim_memory + "'");
  }
  if (!record.ok() && record.status == kExitOk) record.status = kExitFailed;
  print_outcome(options, record, out, err);
  return record.status;
}

// Several units: one thread each, with its own unit, state and files; the
// lines of each come out together, prefixed with the unit's name.
int run_several(const Options& options, std::ostream& out, std::ostream& err) {
  const std::vector<std::string> names = unit_names(options.units);
  std::vector<DriverChoice> choices;
  for (const std::string& unit : options.units) {
    choices.push_back(make_driver(unit));
    if (!choices.back().driver) return usage_error(err, choices.back().error);
  }
  struct Run {
    Options options;
    std::ostringstream out, err;
    int status = kExitFailed;
  };
  std::vector<Run> runs(names.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < names.size(); ++i) {
    Run& run = runs[i];
    run.options = options;
    run.options.trace_file = file_for_unit(options.trace_file, names[i]);
    run.options.sim_memory = file_for_unit(options.sim_memory, names[i]);
    run.options.output_file = file_for_unit(options.output_file, names[i]);
    threads.emplace_back([&run, &choice = choices[i], &name = names[i]] {
      run.status = run_unit(run.options, choice, name, run.out, run.err, false);
    });
  }
  for (std::thread& thread : threads) thread.join();
  int status = kExitOk;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::string prefix = names[i] + ": ";
    prefix_lines(err, runs[i].err.str(), prefix);
    // A JSON object names its unit itself.
    prefix_lines(out, runs[i].out.str(), options.json ? "" : prefix);
    if (runs[i].status == kExitUsage) return kExitUsage;
    if (runs[i].status != kExitOk) status = kExitFailed;
  }
  return status;
}

}  // namespace

int run(const Options& options, std::ostream& out, std::ostream& err, bool err_terminal) {
  if (options.command == Command::kHelp) {
    out << help_text(options.help_for);
    return kExitOk;
  }
  if (options.command == Command::kProgramVersion) return run_program_version(out);
  if (options.command == Command::kUnits) return list_plugged_units(options, out, err);
  if (options.command == Command::kUdevRule) return print_udev_rule(out, err);
  if (options.command == Command::kDevices) return list_devices(options, out, err);
  if (options.units.size() > 1) return run_several(options, out, err);
  const std::string unit = options.units.empty() ? default_unit() : options.units[0];
  DriverChoice choice = make_driver(unit);
  if (!choice.driver) return usage_error(err, choice.error);
  return run_unit(options, choice, unit, out, err, err_terminal);
}

int run_with_driver(const Options& options, DriverChoice& choice, std::ostream& out,
                    std::ostream& err, bool err_terminal) {
  const std::string name = options.units.empty() ? std::string("unit") : options.units[0];
  return run_unit(options, choice, name, out, err, err_terminal);
}

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
  const ParseResult parsed = parse_arguments(args);
  if (!parsed.ok()) return usage_error(std::cerr, parsed.error);
  install_interrupt_handlers();
#ifndef _WIN32
  // A reader that went away is a write error to report, not a silent end.
  std::signal(SIGPIPE, SIG_IGN);
#endif
  StandardOutput output;
  std::ostream out(&output);
  int status = run(parsed.options, out, std::cerr, ZENTA_ISATTY(2) != 0);
  // What went to standard output must have arrived: a full disk or a closed
  // pipe fails the run.
  out.flush();
  if (output.error != 0 || !out) {
    std::cerr << "zenta: cannot write the standard output: "
              << std::strerror(output.error != 0 ? output.error : EIO) << '\n';
    if (status == kExitOk) status = kExitFailed;
  }
  return status;
}

}  // namespace zenta::cli

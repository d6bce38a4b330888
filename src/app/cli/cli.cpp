#include "cli/cli.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "cli/commands.h"
#include "cli/console.h"
#include "image/programmer_state.h"
#include "link/sim/sim_unit.h"
#include "link/trace_driver.h"
#include "link/unit.h"
#include "platform/driver_factory.h"

#ifdef _WIN32
#include <io.h>
#define ZENTA_ISATTY(fd) _isatty(fd)
#else
#include <unistd.h>
#define ZENTA_ISATTY(fd) isatty(fd)
#endif

namespace zenta::cli {

namespace {

int usage_error(std::ostream& err, const std::string& message) {
  err << "zenta: " << message << "\nTry 'zenta --help'.\n";
  return kExitUsage;
}

// Only the front end, which made the driver, knows that it is simulated.
sim::SimUnit* simulated_unit(const DriverChoice& choice) {
  return choice.simulated ? dynamic_cast<sim::SimUnit*>(choice.driver.get()) : nullptr;
}

}  // namespace

int run(const Options& options, std::ostream& out, std::ostream& err, bool err_terminal) {
  if (options.command == Command::kHelp) {
    out << usage_text();
    return kExitOk;
  }
  std::string unit = options.unit.empty() ? unit_spec_from_environment() : options.unit;
  if (unit.empty()) unit = "usb";
  DriverChoice choice = make_driver(unit);
  if (!choice.driver) return usage_error(err, choice.error);
  return run_with_driver(options, choice, out, err, err_terminal);
}

int run_with_driver(const Options& options, DriverChoice& choice, std::ostream& out,
                    std::ostream& err, bool err_terminal) {
  // A bad device is bad usage, found before the unit is touched.
  const std::optional<int> device = device_index(options.device);
  if (!device) return usage_error(err, "unknown device '" + options.device + "'");
  sim::SimUnit* sim = simulated_unit(choice);
  if (!options.sim_memory.empty()) {
    if (sim == nullptr) {
      return usage_error(err, "--sim-memory goes only with a simulated unit (--unit sim...)");
    }
    std::error_code ignored;
    if (std::filesystem::exists(options.sim_memory, ignored) && !sim->load(options.sim_memory)) {
      err << "zenta: cannot load the simulated chip from '" << options.sim_memory
          << "' (not a memory file, or one of another chip)\n";
      return kExitFailed;
    }
  }

  std::ofstream trace_file;
  std::unique_ptr<TraceDriver> trace;
  if (!options.trace_file.empty()) {
    trace_file.open(options.trace_file, std::ios::trunc);
    if (!trace_file) {
      err << "zenta: cannot write the trace file '" << options.trace_file << "'\n";
      return kExitFailed;
    }
    trace = std::make_unique<TraceDriver>(*choice.driver, trace_file);
  }
  UnitDriver& driver = trace ? static_cast<UnitDriver&>(*trace) : *choice.driver;

  Console console(err, err_terminal);
  auto state = std::make_unique<ProgrammerState>();
  Unit unit(driver, console);

  // The panel's start-up opens the unit the same way; the rest of it
  // (supply on, LED off, stored device) is the panel's idle state, not a
  // command's. The panel's stored settings are never touched.
  if (unit.open() != kDriverOk) {
    err << "zenta: Unit not Found (" << unit.link().USBMSG() << ")\n"
        << "Plug the unit in and check that you may use it (permissions, udev rules),\n"
        << "or use --unit sim for the simulated unit.\n";
    return kExitNoUnit;
  }
  Session session{unit, *state, console, options, out, err, *device};
  int status = run_command(session);
  console.finish();
  unit.close();
  if (const auto failures = unit.link().failures(); failures != 0) {
    err << "zenta: " << failures << " exchange" << (failures == 1 ? "" : "s")
        << " with the unit failed\n";
    if (status == kExitOk) status = kExitFailed;
  }
  if (sim != nullptr && !options.sim_memory.empty() && !sim->save(options.sim_memory)) {
    err << "zenta: cannot save the simulated chip to '" << options.sim_memory << "'\n";
    if (status == kExitOk) status = kExitFailed;
  }
  return status;
}

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
  const ParseResult parsed = parse_arguments(args);
  if (!parsed.ok()) return usage_error(std::cerr, parsed.error);
  return run(parsed.options, std::cout, std::cerr, ZENTA_ISATTY(2) != 0);
}

}  // namespace zenta::cli

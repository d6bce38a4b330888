#pragma once
// Running the zenta program in-process, on simulated units the test made or
// on the program's own.
#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "common/interrupt.h"
#include "link/sim/sim_unit.h"

namespace zenta::cli::testing {

struct Outcome {
  int status = -1;
  std::string out, err;
};

// On `choice`, or (nullptr) on the program's own units, as main runs it.
inline Outcome run_parsed(const std::vector<std::string>& args, DriverChoice* choice) {
  const ParseResult parsed = parse_arguments(args);
  if (!parsed.ok()) return {kExitUsage, "", parsed.error};
  std::ostringstream out, err;
  const int status = choice ? run_with_driver(parsed.options, *choice, out, err, false)
                            : run(parsed.options, out, err, false);
  return {status, out.str(), err.str()};
}
inline Outcome run_on(DriverChoice& choice, const std::vector<std::string>& args) {
  return run_parsed(args, &choice);
}
inline Outcome run_args(const std::vector<std::string>& args) {
  return run_parsed(args, nullptr);
}

// A command line split at its blanks; "@/" in a word stands for `folder`/.
inline std::vector<std::string> words(const std::string& line, const std::string& folder = "") {
  std::vector<std::string> args;
  std::istringstream in(line);
  for (std::string word; in >> word;) {
    for (auto at = word.find("@/"); at != std::string::npos; at = word.find("@/", at)) {
      word.replace(at, 1, folder);
    }
    args.push_back(word);
  }
  return args;
}

// A simulated unit with `chip` in its socket, handed to the program.
struct SimRun {
  explicit SimRun(const std::string& chip) : unit(new sim::SimUnit(chip)) {
    choice.driver.reset(unit);
    choice.simulated = true;
  }
  Outcome operator()(const std::vector<std::string>& args) { return run_on(choice, args); }
  // Commands separated by ";" one after the other on the same unit, each
  // with `device` (when given) where it names none: the last one's status,
  // everything they printed.
  Outcome line(const std::string& commands, const std::string& folder, const std::string& device) {
    Outcome all{kExitOk, "", ""};
    std::istringstream in(commands);
    for (std::string command; std::getline(in, command, ';');) {
      if (!device.empty() && command.find("--device") == std::string::npos) {
        command += " --device " + device;
      }
      const Outcome one = run_on(choice, words(command, folder));
      all = {one.status, all.out + one.out, all.err + one.err};
    }
    return all;
  }
  sim::SimUnit* unit;
  DriverChoice choice;
};

// The simulated unit behind a driver that raises the stop request when the
// unit has seen `at` exchanges, as Ctrl-C would in the middle of a command,
// and, with `refuse_supply_off`, never gets the supply-off packet through.
class InterruptAt : public UnitDriver {
 public:
  InterruptAt(sim::SimUnit& unit, std::size_t at, bool refuse_supply_off = false)
      : unit_(unit), at_(at), refuse_supply_off_(refuse_supply_off) {}
  std::int32_t open() override { return unit_.open(); }
  void close() override { unit_.close(); }
  std::int32_t write(const std::uint8_t* b, std::int32_t n) override {
    return refuse_supply_off_ && b[0] == 0x3A && b[1] == 0 ? 0 : unit_.write(b, n);
  }
  std::int32_t read(std::uint8_t* b, std::int32_t n) override {
    if (unit_.trace().size() == at_) zenta::request_interrupt();
    return unit_.read(b, n);
  }

 private:
  sim::SimUnit& unit_;
  std::size_t at_;
  bool refuse_supply_off_;
};

}  // namespace zenta::cli::testing

#pragma once
// Running the zenta program in-process on simulated units the test made,
// and reading its JSON output back.
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
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

inline Outcome run_on(DriverChoice& choice, const std::vector<std::string>& args) {
  const ParseResult parsed = parse_arguments(args);
  if (!parsed.ok()) return {kExitUsage, "", parsed.error};
  std::ostringstream out, err;
  const int status = run_with_driver(parsed.options, choice, out, err, false);
  return {status, out.str(), err.str()};
}

// The whole program on its own units, as main runs it.
inline Outcome run_args(const std::vector<std::string>& args) {
  const ParseResult parsed = parse_arguments(args);
  if (!parsed.ok()) return {kExitUsage, "", parsed.error};
  std::ostringstream out, err;
  const int status = run(parsed.options, out, err, false);
  return {status, out.str(), err.str()};
}

// A simulated unit with `chip` in its socket, handed to the program.
struct SimRun {
  explicit SimRun(const std::string& chip) : unit(new sim::SimUnit(chip)) {
    choice.driver.reset(unit);
    choice.simulated = true;
  }
  Outcome operator()(const std::vector<std::string>& args) { return run_on(choice, args); }
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

// A JSON object of the program's --json output: members by name, each as
// its JSON text (strings without their quotes, nested objects as written).
// nullopt when the text is not one well-formed object.
inline std::optional<std::map<std::string, std::string>> parse_json_object(
    const std::string& text) {
  const auto object = nlohmann::ordered_json::parse(text, nullptr, false);
  if (!object.is_object()) return std::nullopt;
  std::map<std::string, std::string> members;
  for (const auto& [name, value] : object.items()) {
    members[name] = value.is_string() ? value.get<std::string>() : value.dump();
  }
  return members;
}

}  // namespace zenta::cli::testing

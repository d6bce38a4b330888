#include "platform/driver_factory.h"

#include <cstdlib>
#include <stdexcept>

#include "link/sim/sim_unit.h"

namespace zenta {

DriverChoice make_driver(const std::string& spec) {
  DriverChoice choice;
  if (spec == "sim" || spec.rfind("sim:", 0) == 0) {
    const std::string chip = spec == "sim" ? "16F877A" : spec.substr(4);
    try {
      choice.driver = std::make_unique<sim::SimUnit>(chip);
      choice.simulated = true;
    } catch (const std::invalid_argument&) {
      choice.error = "unknown chip '" + chip + "' for the simulated unit";
    }
    return choice;
  }
  choice.error = "unknown unit '" + spec + "' (use usb, sim or sim:CHIP)";
  return choice;
}

std::string unit_spec_from_environment() {
  const char* value = std::getenv("ZENTA_UNIT");
  return value ? value : "";
}

}  // namespace zenta

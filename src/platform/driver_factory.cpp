#include "platform/driver_factory.h"

#include <cstdlib>
#include <stdexcept>

#include "link/sim/sim_unit.h"
#ifdef ZENTA_HAVE_LIBUSB
#include "platform/usb_driver.h"
#endif

namespace zenta {

namespace {

std::string chip_names() {
  std::string names;
  for (const auto& chip : sim::chip_models()) {
    if (!names.empty()) names += ", ";
    names += chip.name;
  }
  return names;
}

DriverChoice make_usb_driver() {
  DriverChoice choice;
  // On Windows the maker's driver library would be loaded at run time here.
#ifdef ZENTA_HAVE_LIBUSB
  std::string error;
  const auto id = usb_id_from_environment(error);
  if (!id) {
    choice.error = error;
    return choice;
  }
  choice.driver = std::make_unique<UsbDriver>(*id);
#else
  choice.error = "this build has no USB driver (built without libusb); use sim or sim:CHIP";
#endif
  return choice;
}

}  // namespace

DriverChoice make_driver(const std::string& unit) {
  if (unit.empty() || unit == "usb") return make_usb_driver();
  DriverChoice choice;
  if (unit == "sim" || unit.rfind("sim:", 0) == 0) {
    const std::string chip = unit == "sim" ? "16F877A" : unit.substr(4);
    try {
      choice.driver = std::make_unique<sim::SimUnit>(chip);
      choice.simulated = true;
    } catch (const std::invalid_argument&) {
      choice.error = "unknown chip '" + chip + "' for the simulated unit (use none or one of " +
                     chip_names() + ")";
    }
    return choice;
  }
  choice.error = "unknown unit '" + unit + "' (use usb, sim or sim:CHIP)";
  return choice;
}

std::string unit_spec_from_environment() {
  const char* value = std::getenv("ZENTA_UNIT");
  return value ? value : "";
}

}  // namespace zenta

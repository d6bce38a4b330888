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

// ---- options of the simulated unit: sim:CHIP,name=value,... ----
struct SimOption {
  const char* name;
  const char* meaning;
  void (*apply)(sim::SimUnit& unit, std::uint32_t value);
};
const SimOption kSimOptions[] = {
    {"freq", "the frequency input in Hz",
     [](sim::SimUnit& unit, std::uint32_t hz) { unit.set_input_frequency(hz); }},
};

// Applies "name=value" options; the error names the first one it cannot.
bool apply_sim_options(sim::SimUnit& unit, const std::string& options, std::string& error) {
  std::size_t start = 0;
  while (start < options.size()) {
    std::size_t end = options.find(',', start);
    if (end == std::string::npos) end = options.size();
    const std::string option = options.substr(start, end - start);
    start = end + 1;
    const std::size_t equals = option.find('=');
    const std::string name = option.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
    const SimOption* known = nullptr;
    for (const SimOption& candidate : kSimOptions) {
      if (name == candidate.name) known = &candidate;
    }
    char* rest = nullptr;
    const unsigned long number = std::strtoul(value.c_str(), &rest, 10);
    if (!known || value.empty() || *rest != '\0' || number > 0xFFFFFFFFul) {
      error = "unknown or malformed option '" + option + "' for the simulated unit (use ";
      for (const SimOption& candidate : kSimOptions) {
        error += std::string(candidate.name) + "=N for " + candidate.meaning;
      }
      error += ")";
      return false;
    }
    known->apply(unit, static_cast<std::uint32_t>(number));
  }
  return true;
}

}  // namespace

DriverChoice make_driver(const std::string& unit) {
  if (unit.empty() || unit == "usb") return make_usb_driver();
  DriverChoice choice;
  if (unit == "sim" || unit.rfind("sim:", 0) == 0) {
    std::string chip = unit == "sim" ? "16F877A" : unit.substr(4);
    std::string options;
    if (const std::size_t comma = chip.find(','); comma != std::string::npos) {
      options = chip.substr(comma + 1);
      chip = chip.substr(0, comma);
    }
    try {
      auto simulated = std::make_unique<sim::SimUnit>(chip);
      if (!apply_sim_options(*simulated, options, choice.error)) return choice;
      choice.driver = std::move(simulated);
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

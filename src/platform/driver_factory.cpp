#include "platform/driver_factory.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "link/latency_driver.h"
#include "link/sim/sim_unit.h"
#ifdef ZENTA_HAVE_LIBUSB
#include "platform/usb_driver.h"
#include "platform/usb_units.h"
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

// "usb:SERIAL": the unit with that serial number. The driver opens the
// first unit with the unit's id, so a serial can only pick the one unit
// plugged in; several at once need the driver to open by serial.
DriverChoice make_usb_driver(const std::string& serial = "") {
  DriverChoice choice;
  // On Windows the maker's driver library would be loaded at run time here.
#ifdef ZENTA_HAVE_LIBUSB
  std::string error;
  const auto id = usb_id_from_environment(error);
  if (!id) {
    choice.error = error;
    return choice;
  }
  if (!serial.empty()) {
    const std::vector<PluggedUnit> units = list_units(*id);
    bool found = false;
    for (const PluggedUnit& unit : units) found = found || unit.serial == serial;
    if (!found) {
      choice.error = "no unit with serial '" + serial + "' is plugged in (see zenta units)";
      return choice;
    }
    if (units.size() > 1) {
      choice.error =
          "several units are plugged in; this USB driver cannot yet open one of "
          "them by its serial";
      return choice;
    }
  }
  choice.driver = std::make_unique<UsbDriver>(*id);
#else
  (void)serial;
  choice.error = "this build has no USB driver (built without libusb); use sim or sim:CHIP";
#endif
  return choice;
}

// ---- options of the simulated unit: sim:CHIP,name=value,... ----
struct SimSetup {
  sim::SimUnit& unit;
  std::chrono::microseconds latency{0};
};
struct SimOption {
  const char* name;
  const char* meaning;
  // False when the value is malformed.
  bool (*apply)(SimSetup& setup, const std::string& value);
};

// A decimal number and nothing else.
std::optional<std::uint32_t> decimal(const std::string& text) {
  if (text.empty()) return std::nullopt;
  char* rest = nullptr;
  const unsigned long long number = std::strtoull(text.c_str(), &rest, 10);
  if (*rest != '\0' || text[0] == '-' || number > 0xFFFFFFFFull) return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

const SimOption kSimOptions[] = {
    {"freq", "freq=N for the frequency input in Hz",
     [](SimSetup& setup, const std::string& value) {
       const auto hz = decimal(value);
       if (hz) setup.unit.set_input_frequency(*hz);
       return hz.has_value();
     }},
    {"latency", "latency=1ms or 500us for the time each transfer takes",
     [](SimSetup& setup, const std::string& value) {
       const bool us = value.ends_with("us");
       const bool ms = value.ends_with("ms");
       const auto number = decimal(us || ms ? value.substr(0, value.size() - 2) : "");
       if (number) setup.latency = std::chrono::microseconds(*number * (ms ? 1000ull : 1ull));
       return number.has_value();
     }},
};

// Applies "name=value" options; the error names the first one it cannot.
bool apply_sim_options(SimSetup& setup, const std::string& options, std::string& error) {
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
    if (!known || !known->apply(setup, value)) {
      error = "unknown or malformed option '" + option + "' for the simulated unit (use ";
      for (const SimOption& candidate : kSimOptions) {
        if (&candidate != &kSimOptions[0]) error += "; ";
        error += candidate.meaning;
      }
      error += ")";
      return false;
    }
  }
  return true;
}

}  // namespace

DriverChoice make_driver(const std::string& unit) {
  if (unit.empty() || unit == "usb") return make_usb_driver();
  if (unit.rfind("usb:", 0) == 0 && unit.size() > 4) return make_usb_driver(unit.substr(4));
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
      SimSetup setup{*simulated};
      if (!apply_sim_options(setup, options, choice.error)) return choice;
      choice.sim_unit = simulated.get();
      choice.simulated = true;
      if (setup.latency.count() > 0) {
        choice.driver = std::make_unique<LatencyDriver>(std::move(simulated), setup.latency);
      } else {
        choice.driver = std::move(simulated);
      }
    } catch (const std::invalid_argument&) {
      choice.error = "unknown chip '" + chip + "' for the simulated unit (use none or one of " +
                     chip_names() + ")";
    }
    return choice;
  }
  choice.error = "unknown unit '" + unit + "' (use usb, usb:SERIAL, sim or sim:CHIP)";
  return choice;
}

std::string unit_spec_from_environment() {
  const char* value = std::getenv("ZENTA_UNIT");
  return value ? value : "";
}

}  // namespace zenta

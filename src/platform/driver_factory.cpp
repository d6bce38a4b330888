#include "platform/driver_factory.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "link/latency_driver.h"
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

// "usb:SERIAL": the unit with that serial number; whether one is plugged
// in is found when the unit is opened, so it is told as a unit not found.
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
  choice.driver = std::make_unique<UsbDriver>(*id, serial);
#else
  (void)serial;
  choice.error = "this build has no USB driver (built without libusb); use sim or sim:CHIP";
#endif
  return choice;
}

// Options of the simulated unit, named after its chip in the unit text
// ("sim:16F877A,fail-read=120,freq=1000,latency=1ms"), so the programs can be
// tried against faults, the instruments against a signal and the timing
// against a real unit's. A fault takes the number of the exchange it
// strikes, counted from 1.
struct SimSetup {
  sim::SimUnit& unit;
  std::chrono::microseconds latency{0};
};
struct SimOption {
  std::string_view name;
  const char* value_text;  // what the value must be, for the error
  // False when the value is malformed.
  bool (*apply)(SimSetup& setup, std::string_view value);
};

// A decimal number from `minimum`, and nothing else.
std::optional<std::uint32_t> decimal(std::string_view text, std::uint32_t minimum) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
      number < minimum) {
    return std::nullopt;
  }
  return number;
}

template <void (sim::SimUnit::*Fault)(int)>
bool fault(SimSetup& setup, std::string_view value) {
  const auto exchange = decimal(value, 1);
  if (!exchange || *exchange > 0x7FFFFFFF) return false;
  (setup.unit.*Fault)(static_cast<int>(*exchange));
  return true;
}

constexpr SimOption kSimOptions[] = {
    {"freq", "a frequency in Hz",
     [](SimSetup& setup, std::string_view value) {
       const auto hz = decimal(value, 0);
       if (hz) setup.unit.set_input_frequency(*hz);
       return hz.has_value();
     }},
    {"latency", "a time per transfer such as 1ms or 500us",
     [](SimSetup& setup, std::string_view value) {
       const bool us = value.ends_with("us");
       const bool ms = value.ends_with("ms");
       const auto number = decimal(us || ms ? value.substr(0, value.size() - 2) : "", 0);
       if (number) setup.latency = std::chrono::microseconds(*number * (ms ? 1000ull : 1ull));
       return number.has_value();
     }},
    {"fail-write", "an exchange number from 1", fault<&sim::SimUnit::fail_write_at>},
    {"fail-read", "an exchange number from 1", fault<&sim::SimUnit::fail_read_at>},
    {"short-read", "an exchange number from 1", fault<&sim::SimUnit::short_transfer_at>},
    {"unplug", "an exchange number from 1", fault<&sim::SimUnit::unplug_at>},
    {"silent", "an exchange number from 1", fault<&sim::SimUnit::fall_silent_at>},
};

std::string sim_option_names() {
  std::string names;
  for (const SimOption& option : kSimOptions) {
    if (!names.empty()) names += ", ";
    names += std::string(option.name) + "=N";
  }
  return names;
}

// Applies one "name=value"; the reason it cannot otherwise.
std::string apply_sim_option(SimSetup& setup, std::string_view text) {
  const std::size_t equals = text.find('=');
  const std::string_view name = text.substr(0, equals);
  for (const SimOption& option : kSimOptions) {
    if (option.name != name) continue;
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view() : text.substr(equals + 1);
    if (option.apply(setup, value)) return "";
    return "the simulated unit's " + std::string(name) + " needs " + option.value_text + ", not '" +
           std::string(value) + "'";
  }
  return "unknown option '" + std::string(text) + "' for the simulated unit (use " +
         sim_option_names() + ")";
}

}  // namespace

DriverChoice make_driver(const std::string& unit) {
  if (unit.empty() || unit == "usb") return make_usb_driver();
  if (unit.rfind("usb:", 0) == 0 && unit.size() > 4) return make_usb_driver(unit.substr(4));
  DriverChoice choice;
  const std::string head = unit.substr(0, unit.find(','));
  if (head == "sim" || head.rfind("sim:", 0) == 0) {
    const std::string chip = head == "sim" ? "16F877A" : head.substr(4);
    std::unique_ptr<sim::SimUnit> simulated;
    try {
      simulated = std::make_unique<sim::SimUnit>(chip);
    } catch (const std::invalid_argument&) {
      choice.error = "unknown chip '" + chip + "' for the simulated unit (use none or one of " +
                     chip_names() + ")";
      return choice;
    }
    SimSetup setup{*simulated};
    for (std::size_t at = head.size(); at < unit.size();) {
      const std::size_t next = std::min(unit.find(',', at + 1), unit.size());
      choice.error = apply_sim_option(setup, std::string_view(unit).substr(at + 1, next - at - 1));
      if (!choice.error.empty()) return choice;
      at = next;
    }
    choice.sim_unit = simulated.get();
    choice.simulated = true;
    if (setup.latency.count() > 0) {
      choice.driver = std::make_unique<LatencyDriver>(std::move(simulated), setup.latency);
    } else {
      choice.driver = std::move(simulated);
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

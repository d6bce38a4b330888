#include "platform/driver_factory.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

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

// Options of the simulated unit, named after its chip in the unit text
// ("sim:16F877A,fail-read=120,freq=1000"), so the programs can be tried
// against faults and the instruments against a signal. A fault takes the
// number of the exchange it strikes, counted from 1.
struct SimOption {
  std::string_view name;
  void (*apply)(sim::SimUnit& unit, int value);
  int minimum = 1;
  const char* value_text = "an exchange number from 1";
};
constexpr SimOption kSimOptions[] = {
    {"freq",
     [](sim::SimUnit& unit, int hz) { unit.set_input_frequency(static_cast<std::uint32_t>(hz)); },
     0, "a frequency in Hz"},
    {"fail-write", [](sim::SimUnit& unit, int n) { unit.fail_write_at(n); }},
    {"fail-read", [](sim::SimUnit& unit, int n) { unit.fail_read_at(n); }},
    {"short-read", [](sim::SimUnit& unit, int n) { unit.short_transfer_at(n); }},
    {"unplug", [](sim::SimUnit& unit, int n) { unit.unplug_at(n); }},
};

std::string sim_option_names() {
  std::string names;
  for (const SimOption& option : kSimOptions) {
    if (!names.empty()) names += ", ";
    names += std::string(option.name) + "=N";
  }
  return names;
}

// Applies one "name=N"; the reason it cannot otherwise.
std::string apply_sim_option(sim::SimUnit& unit, std::string_view text) {
  const std::size_t equals = text.find('=');
  const std::string_view name = text.substr(0, equals);
  for (const SimOption& option : kSimOptions) {
    if (option.name != name) continue;
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view() : text.substr(equals + 1);
    int exchange = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), exchange);
    if (value.empty() || error != std::errc() || end != value.data() + value.size() ||
        exchange < option.minimum) {
      return "the simulated unit's " + std::string(name) + " needs " + option.value_text +
             ", not '" + std::string(value) + "'";
    }
    option.apply(unit, exchange);
    return "";
  }
  return "unknown option '" + std::string(text) + "' for the simulated unit (use " +
         sim_option_names() + ")";
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
  const std::string head = unit.substr(0, unit.find(','));
  if (head == "sim" || head.rfind("sim:", 0) == 0) {
    const std::string chip = head == "sim" ? "16F877A" : head.substr(4);
    std::unique_ptr<sim::SimUnit> sim;
    try {
      sim = std::make_unique<sim::SimUnit>(chip);
    } catch (const std::invalid_argument&) {
      choice.error = "unknown chip '" + chip + "' for the simulated unit (use none or one of " +
                     chip_names() + ")";
      return choice;
    }
    for (std::size_t at = head.size(); at < unit.size();) {
      const std::size_t next = std::min(unit.find(',', at + 1), unit.size());
      choice.error = apply_sim_option(*sim, std::string_view(unit).substr(at + 1, next - at - 1));
      if (!choice.error.empty()) return choice;
      at = next;
    }
    choice.driver = std::move(sim);
    choice.simulated = true;
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

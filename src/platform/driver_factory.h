#pragma once
// Chooses the unit driver by name: "usb" (the default), "sim" or
// "sim:CHIP". Only the front ends call this; the core never asks which
// driver it talks to.
#include <memory>
#include <string>

#include "link/unit_driver.h"

namespace zenta {

namespace sim {
class SimUnit;
}

struct DriverChoice {
  std::unique_ptr<UnitDriver> driver;  // null when the unit is unknown
  bool simulated = false;              // for the window title only
  std::string error;                   // why driver is null
  // The simulated unit inside `driver` (which may wrap it); null for a real
  // unit, and when the caller made the choice itself.
  sim::SimUnit* sim_unit = nullptr;
};

// unit: "usb" (the default, also when empty), "usb:SERIAL" (the plugged
// unit with that serial number), "sim" (a 16F877A in the socket) or
// "sim:CHIP[,option=value...]" (a chip of the simulated unit's ID table,
// "none" for an empty socket; options freq=HZ, latency=1ms, and the faults
// fail-write=N, fail-read=N, short-read=N, unplug=N, silent=N that strike exchange N).
// Anything else gives a null driver and the reason in error; so does a
// malformed ZENTA_USB_ID for "usb".
DriverChoice make_driver(const std::string& unit);
// ZENTA_UNIT from the environment, "" when unset.
std::string unit_spec_from_environment();

}  // namespace zenta

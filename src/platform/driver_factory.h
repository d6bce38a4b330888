#pragma once
// Chooses the unit driver by name: "usb" (the default), "sim" or
// "sim:CHIP". Only the front ends call this; the core never asks which
// driver it talks to.
#include <memory>
#include <string>

#include "link/unit_driver.h"

namespace zenta {

struct DriverChoice {
  std::unique_ptr<UnitDriver> driver;  // null when the unit is unknown
  bool simulated = false;              // for the window title only
  std::string error;                   // why driver is null
};

// unit: "usb" (the default, also when empty), "sim" (a 16F877A in the
// socket) or "sim:CHIP" (a chip of the simulated unit's ID table, "none" for
// an empty socket), either followed by faults of the simulated unit:
// ",fail-write=N", ",fail-read=N", ",short-read=N", ",unplug=N" strike
// exchange N. Anything else gives a null driver and the reason in
// error; so does a malformed ZENTA_USB_ID for "usb".
DriverChoice make_driver(const std::string& unit);
// ZENTA_UNIT from the environment, "" when unset.
std::string unit_spec_from_environment();

}  // namespace zenta

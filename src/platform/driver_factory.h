#pragma once
// Chooses the unit driver from a unit spec: "usb" (the default), "sim" or
// "sim:CHIP". Only the front ends call this; the core never asks which
// driver it talks to.
#include <memory>
#include <string>

#include "link/unit_driver.h"

namespace zenta {

struct DriverChoice {
  std::unique_ptr<UnitDriver> driver;  // null when the spec is bad
  bool simulated = false;              // for the window title only
  std::string error;                   // why driver is null
};

DriverChoice make_driver(const std::string& spec);
// ZENTA_UNIT from the environment, "" when unset.
std::string unit_spec_from_environment();

}  // namespace zenta

#pragma once
// The programmer units plugged in on USB, found by their vendor and product
// id. Without libusb, or on a machine without a USB bus, the list is empty.
#include <string>
#include <vector>

#include "platform/usb_driver.h"

namespace zenta {

struct PluggedUnit {
  std::string serial;  // the unit's serial number; "" when it cannot be read
  int bus = 0;
  int address = 0;
};

std::vector<PluggedUnit> list_units(const UsbId& id);

}  // namespace zenta

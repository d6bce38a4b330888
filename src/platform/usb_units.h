#pragma once
// The programmer units plugged in on USB, found by their vendor and product
// id. Without libusb, or on a machine without a USB bus, the list is empty.
#include <string>
#include <vector>

#include "link/link_report.h"
#include "platform/usb_driver.h"

namespace zenta {

struct PluggedUnit {
  std::string serial;    // the unit's serial number; "" when it cannot be read
  std::string firmware;  // what the unit reports for UNIT_VERSION; "" when it cannot be asked
  int bus = 0;
  int address = 0;
};

// Each unit is opened to read its serial and asked for its firmware, which
// takes it from whichever program had it idle; a unit this user may not
// open is listed without either. `report` hears what the link says when a
// unit does not answer.
std::vector<PluggedUnit> list_units(const UsbId& id, LinkReport& report);

}  // namespace zenta

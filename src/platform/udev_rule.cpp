#include "platform/udev_rule.h"

#include <cstdio>

namespace zenta {

std::string udev_rule_text(const UsbId& id) {
  char ids[64];
  std::snprintf(ids, sizeof ids, R"(ATTR{idVendor}=="%04x", ATTR{idProduct}=="%04x")", id.vendor,
                id.product);
  return std::string("# ZENTA programmer unit: the user at the seat may use it without root.\n") +
         R"(SUBSYSTEM=="usb", ENV{DEVTYPE}=="usb_device", )" + ids + R"(, TAG+="uaccess")" + "\n";
}

}  // namespace zenta

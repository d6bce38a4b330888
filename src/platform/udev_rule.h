#pragma once
// The udev rule that lets the logged-in user open the unit without root.
// The same text is installed as 60-zenta.rules (before the seat rules that
// turn the uaccess tag into the user's access).
#include <string>

#include "platform/usb_driver.h"

namespace zenta {

inline constexpr const char* kUdevRuleFileName = "60-zenta.rules";

// The rule for the unit with this id, ready to be written to
// /etc/udev/rules.d/60-zenta.rules. udev compares the ids as the kernel
// shows them: four lower-case hexadecimal digits.
std::string udev_rule_text(const UsbId& id = kUnitUsbId);

}  // namespace zenta

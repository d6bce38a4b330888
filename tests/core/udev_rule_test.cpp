// The udev rule: udev compares the ids with the kernel's lower-case text,
// so an upper-case digit would make the rule match nothing, silently.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "platform/udev_rule.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

TEST(UdevRule, MatchesTheIdsAsTheKernelWritesThem) {
  for (const auto& [id, vendor, product] :
       {std::tuple{kUnitUsbId, "1209", "5a4e"}, {UsbId{0x00AB, 0x0001}, "00ab", "0001"}}) {
    const std::string rule = udev_rule_text(id);
    for (const std::string& part :
         {std::string("ATTR{idVendor}==\"") + vendor + "\"",
          std::string("ATTR{idProduct}==\"") + product + "\"", std::string("SUBSYSTEM==\"usb\""),
          std::string("TAG+=\"uaccess\"")}) {
      EXPECT_NE(rule.find(part), std::string::npos) << part << " in " << rule;
    }
    EXPECT_EQ(rule.back(), '\n');
  }
  // What `zenta udev-rule` prints is what the install puts in place.
  EXPECT_EQ(read_text(ZENTA_TEST_DATA "/../../data/" + std::string(kUdevRuleFileName)),
            udev_rule_text());
}

}  // namespace
}  // namespace zenta::testing

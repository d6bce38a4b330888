// The udev rule: udev compares the ids with the kernel's lower-case text,
// so an upper-case digit would make the rule match nothing, silently.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "platform/udev_rule.h"

namespace zenta::testing {
namespace {

TEST(UdevRule, MatchesTheIdsAsTheKernelWritesThem) {
  struct Case {
    UsbId id;
    const char* vendor;
    const char* product;
  };
  const Case cases[] = {{kUnitUsbId, "1209", "5a4e"}, {{0x00AB, 0x0001}, "00ab", "0001"}};
  for (const Case& c : cases) {
    const std::string rule = udev_rule_text(c.id);
    SCOPED_TRACE(rule);
    EXPECT_NE(rule.find(std::string("ATTR{idVendor}==\"") + c.vendor + "\""), std::string::npos);
    EXPECT_NE(rule.find(std::string("ATTR{idProduct}==\"") + c.product + "\""), std::string::npos);
    EXPECT_NE(rule.find("SUBSYSTEM==\"usb\""), std::string::npos);
    EXPECT_NE(rule.find("TAG+=\"uaccess\""), std::string::npos);
    EXPECT_EQ(rule.back(), '\n');
  }
}

// What `zenta udev-rule` prints is what the install puts in place.
TEST(UdevRule, InstalledFileIsThePrintedRule) {
  std::ifstream file(ZENTA_TEST_DATA "/../../data/" + std::string(kUdevRuleFileName));
  ASSERT_TRUE(file) << "data/" << kUdevRuleFileName;
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), udev_rule_text());
}

}  // namespace
}  // namespace zenta::testing

#include <gtest/gtest.h>

#include "env_guard.h"
#include "link/sim/sim_unit.h"
#include "platform/driver_factory.h"

namespace zenta {
namespace {

using testing::EnvGuard;

TEST(DriverFactoryTest, ChoosesTheDriverOfTheUnitNamed) {
  struct Case {
    const char* unit;
    const char* sim_chip;  // nullptr: a real unit's driver
  };
  const Case cases[] = {
      {"sim", "16F877A"},       {"sim:16F628A", "16F628A"},
      {"sim:12f675", "12F675"}, {"sim:none", "none"},
      {"sim:16F84", "16F84"},
#ifdef ZENTA_HAVE_LIBUSB
      {"usb", nullptr},         {"", nullptr},
#endif
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.unit);
    DriverChoice choice = make_driver(c.unit);
    ASSERT_NE(choice.driver, nullptr) << choice.error;
    EXPECT_EQ(choice.error, "");
    EXPECT_EQ(choice.simulated, c.sim_chip != nullptr);
    auto* sim = dynamic_cast<sim::SimUnit*>(choice.driver.get());
    EXPECT_EQ(sim != nullptr, c.sim_chip != nullptr);
    if (sim) {
      EXPECT_EQ(sim->chip().name, c.sim_chip);
    }
  }
}

TEST(DriverFactoryTest, UnknownUnitsSayWhy) {
  struct Case {
    const char* unit;
    const char* says;
  };
  const Case cases[] = {
      {"sim:16F999", "unknown chip '16F999'"},
      {"sim:", "unknown chip ''"},
      {"simulated", "unknown unit 'simulated'"},
      {"USB", "unknown unit 'USB'"},
      {"usb:1", "unknown unit"},
#ifndef ZENTA_HAVE_LIBUSB
      {"usb", "no USB driver"},
#endif
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.unit);
    DriverChoice choice = make_driver(c.unit);
    EXPECT_EQ(choice.driver, nullptr);
    EXPECT_FALSE(choice.simulated);
    EXPECT_NE(choice.error.find(c.says), std::string::npos) << choice.error;
  }
  // An unknown chip's message lists the chips there are.
  EXPECT_NE(make_driver("sim:x").error.find("16F628A"), std::string::npos);
}

#ifdef ZENTA_HAVE_LIBUSB
TEST(DriverFactoryTest, MalformedUsbIdStopsTheUsbDriver) {
  EnvGuard bad("ZENTA_USB_ID", "nope");
  DriverChoice choice = make_driver("usb");
  EXPECT_EQ(choice.driver, nullptr);
  EXPECT_NE(choice.error.find("ZENTA_USB_ID"), std::string::npos) << choice.error;
}
#endif

TEST(DriverFactoryTest, UnitComesFromTheEnvironment) {
  {
    EnvGuard unset("ZENTA_UNIT", nullptr);
    EXPECT_EQ(unit_spec_from_environment(), "");
  }
  EnvGuard set("ZENTA_UNIT", "sim:16F84A");
  EXPECT_EQ(unit_spec_from_environment(), "sim:16F84A");
}

}  // namespace
}  // namespace zenta

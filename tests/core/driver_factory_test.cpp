// Choosing the unit's driver, and the libusb driver where there is one.
#include <gtest/gtest.h>

#include <tuple>

#include "link/sim/sim_unit.h"
#include "platform/driver_factory.h"
#ifdef ZENTA_HAVE_LIBUSB
#include "platform/usb_driver.h"
#endif

namespace zenta {
namespace {

TEST(DriverFactoryTest, ChoosesTheDriverOfTheUnitNamedOrSaysWhyNot) {
  // The unit text; the simulated unit's chip (nullptr: none) and the error ("": a driver).
  using Case = std::tuple<const char*, const char*, const char*>;
  const Case cases[] = {
      {"sim", "16F877A", ""},
      {"sim:12f675", "12F675", ""},
      {"sim:none", "none", ""},
      {"sim:16F999", nullptr, "unknown chip '16F999'"},
      {"simulated", nullptr, "unknown unit 'simulated'"},
      {"USB", nullptr, "unknown unit 'USB'"},
#ifdef ZENTA_HAVE_LIBUSB
      {"usb", nullptr, ""},
      {"", nullptr, ""},
#else
      {"usb", nullptr, "no USB driver"},
#endif
  };
  for (const auto& [unit, sim_chip, error] : cases) {
    SCOPED_TRACE(unit);
    const DriverChoice choice = make_driver(unit);
    EXPECT_EQ(choice.driver != nullptr, *error == '\0');
    EXPECT_NE(choice.error.find(error), std::string::npos) << choice.error;
    EXPECT_EQ(choice.error.empty(), *error == '\0') << choice.error;
    EXPECT_EQ(choice.simulated, sim_chip != nullptr);
    const auto* sim = dynamic_cast<sim::SimUnit*>(choice.driver.get());
    EXPECT_STREQ(sim ? sim->chip().name.c_str() : nullptr, sim_chip);
  }
  EXPECT_NE(make_driver("sim:x").error.find("16F628A"), std::string::npos)
      << "an unknown chip's message lists the chips there are";
}

// Faults named in the unit text strike the exchange they name: the results
// of six write/read pairs, 8 for success.
TEST(DriverFactoryTest, SimulatedFaultsFromTheUnitText) {
  // The unit text; write and read results of exchanges 1..6, and the error.
  using Case = std::tuple<const char*, std::vector<std::pair<int, int>>, const char*>;
  const std::pair<int, int> ok{8, 8}, gone{-1, -1};
  const Case cases[] = {
      {"sim:16F877A,fail-read=3", {ok, ok, {8, 0}, ok, ok, ok}, ""},
      {"sim,fail-write=2,short-read=5", {ok, {0, 8}, ok, ok, {8, 7}, ok}, ""},
      {"sim:12F675,unplug=4", {ok, ok, ok, gone, gone, gone}, ""},
      {"sim:16F877A,fail-read=0", {}, "needs an exchange number from 1, not '0'"},
      {"sim:16F877A,fail-read=3x", {}, "not '3x'"},
      {"sim:16F877A,fail-read", {}, "not ''"},
      {"sim:16F877A,fail-read=99999999999", {}, "not '99999999999'"},
      {"sim:16F877A,explode=1",
       {},
       "unknown option 'explode=1' for the simulated unit (use "
       "freq=N, latency=N, fail-write=N, fail-read=N, short-read=N, unplug=N, silent=N)"},
      {"sim:16F877A,", {}, "unknown option ''"},
      {"sim:16F999,fail-read=1", {}, "unknown chip '16F999'"},
  };
  for (const auto& [unit, results, error] : cases) {
    SCOPED_TRACE(unit);
    DriverChoice choice = make_driver(unit);
    EXPECT_NE(choice.error.find(error), std::string::npos) << choice.error;
    ASSERT_EQ(choice.driver != nullptr, *error == '\0') << choice.error;
    std::uint8_t packet[8] = {0x3F};
    for (std::size_t n = 0; n < results.size(); ++n) {
      const int written = choice.driver->write(packet, 8);
      EXPECT_EQ(std::pair(written, choice.driver->read(packet, 8)), results[n]) << "exchange " << n;
    }
  }
}

#ifdef ZENTA_HAVE_LIBUSB
TEST(UsbDriverTest, ParsesVendorAndProductOrRefuses) {
  EXPECT_EQ(parse_usb_id("04d8:000a"), (UsbId{0x04D8, 0x000A}));
  EXPECT_EQ(parse_usb_id("aBcD:EfFe"), (UsbId{0xABCD, 0xEFFE}));
  EXPECT_EQ(parse_usb_id("1:2"), (UsbId{0x0001, 0x0002}));
  for (const char* bad : {"", "04d8:", "04d8:000a:1", "12345:0001", "0x04:0x0a", " 04d8:000a"}) {
    EXPECT_EQ(parse_usb_id(bad), std::nullopt) << "'" << bad << "'";
  }
}

TEST(UsbDriverTest, NoUnitGivesOpenErrorAndNothingIsOpen) {
  UsbDriver driver(UsbId{0x0000, 0x0000});  // no device anywhere has this id
  std::uint8_t packet[8] = {0x3F};
  EXPECT_EQ(driver.open(), kDriverOpenError);
  EXPECT_EQ(driver.write(packet, 8), kDriverNotOpen);
  EXPECT_EQ(driver.read(packet, 8), kDriverNotOpen);
  EXPECT_EQ(driver.open(), kDriverOpenError) << "a second try starts over";
}
#endif

}  // namespace
}  // namespace zenta

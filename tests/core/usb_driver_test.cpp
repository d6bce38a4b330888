#include <gtest/gtest.h>

#ifdef ZENTA_HAVE_LIBUSB
#include <libusb.h>

#include "env_guard.h"
#include "platform/usb_driver.h"

namespace zenta {
namespace {

using testing::EnvGuard;

TEST(UsbIdTest, ParsesVendorAndProductOrRefuses) {
  struct Case {
    const char* text;
    std::optional<UsbId> expected;
  };
  const Case cases[] = {
      {"04d8:000a", UsbId{0x04D8, 0x000A}},
      {"04D8:000A", UsbId{0x04D8, 0x000A}},
      {"aBcD:EfFe", UsbId{0xABCD, 0xEFFE}},
      {"1:2", UsbId{0x0001, 0x0002}},
      {"ffff:0000", UsbId{0xFFFF, 0x0000}},
      {"", std::nullopt},
      {"04d8", std::nullopt},
      {"04d8:", std::nullopt},
      {":000a", std::nullopt},
      {"04d8:000a:1", std::nullopt},
      {"12345:0001", std::nullopt},
      {"0001:12345", std::nullopt},
      {"0x04:0x0a", std::nullopt},
      {"04g8:000a", std::nullopt},
      {" 04d8:000a", std::nullopt},
      {"04d8:000a ", std::nullopt},
      {"-1:2", std::nullopt},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(parse_usb_id(c.text), c.expected) << "'" << c.text << "'";
  }
}

TEST(UsbIdTest, EnvironmentOverridesTheUnitsIdAndReportsABadOne) {
  std::string error;
  {
    EnvGuard unset("ZENTA_USB_ID", nullptr);
    EXPECT_EQ(usb_id_from_environment(error), kUnitUsbId);
    EXPECT_EQ(error, "");
  }
  {
    EnvGuard set("ZENTA_USB_ID", "04d8:00Aa");
    EXPECT_EQ(usb_id_from_environment(error), (UsbId{0x04D8, 0x00AA}));
    EXPECT_EQ(error, "");
  }
  {
    EnvGuard bad("ZENTA_USB_ID", "04d8-000a");
    EXPECT_EQ(usb_id_from_environment(error), std::nullopt);
    EXPECT_NE(error.find("'04d8-000a'"), std::string::npos) << error;
  }
}

// No device anywhere has this id, so this is the machine without a unit.
constexpr UsbId kNoSuchUnit{0x0000, 0x0000};

TEST(UsbDriverTest, NoUnitGivesOpenErrorAndNothingIsOpen) {
  UsbDriver driver(kNoSuchUnit);
  std::uint8_t packet[8] = {0x3F};
  EXPECT_EQ(driver.write(packet, 8), kDriverNotOpen);
  EXPECT_EQ(driver.open(), kDriverOpenError);
  EXPECT_EQ(driver.write(packet, 8), kDriverNotOpen);
  EXPECT_EQ(driver.read(packet, 8), kDriverNotOpen);
  // A second try starts over rather than claiming to be open already.
  EXPECT_EQ(driver.open(), kDriverOpenError);
  driver.close();
  driver.close();
}

int failing_init(libusb_context** context) {
  *context = nullptr;
  return LIBUSB_ERROR_NO_MEM;
}

TEST(UsbDriverTest, FailingLibraryGivesOpenError) {
  UsbDriver driver(kUnitUsbId, kUsbTimeoutMs, &failing_init);
  EXPECT_EQ(driver.open(), kDriverOpenError);
  std::uint8_t packet[8] = {};
  EXPECT_EQ(driver.read(packet, 8), kDriverNotOpen);
}

}  // namespace
}  // namespace zenta
#endif

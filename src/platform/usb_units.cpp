#include "platform/usb_units.h"

#ifdef ZENTA_HAVE_LIBUSB
#include <libusb.h>

#include "link/unit.h"
#endif

namespace zenta {

#ifdef ZENTA_HAVE_LIBUSB
namespace {

// The firmware of the unit with `serial`, through the driver the panel
// uses, so the exchange is the panel's own first one.
std::string firmware_of(const UsbId& id, const std::string& serial, LinkReport& report) {
  UsbDriver driver(id, serial);
  Unit unit(driver, report);
  std::string firmware;
  if (unit.open() == kDriverOk && unit.read_firmware_version()) firmware = unit.FirmwareVersion();
  unit.close();
  return firmware;
}

}  // namespace

std::vector<PluggedUnit> list_units(const UsbId& id, LinkReport& report) {
  std::vector<PluggedUnit> units;
  libusb_context* context = nullptr;
  if (libusb_init(&context) != 0) return units;
  libusb_device** devices = nullptr;
  const ssize_t count = libusb_get_device_list(context, &devices);
  for (ssize_t i = 0; i < count; ++i) {
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(devices[i], &descriptor) != 0) continue;
    if (descriptor.idVendor != id.vendor || descriptor.idProduct != id.product) continue;
    PluggedUnit unit;
    unit.bus = libusb_get_bus_number(devices[i]);
    unit.address = libusb_get_device_address(devices[i]);
    libusb_device_handle* handle = nullptr;
    if (libusb_open(devices[i], &handle) == 0) {
      unit.serial = usb_serial(handle, descriptor.iSerialNumber);
      libusb_close(handle);
    }
    units.push_back(unit);
  }
  if (count >= 0) libusb_free_device_list(devices, 1);
  libusb_exit(context);
  // A unit without a serial can be picked only when it is the only one.
  for (PluggedUnit& unit : units) {
    if (!unit.serial.empty() || units.size() == 1) {
      unit.firmware = firmware_of(id, unit.serial, report);
    }
  }
  return units;
}
#else
std::vector<PluggedUnit> list_units(const UsbId&, LinkReport&) {
  return {};
}
#endif

}  // namespace zenta

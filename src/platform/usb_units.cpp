#include "platform/usb_units.h"

#ifdef ZENTA_HAVE_LIBUSB
#include <libusb.h>
#endif

namespace zenta {

#ifdef ZENTA_HAVE_LIBUSB
std::vector<PluggedUnit> list_units(const UsbId& id) {
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
    // Without permission to open it the unit is still listed, without serial.
    if (descriptor.iSerialNumber != 0 && libusb_open(devices[i], &handle) == 0) {
      unsigned char text[128] = {};
      const int length =
          libusb_get_string_descriptor_ascii(handle, descriptor.iSerialNumber, text, sizeof text);
      if (length > 0) unit.serial.assign(reinterpret_cast<const char*>(text), length);
      libusb_close(handle);
    }
    units.push_back(unit);
  }
  if (count >= 0) libusb_free_device_list(devices, 1);
  libusb_exit(context);
  return units;
}
#else
std::vector<PluggedUnit> list_units(const UsbId&) {
  return {};
}
#endif

}  // namespace zenta

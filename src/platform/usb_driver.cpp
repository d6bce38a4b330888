#include "platform/usb_driver.h"

#include "common/number_text.h"

#include <libusb.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace zenta {

namespace {

std::optional<std::uint16_t> parse_hex_part(const std::string& text) {
  if (text.empty() || text.size() > 4) return std::nullopt;
  std::uint16_t value = 0;
  for (char c : text) {
    const int digit = hex_digit(c);
    if (digit < 0) return std::nullopt;
    value = static_cast<std::uint16_t>(value * 16 + digit);
  }
  return value;
}

bool is_data_endpoint(const libusb_endpoint_descriptor& endpoint) {
  const int type = endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK;
  return type == LIBUSB_TRANSFER_TYPE_BULK || type == LIBUSB_TRANSFER_TYPE_INTERRUPT;
}

bool is_interrupt(const libusb_endpoint_descriptor& endpoint) {
  return (endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) == LIBUSB_TRANSFER_TYPE_INTERRUPT;
}

}  // namespace

std::optional<UsbId> parse_usb_id(const std::string& text) {
  const auto colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const auto vendor = parse_hex_part(text.substr(0, colon));
  const auto product = parse_hex_part(text.substr(colon + 1));
  if (!vendor || !product) return std::nullopt;
  return UsbId{*vendor, *product};
}

std::optional<UsbId> usb_id_from_environment(std::string& error) {
  const char* value = std::getenv("ZENTA_USB_ID");
  if (value == nullptr) return kUnitUsbId;
  auto id = parse_usb_id(value);
  if (!id) {
    error = std::string("ZENTA_USB_ID must be VVVV:PPPP in hexadecimal, not '") + value + "'";
  }
  return id;
}

UsbDriver::UsbDriver(UsbId id, int timeout_ms, InitFunction init)
    : id_(id), timeout_ms_(timeout_ms), init_(init ? init : &libusb_init) {}

UsbDriver::~UsbDriver() {
  close();
}

std::int32_t UsbDriver::open() {
  if (handle_ != nullptr) return kDriverAlreadyOpen;
  if (init_(&context_) != LIBUSB_SUCCESS) {
    context_ = nullptr;
    return kDriverOpenError;
  }
  handle_ = libusb_open_device_with_vid_pid(context_, id_.vendor, id_.product);
  if (handle_ != nullptr) {
    // A kernel driver (HID, for one) may hold the interface; it gets it back
    // on release. Not supported on every system, where nothing holds it.
    libusb_set_auto_detach_kernel_driver(handle_, 1);
    if (find_endpoints() && libusb_claim_interface(handle_, interface_) == LIBUSB_SUCCESS) {
      return kDriverOk;
    }
    interface_ = -1;
  }
  close();
  return kDriverOpenError;
}

bool UsbDriver::find_endpoints() {
  libusb_config_descriptor* config = nullptr;
  if (libusb_get_active_config_descriptor(libusb_get_device(handle_), &config) != LIBUSB_SUCCESS) {
    return false;
  }
  bool found = false;
  for (int i = 0; i < config->bNumInterfaces && !found; ++i) {
    if (config->interface[i].num_altsetting < 1) continue;
    const libusb_interface_descriptor& setting = config->interface[i].altsetting[0];
    const libusb_endpoint_descriptor* out = nullptr;
    const libusb_endpoint_descriptor* in = nullptr;
    for (int e = 0; e < setting.bNumEndpoints; ++e) {
      const libusb_endpoint_descriptor& endpoint = setting.endpoint[e];
      if (!is_data_endpoint(endpoint)) continue;
      const bool is_in =
          (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN;
      if (is_in && in == nullptr) in = &endpoint;
      if (!is_in && out == nullptr) out = &endpoint;
    }
    if (out != nullptr && in != nullptr) {
      interface_ = setting.bInterfaceNumber;
      out_endpoint_ = out->bEndpointAddress;
      in_endpoint_ = in->bEndpointAddress;
      out_interrupt_ = is_interrupt(*out);
      in_interrupt_ = is_interrupt(*in);
      in_packet_size_ = in->wMaxPacketSize;
      found = true;
    }
  }
  libusb_free_config_descriptor(config);
  return found;
}

void UsbDriver::close() {
  if (handle_ != nullptr) {
    if (interface_ >= 0) libusb_release_interface(handle_, interface_);
    libusb_close(handle_);
    handle_ = nullptr;
  }
  interface_ = -1;
  if (context_ != nullptr) {
    libusb_exit(context_);
    context_ = nullptr;
  }
}

int UsbDriver::transfer(std::uint8_t endpoint, bool interrupt, std::uint8_t* data, int length) {
  int transferred = 0;
  const int result =
      interrupt
          ? libusb_interrupt_transfer(handle_, endpoint, data, length, &transferred, timeout_ms_)
          : libusb_bulk_transfer(handle_, endpoint, data, length, &transferred, timeout_ms_);
  return result == LIBUSB_SUCCESS ? transferred : -1;
}

std::int32_t UsbDriver::write(const std::uint8_t* buffer, std::int32_t length) {
  if (handle_ == nullptr) return kDriverNotOpen;
  if (length < 0) return kDriverWriteError;
  std::vector<std::uint8_t> data(buffer, buffer + length);
  const int sent = transfer(out_endpoint_, out_interrupt_, data.data(), length);
  return sent == length ? length : kDriverWriteError;
}

std::int32_t UsbDriver::read(std::uint8_t* buffer, std::int32_t length) {
  if (handle_ == nullptr) return kDriverNotOpen;
  if (length < 0) return kDriverReadError;
  // Ask for a whole packet of the endpoint: a unit that pads its reply to
  // the packet size would otherwise overflow the transfer.
  std::vector<std::uint8_t> data(static_cast<std::size_t>(std::max(length, in_packet_size_)));
  const int received =
      transfer(in_endpoint_, in_interrupt_, data.data(), static_cast<int>(data.size()));
  if (received < length) return kDriverReadError;
  std::copy_n(data.begin(), length, buffer);
  return length;
}

}  // namespace zenta

#include "platform/usb_driver.h"

#include "common/number_text.h"

#include <libusb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>
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

std::string usb_id_text(const UsbId& id) {
  char text[10];
  std::snprintf(text, sizeof text, "%04x:%04x", id.vendor, id.product);
  return text;
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

std::string usb_serial(libusb_device_handle* handle, std::uint8_t index) {
  if (index == 0) return "";
  unsigned char text[128] = {};
  const int length = libusb_get_string_descriptor_ascii(handle, index, text, sizeof text);
  return length > 0 ? std::string(reinterpret_cast<const char*>(text), length) : "";
}

UsbDriver::UsbDriver(UsbId id, int timeout_ms, InitFunction init)
    : UsbDriver(id, "", timeout_ms, init) {}

UsbDriver::UsbDriver(UsbId id, std::string serial, int timeout_ms, InitFunction init)
    : id_(id),
      serial_(std::move(serial)),
      timeout_ms_(timeout_ms),
      init_(init ? init : &libusb_init) {}

UsbDriver::~UsbDriver() {
  close();
}

std::int32_t UsbDriver::open() {
  if (handle_ != nullptr) return kDriverAlreadyOpen;
  hint_.clear();
  condition_ = UnitCondition::kAnswering;
  if (const int result = init_(&context_); result != LIBUSB_SUCCESS) {
    context_ = nullptr;
    hint_ = std::string("The USB library could not start (") + libusb_error_name(result) + ").";
    return kDriverOpenError;
  }
  const std::int32_t result = open_handle();
  if (result != kDriverOk) {
    close();
    return result;
  }
  drain();
  return kDriverOk;
}

std::int32_t UsbDriver::open_handle() {
  const std::string id = usb_id_text(id_);
  libusb_device** list = nullptr;
  const ssize_t count = libusb_get_device_list(context_, &list);
  int result = LIBUSB_ERROR_NO_DEVICE;
  // With a serial, a unit this user may not open cannot say whether it is
  // the one asked for; that is reported only when no other one is.
  int refused = LIBUSB_SUCCESS;
  for (ssize_t i = 0; i < count && result == LIBUSB_ERROR_NO_DEVICE; ++i) {
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(list[i], &descriptor) != LIBUSB_SUCCESS) continue;
    if (descriptor.idVendor != id_.vendor || descriptor.idProduct != id_.product) continue;
    result = libusb_open(list[i], &handle_);
    if (serial_.empty()) continue;
    if (result != LIBUSB_SUCCESS) {
      refused = result;
      result = LIBUSB_ERROR_NO_DEVICE;
      continue;
    }
    if (usb_serial(handle_, descriptor.iSerialNumber) != serial_) {
      libusb_close(handle_);
      handle_ = nullptr;
      result = LIBUSB_ERROR_NO_DEVICE;
    }
  }
  if (count >= 0) libusb_free_device_list(list, 1);
  if (result == LIBUSB_ERROR_NO_DEVICE && refused != LIBUSB_SUCCESS) result = refused;
  if (result == LIBUSB_ERROR_NO_DEVICE) {
    hint_ = serial_.empty()
                ? "No unit with the USB id " + id +
                      " is plugged in. Plug it in; if lsusb shows it with another id, set "
                      "ZENTA_USB_ID to that id."
                : "No unit with the USB id " + id + " and the serial '" + serial_ +
                      "' is plugged in; zenta units lists the serials of those that are.";
    return kDriverOpenError;
  }
  if (result == LIBUSB_ERROR_ACCESS) {
    hint_ = "The unit " + id +
            " is plugged in, but this user may not use it. Install the udev rule "
            "(zenta udev-rule prints it), then unplug the unit and plug it in again.";
    return kDriverOpenError;
  }
  if (result != LIBUSB_SUCCESS) {
    hint_ = "The unit " + id + " is plugged in but cannot be opened (" + libusb_error_name(result) +
            ").";
    return kDriverOpenError;
  }
  // A kernel driver (HID, for one) may hold the interface; it gets it back
  // on release. Not supported on every system, where nothing holds it.
  libusb_set_auto_detach_kernel_driver(handle_, 1);
  if (!find_endpoints()) {
    hint_ = "The device " + id + " has no OUT and IN endpoint pair: is it the unit?";
    return kDriverOpenError;
  }
  result = libusb_claim_interface(handle_, interface_);
  if (result == LIBUSB_SUCCESS) return kDriverOk;
  interface_ = -1;
  hint_ =
      result == LIBUSB_ERROR_BUSY
          ? "The unit " + id + " is in use by another program. Close that program and try again."
          : "The unit " + id + " is plugged in but cannot be claimed (" +
                libusb_error_name(result) + ").";
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

int UsbDriver::transfer(std::uint8_t endpoint, bool interrupt, std::uint8_t* data, int length,
                        int timeout_ms, int& done) {
  done = 0;
  return interrupt ? libusb_interrupt_transfer(handle_, endpoint, data, length, &done, timeout_ms)
                   : libusb_bulk_transfer(handle_, endpoint, data, length, &done, timeout_ms);
}

int UsbDriver::exchange_transfer(std::uint8_t endpoint, bool interrupt, std::uint8_t* data,
                                 int length, int& done) {
  int result = transfer(endpoint, interrupt, data, length, timeout_ms_, done);
  if (result == LIBUSB_ERROR_PIPE && libusb_clear_halt(handle_, endpoint) == LIBUSB_SUCCESS) {
    result = transfer(endpoint, interrupt, data, length, timeout_ms_, done);
  }
  switch (result) {
    case LIBUSB_ERROR_TIMEOUT:
      condition_ = UnitCondition::kNotAnswering;
      break;
    case LIBUSB_ERROR_NO_DEVICE:
      condition_ = UnitCondition::kGone;
      break;
    default:
      condition_ = UnitCondition::kAnswering;
  }
  return result;
}

void UsbDriver::drain() {
  drain_due_ = false;
  std::vector<std::uint8_t> data(static_cast<std::size_t>(std::max(kPacketSize, in_packet_size_)));
  // Bounded, so a unit that streams replies cannot keep the driver here.
  for (int i = 0; i < 64; ++i) {
    int done = 0;
    const int result = transfer(in_endpoint_, in_interrupt_, data.data(),
                                static_cast<int>(data.size()), kUsbDrainTimeoutMs, done);
    if (result == LIBUSB_ERROR_PIPE) {
      libusb_clear_halt(handle_, in_endpoint_);
      continue;
    }
    if (result == LIBUSB_ERROR_NO_DEVICE) condition_ = UnitCondition::kGone;
    if (result != LIBUSB_SUCCESS) return;
    ++drained_;
  }
}

std::int32_t UsbDriver::write(const std::uint8_t* buffer, std::int32_t length) {
  if (handle_ == nullptr) return kDriverNotOpen;
  if (length < 0) return kDriverWriteError;
  if (drain_due_) drain();
  std::vector<std::uint8_t> data(buffer, buffer + length);
  int sent = 0;
  const int result = exchange_transfer(out_endpoint_, out_interrupt_, data.data(), length, sent);
  return result == LIBUSB_SUCCESS && sent == length ? length : kDriverWriteError;
}

std::int32_t UsbDriver::read(std::uint8_t* buffer, std::int32_t length) {
  if (handle_ == nullptr) return kDriverNotOpen;
  if (length < 0) return kDriverReadError;
  // Ask for a whole packet of the endpoint: a unit that pads its reply to
  // the packet size would otherwise overflow the transfer.
  std::vector<std::uint8_t> data(static_cast<std::size_t>(std::max(length, in_packet_size_)));
  int received = 0;
  const int result = exchange_transfer(in_endpoint_, in_interrupt_, data.data(),
                                       static_cast<int>(data.size()), received);
  // The reply may still come; it must not be taken for the next packet's.
  if (result == LIBUSB_ERROR_TIMEOUT) drain_due_ = true;
  if (result != LIBUSB_SUCCESS || received < length) return kDriverReadError;
  std::copy_n(data.begin(), length, buffer);
  return length;
}

}  // namespace zenta

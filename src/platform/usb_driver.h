#pragma once
// The unit on USB through libusb (Linux and macOS). The unit shows one
// interface with an OUT and an IN endpoint; each packet is one 8-byte
// transfer out, each reply one transfer in.
#include <cstdint>
#include <optional>
#include <string>

#include "link/unit_driver.h"

struct libusb_context;
struct libusb_device_handle;

namespace zenta {

struct UsbId {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  bool operator==(const UsbId&) const = default;
};

// The unit's vendor and product id as its firmware reports them.
inline constexpr UsbId kUnitUsbId{0x1209, 0x5A4E};
// How long one transfer may take before it counts as failed.
inline constexpr int kUsbTimeoutMs = 1000;
// How long a drain waits for one more stale reply. Replies come within a
// few milliseconds of their packet; a drain runs only at open and after a
// read that timed out, so its wait is paid once per trouble, not per packet.
inline constexpr int kUsbDrainTimeoutMs = 50;

// "VVVV:PPPP", one to four hexadecimal digits (either case) on each side and
// nothing else; nullopt otherwise.
std::optional<UsbId> parse_usb_id(const std::string& text);

// The serial number string of an opened device whose device descriptor
// names it at `index`; "" when it names none or the unit does not answer.
std::string usb_serial(libusb_device_handle* handle, std::uint8_t index);

// "1209:5a4e": the id as lsusb shows it.
std::string usb_id_text(const UsbId& id);

// The id to look for: ZENTA_USB_ID when set, else kUnitUsbId. nullopt, with
// `error` filled, when ZENTA_USB_ID is set but malformed.
std::optional<UsbId> usb_id_from_environment(std::string& error);

// Each packet is one transfer out and each reply one transfer in, with no
// sequence number in either. A reply that arrives after its read timed out
// would answer the next packet, and every later reply would be one behind.
// So the driver throws away replies nobody waits for: when it opens the
// unit and before the first packet after a read that timed out. A stalled
// endpoint is cleared and its transfer tried once more.
class UsbDriver : public UnitDriver {
 public:
  // Stands in for libusb_init; tests replace it to see a failing library.
  using InitFunction = int (*)(libusb_context**);

  explicit UsbDriver(UsbId id = kUnitUsbId, int timeout_ms = kUsbTimeoutMs,
                     InitFunction init = nullptr);
  // The unit with this serial number among those with the id; "" takes the
  // first unit with the id.
  UsbDriver(UsbId id, std::string serial, int timeout_ms = kUsbTimeoutMs,
            InitFunction init = nullptr);
  ~UsbDriver() override;
  UsbDriver(const UsbDriver&) = delete;
  UsbDriver& operator=(const UsbDriver&) = delete;

  // kDriverOpenError when libusb cannot start, no unit with the id (and
  // serial) is there,
  // it cannot be opened (permissions) or its interface cannot be claimed
  // (another program has it); open_failure_hint() says which.
  std::int32_t open() override;
  void close() override;
  // kDriverNotOpen before open(); kDriverWriteError / kDriverReadError when
  // the transfer fails, times out or moves fewer bytes than asked.
  std::int32_t write(const std::uint8_t* buffer, std::int32_t length) override;
  std::int32_t read(std::uint8_t* buffer, std::int32_t length) override;
  UnitCondition condition() const override { return condition_; }
  std::string open_failure_hint() const override { return hint_; }

  const UsbId& id() const { return id_; }
  const std::string& serial() const { return serial_; }
  // Stale replies thrown away since the driver was made.
  int replies_drained() const { return drained_; }

 private:
  std::int32_t open_handle();
  bool find_endpoints();
  // libusb's result; `done` gets the bytes moved.
  int transfer(std::uint8_t endpoint, bool interrupt, std::uint8_t* data, int length,
               int timeout_ms, int& done);
  // A transfer of an exchange: a stall is cleared and the transfer tried
  // once more; the outcome sets condition().
  int exchange_transfer(std::uint8_t endpoint, bool interrupt, std::uint8_t* data, int length,
                        int& done);
  void drain();

  UsbId id_;
  std::string serial_;
  int timeout_ms_;
  InitFunction init_;
  libusb_context* context_ = nullptr;
  libusb_device_handle* handle_ = nullptr;
  int interface_ = -1;
  std::uint8_t out_endpoint_ = 0;
  std::uint8_t in_endpoint_ = 0;
  bool out_interrupt_ = false;
  bool in_interrupt_ = false;
  int in_packet_size_ = 0;
  UnitCondition condition_ = UnitCondition::kAnswering;
  std::string hint_;
  bool drain_due_ = false;
  int drained_ = 0;
};

}  // namespace zenta

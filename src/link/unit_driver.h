#pragma once
// The four operations every unit driver offers. The simulated unit, the
// libusb driver and the maker's library on Windows all plug in here, so the
// rest of the panel never knows which one it talks to.
#include <cstdint>
#include <string>

namespace zenta {

// Driver result codes of open(); the link negates them to index the
// driver result texts.
enum DriverResult : std::int32_t {
  kDriverOk = 0,
  kDriverAlreadyOpen = -1,
  kDriverOpenError = -2,
  kDriverNotOpen = -3,
  kDriverWriteError = -4,
  kDriverReadError = -5,
  kDriverTestError = -6,
};

inline constexpr std::int32_t kPacketSize = 8;

// What the driver's last transfer says about the unit. The link's verdict
// on an exchange does not depend on it; an operation that must decide
// whether going on makes sense asks it after a failed exchange.
enum class UnitCondition {
  kAnswering,     // the last transfer went through, or failed for another reason
  kNotAnswering,  // the last transfer timed out
  kGone,          // the unit was unplugged; nothing will go through again
};

class UnitDriver {
 public:
  virtual ~UnitDriver() = default;
  // 0 when the unit is there and ready, a negative DriverResult otherwise.
  virtual std::int32_t open() = 0;
  virtual void close() = 0;
  // Number of bytes written; exactly `length` means success.
  virtual std::int32_t write(const std::uint8_t* buffer, std::int32_t length) = 0;
  // Number of bytes read; exactly `length` means success. The bytes are the
  // unit's reply to the packet written last.
  virtual std::int32_t read(std::uint8_t* buffer, std::int32_t length) = 0;

  virtual UnitCondition condition() const { return UnitCondition::kAnswering; }
  // After a failed open(): one or two sentences that tell the user why the
  // unit could not be opened and what to do. Empty when there is nothing
  // more to say than the result code.
  virtual std::string open_failure_hint() const { return {}; }
  // Whatever the driver keeps of its own (a trace's lines) goes out now:
  // an operation has ended.
  virtual void flush() {}
};

}  // namespace zenta

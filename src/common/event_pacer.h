#pragma once
// Paces the pauses of a long operation. On a fast link an operation pauses
// every few hundred microseconds; repainting the panel at each pause would
// cost more than the exchanges themselves. A render of the main window with
// its paint takes about 0.3 ms of the processor: sixty a second would add
// 2-3 % to a read on a full-speed link, thirty keep the progress bar smooth
// for half of that.
#include <chrono>
#include <functional>

namespace zenta {

inline constexpr std::chrono::microseconds kRepaintInterval{33'333};

class EventPacer {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  explicit EventPacer(
      std::chrono::microseconds interval = kRepaintInterval,
      Clock clock = [] { return std::chrono::steady_clock::now(); })
      : interval_(interval), clock_(std::move(clock)) {}

  // True at the first call after reset() and then once the interval has
  // passed since the last true.
  bool due() {
    const auto now = clock_();
    if (!started_ || now - last_ >= interval_) {
      started_ = true;
      last_ = now;
      return true;
    }
    return false;
  }
  // The next pause is due at once: a new operation shows its start.
  void reset() { started_ = false; }

 private:
  std::chrono::microseconds interval_;
  Clock clock_;
  bool started_ = false;
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace zenta

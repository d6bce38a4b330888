#pragma once
// A driver that waits before passing each transfer on, as a unit on a real
// bus does: every write and every read costs `latency`. It makes the
// simulated unit's timing realistic (sim:CHIP,latency=1ms), so that several
// units driven at once can be timed against one.
#include <chrono>
#include <memory>

#include "link/unit_driver.h"

namespace zenta {

class LatencyDriver : public UnitDriver {
 public:
  LatencyDriver(std::unique_ptr<UnitDriver> inner, std::chrono::microseconds latency)
      : inner_(std::move(inner)), latency_(latency) {}

  std::int32_t open() override { return inner_->open(); }
  void close() override { inner_->close(); }
  std::int32_t write(const std::uint8_t* buffer, std::int32_t length) override;
  std::int32_t read(std::uint8_t* buffer, std::int32_t length) override;

  UnitDriver& inner() { return *inner_; }
  std::chrono::microseconds latency() const { return latency_; }

 private:
  std::unique_ptr<UnitDriver> inner_;
  std::chrono::microseconds latency_;
};

}  // namespace zenta

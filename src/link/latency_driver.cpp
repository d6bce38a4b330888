#include "link/latency_driver.h"

#include <thread>

namespace zenta {

std::int32_t LatencyDriver::write(const std::uint8_t* buffer, std::int32_t length) {
  std::this_thread::sleep_for(latency_);
  return inner_->write(buffer, length);
}

std::int32_t LatencyDriver::read(std::uint8_t* buffer, std::int32_t length) {
  std::this_thread::sleep_for(latency_);
  return inner_->read(buffer, length);
}

}  // namespace zenta

#pragma once
// A driver that records what the link sends and answers from a script, for
// tests of the link itself and of code that needs exact control of replies.
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "link/unit_driver.h"

namespace zenta::testing {

class ScriptedDriver : public UnitDriver {
 public:
  std::int32_t open_result = 0;
  int opens = 0;
  int closes = 0;
  int reads = 0;
  std::vector<std::array<std::uint8_t, 8>> written;
  // Replies handed out in order; an empty script answers zeros.
  std::deque<std::array<std::uint8_t, 8>> replies;
  // Results of the next write and read calls; 8 once the queue is empty.
  std::deque<std::int32_t> write_results;
  std::deque<std::int32_t> read_results;
  // What a failing read leaves in the caller's buffer.
  std::array<std::uint8_t, 8> failed_read_bytes{};

  std::int32_t open() override {
    ++opens;
    return open_result;
  }
  void close() override { ++closes; }
  std::int32_t write(const std::uint8_t* buffer, std::int32_t length) override {
    std::array<std::uint8_t, 8> packet{};
    std::memcpy(packet.data(), buffer, static_cast<std::size_t>(length));
    written.push_back(packet);
    return next(write_results, length);
  }
  std::int32_t read(std::uint8_t* buffer, std::int32_t length) override {
    ++reads;
    const std::int32_t result = next(read_results, length);
    if (result != length) {
      std::memcpy(buffer, failed_read_bytes.data(), 8);
      return result;
    }
    std::array<std::uint8_t, 8> reply{};
    if (!replies.empty()) {
      reply = replies.front();
      replies.pop_front();
    }
    std::memcpy(buffer, reply.data(), 8);
    return result;
  }

 private:
  static std::int32_t next(std::deque<std::int32_t>& queue, std::int32_t fallback) {
    if (queue.empty()) return fallback;
    const std::int32_t value = queue.front();
    queue.pop_front();
    return value;
  }
};

}  // namespace zenta::testing

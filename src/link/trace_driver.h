#pragma once
// Wraps any driver and writes one line per exchange:
//   TX 32 00 00 00 00 00 00 00 RX 00 00 00 00 00 00 00 00
// A failed write ends its line after the TX bytes with FAILED; a failed read
// shows what the read left in the buffer, then FAILED. Used for --trace and
// ZENTA_TRACE, to diagnose a unit in the field. Lines are written to the
// stream's buffer and flushed every kTraceFlushLines exchanges, at a failed
// exchange and at close, so a long operation costs no system call per
// exchange and the lines that explain a failure are on disk.
#include <array>
#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

#include "link/unit_driver.h"

namespace zenta {

std::string format_bytes(const std::uint8_t* bytes, std::size_t count);

inline constexpr int kTraceFlushLines = 1024;
inline constexpr std::chrono::milliseconds kTraceFlushInterval{100};

class TraceDriver : public UnitDriver {
 public:
  // `out` must outlive the driver.
  TraceDriver(UnitDriver& inner, std::ostream& out) : inner_(inner), out_(out) {}
  ~TraceDriver() override;
  TraceDriver(const TraceDriver&) = delete;
  TraceDriver& operator=(const TraceDriver&) = delete;
  std::int32_t open() override { return inner_.open(); }
  void close() override;
  std::int32_t write(const std::uint8_t* buffer, std::int32_t length) override;
  std::int32_t read(std::uint8_t* buffer, std::int32_t length) override;
  UnitCondition condition() const override { return inner_.condition(); }
  std::string open_failure_hint() const override { return inner_.open_failure_hint(); }
  void flush() override;

 private:
  void flush_pending();
  // Ends a line; `failed` lines go to disk at once.
  void put_line(const std::string& line, bool failed);

  UnitDriver& inner_;
  std::ostream& out_;
  std::string pending_;  // the TX part of an exchange whose reply is due
  int unflushed_lines_ = 0;
  std::chrono::steady_clock::time_point last_flush_ = std::chrono::steady_clock::now();
};

}  // namespace zenta

#include "link/trace_driver.h"

#include <cstdio>

namespace zenta {

std::string format_bytes(const std::uint8_t* bytes, std::size_t count) {
  std::string text;
  char cell[4];
  for (std::size_t i = 0; i < count; ++i) {
    std::snprintf(cell, sizeof cell, "%02X", bytes[i]);
    if (i) text += ' ';
    text += cell;
  }
  return text;
}

void TraceDriver::put_line(const std::string& line, bool failed) {
  out_ << line << '\n';
  const auto now = std::chrono::steady_clock::now();
  if (failed || ++unflushed_lines_ >= kTraceFlushLines ||
      now - last_flush_ >= kTraceFlushInterval) {
    out_.flush();
    unflushed_lines_ = 0;
    last_flush_ = now;
  }
}

void TraceDriver::flush_pending() {
  if (pending_.empty()) return;
  put_line(pending_, false);
  pending_.clear();
}

TraceDriver::~TraceDriver() {
  flush_pending();
  out_.flush();
}

void TraceDriver::flush() {
  flush_pending();
  out_.flush();
  unflushed_lines_ = 0;
  last_flush_ = std::chrono::steady_clock::now();
  inner_.flush();
}

void TraceDriver::close() {
  flush_pending();
  out_.flush();
  inner_.close();
}

std::int32_t TraceDriver::write(const std::uint8_t* buffer, std::int32_t length) {
  flush_pending();  // a write with no read after it stands on its own line
  const std::int32_t result = inner_.write(buffer, length);
  std::string line =
      "TX " + format_bytes(buffer, static_cast<std::size_t>(length > 0 ? length : 0));
  if (result != length) {
    put_line(line + " FAILED", true);
  } else {
    pending_ = std::move(line);
  }
  return result;
}

std::int32_t TraceDriver::read(std::uint8_t* buffer, std::int32_t length) {
  const std::int32_t result = inner_.read(buffer, length);
  std::string line = pending_.empty() ? std::string("TX -") : pending_;
  pending_.clear();
  line += " RX " + format_bytes(buffer, static_cast<std::size_t>(length > 0 ? length : 0));
  const bool failed = result != length;
  if (failed) line += " FAILED";
  put_line(line, failed);
  return result;
}

}  // namespace zenta

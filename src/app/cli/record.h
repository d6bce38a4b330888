#pragma once
// What one command did on one unit, for the outcome line and for --json:
// scripts and production lines read it without parsing text.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/usb_units.h"

namespace zenta::cli {

// The first word that differs between the file and the chip.
struct Mismatch {
  int address = 0;
  int file = 0;
  int chip = 0;
};

struct RunRecord {
  std::string command;  // "write"
  std::string unit;     // "sim:16F628A", "usb:SERIAL"
  std::string device;   // the device entry's caption; empty when none was used
  std::string chip;     // the chip that answered the ID read; empty when not read
  // "ok"; "failed" (a check, a verify, a read-back or an exchange);
  // "refused" (a file or the data); "interrupted"; "no-unit"; "usage".
  std::string outcome = "ok";
  std::string message;  // the outcome line, or why it failed
  std::uint64_t exchanges = 0;
  double seconds = 0;
  std::optional<Mismatch> mismatch;
  // What the command measured or read, by name ("firmware", "volts").
  std::vector<std::pair<std::string, std::string>> values;
  int status = 0;  // the exit status

  void fail(std::string why, std::string kind = "failed") {
    outcome = std::move(kind);
    message = std::move(why);
  }
  bool ok() const { return outcome == "ok"; }
};

// One JSON object on one line: a command's record, or the units' list.
std::string json_text(const RunRecord& record);
std::string json_text(const std::vector<PluggedUnit>& units);

}  // namespace zenta::cli

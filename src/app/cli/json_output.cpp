#include <cstdio>

#include "cli/record.h"
#include "common/number_text.h"

namespace zenta::cli {

std::string json_string(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    switch (c) {
      case '"':
        quoted += "\\\"";
        break;
      case '\\':
        quoted += "\\\\";
        break;
      case '\n':
        quoted += "\\n";
        break;
      case '\t':
        quoted += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escape[8];
          std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
          quoted += escape;
        } else {
          quoted += c;
        }
    }
  }
  return quoted + "\"";
}

namespace {

std::string optional_string(const std::string& text) {
  return text.empty() ? "null" : json_string(text);
}

std::string hex4(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(value) & 0xFFFFu);
  return text;
}

}  // namespace

std::string json_text(const RunRecord& r) {
  const std::string seconds = fixed_text(r.seconds, 3);
  std::string text =
      "{\"command\":" + json_string(r.command) + ",\"unit\":" + json_string(r.unit) +
      ",\"device\":" + optional_string(r.device) + ",\"chip\":" + optional_string(r.chip) +
      ",\"outcome\":" + json_string(r.outcome) + ",\"message\":" + json_string(r.message) +
      ",\"exit_status\":" + std::to_string(r.status) +
      ",\"exchanges\":" + std::to_string(r.exchanges) + ",\"seconds\":" + seconds +
      ",\"first_mismatch\":";
  if (r.mismatch) {
    // Addresses and words as the panel writes them: four hexadecimal digits.
    text += "{\"address\":" + json_string(hex4(r.mismatch->address)) +
            ",\"file\":" + json_string(hex4(r.mismatch->file)) +
            ",\"chip\":" + json_string(hex4(r.mismatch->chip)) + "}";
  } else {
    text += "null";
  }
  for (const auto& [name, value] : r.values)
    text += "," + json_string(name) + ":" + json_string(value);
  return text + "}";
}

}  // namespace zenta::cli

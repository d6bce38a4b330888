#include <cstdio>
#include <nlohmann/json.hpp>

#include "cli/record.h"

namespace zenta::cli {

namespace {

// Members keep the order they are set in, the order scripts have seen.
using Json = nlohmann::ordered_json;

Json optional_string(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

// Addresses and words as the panel writes them: four hexadecimal digits.
std::string hex4(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(value) & 0xFFFFu);
  return text;
}

// The one writer of every object zenta prints. Names come from the command
// line, files and the unit, so bytes that are not UTF-8 become U+FFFD
// rather than ending the program.
std::string line_of(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string json_text(const RunRecord& r) {
  Json object = {{"command", r.command},
                 {"unit", r.unit},
                 {"device", optional_string(r.device)},
                 {"chip", optional_string(r.chip)},
                 {"outcome", r.outcome},
                 {"message", r.message},
                 {"exit_status", r.status},
                 {"exchanges", r.exchanges},
                 {"seconds", r.seconds},
                 {"first_mismatch", nullptr}};
  if (r.mismatch) {
    object["first_mismatch"] = {{"address", hex4(r.mismatch->address)},
                                {"file", hex4(r.mismatch->file)},
                                {"chip", hex4(r.mismatch->chip)}};
  }
  for (const auto& [name, value] : r.values) object[name] = value;
  return line_of(object);
}

std::string json_text(const std::vector<PluggedUnit>& units) {
  Json list = Json::array();
  for (const PluggedUnit& plugged : units) {
    list.push_back({{"unit", "usb:" + plugged.serial},
                    {"firmware", plugged.firmware},
                    {"bus", plugged.bus},
                    {"address", plugged.address}});
  }
  return line_of({{"command", "units"}, {"units", list}});
}

}  // namespace zenta::cli

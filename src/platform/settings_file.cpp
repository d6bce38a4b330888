#include "platform/settings_file.h"

#include <cstdlib>
#include <fstream>

namespace zenta {

namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  const auto last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

// QSettings quotes a text with a comma, a semicolon, an equals sign or
// blanks at its ends ("4,4"); a number has no escapes.
std::string unquoted(std::string value) {
  std::erase(value, '"');
  return value;
}

}  // namespace

std::string panel_settings_file(const std::string& application) {
#ifdef _WIN32
  (void)application;
  return "";
#else
  std::string folder;
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && config[0] == '/') {
    folder = config;
  } else if (const char* home = std::getenv("HOME"); home && *home) {
    folder = std::string(home) + "/.config";
  } else {
    return "";
  }
  return folder + "/ZENTA/" + application + ".conf";
#endif
}

std::string stored_setting(const std::string& file, const std::string& section,
                           const std::string& key) {
  std::ifstream in(file);
  std::string line, group;
  while (std::getline(in, line)) {
    const std::string text = trimmed(line);
    if (text.empty() || text[0] == ';' || text[0] == '#') continue;
    if (text.front() == '[' && text.back() == ']') {
      group = text.substr(1, text.size() - 2);
      continue;
    }
    const auto equals = text.find('=');
    if (equals == std::string::npos || group != section) continue;
    if (trimmed(text.substr(0, equals)) == key) return unquoted(trimmed(text.substr(equals + 1)));
  }
  return "";
}

}  // namespace zenta

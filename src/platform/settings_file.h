#pragma once
// The panel's stored settings read without Qt, for the command-line
// program: the INI file in which QSettings keeps organisation "ZENTA"
// under the user's configuration folder. Read only; the program never
// changes the panel's settings.
#include <string>

namespace zenta {

// $XDG_CONFIG_HOME/ZENTA/<application>.conf, or under ~/.config; empty where
// the settings live elsewhere (the registry on Windows) or no home is known.
std::string panel_settings_file(const std::string& application);

// The text of `key` in `section` of that file as the panel would read it,
// quotes and escapes undone; empty when the file or the key is missing.
std::string stored_setting(const std::string& file, const std::string& section,
                           const std::string& key);

}  // namespace zenta

#pragma once
// The chips' descriptions: the files shipped with the programs, then those
// in the user's $XDG_CONFIG_HOME/zenta/devices/, which add chips or replace
// shipped ones of the same name. A file with an error is refused whole,
// with its path, line, key and reason.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devices/chip_description.h"

namespace zenta {

struct DeviceFileError {
  std::string path;
  int line = 0;
  std::string key;  // empty for a TOML syntax error
  std::string reason;
  // "PATH:LINE: KEY: REASON"
  std::string text() const;
};

struct DeviceLibrary {
  std::vector<ChipDescription> chips;
  std::vector<DeviceFileError> errors;
  std::vector<std::string> files;  // every file read, refused ones included
};

// One file's chips; any error refuses the file (no chips, the errors).
DeviceLibrary parse_device_file(std::string_view text, const std::string& path);
// The shipped files, then every *.toml of `user_folder` in name order (an
// empty folder name reads none).
DeviceLibrary load_device_library(const std::string& user_folder);
// $XDG_CONFIG_HOME/zenta/devices, or ~/.config/zenta/devices.
std::string user_device_folder();

// The process's library, read once on first use from the shipped files and
// the user's folder.
const DeviceLibrary& devices();
// Replaces the process's library (tests, a front end that reloads).
void use_device_library(DeviceLibrary library);

// By name, with or without the "PIC" prefix, either case.
std::optional<ChipDescription> chip_by_name(const std::string& name);
// The chip that answered with this ID word; nullopt for a word no chip has
// (a blank answer included).
std::optional<ChipDescription> chip_by_id(std::uint16_t id);
// An answer that says no chip is there: all ones (nothing drives the line)
// or all zeros.
bool no_chip_answer(std::uint16_t id);
// The chips the catalogue entry programs in the documented mode.
std::vector<ChipDescription> entry_chips(int entry);
// Their names for messages: "16F627A, 16F628A, 16F648A".
std::string entry_chip_names(int entry);

}  // namespace zenta

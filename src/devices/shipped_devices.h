#pragma once
// The device description files built into the programs (data/devices/).
#include <string_view>
#include <vector>

namespace zenta {

struct ShippedDeviceFile {
  std::string_view name;  // "16f87xa.toml"
  std::string_view text;
};

const std::vector<ShippedDeviceFile>& shipped_device_files();

}  // namespace zenta

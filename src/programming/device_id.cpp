#include "programming/device_id.h"

#include "devices/device_library.h"

namespace zenta {

std::string device_id_name(std::uint16_t id) {
  const auto chip = chip_by_id(id);
  return chip ? chip->name : "16F84";
}

}  // namespace zenta

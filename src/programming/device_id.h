#pragma once
// Naming a chip by the ID word at configuration address 0x2006.
#include <cstdint>
#include <string>

namespace zenta {

// Name of the described chip that answers with this ID word; "16F84"
// (which has no ID word) for every word no chip answers with.
std::string device_id_name(std::uint16_t id);

}  // namespace zenta

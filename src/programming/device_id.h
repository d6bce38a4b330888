#pragma once
// Naming a chip by the ID word at configuration address 0x2006.
#include <cstdint>
#include <string>

namespace zenta {

// The ID word without its revision bits: id AND 0x7FF0 for the 0x0Exx IDs
// (16F87xA, whose revision has four bits), id AND 0x7FE0 otherwise.
// The word is taken as unsigned 16 bits; a reply whose high byte is 0x80 or
// more is no 14-bit ID, so bit 15 stays in the key and no table row matches.
std::uint16_t device_id_key(std::uint16_t id);
// Name of the chip; "16F84" (which has no ID word) for every unknown key.
std::string device_id_name(std::uint16_t id);

}  // namespace zenta

#pragma once
// Naming a chip by the ID word at configuration address 0x2006.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zenta {

// The ID word without its revision bits: id AND 0x7FF0 for the 0x0Exx IDs
// (16F87xA, whose revision has four bits), id AND 0x7FE0 otherwise.
// The word is taken as unsigned 16 bits; a reply whose high byte is 0x80 or
// more is no 14-bit ID, so bit 15 stays in the key and no table row matches.
std::uint16_t device_id_key(std::uint16_t id);
// Name of the chip; "16F84" (which has no ID word) for every unknown key.
std::string device_id_name(std::uint16_t id);

// All ones (an empty socket or an unpowered chip) or all zeros (no answer on
// the data line): no chip answered the ID read.
bool no_chip_answered(std::uint16_t id);
// The chip of an ID word by the ID table ("16F628A"); nullopt when the key
// is in no row, which includes the blank answer.
std::optional<std::string> chip_of_id(std::uint16_t id);
// The catalogue entry whose chip list holds the chip that answered with
// this ID word; nullopt when no chip answered or no entry lists it. The
// 16F84, which has no ID word, cannot be recognised this way.
std::optional<int> device_entry_for_chip(std::uint16_t id);
// The catalogue entry that lists a chip by name: "16F628A", "pic16f628a".
std::optional<int> device_entry_for_chip_name(const std::string& name);
// The chip names an entry lists, in catalogue order.
const std::vector<std::string>& chips_of_entry(int index);

}  // namespace zenta

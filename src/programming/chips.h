#pragma once
// The chips each catalogue entry programs, by the ID word they answer, with
// their true program memory sizes: what the safe-programming checks hold a
// chip against before it is touched.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zenta {

struct ChipFacts {
  const char* name;      // as the ID table names it: "16F628A"
  std::uint16_t id_key;  // device_id_key of its ID word; 0 for the 16F84, which has none
  int entry;             // catalogue index of the entry that programs it
  int program_words;     // implemented program memory
  bool calibrated;       // calibration word at the top and band-gap bits to keep
  int eeprom_bytes;      // data EEPROM
};

// Every chip the catalogue programs.
const std::vector<ChipFacts>& known_chips();
// The chip that answered with this ID word; nullopt for a word no chip has
// (a blank answer included).
std::optional<ChipFacts> chip_by_id(std::uint16_t id);
// By name, with or without the "PIC" prefix, either case.
std::optional<ChipFacts> chip_by_name(const std::string& name);
// An answer that says no chip is there: all ones (nothing drives the line)
// or all zeros.
bool no_chip_answer(std::uint16_t id);
// Whether the chips of an entry carry a calibration word and band-gap bits.
bool entry_is_calibrated(int entry);
// The names of the chips an entry programs, for messages: "16F627A, 16F628A, 16F648A".
std::string entry_chip_names(int entry);

}  // namespace zenta

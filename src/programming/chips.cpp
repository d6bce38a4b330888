#include "programming/chips.h"

#include <algorithm>
#include <cctype>

#include "programming/device_id.h"

namespace zenta {

const std::vector<ChipFacts>& known_chips() {
  static const std::vector<ChipFacts> chips = {
      {"16F870", 0x0D00, 0, 0x800, false, 64},    {"16F871", 0x0D20, 0, 0x800, false, 64},
      {"16F872", 0x08E0, 0, 0x800, false, 64},    {"16F873", 0x0960, 0, 0x1000, false, 128},
      {"16F874", 0x0920, 0, 0x1000, false, 128},  {"16F876", 0x09E0, 0, 0x2000, false, 256},
      {"16F877", 0x09A0, 0, 0x2000, false, 256},  {"16F873A", 0x0E40, 1, 0x1000, false, 128},
      {"16F874A", 0x0E60, 1, 0x1000, false, 128}, {"16F876A", 0x0E00, 1, 0x2000, false, 256},
      {"16F877A", 0x0E20, 1, 0x2000, false, 256}, {"16F84", 0x0000, 2, 0x400, false, 64},
      {"16F84A", 0x0560, 3, 0x400, false, 64},    {"16F627", 0x07A0, 4, 0x400, false, 128},
      {"16F628", 0x07C0, 4, 0x800, false, 128},   {"16F627A", 0x1040, 5, 0x400, false, 128},
      {"16F628A", 0x1060, 5, 0x800, false, 128},  {"16F648A", 0x1100, 5, 0x1000, false, 256},
      {"12F629", 0x0F80, 6, 0x400, true, 128},    {"12F675", 0x0FC0, 6, 0x400, true, 128},
      {"16F630", 0x10C0, 6, 0x400, true, 128},    {"16F676", 0x10E0, 6, 0x400, true, 128},
      {"16F818", 0x04C0, 7, 0x400, false, 128},   {"16F819", 0x04E0, 7, 0x800, false, 256},
  };
  return chips;
}

bool no_chip_answer(std::uint16_t id) {
  return id == 0x3FFF || id == 0x0000;
}

std::optional<ChipFacts> chip_by_id(std::uint16_t id) {
  if (no_chip_answer(id)) return std::nullopt;
  const std::uint16_t key = device_id_key(id);
  for (const ChipFacts& chip : known_chips()) {
    if (chip.id_key != 0 && chip.id_key == key) return chip;
  }
  return std::nullopt;
}

std::optional<ChipFacts> chip_by_name(const std::string& name) {
  std::string wanted;
  for (char c : name)
    wanted.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  if (wanted.rfind("PIC", 0) == 0) wanted.erase(0, 3);
  for (const ChipFacts& chip : known_chips()) {
    if (wanted == chip.name) return chip;
  }
  return std::nullopt;
}

bool entry_is_calibrated(int entry) {
  for (const ChipFacts& chip : known_chips()) {
    if (chip.entry == entry) return chip.calibrated;
  }
  return false;
}

std::string entry_chip_names(int entry) {
  std::string names;
  for (const ChipFacts& chip : known_chips()) {
    if (chip.entry != entry) continue;
    if (!names.empty()) names += ", ";
    names += chip.name;
  }
  return names;
}

}  // namespace zenta

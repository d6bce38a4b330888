#include "programming/device_id.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace zenta {

namespace {
constexpr std::array<std::pair<std::uint16_t, const char*>, 23> kIdTable = {{
    {0x04C0, "16F818"},  {0x04E0, "16F819"},  {0x0560, "16F84A"},  {0x07A0, "16F627"},
    {0x07C0, "16F628"},  {0x08E0, "16F872"},  {0x0920, "16F874"},  {0x0960, "16F873"},
    {0x09A0, "16F877"},  {0x09E0, "16F876"},  {0x0D00, "16F870"},  {0x0D20, "16F871"},
    {0x0E00, "16F876A"}, {0x0E20, "16F877A"}, {0x0E40, "16F873A"}, {0x0E60, "16F874A"},
    {0x0F80, "12F629"},  {0x0FC0, "12F675"},  {0x1040, "16F627A"}, {0x1060, "16F628A"},
    {0x10C0, "16F630"},  {0x10E0, "16F676"},  {0x1100, "16F648A"},
}};

// The chips each catalogue entry programs, by entry index.
const std::array<std::vector<std::string>, 8> kEntryChips = {{
    {"16F870", "16F871", "16F872", "16F873", "16F874", "16F876", "16F877"},
    {"16F873A", "16F874A", "16F876A", "16F877A"},
    {"16F84"},
    {"16F84A"},
    {"16F627", "16F628"},
    {"16F627A", "16F628A", "16F648A"},
    {"12F629", "12F675", "16F630", "16F676"},
    {"16F818", "16F819"},
}};

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}
}  // namespace

std::uint16_t device_id_key(std::uint16_t id) {
  const std::uint16_t high_bit = id & 0x8000;
  if ((id & 0xFF00) == 0x0E00) return static_cast<std::uint16_t>(id & 0x7FF0);
  return static_cast<std::uint16_t>((id & 0x7FE0) | high_bit);
}

std::string device_id_name(std::uint16_t id) {
  const std::uint16_t key = device_id_key(id);
  for (const auto& [row_key, name] : kIdTable) {
    if (row_key == key) return name;
  }
  return "16F84";
}

bool no_chip_answered(std::uint16_t id) {
  return id == 0x3FFF || id == 0x0000;
}

std::optional<std::string> chip_of_id(std::uint16_t id) {
  const std::uint16_t key = device_id_key(id);
  for (const auto& [row_key, name] : kIdTable) {
    if (row_key == key) return std::string(name);
  }
  return std::nullopt;
}

std::optional<int> device_entry_for_chip(std::uint16_t id) {
  if (no_chip_answered(id)) return std::nullopt;
  const auto chip = chip_of_id(id);
  return chip ? device_entry_for_chip_name(*chip) : std::nullopt;
}

std::optional<int> device_entry_for_chip_name(const std::string& name) {
  std::string chip = upper(name);
  if (chip.rfind("PIC", 0) == 0) chip = chip.substr(3);
  for (std::size_t index = 0; index < kEntryChips.size(); ++index) {
    const auto& chips = kEntryChips[index];
    if (std::find(chips.begin(), chips.end(), chip) != chips.end()) return static_cast<int>(index);
  }
  return std::nullopt;
}

const std::vector<std::string>& chips_of_entry(int index) {
  return kEntryChips.at(static_cast<std::size_t>(index));
}

}  // namespace zenta

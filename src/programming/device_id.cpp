#include "programming/device_id.h"

#include <array>
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

}  // namespace zenta

#include "programming/device_catalogue.h"

#include <algorithm>
#include <cctype>

namespace zenta {

namespace {

// Oscillator, watchdog, power-up timer, code protection, brown-out.
constexpr ConfigOptionPatterns k87x = {0x3FFC, 0x0003, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                       0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x0FCF,
                                       0x0000, 0x3030, 0x3FBF, 0x0040, 0x0000};
constexpr ConfigOptionPatterns k87xA = {0x3FFC, 0x0003, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                        0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x1FFF,
                                        0x0000, 0x2000, 0x3FBF, 0x0040, 0x0000};
constexpr ConfigOptionPatterns k84 = {0x3FFC, 0x0003, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                      0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x000F,
                                      0x0000, 0x3FF0, 0x3FFF, 0x0000, 0x0000};
constexpr ConfigOptionPatterns k62x = {0x3FEC, 0x0003, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                       0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x03FF,
                                       0x0000, 0x3C00, 0x3FBF, 0x0040, 0x0000};
constexpr ConfigOptionPatterns k62xA = {0x3FEC, 0x0013, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                        0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x1FFF,
                                        0x0000, 0x2000, 0x3FBF, 0x0040, 0x0000};
constexpr ConfigOptionPatterns k629 = {0x3FF8, 0x0007, 0x0002, 0x0001, 0x0000, 0x3FF7,
                                       0x0008, 0x0000, 0x3FEF, 0x0000, 0x0010, 0x3F7F,
                                       0x0000, 0x0080, 0x3FBF, 0x0040, 0x0000};
constexpr ConfigOptionPatterns k819 = {0x3FEC, 0x0013, 0x0002, 0x0001, 0x0000, 0x3FFB,
                                       0x0004, 0x0000, 0x3FF7, 0x0000, 0x0008, 0x1FFF,
                                       0x0000, 0x2000, 0x3FBF, 0x0040, 0x0000};

constexpr std::array<DeviceRecord, kDeviceCount> kCatalogue = {{
    {0, "16F87x", "16F87x", "0", "2", 0x2000, 0, 0x1FFF, "1FFF", 0x00FF, "3F3B", 0x3F3B, k87x},
    {1, "16F87xA", "16F87xA", "1", "0", 0x2000, 0, 0x1FFF, "1FFF", 0x00FF, "3F3B", 0x3F3B, k87xA},
    {2, "16F84", "16F84", "0", "1", 0x0400, 0, 0x03FF, "3FF", 0x003F, "3FFB", 0x3FFB, k84},
    {3, "16F84A", "16F84", "2", "1", 0x0400, 0, 0x03FF, "3FF", 0x003F, "3FFB", 0x3FFB, k84},
    {4, "16F62x", "16F62x", "2", "2", 0x1000, 0, 0x0FFF, "FFF", 0x007F, "3F6B", 0x3F6B, k62x},
    {5, "16F62xA", "16F62xA", "3", "1", 0x1000, 0, 0x0FFF, "FFF", 0x007F, "3F7B", 0x3F7B, k62xA},
    {6, "12F629/675", "12F629", "3", "1", 0x1000, 0, 0x03FE, "3FE", 0x007F, "01D7", 0x01D7, k629},
    {7, "16F818/819", "16F819", "3", "1", 0x1000, 0, 0x07FF, "7FF", 0x007F, "3F37", 0x3F37, k819},
}};

bool same_without_case(const std::string& a, const char* b) {
  const std::string other(b);
  return a.size() == other.size() &&
         std::equal(a.begin(), a.end(), other.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

const std::array<DeviceRecord, kDeviceCount>& DeviceCatalogue() {
  return kCatalogue;
}

const DeviceRecord& device_record(int index) {
  return kCatalogue.at(static_cast<std::size_t>(index));
}

std::optional<int> find_device(const std::string& name) {
  if (name.size() == 1 && name[0] >= '0' && name[0] < '0' + kDeviceCount) return name[0] - '0';
  for (const auto& record : kCatalogue) {
    if (name == record.caption) return record.index;
  }
  for (const auto& record : kCatalogue) {
    if (same_without_case(name, record.caption)) return record.index;
  }
  return std::nullopt;
}

}  // namespace zenta

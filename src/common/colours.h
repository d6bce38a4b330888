#pragma once
// Colours of the notes line and the lamps, as RGB.
#include <cstdint>

namespace zenta {

inline constexpr std::uint32_t kWhite = 0xFFFFFF;
inline constexpr std::uint32_t kRed = 0xFF0000;
inline constexpr std::uint32_t kLightCyan = 0x6AE6EE;
inline constexpr std::uint32_t kLavender = 0xD6CCEE;
inline constexpr std::uint32_t kTeal = 0x008080;
inline constexpr std::uint32_t kLampGreen = 0x80FF80;
inline constexpr std::uint32_t kLampYellow = 0xFFFF00;

}  // namespace zenta

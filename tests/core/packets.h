#pragma once
// The packets the chip operations are made of, written as the unit sees
// them, and sequences built from them.
#include <array>
#include <cstdint>
#include <vector>

#include "link/sim/sim_unit.h"

namespace zenta::testing {

using Packet = std::array<std::uint8_t, 8>;
using Packets = std::vector<Packet>;

// MCLR 0 V, programming lines 1, MCLR Vpp.
inline const Packets kEnter = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}};
// MCLR back to 5 V (0 V after a configuration write), then the lines.
inline const Packets kLeaveWrite = {{0x32, 0x01}, {0x31, 0x01}};
inline const Packets kLeaveRead = {{0x32, 0x01}, {0x31, 0x02}};
inline const Packets kLeaveConfig = {{0x32, 0x00}, {0x31, 0x01}};
inline const Packet kSupplyOn = {0x3A, 0x01}, kSupplyOff = {0x3A, 0x00};
inline const Packet kLedOn = {0x3B, 0x01}, kLedOff = {0x3B, 0x00};
inline const Packet kInc = {0x06, 0x01}, kStay = {0x06, 0x00};
inline const Packet kLoadConfig = {0x00, 0x3F, 0xFF};
// The settling pause and the one-word read of configuration space.
inline const Packets kReadWord = {{0x38, 0x0A}, {0x04, 0x01}};

// The packets and packet lists given, one after the other.
template <typename... Parts>
Packets seq(const Parts&... parts) {
  Packets all;
  for (const Packets& part : {Packets{parts}...}) all.insert(all.end(), part.begin(), part.end());
  return all;
}
inline Packets times(int n, const Packets& part) {
  Packets all;
  for (int i = 0; i < n; ++i) all.insert(all.end(), part.begin(), part.end());
  return all;
}
inline Packet load(int word) {
  return {0x02, static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word & 0xFF)};
}
// A word of configuration space read as the identification reads it: from
// 0x2000 `steps` steps, the pause, one word; programming mode around it.
inline Packets config_space_read(int steps) {
  return seq(kEnter, kLoadConfig, Packets(static_cast<std::size_t>(steps), kStay), kReadWord,
             kLeaveWrite);
}

inline Packets sent(const sim::SimUnit& unit) {
  Packets packets;
  for (const auto& exchange : unit.trace()) packets.push_back(exchange.tx);
  return packets;
}

}  // namespace zenta::testing

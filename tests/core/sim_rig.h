#pragma once
// A simulated unit behind a real link, driven packet by packet as the
// panel drives the hardware.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "fakes.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit_link.h"

namespace zenta::testing {

using Packet = std::array<std::uint8_t, 8>;

struct SimRig {
  explicit SimRig(const std::string& chip = "16F877A") : unit(chip) {}

  std::int16_t send(const Packet& p) {
    return link.SENDCMD(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
  }
  void send_all(const std::vector<Packet>& packets) {
    for (const Packet& p : packets) send(p);
  }
  // Supply on, then the entry into programming mode: MCLR 0 V, lines 1, MCLR Vpp.
  void power_and_enter() {
    send_all({{UNIT_VCC, 1}, {UNIT_MCLR_LEVEL, 0}, {UNIT_PGM_LINES, 1}, {UNIT_MCLR_LEVEL, 2}});
  }
  void leave() { send_all({{UNIT_MCLR_LEVEL, 1}, {UNIT_PGM_LINES, 1}}); }
  int word_of_reply(int k) const { return link.RxPacket[2 * k] * 256 + link.RxPacket[2 * k + 1]; }
  int read_word() {
    send({ICSP_READ_DATA, 1});
    return word_of_reply(0);
  }

  sim::SimUnit unit;
  FakeHost host;
  UnitLink link{unit, host};
};

}  // namespace zenta::testing

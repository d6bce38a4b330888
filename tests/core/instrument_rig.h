#pragma once
// A Unit on the simulated unit, as the instrument windows get one.
#include <string>
#include <vector>

#include "fakes.h"
#include "instruments/logic_view.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"

namespace zenta::testing {

// Eight packet bytes as "36 01 01 00 00 00 00 00"; bytes not given are 0.
template <typename Bytes>
std::string packet_text(const Bytes& bytes) {
  std::string text;
  for (int i = 0; i < 8; ++i) {
    const int byte = i < static_cast<int>(std::size(bytes)) ? std::data(bytes)[i] : 0;
    text += "0123456789ABCDEF"[byte >> 4];
    text += "0123456789ABCDEF"[byte & 15];
    if (i < 7) text += ' ';
  }
  return text;
}
inline std::string packet_text(std::initializer_list<int> bytes) {
  return packet_text<std::initializer_list<int>>(bytes);
}

struct InstrumentRig {
  sim::SimUnit sim;
  FakeHost host;
  Unit unit{sim, host};

  // The packets sent since the last call.
  std::vector<std::string> packets() {
    std::vector<std::string> texts;
    for (const sim::Exchange& exchange : sim.trace()) texts.push_back(packet_text(exchange.tx));
    sim.clear_trace();
    return texts;
  }
  // The next exchange's read fails: the unit counts the same writes as the link.
  void fail_next_read() { sim.fail_read_at(static_cast<int>(link().exchanges()) + 1); }
  UnitLink& link() { return unit.link(); }
};

// The logic view opened on the simulated unit.
struct LaRig : InstrumentRig {
  LaRig() { view.Form_Load(); }
  LogicView view{unit, host};
};

}  // namespace zenta::testing

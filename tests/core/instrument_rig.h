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

struct InstrumentRig {
  sim::SimUnit sim;
  FakeHost host;
  Unit unit{sim, host};

  // The packets sent since the last call, as "36 01 01 00 00 00 00 00".
  std::vector<std::string> packets() {
    std::vector<std::string> texts;
    for (const sim::Exchange& exchange : sim.trace()) {
      std::string text;
      for (std::uint8_t byte : exchange.tx) {
        static const char* digits = "0123456789ABCDEF";
        if (!text.empty()) text += ' ';
        text += digits[byte >> 4];
        text += digits[byte & 15];
      }
      texts.push_back(text);
    }
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

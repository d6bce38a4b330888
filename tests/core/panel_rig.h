#pragma once
// The main form started against a simulated unit, with the chosen device
// selected and the trace cleared, ready for one operation under test.
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fakes.h"
#include "link/sim/sim_unit.h"
#include "panel/main_form.h"

namespace zenta::testing {

using Packet = std::array<std::uint8_t, 8>;

// Lets a test act while an operation has yielded to the window system, as
// a click in that pause would. The action runs at the first yield only.
class PausingHost : public FakeHost {
 public:
  std::function<void()> during_events;
  void process_events() override {
    FakeHost::process_events();
    if (during_events) {
      auto action = std::move(during_events);
      during_events = nullptr;
      action();
    }
  }
};

struct PanelRig {
  PanelRig(const std::string& chip, int device) : unit(chip) {
    form.Form_Load();
    form.PICsel_Click(device);
    host.boxes.clear();
    unit.clear_trace();
  }

  std::vector<Packet> sent() const {
    std::vector<Packet> packets;
    for (const auto& exchange : unit.trace()) packets.push_back(exchange.tx);
    return packets;
  }
  std::vector<std::string> box_texts() const {
    std::vector<std::string> texts;
    for (const auto& box : host.boxes) texts.push_back(box.text);
    return texts;
  }

  sim::SimUnit unit;
  PausingHost host;
  MemorySettingsStore store;
  ProgrammerState state;
  MainForm form{unit, host, store, state};
};

}  // namespace zenta::testing

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

// The panel's parts around a driver, as the composition root makes them.
template <class Driver, class HostType = FakeHost, class Store = MemorySettingsStore>
struct FormParts {
  template <typename... Args>
  explicit FormParts(Args&&... driver_args) : driver(std::forward<Args>(driver_args)...) {}
  Driver driver;
  HostType host;
  Store store;
  ProgrammerState state;
  ToolSettings tools;
  BufferViewModel program_view = make_program_view();
  BufferViewModel eeprom_view = make_eeprom_view();
  Unit unit{driver, host};
  MainForm form{{unit, host, host, store, state, tools, program_view, eeprom_view}};
};

struct PanelRig {
  // Exact by default: the documented sequences, which most tests pin; the
  // safe-programming tests ask for the checks.
  PanelRig(const std::string& chip, int device, bool exact = true) : unit(chip) {
    store.save(kSettingsApp, kPanelSection, kExactKey, exact ? "1" : "0");
    form.Form_Load();
    form.PICsel_Click(device);
    host.boxes.clear();
    unit.clear_trace();
  }

  // One named procedure on the panel's view, as the panel runs it.
  template <typename Procedure>
  void run(Procedure procedure) {
    form.run_procedure([&](ChipOperations& ops) { std::invoke(procedure, ops); });
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
  ToolSettings tools;
  BufferViewModel program_view = make_program_view();
  BufferViewModel eeprom_view = make_eeprom_view();
  Unit opened{unit, host};  // the unit as the panel holds it
  MainForm form{{opened, host, host, store, state, tools, program_view, eeprom_view}};
};

}  // namespace zenta::testing

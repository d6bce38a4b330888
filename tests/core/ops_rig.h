#pragma once
// The chip operations on a Unit over the simulated unit, without either
// front end, and a report that keeps what they showed.
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "fakes.h"
#include "image/hex_loader.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "packets.h"
#include "programming/commands.h"

namespace zenta::testing {

class RecordingReport : public OperationReport {
 public:
  void notes(const std::string& text, std::uint32_t) override { notes_shown.push_back(text); }
  void current_address(int) override {}
  void start_address(int) override {}
  void progress(int value, int maximum) override { steps.push_back({value, maximum}); }
  void supply(bool) override {}
  void led(bool) override {}
  void stop_box(const std::string& text, const std::string&) override { boxes.push_back(text); }
  void let_events_run() override { ++pauses; }
  bool stop_requested() override { return stop_when && stop_when(); }

  std::function<bool()> stop_when;  // asked to stop once it says so
  int pauses = 0;
  std::vector<std::pair<int, int>> steps;  // the bar: value, maximum (0 when it ends)
  std::vector<std::string> boxes, notes_shown;
};

// A blank image (loaded data) for a device entry, on a chip.
struct OpsRig {
  OpsRig(const std::string& chip, int device) : unit(chip) {
    select_device_parameters(state, device);
    blank_program_image(state);
    state.DataLoaded = 1;
    opened.open();
  }
  // Program words and, when given, the configuration word the write sends.
  void image(const std::map<int, int>& words, int config = -1) {
    for (const auto& [address, word] : words) state.set_word(address, word);
    if (config < 0) return;
    state.ConfigWord = static_cast<std::uint16_t>(config);
  }

  sim::SimUnit unit;
  FakeHost host;
  ProgrammerState state;
  RecordingReport report;
  Unit opened{unit, host};
  ChipOperations ops{opened, state, report};
};

}  // namespace zenta::testing

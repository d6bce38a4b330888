#pragma once
// The commands of the zenta program, each on an opened unit, on the same
// programming core the panel's buttons run.
#include <optional>
#include <ostream>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/console.h"
#include "image/programmer_state.h"
#include "link/unit.h"

namespace zenta::cli {

struct Session {
  Unit& unit;
  ProgrammerState& state;
  Console& console;
  const Options& options;
  std::ostream& out;
  std::ostream& err;
  int device;  // index of the device entry, 0 to 7
};

// The device entry of --device: a catalogue caption (either case) or an
// index 0 to 7; the default entry 1 when empty; nullopt when unknown.
std::optional<int> device_index(const std::string& text);

// Runs options.command on the opened unit inside its operation guard;
// returns the exit status. The device entry's parameters are taken without
// a packet; only `id` reads the chip's ID.
int run_command(Session& session);

}  // namespace zenta::cli

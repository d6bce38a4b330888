#pragma once
// The commands of the zenta program, each on an opened unit.
#include <ostream>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/console_host.h"
#include "panel/main_form.h"

namespace zenta::cli {

struct Session {
  MainForm& form;
  ConsoleHost& host;
  const Options& options;
  std::ostream& out;
  std::ostream& err;
  int device;  // index of the device entry, 0 to 7
};

// The device entry of --device: a catalogue caption (either case) or an
// index 0 to 7; the default entry 1 when empty; nullopt when unknown.
std::optional<int> device_index(const std::string& text);

// Runs options.command on the opened unit; returns the exit status.
// Every command but version first selects the device entry.
int run_command(Session& session);

}  // namespace zenta::cli

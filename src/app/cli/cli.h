#pragma once
// The zenta program: runs the panel's own chip commands (programming/) from the
// command line, for scripts and build systems.
#include <iosfwd>
#include <string>
#include <vector>

#include "cli/args.h"
#include "platform/driver_factory.h"

namespace zenta::cli {

enum ExitStatus : int {
  kExitOk = 0,
  kExitFailed = 1,  // verify mismatch, configuration read-back, unreadable file, link failures
  kExitUsage = 2,
  kExitNoUnit = 3,
};

// Runs a parsed command line. The outcome goes to `out`; messages, progress
// (a bar when `err_terminal`) and errors to `err`.
int run(const Options& options, std::ostream& out, std::ostream& err, bool err_terminal);

// Runs it on a driver already made; the driver's `simulated` flag decides
// whether --sim-memory applies.
int run_with_driver(const Options& options, DriverChoice& choice, std::ostream& out,
                    std::ostream& err, bool err_terminal);

// The whole program: parses argv and runs it on the standard streams.
int main(int argc, char** argv);

}  // namespace zenta::cli

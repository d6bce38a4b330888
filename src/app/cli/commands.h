#pragma once
// The commands of the zenta program, each on an opened unit, on the same
// programming core the panel's buttons run.
#include <optional>
#include <ostream>
#include <string>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/console.h"
#include "cli/record.h"
#include "devices/chip_description.h"
#include "image/programmer_state.h"
#include "link/unit.h"

namespace zenta::cli {

// --device auto: the entry is chosen from the chip's ID.
inline constexpr int kAutoDevice = -1;
// A chip named that no catalogue entry programs: checked mode only.
inline constexpr int kNoEntry = -2;

// What --device names: an entry, or a chip (and the entry that programs it).
struct DeviceChoice {
  int entry;
  std::optional<ChipDescription> chip;
};

struct Session {
  Unit& unit;
  ProgrammerState& state;
  Console& console;
  const Options& options;
  std::ostream& out;  // data: tables, readings (a sink with --json)
  std::ostream& err;
  int device;  // index of the device entry, 0 to 7, kAutoDevice or kNoEntry
  RunRecord& record;
  std::optional<ChipDescription> chip;  // the chip named, or found by --device auto
};

// The device entry of --device: a catalogue caption (either case), an index
// 0 to 7, a described chip's name ("16F628A", "PIC16F628A") or "auto"
// (kAutoDevice); the default entry 1 when empty; nullopt when unknown.
std::optional<DeviceChoice> device_choice(const std::string& text);
// What --device accepts, for the error that names a wrong one.
std::string device_choices();

// Runs options.command on the opened unit; fills the record (outcome,
// message, chip, mismatch) and returns the exit status. Chip commands hold
// the unit's operation guard; the device entry's parameters are taken
// without a packet unless the entry is auto.
int run_command(Session& session);
// capture, volts, freq and count (instrument_commands.cpp); each instrument
// exchange takes the guard itself.
int run_instrument(Session& session);

// Four hexadecimal digits, as addresses and words are shown.
std::string four_digits(int value);

}  // namespace zenta::cli

#pragma once
// The button sequences both front ends run: WRITE, VERIFY, ERASE, READ and
// READ_EEPROM with their supply and LED brackets, and the command line's
// identification. Each checks what it needs before its first packet, so a
// refused command leaves the unit untouched. Callers hold the unit's
// Operation and turn their own inputs (box texts, options) into numbers.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "programming/chip_operations.h"

namespace zenta {

struct CommandResult {
  bool refused = false;  // did not start; the reason has been shown
  // Asked to stop, or the unit was lost (UnitLink::loss()); ended as after a failure.
  bool stopped = false;
  std::uint64_t failed_exchanges = 0;
  std::optional<VerifyMismatch> mismatch;
  std::optional<ConfigResult> config;
  std::optional<ReadResult> read;
  std::optional<DeviceIdResult> device;
  std::optional<int> config_read;  // the configuration word a read brought back
  // Every try of switching the target off failed: it may still be powered.
  bool target_powered = false;
  // A calibrated chip was erased and its calibration word and band-gap bits
  // could not be written back and read back as kept: what they were, for
  // the user to write back ("calibration word 3480, band-gap bits 1000").
  std::optional<std::string> calibration_at_risk;

  // Everything went through: no refusal, no failed exchange, no mismatch,
  // the configuration word read back as written.
  bool ok() const {
    return !refused && !stopped && failed_exchanges == 0 && !mismatch &&
           (!config || config->written);
  }
};

// WRITE: erase, program write, verify and configuration write, each step
// running to its end whatever the one before reported. `last_address` is
// the LAST box as a number; nullopt when its text fits no 16-bit number.
// `erase_step` replaces the entry's erase (safe mode erases as the chip
// needs and gives a calibrated chip its calibration back right after). An operation asked to stop
// before the erase erases nothing; in safe mode a configuration write whose exchanges failed is
// tried again.
CommandResult run_write(ChipOperations& ops, std::optional<std::int16_t> last_address,
                        const std::function<void(CommandResult&)>& erase_step = {},
                        const WriteLimits& limits = {});
// VERIFY: compares up to LastAddress as it stands.
CommandResult run_verify(ChipOperations& ops);
// ERASE: the device's erase with the supply on.
CommandResult run_erase(ChipOperations& ops);
// READ: program words 0 up to the end address; an image read from a chip is
// no loaded data to write.
CommandResult run_read(ChipOperations& ops, std::optional<std::int16_t> end_address);
// READ_EEPROM: the whole data EEPROM of the device.
CommandResult run_read_eeprom(ChipOperations& ops);
// The device ID with the target powered around it.
CommandResult run_identify(ChipOperations& ops);

// The configuration word at 0x2007, read with the identification's packets
// and the target powered around it, into `config_read`.
CommandResult run_read_config(ChipOperations& ops);
// A verify that leaves nothing out: program words 0 through `last_word`
// (inclusive; -1 for none) against ProgramBuffer, four per read, then, when
// `config_word` is given, the configuration word read back as
// run_read_config does, compared in the bits of `config_mask` (a
// calibrated chip keeps its own band-gap bits whatever the file says). The
// first difference is `mismatch`; a configuration word that differs has
// address 0x2007.
CommandResult run_verify_all(ChipOperations& ops, int last_word, std::optional<int> config_word,
                             int config_mask = 0x3FFF);

}  // namespace zenta

namespace zenta {

// The device parameters and default configuration word of a catalogue
// entry into the state, without a packet (the selection's part that is not
// about boxes). index must be a catalogue index.
void select_device_parameters(ProgrammerState& state, int index);

}  // namespace zenta

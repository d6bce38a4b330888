#pragma once
// The button sequences both front ends run: WRITE, VERIFY, ERASE, READ and
// READ_EEPROM with their supply and LED brackets, and the command line's
// identification. Each checks what it needs before its first packet, so a
// refused command leaves the unit untouched. Callers hold the unit's
// Operation and turn their own inputs (box texts, options) into numbers.
#include <cstdint>
#include <optional>

#include "programming/chip_operations.h"

namespace zenta {

struct CommandResult {
  bool refused = false;  // did not start; the reason has been shown
  std::uint64_t failed_exchanges = 0;
  std::optional<VerifyMismatch> mismatch;
  std::optional<ConfigResult> config;
  std::optional<ReadResult> read;
  std::optional<DeviceIdResult> device;

  // Everything went through: no refusal, no failed exchange, no mismatch,
  // the configuration word read back as written.
  bool ok() const {
    return !refused && failed_exchanges == 0 && !mismatch && (!config || config->written);
  }
};

// WRITE: erase, program write, verify and configuration write, each step
// running to its end whatever the one before reported. `last_address` is
// the LAST box as a number; nullopt when its text fits no 16-bit number.
CommandResult run_write(ChipOperations& ops, std::optional<std::int16_t> last_address);
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

}  // namespace zenta

namespace zenta {

// The device parameters and default configuration word of a catalogue
// entry into the state, without a packet (the selection's part that is not
// about boxes). index must be a catalogue index.
void select_device_parameters(ProgrammerState& state, int index);

}  // namespace zenta

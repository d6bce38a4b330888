#pragma once
// The named chip procedures: program write, verify, configuration write,
// device identification, program and EEPROM read, chip erase. Each brackets
// its target commands with programming mode, reports through an
// OperationReport and returns what it found. A failed exchange has been
// reported by the link; a procedure goes on with its next packet and looks
// at replies only where it must (verify, read-back, identification, reads).
// Callers hold the unit's Operation while they run one.
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "devices/chip_description.h"
#include "image/programmer_state.h"
#include "link/command_codes.h"
#include "link/unit.h"
#include "programming/operation_report.h"

namespace zenta {

// The first word that differs: its address, the buffer's word and the
// chip's word.
struct VerifyMismatch {
  int address = 0;
  int expected = 0;
  int read = 0;
};

struct VerifyResult {
  std::optional<VerifyMismatch> mismatch;
  bool ok() const { return !mismatch; }
};

struct ConfigResult {
  bool written = false;  // the read-back equals the word sent
  int read_back = -1;    // the word read back, -1 when nothing was sent
};

// What safe mode asks of a write beyond the documented walk.
struct WriteLimits {
  // In the word-by-word modes, a blank word after the erase gets only its
  // address step, no load and no programming cycle: a safe write's range
  // may then run to the chip's end without touching what lies past it.
  bool step_over_blank_words = false;
  // The memory of the chip that answered, in words: the address walk never
  // passes it. 0 for no limit (the documented walk).
  int chip_words = 0;
};

struct DeviceIdResult {
  int id = 0;  // high byte x 256 + low byte as read
  std::string name;
};

struct ReadResult {
  int next_address = 0;  // the address after the last word or byte stored
  // The EEPROM read reached the end of its buffer, or a read was asked to stop.
  bool stopped_early = false;
};

// The notes line of an operation that was asked to stop.
inline constexpr const char* kStoppedText = "Stopped";

class ChipOperations {
 public:
  ChipOperations(Unit& unit, ProgrammerState& state, OperationReport& report)
      : unit_(unit), link_(unit.link()), state_(state), report_(report) {}

  Unit& unit() { return unit_; }
  ProgrammerState& state() { return state_; }
  OperationReport& report() { return report_; }

  // Words 0 up to LastAddress by the device's WriteMode.
  void WRITE_PROG(const WriteLimits& limits = {});
  // Words 0 up to LastAddress against ProgramBuffer, four per read.
  VerifyResult VERIFY_PROG();
  // ConfigHigh()/ConfigLow() to 0x2007, then read back.
  ConfigResult WRITE_CONFIG();
  // The device ID word at 0x2006, named into DeviceId and DeviceIdName.
  DeviceIdResult READ_DEVID();
  void DEVID_NAME();
  // One word of configuration space (0x2000 on): programming mode, the
  // walk from 0x2000, the unit's pause and one read. Every read of the ID
  // and configuration words goes this way.
  int read_config_space(int address);
  // Programming mode's counter to `address` in configuration space.
  void step_into_config_space(int address);
  // Program words into ProgramBuffer up to the end address.
  ReadResult READ_PROG(std::int16_t end_address);
  // EEPROM bytes into EepromBuffer through EepromLastAddress.
  ReadResult READ_EE();
  // The erase procedure of the device's EraseMode; erase_with: of a chip.
  void CHIP_ERASE();
  void erase_with(EraseAlgorithm erase);

  // Safe mode's way out: a supply-off or leave-programming-mode exchange
  // that failed is tried again, so one glitch never leaves the target
  // powered or MCLR at Vpp.
  bool checked = false;
  // Safe mode's changes to a chip: no programming or erase cycle is sent
  // once an exchange has failed since fail_mark() (the word or address it
  // would program is not the one meant), and the operation ends at its
  // next step.
  bool stop_on_failure = false;
  void fail_mark() { failures_mark_ = link_.failures(); }
  bool failed_since_mark() const { return link_.failures() != failures_mark_; }
  // Whether a programming or erase cycle may be sent now.
  bool may_program() const { return !link_.lost() && !(stop_on_failure && failed_since_mark()); }

  // True when the operation must end early: the front end asks it to stop,
  // the unit was lost (then the rest of the operation sends nothing), or in
  // safe mode an exchange failed.
  bool stop_requested() {
    return report_.stop_requested() || link_.lost() || (stop_on_failure && failed_since_mark());
  }

  // Supply and LED with their captions.
  void set_supply(bool on);
  void set_led(bool on);
  // After the supply was switched off: whether the target may still be
  // powered, because every try of that exchange failed.
  bool target_may_be_powered() const { return supply_maybe_on_; }

  // Leaves programming mode; in safe mode each failed packet is tried again.
  void leave(LeaveMode mode);
  // One packet, tried again in safe mode while it fails (at most
  // kExchangeTries times, and not once the unit is lost); true when it
  // went through.
  bool send_retried(const std::array<std::uint8_t, 8>& packet);
  static constexpr int kExchangeTries = 3;

 private:
  // Lets events run between steps; true when the operation must end.
  bool pause();
  void erase(const std::vector<std::array<std::uint8_t, 8>>& packets);

  Unit& unit_;
  UnitLink& link_;
  ProgrammerState& state_;
  OperationReport& report_;
  std::uint64_t failures_mark_ = 0;
  bool supply_maybe_on_ = false;
};

}  // namespace zenta

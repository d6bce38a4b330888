#pragma once
// The checks that guard the user's chip beyond the documented sequences:
// a short pre-flight of their own with the target powered, before the
// sequence runs, that may refuse with a message saying what to do and may
// adjust what the sequence then writes (the last address, the
// configuration word, the calibration word in the image). The "exact"
// setting turns them all off.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devices/device_library.h"
#include "programming/chip_operations.h"
#include "programming/commands.h"

namespace zenta {

// What the pre-flight found, for the status line and the command line's
// messages, in the order found.
struct Preflight {
  bool refused = false;
  // Shown in a stop box when refused; empty when an exchange failed, which
  // the link has reported already, or when the operation was asked to stop.
  std::string refusal;
  // Asked to stop (an interrupt, the window closing) before the chip was
  // touched.
  bool interrupted = false;
  // An exchange failed while reading what the chip must keep ("reading the
  // calibration word"): the chip was not touched.
  std::string failed_while;
  std::optional<ChipDescription> chip;
  int revision = 0;
  int program_words = 0;          // of the chip that answered, or the entry's
  std::int16_t last_address = 0;  // the image's words within the chip
  std::vector<std::string> findings;
  // Calibrated chips: the word written back at 0x3FF right after the erase
  // (the file's own word there, else the chip's while it is a RETLW) and
  // the chip's band-gap bits.
  std::optional<int> calibration;
  int band_gap = 0x3000;
};

// Highest program word of the image below `words` that is not blank, -1
// when there is none.
int last_image_word(const ProgrammerState& state, int words);
// LAST for the image: its last program word + 1, so the verify covers that
// word, and never past `words`.
std::int16_t image_last_address(const ProgrammerState& state, int words);
// "EEPROM data at 2100-2107 not written" when the image holds EEPROM bytes
// (0x2100 on), which the write does not program.
std::optional<std::string> eeprom_data_finding(const ProgrammerState& state);
// The image's configuration word (0x2007) when it holds one.
std::optional<std::uint16_t> image_config_word(const ProgrammerState& state);

// The chip a checked operation expects: one the user named, else any chip
// of the catalogue entry.
struct ChipTarget {
  int entry = 0;
  std::optional<ChipDescription> chip;
};

// The chip that gives a blank answer: the one named when it has no ID word,
// else the entry's largest chip without one (a smaller one must be named).
std::optional<ChipDescription> chip_without_id(const ChipTarget& target);

// The chip's ID against the target, the target powered around it. A blank
// answer is accepted only for a chip without an ID word: the one named, or
// the entry's largest such chip (a smaller one must be named).
Preflight check_chip(ChipOperations& ops, const ChipTarget& target);

// The pre-flight of a write: the chip check, then on calibrated chips the
// calibration word at 0x3FF and the band-gap bits, kept for the write and
// in the configuration word, and the last address of the image within the
// chip. Adjusts state (ConfigWord and its bytes). Any exchange that fails
// here refuses the write: what the chip must keep is not known.
Preflight preflight_write(ChipOperations& ops, const ChipTarget& target);

// A checked WRITE, the whole of it: the pre-flight, then the documented
// write with the chip's own erase, blank words stepped over, the address
// walk held inside the chip, no cycle sent after a failed exchange, and on
// calibrated chips the calibration word and band-gap bits programmed back
// and read back first thing after the erase. `last` (the user's last
// address) is held to the chip's memory; without it the image's own range
// is written. `preflight` gets what was found.
CommandResult run_checked_write(ChipOperations& ops, const ChipTarget& target,
                                std::optional<int> last, Preflight& preflight);

// A checked ERASE: the chip check, then the chip's own erase; on calibrated chips the calibration
// word and band-gap bits are read first and programmed back, and read back, right after it. The
// result is the erase's; `preflight` gets what was found.
CommandResult run_checked_erase(ChipOperations& ops, const ChipTarget& target,
                                Preflight& preflight);

}  // namespace zenta

#include "programming/safe_programming.h"

#include <algorithm>
#include <cstdio>
#include <functional>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "programming/chip_protocol.h"
#include "programming/device_catalogue.h"

namespace zenta {

namespace {

constexpr int kEepromFirstWord = kEepromHexBase;
constexpr int kEepromLastWord = kEepromHexBase + 0xFF;

std::string four_digits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
  return text;
}

bool is_retlw(int word) {
  return (word & 0x3F00) == 0x3400;
}

// Words 0..last of program memory, four per read; returns the word at `last`.
int read_program_word(ChipOperations& ops, int address) {
  UnitLink& link = ops.unit().link();
  enter_programming_mode(link);
  int group = 0;
  for (; group + 4 <= address; group += 4) {
    link.SENDCMD(ICSP_READ_DATA, 4);
    link.SENDCMD(ICSP_INC_ADDR, 0);
  }
  link.SENDCMD(ICSP_READ_DATA, 4);
  const int k = address - group;
  const int word = link.RxBuffer[2 * k] * 256 + link.RxBuffer[2 * k + 1];
  ops.leave(LeaveMode::kAfterRead);
  return word;
}

// Calibrated chips lose the word at 0x3FF and the band-gap bits with every
// bulk erase: they are read first, with the target powered. False when an
// exchange failed: then nothing is known, and nothing may be erased.
bool read_calibration(ChipOperations& ops, const CalibrationFacts& calibration, int& word,
                      int& config) {
  const std::uint64_t before = ops.unit().link().failures();
  ops.set_supply(true);
  word = read_program_word(ops, calibration.address);
  config = ops.read_config_space(kConfigWordAddress);
  ops.set_supply(false);
  return ops.unit().link().failures() == before;
}

void keep_calibration(ProgrammerState& state, const CalibrationFacts& calibration, int chip_word,
                      int chip_config, Preflight& result) {
  result.band_gap = chip_config & calibration.band_gap;
  const int image_word = state.word(calibration.address);
  if (image_word != kBlankWord) {
    result.calibration = image_word;
    result.findings.push_back("calibration " + four_digits(image_word) +
                              " from the file written (chip's " + four_digits(chip_word) + ")");
  } else if (is_retlw(chip_word)) {
    result.calibration = chip_word;
    result.findings.push_back("calibration " + four_digits(chip_word) + " kept");
  } else {
    result.findings.push_back("calibration word " + four_digits(chip_word) +
                              " is no RETLW: already lost");
  }
  const int merged = (state.ConfigWord & ~calibration.band_gap & 0x3FFF) | result.band_gap;
  if (merged != (state.ConfigWord & 0x3FFF)) {
    result.findings.push_back("band-gap bits " + four_digits(result.band_gap) + " kept");
  }
  state.ConfigWord = static_cast<std::uint16_t>(merged);
}

}  // namespace

int last_image_word(const ProgrammerState& state, int words) {
  for (int w = std::min(words, 0x2000) - 1; w >= 0; --w) {
    if (state.word(w) != kBlankWord) return w;
  }
  return -1;
}

std::int16_t image_last_address(const ProgrammerState& state, int words) {
  const int last = last_image_word(state, words) + 1;
  return static_cast<std::int16_t>(std::min(last, words));
}

std::optional<std::string> eeprom_data_finding(const ProgrammerState& state) {
  int first = -1, last = -1;
  for (int w = kEepromFirstWord; w <= kEepromLastWord; ++w) {
    if (state.word(w) == kBlankWord) continue;
    if (first < 0) first = w;
    last = w;
  }
  if (first < 0) return std::nullopt;
  const std::string range =
      first == last ? hex_text(first) : hex_text(first) + "\u2013" + hex_text(last);
  return "EEPROM data at " + range + " not written";
}

std::optional<std::uint16_t> image_config_word(const ProgrammerState& state) {
  const int word = state.word(kConfigWordAddress);
  if (word == kBlankWord) return std::nullopt;
  return static_cast<std::uint16_t>(word);
}

std::optional<ChipDescription> chip_without_id(const ChipTarget& target) {
  if (target.chip) {
    if (target.chip->id) return std::nullopt;
    return target.chip;
  }
  std::optional<ChipDescription> largest;
  for (const ChipDescription& chip : entry_chips(target.entry)) {
    if (!chip.id && (!largest || chip.program_words > largest->program_words)) largest = chip;
  }
  return largest;
}

Preflight check_chip(ChipOperations& ops, const ChipTarget& target) {
  Preflight result;
  result.program_words =
      target.chip ? target.chip->program_words : device_record(target.entry).program_size;
  const std::uint64_t failed_before = ops.unit().link().failures();
  ops.set_supply(true);
  const DeviceIdResult id = ops.READ_DEVID();
  ops.set_supply(false);
  if (ops.unit().link().failures() != failed_before) {
    // The link has said what went wrong; the answer means nothing.
    result.refused = true;
    return result;
  }
  const auto answer = static_cast<std::uint16_t>(id.id);
  const std::string expected =
      target.chip ? "the selected chip is " + target.chip->name
                  : "the selected device is " + std::string(device_record(target.entry).caption);
  if (no_chip_answer(answer)) {
    if (const auto blank = chip_without_id(target); blank && answer == 0x3FFF) {
      result.chip = blank;
      result.program_words = blank->program_words;
      result.findings.push_back(blank->name + " (no ID word)");
      return result;
    }
    result.refused = true;
    result.refusal = "No chip answered (ID " + four_digits(answer) +
                     "): check the chip in the socket and the target supply";
    return result;
  }
  result.chip = chip_by_id(answer);
  if (!result.chip) {
    result.refused = true;
    result.refusal =
        "The chip answered with the ID " + four_digits(answer) + ", which no device entry knows";
    return result;
  }
  const ChipDescription& chip = *result.chip;
  result.revision = answer & chip.revision_bits;
  const bool expected_chip =
      target.chip ? chip.name == target.chip->name : chip.entry == target.entry;
  if (!expected_chip) {
    result.refused = true;
    result.refusal =
        "A " + chip.name + " is in the socket; " + expected + ". Select " +
        (target.chip || !chip.entry ? chip.name : std::string(device_record(*chip.entry).caption)) +
        ".";
    return result;
  }
  result.program_words = chip.program_words;
  result.findings.push_back(chip.name + " rev " + std::to_string(result.revision));
  return result;
}

namespace {

// The pre-flight's step boundaries: an interrupt that came in means no
// erase; so does a failed exchange, which leaves unknown what the chip holds.
bool preflight_must_end(ChipOperations& ops, Preflight& result, const char* reading) {
  if (ops.report().stop_requested()) {
    result.refused = true;
    result.interrupted = true;
  } else if (ops.unit().link().lost()) {
    result.refused = true;
  } else if (reading != nullptr) {
    result.refused = true;
    result.failed_while = reading;
  }
  return result.refused;
}

}  // namespace

Preflight preflight_write(ChipOperations& ops, const ChipTarget& target) {
  Preflight result = check_chip(ops, target);
  if (result.refused || preflight_must_end(ops, result, nullptr)) return result;
  // Words past the chip's memory would land on its lowest words.
  if (const int last = last_image_word(ops.state(), 0x2000); last >= result.program_words) {
    result.refused = true;
    result.refusal = "The image has program words up to " + four_digits(last) + "; the " +
                     (result.chip ? result.chip->name : std::string("chip")) + " has " +
                     std::to_string(result.program_words) + " (0000-" +
                     four_digits(result.program_words - 1) + ")";
    return result;
  }
  if (result.chip && result.chip->calibrated()) {
    int word = kBlankWord, config = kBlankWord;
    const bool read = read_calibration(ops, *result.chip->calibration, word, config);
    if (preflight_must_end(ops, result, read ? nullptr : "reading the calibration word")) {
      return result;
    }
    keep_calibration(ops.state(), *result.chip->calibration, word, config, result);
  }
  result.last_address = image_last_address(ops.state(), result.program_words);
  if (const auto eeprom = eeprom_data_finding(ops.state())) result.findings.push_back(*eeprom);
  return result;
}

namespace {

// Steps the counter from word 0 to `address`, two exchanges per four words:
// a four-word read leaves the counter on the last of them.
void step_to(UnitLink& link, int address) {
  int at = 0;
  for (; at + 4 <= address; at += 4) {
    link.SENDCMD(ICSP_READ_DATA, 4);
    link.SENDCMD(ICSP_INC_ADDR, 0);
  }
  if (address - at == 3) {
    link.SENDCMD(ICSP_READ_DATA, 4);
    return;
  }
  for (; at < address; ++at) link.SENDCMD(ICSP_INC_ADDR, 0);
}

// One word programmed with an erase/program cycle and read back: the
// calibration word at 0x3FF, or the configuration word. The cycle is sent
// only when every exchange before it went through, so a slipped counter or
// a lost load never programs a wrong word. True when the read-back equals
// the word and nothing failed.
bool program_and_read_back(ChipOperations& ops, int address, int word) {
  UnitLink& link = ops.unit().link();
  const std::uint64_t before = link.failures();
  enter_programming_mode(link);
  if (address >= kConfigSpaceBase) {
    ops.step_into_config_space(address);
  } else {
    step_to(link, address);
  }
  link.SENDCMD(ICSP_LOAD_DATA, static_cast<std::uint8_t>(word >> 8),
               static_cast<std::uint8_t>(word & 0xFF));
  if (link.failures() == before && !link.lost()) link.SENDCMD(ICSP_BEGIN_ERASE_PROG);
  link.SENDCMD(UNIT_WAIT, 10);
  link.SENDCMD(ICSP_READ_DATA, 1);
  const int read = link.RxBuffer[0] * 256 + link.RxBuffer[1];
  ops.leave(address >= kConfigSpaceBase ? LeaveMode::kAfterConfig : LeaveMode::kAfterWrite);
  return link.failures() == before && read == word;
}

bool program_with_tries(ChipOperations& ops, int address, int word) {
  for (int attempt = 0; attempt < ChipOperations::kExchangeTries; ++attempt) {
    if (ops.unit().link().lost()) return false;
    if (program_and_read_back(ops, address, word)) return true;
  }
  return false;
}

// Right after a bulk erase of a calibrated chip: the calibration word and
// the configuration word with the saved band-gap bits, each read back and
// tried again until it holds, so that a kill or a glitch can cost them only
// in the few exchanges between the erase and these cycles. Nothing here
// heeds an interrupt: it is the erase's own second half.
void restore_calibration(ChipOperations& ops, const Preflight& preflight, CommandResult& result) {
  const CalibrationFacts& calibration = *preflight.chip->calibration;
  const int config = (kBlankWord & ~calibration.band_gap) | preflight.band_gap;
  bool kept = true;
  if (preflight.calibration)
    kept = program_with_tries(ops, calibration.address, *preflight.calibration);
  kept = program_with_tries(ops, kConfigWordAddress, config) && kept;
  if (kept) return;
  std::string what;
  if (preflight.calibration)
    what = "calibration word " + four_digits(*preflight.calibration) + ", ";
  result.calibration_at_risk = what + "band-gap bits " + four_digits(preflight.band_gap);
}

// Safe mode's settings of the chip operations for one checked operation,
// put back as they were when it ends.
class CheckedScope {
 public:
  explicit CheckedScope(ChipOperations& ops) : ops_(ops) {
    ops.stop_on_failure = true;
    ops.fail_mark();
  }
  ~CheckedScope() { ops_.stop_on_failure = false; }
  CheckedScope(const CheckedScope&) = delete;
  CheckedScope& operator=(const CheckedScope&) = delete;

 private:
  ChipOperations& ops_;
};

// The chip's own erase; the entry's documented one when no chip is known.
void erase_chip(ChipOperations& ops, const Preflight& preflight) {
  if (preflight.chip) {
    ops.erase_with(preflight.chip->erase);
  } else {
    ops.CHIP_ERASE();
  }
}

CommandResult refused_result() {
  CommandResult refused;
  refused.refused = true;
  return refused;
}

}  // namespace

CommandResult run_checked_write(ChipOperations& ops, const ChipTarget& target,
                                std::optional<int> last, Preflight& preflight) {
  CheckedScope scope(ops);
  preflight = preflight_write(ops, target);
  if (preflight.refused) return refused_result();
  const int range = last ? std::clamp(*last, 0, preflight.program_words) : preflight.last_address;
  const bool calibrated = preflight.chip && preflight.chip->calibrated();
  return run_write(
      ops, static_cast<std::int16_t>(range),
      [&](CommandResult& result) {
        erase_chip(ops, preflight);
        if (calibrated) restore_calibration(ops, preflight, result);
      },
      WriteLimits{true, preflight.program_words});
}

CommandResult run_checked_erase(ChipOperations& ops, const ChipTarget& target,
                                Preflight& preflight) {
  CheckedScope scope(ops);
  preflight = check_chip(ops, target);
  if (preflight.refused || preflight_must_end(ops, preflight, nullptr)) return refused_result();
  const bool calibrated = preflight.chip && preflight.chip->calibrated();
  if (calibrated) {
    int word = kBlankWord, config = kBlankWord;
    const bool read = read_calibration(ops, *preflight.chip->calibration, word, config);
    if (preflight_must_end(ops, preflight, read ? nullptr : "reading the calibration word")) {
      return refused_result();
    }
    preflight.band_gap = config & preflight.chip->calibration->band_gap;
    if (is_retlw(word)) {
      preflight.calibration = word;
      preflight.findings.push_back("calibration " + four_digits(word) + " kept");
    } else {
      preflight.findings.push_back("calibration word " + four_digits(word) +
                                   " is no RETLW: already lost");
    }
    preflight.findings.push_back("band-gap bits " + four_digits(preflight.band_gap) + " kept");
  }
  const std::uint64_t failed_before = ops.unit().link().failures();
  CommandResult result;
  ops.set_supply(true);
  // Asked to stop before the erase: nothing is erased.
  if (!ops.stop_requested()) {
    erase_chip(ops, preflight);
    if (calibrated) restore_calibration(ops, preflight, result);
  }
  result.stopped = ops.stop_requested();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  result.failed_exchanges = ops.unit().link().failures() - failed_before;
  return result;
}

}  // namespace zenta

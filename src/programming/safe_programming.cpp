#include "programming/safe_programming.h"

#include <algorithm>
#include <cstdio>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "programming/chip_protocol.h"
#include "programming/device_catalogue.h"

namespace zenta {

namespace {

constexpr int kCalibrationAddress = 0x3FF;
constexpr int kConfigAddress = 0x2007;
constexpr std::uint16_t kBandGapBits = 0x3000;
constexpr int kEepromFirstWord = 0x2100;
constexpr int kEepromLastWord = 0x21FF;

std::string four_digits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
  return text;
}

bool is_retlw(int word) {
  return (word & 0x3F00) == 0x3400;
}

// Words 0..last of program memory, four per read; returns the word at `last`.
int read_program_word(UnitLink& link, int address) {
  enter_programming_mode(link);
  int group = 0;
  for (; group + 4 <= address; group += 4) {
    link.SENDCMD(ICSP_READ_DATA, 4);
    link.SENDCMD(ICSP_INC_ADDR, 0);
  }
  link.SENDCMD(ICSP_READ_DATA, 4);
  const int k = address - group;
  const int word = link.RxBuffer[2 * k] * 256 + link.RxBuffer[2 * k + 1];
  leave_programming_mode(link, LeaveMode::kAfterRead);
  return word;
}

int read_config_word(UnitLink& link) {
  enter_programming_mode(link);
  link.SENDCMD(ICSP_LOAD_CONFIG, 0x3F, 0xFF);
  for (int i = 0; i < kConfigAddress - 0x2000; ++i) link.SENDCMD(ICSP_INC_ADDR, 0);
  link.SENDCMD(ICSP_READ_DATA, 1);
  const int word = link.RxBuffer[0] * 256 + link.RxBuffer[1];
  leave_programming_mode(link, LeaveMode::kAfterRead);
  return word;
}

void set_config(ProgrammerState& state, int word) {
  state.ConfigWord = static_cast<std::int16_t>(word);
  state.ConfigHigh = static_cast<std::int16_t>((word >> 8) & 0xFF);
  state.ConfigLow = static_cast<std::int16_t>(word & 0xFF);
}

// Calibrated chips lose the word at 0x3FF and the band-gap bits with every
// bulk erase: read them first and write them back with the image.
void keep_calibration(ChipOperations& ops, Preflight& result) {
  UnitLink& link = ops.unit().link();
  ProgrammerState& state = ops.state();
  const int chip_word = read_program_word(link, kCalibrationAddress);
  const int chip_config = read_config_word(link);
  const int image_word = state.word(kCalibrationAddress);
  if (image_word != kBlankWord) {
    result.findings.push_back("calibration " + four_digits(image_word) +
                              " from the file written (chip's " + four_digits(chip_word) + ")");
  } else if (is_retlw(chip_word)) {
    state.set_word(kCalibrationAddress, chip_word);
    result.findings.push_back("calibration " + four_digits(chip_word) + " kept");
  } else {
    result.findings.push_back("calibration word " + four_digits(chip_word) +
                              " is no RETLW: already lost");
  }
  const int merged = (state.ConfigWord & ~kBandGapBits & 0x3FFF) | (chip_config & kBandGapBits);
  if (merged != (state.ConfigWord & 0x3FFF)) {
    result.findings.push_back("band-gap bits " + four_digits(chip_config & kBandGapBits) + " kept");
  }
  set_config(state, merged);
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
  const int word = state.word(kConfigAddress);
  if (word == kBlankWord) return std::nullopt;
  return static_cast<std::uint16_t>(word);
}

std::string safe_erase_mode(int entry, const std::string& documented) {
  // Load 3FFF, 09, 08: the erase mode of the 16F84A and 16F62x.
  return entry == 7 ? "2" : documented;
}

Preflight check_chip(ChipOperations& ops, int entry) {
  Preflight result;
  const DeviceRecord& record = device_record(entry);
  result.program_words = record.program_size;
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
  const std::string entry_name = record.caption;
  if (no_chip_answer(answer)) {
    if (entry == 2) {
      // The 16F84 has no ID word: a blank answer is all it can give.
      result.chip = chip_by_name("16F84");
      result.program_words = result.chip->program_words;
      result.findings.push_back("16F84 (no ID word)");
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
  const ChipFacts& chip = *result.chip;
  result.revision = answer & ((answer & 0xFF00) == 0x0E00 ? 0x0F : 0x1F);
  if (chip.entry != entry) {
    result.refused = true;
    result.refusal = "A " + std::string(chip.name) + " is in the socket; the selected device is " +
                     entry_name + ". Select " + device_record(chip.entry).caption + ".";
    return result;
  }
  result.program_words = chip.program_words;
  result.findings.push_back(std::string(chip.name) + " rev " + std::to_string(result.revision));
  return result;
}

Preflight preflight_write(ChipOperations& ops, int entry) {
  Preflight result = check_chip(ops, entry);
  if (result.refused) return result;
  // Words past the chip's memory would land on its lowest words.
  if (const int last = last_image_word(ops.state(), 0x2000); last >= result.program_words) {
    result.refused = true;
    result.refusal = "The image has program words up to " + four_digits(last) + "; the " +
                     (result.chip ? std::string(result.chip->name) : "chip") + " has " +
                     std::to_string(result.program_words) + " (0000-" +
                     four_digits(result.program_words - 1) + ")";
    return result;
  }
  if (result.chip && result.chip->calibrated) {
    ops.set_supply(true);
    keep_calibration(ops, result);
    ops.set_supply(false);
  }
  result.last_address = image_last_address(ops.state(), result.program_words);
  if (const auto eeprom = eeprom_data_finding(ops.state())) result.findings.push_back(*eeprom);
  return result;
}

namespace {

// The calibration word back at 0x3FF: the counter stepped there from word
// 0, one load and one erase/program cycle.
void program_calibration_word(UnitLink& link, int word) {
  enter_programming_mode(link);
  for (int a = 0; a < kCalibrationAddress; ++a) link.SENDCMD(ICSP_INC_ADDR, 1);
  link.SENDCMD(ICSP_LOAD_DATA, static_cast<std::uint8_t>(word >> 8),
               static_cast<std::uint8_t>(word & 0xFF));
  link.SENDCMD(ICSP_BEGIN_ERASE_PROG);
  leave_programming_mode(link, LeaveMode::kAfterWrite);
}

}  // namespace

CommandResult run_checked_erase(ChipOperations& ops, int entry, Preflight& preflight) {
  preflight = check_chip(ops, entry);
  if (preflight.refused) {
    CommandResult refused;
    refused.refused = true;
    return refused;
  }
  ProgrammerState& state = ops.state();
  const bool calibrated = preflight.chip && preflight.chip->calibrated;
  int calibration = kBlankWord;
  int band_gap = kBandGapBits;
  if (calibrated) {
    UnitLink& link = ops.unit().link();
    ops.set_supply(true);
    calibration = read_program_word(link, kCalibrationAddress);
    band_gap = read_config_word(link) & kBandGapBits;
    ops.set_supply(false);
  }
  const std::string erase_mode = state.EraseMode;
  state.EraseMode = safe_erase_mode(entry, erase_mode);
  CommandResult result = run_erase(ops);
  state.EraseMode = erase_mode;
  if (!calibrated || result.stopped) return result;

  const std::uint64_t failed_before = ops.unit().link().failures();
  const int config = state.ConfigWord;
  ops.set_supply(true);
  if (is_retlw(calibration)) {
    program_calibration_word(ops.unit().link(), calibration);
    preflight.findings.push_back("calibration " + four_digits(calibration) + " kept");
  } else {
    preflight.findings.push_back("calibration word " + four_digits(calibration) +
                                 " is no RETLW: already lost");
  }
  set_config(state, (kBlankWord & ~kBandGapBits) | band_gap);
  result.config = ops.WRITE_CONFIG();
  set_config(state, config);
  preflight.findings.push_back("band-gap bits " + four_digits(band_gap) + " kept");
  ops.set_supply(false);
  result.failed_exchanges += ops.unit().link().failures() - failed_before;
  return result;
}

}  // namespace zenta

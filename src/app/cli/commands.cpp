#include "cli/commands.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "cli/output.h"
#include "common/input_file.h"
#include "common/number_text.h"
#include "devices/device_library.h"
#include "image/hex_check.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "programming/commands.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "programming/operation.h"

namespace zenta::cli {

namespace {

bool quiet(const Session& s) {
  return s.options.verbosity == Verbosity::kQuiet;
}

// Turns an operation's result into the record: the outcome line when
// everything went through, else the first thing that went wrong. Returns
// the exit status.
int conclude(Session& s, const OperationResult& result) {
  s.console.finish();
  RunRecord& record = s.record;
  if (result.mismatch) {
    record.mismatch =
        Mismatch{result.mismatch->address, result.mismatch->expected, result.mismatch->read};
  }
  const std::string powered =
      result.target_powered
          ? "; the target may still be powered: unplug the unit before taking the chip out"
          : "";
  const Preflight& preflight = result.preflight;
  if (result.calibration_at_risk) {
    record.fail("the chip was erased, but its " + *result.calibration_at_risk +
                " could not be written back: write them back before the chip is used" + powered);
  } else if (const LinkLoss loss = s.unit.link().loss(); loss != LinkLoss::kNone) {
    record.fail((loss == LinkLoss::kUnplugged ? "the unit was unplugged during the command"
                                              : "the unit stopped answering during the command") +
                powered);
  } else if (preflight.refused && result.target_powered) {
    record.fail(
        "the chip check failed and switching the target off failed: the target may "
        "still be powered; unplug the unit");
  } else if (preflight.interrupted) {
    record.fail("interrupted before the chip was touched; the target is switched off",
                "interrupted");
  } else if (!preflight.failed_while.empty()) {
    record.fail("an exchange with the unit failed while " + preflight.failed_while +
                    "; the chip was not touched",
                "refused");
  } else if (preflight.refused) {
    record.fail(preflight.refusal.empty() ? "the chip check failed: exchanges with the unit failed"
                                          : "refused: " + preflight.refusal,
                "refused");
  } else if (result.failed_exchanges != 0) {
    record.fail(std::to_string(result.failed_exchanges) + " exchange" +
                (result.failed_exchanges == 1 ? "" : "s") + " with the unit failed" +
                (result.stopped ? "; the command ended there" : "") + powered);
  } else if (result.stopped) {
    record.fail(result.target_powered
                    ? "interrupted; the target may still be powered: unplug the unit"
                    : "interrupted; the unit left programming mode and switched the target off",
                "interrupted");
  } else if (result.refused) {
    record.fail("refused: " + result.box, "refused");
  } else if (result.target_powered) {
    record.fail("the target may still be powered: switching it off failed; unplug the unit");
  } else if (result.mismatch) {
    const Mismatch& m = *record.mismatch;
    record.fail("verify failed at " + four_digits(m.address) + ": file " + four_digits(m.file) +
                ", chip " + four_digits(m.chip));
  } else if (result.config && !result.config->written) {
    record.fail("the configuration word read back " + four_digits(result.config->read_back) +
                ", not " + four_digits(s.state.ConfigWord));
  } else {
    record.message = result.notes;
    return kExitOk;
  }
  return kExitFailed;
}

// Findings of the safe-programming checks, on standard error.
void tell_findings(Session& s, const std::vector<std::string>& findings) {
  for (const std::string& finding : findings) {
    s.record.values.emplace_back("finding", finding);
    if (!quiet(s)) s.err << "zenta: " << finding << '\n';
  }
}

// One operation through the programming core's door; the checks' findings
// go to standard error before the outcome.
OperationResult run_op(Session& s, ChipOperations& ops, OperationKind what,
                       std::optional<std::int16_t> last_address = std::nullopt,
                       std::optional<int> limit = std::nullopt) {
  OperationRequest request;
  request.what = what;
  request.target = {s.device, s.chip};
  request.exact = s.options.exact;
  request.last_address = last_address;
  request.limit = limit;
  OperationResult result = do_op(ops, request);
  tell_findings(s, result.preflight.findings);
  return result;
}

// What the panel's LAST box holds after the number was put in: a value
// above the program size is replaced by the size.
std::int16_t clamped_last(const ProgrammerState& state, int value) {
  return static_cast<std::int16_t>(value > state.ProgramSize ? state.ProgramSize : value);
}

// The memory a file is checked against: that of the chip the command names
// (--device 16F628A, or the chip --device auto found), else the entry's.
HexChipSpace file_space(const Session& s) {
  HexChipSpace space{s.state.ProgramSize, static_cast<int>(s.state.EepromLastAddress) + 1,
                     s.device >= 0 ? std::string(device_record(s.device).caption) + " entry" : ""};
  if (s.chip) {
    space.program_words = std::min(space.program_words, s.chip->program_words);
    space.eeprom_bytes = s.chip->eeprom_bytes;
    space.name = s.chip->name;
  }
  return space;
}

// Checksums, record types, addresses inside the device: a damaged or wrong
// file is refused, naming its lines, before the unit is touched.
bool file_checks_out(Session& s, const std::string& text) {
  const std::string& path = s.options.hex_file;
  const HexCheck check = check_hex_text(text, file_space(s));
  std::string reasons;
  int errors = 0;
  for (const HexFinding& finding : check.findings) {
    if (!finding.error) {
      if (!quiet(s)) s.err << "zenta: " << finding.message(path) << '\n';
      continue;
    }
    if (++errors <= 3) reasons += (reasons.empty() ? "" : "; ") + finding.message(path);
  }
  if (errors == 0) return true;
  if (errors > 3) reasons += " (" + std::to_string(errors - 3) + " more)";
  s.record.fail("cannot use " + reasons, "refused");
  return false;
}

// Whether any line starts with ':' (blanks before it aside): a source file
// or a wrong name has none.
bool has_hex_record(const std::string& text) {
  bool line_start = true;
  for (const char c : text) {
    if (line_start && c == ':') return true;
    if (c == '\n') {
      line_start = true;
    } else if (c != ' ' && c != '\t') {
      line_start = false;
    }
  }
  return false;
}

// Loads FILE.hex, read once from whatever kind of file it is. A file that
// cannot be read, or holds no HEX record at all (a source file, a wrong
// name), is refused before the unit is touched: writing it would erase the
// chip for nothing. In safe mode the file is checked first and loaded with
// its extended address records applied.
bool load_image(Session& s) {
  const std::string& path = s.options.hex_file;
  s.state.HexFileName = path;
  const InputFile file = read_input_file(path, kLargestHexFile);
  if (!file.ok) {
    s.record.fail("cannot use '" + path + "': " + file.reason, "refused");
    return false;
  }
  if (!has_hex_record(file.text)) {
    s.record.fail("cannot use '" + path + "': no Intel HEX records in it", "refused");
    return false;
  }
  if (!s.options.exact && !file_checks_out(s, file.text)) return false;
  const HexLoadReport report =
      load_hex_text(file.text, s.state, {.extended_addresses = !s.options.exact});
  std::string reason;
  if (!report.ok) {
    reason = "line " + std::to_string(report.failed_line) + ": " + report.failure;
  } else if (report.first_address < 0) {
    reason = "no Intel HEX records in it";
  } else {
    s.state.DataLoaded = 1;
    return true;
  }
  s.record.fail("cannot use '" + path + "': " + reason, "refused");
  return false;
}

// --last when given, else the address the loader reached, as the LAST box
// shows it after the load.
std::int16_t image_last_address(const Session& s) {
  return clamped_last(s.state, s.options.last ? *s.options.last : s.state.LastAddress);
}

bool save_hex(Session& s, const std::vector<HexWord>& words) {
  std::string reason;
  if (write_inhx8m_file(s.options.output_file, words, &reason)) return true;
  s.record.fail("cannot write '" + s.options.output_file + "': " + reason, "refused");
  return false;
}

int version(Session& s) {
  const bool ok = s.unit.read_firmware_version();
  std::string ident = s.unit.FirmwareVersion();
  s.console.finish();
  if (!ok || ident.size() < 8) {
    s.record.fail("the unit did not report its firmware identification");
    return kExitFailed;
  }
  for (char& c : ident) {
    if (!std::isprint(static_cast<unsigned char>(c))) c = '.';
  }
  s.record.values.emplace_back("firmware", ident);
  s.record.message =
      std::string("Firmware version ") + ident[6] + '.' + ident[7] + " (" + ident + ")";
  return kExitOk;
}

// The chips without an ID word, for the message that asks to name one.
std::string chip_names_without_id() {
  std::string names;
  for (const ChipDescription& chip : devices().chips) {
    if (!chip.id) names += (names.empty() ? "" : ", ") + chip.name;
  }
  return names;
}

// The device entry for the session; with auto, from the chip's ID (the
// target powered around the read). `identified` keeps that read for `id`.
int choose_device(Session& s, ChipOperations& ops, std::optional<OperationResult>& identified) {
  if (s.device == kAutoDevice) {
    identified = run_op(s, ops, OperationKind::kIdentify);
    if (const int status = conclude(s, *identified); status != kExitOk) return status;
    const auto id = static_cast<std::uint16_t>(identified->device->id);
    const auto chip = chip_by_id(id);
    if (!chip) {
      s.record.fail(no_chip_answer(id)
                        ? "no chip answered (ID word " + four_digits(id) +
                              "); a chip without an ID word (" + chip_names_without_id() +
                              ") must be named: give --device NAME"
                        : "no device entry programs the chip with ID word " + four_digits(id));
      return kExitFailed;
    }
    s.chip = chip;
    s.device = chip->entry.value_or(kNoEntry);
    s.record.chip = chip->name;
  }
  if (s.device == kNoEntry) {
    if (s.options.exact) {
      s.record.fail("--exact runs the documented entries only, and no entry programs the " +
                        s.chip->name + "; leave --exact out",
                    "refused");
      return kExitFailed;
    }
    select_chip_parameters(s.state, *s.chip);
    s.record.device = s.chip->name;
    return kExitOk;
  }
  select_device_parameters(s.state, s.device);
  s.record.device = device_record(s.device).caption;
  return kExitOk;
}

int identify(Session& s, ChipOperations& ops, std::optional<OperationResult> identified) {
  if (!identified) {
    identified = run_op(s, ops, OperationKind::kIdentify);
    if (const int status = conclude(s, *identified); status != kExitOk) return status;
  }
  const auto id = static_cast<std::uint16_t>(identified->device->id);
  const auto chip = chip_by_id(id);
  // A blank answer is a chip only where the chip expected has no ID word.
  std::optional<ChipDescription> blank;
  if (id == 0x3FFF) blank = chip_without_id({s.device, s.chip});
  if (no_chip_answer(id) && !blank) {
    s.record.fail("no chip answered (ID word " + four_digits(id) + ")");
    return kExitFailed;
  }
  s.record.chip = chip ? chip->name : (blank ? blank->name : "");
  s.record.message = identified->notes;
  return kExitOk;
}

void print_config_source(Session& s, const std::string& source) {
  s.out << "Configuration word " << four_digits(s.state.ConfigWord) << " (" << source << ")\n";
}

int erase(Session& s, ChipOperations& ops) {
  const OperationResult result = run_op(s, ops, OperationKind::kErase);
  return conclude(s, result);
}

int write(Session& s, ChipOperations& ops) {
  if (!load_image(s)) return kExitFailed;
  const int image_config = s.state.word(kConfigWordAddress);
  int word = s.state.ConfigWord;
  std::string source = "the device's default";
  if (s.options.config) {
    word = *s.options.config;
    source = "from --config";
  } else if (image_config != kBlankWord) {
    word = image_config;
    source = "from the file";
  }
  // As the configuration box reads a typed word.
  s.state.ConfigWord = config_word_from_text(four_digits(word));
  if (s.options.exact) {
    s.console.finish();
    if (!quiet(s)) print_config_source(s, source);
  }
  // The chip must be the entry's, keep its calibration, and get just the
  // image's words, before anything is erased.
  const OperationResult result =
      run_op(s, ops, OperationKind::kWrite, image_last_address(s),
             s.options.last ? std::optional<int>(*s.options.last) : std::nullopt);
  s.console.finish();
  if (!s.options.exact && !result.preflight.refused && !quiet(s)) print_config_source(s, source);
  return conclude(s, result);
}

int verify(Session& s, ChipOperations& ops) {
  if (!load_image(s)) return kExitFailed;
  // The VERIFY button's own range in exact mode: up to, not including, the
  // LAST box as the write takes it.
  return conclude(s, run_op(s, ops, OperationKind::kVerify, image_last_address(s),
                            s.options.last ? std::optional<int>(*s.options.last) : std::nullopt));
}

// Program memory through the device's size (or --last); with -o also the
// configuration word and the EEPROM, so the file writes the same chip
// again. The file is written only when every read went through.
int read_program(Session& s, ChipOperations& ops) {
  const int end = s.options.last ? *s.options.last : s.state.ProgramSize;
  const OperationResult program = run_op(s, ops, OperationKind::kRead, clamped_last(s.state, end),
                                         s.options.last ? std::optional<int>(end) : std::nullopt);
  if (const int status = conclude(s, program); status != kExitOk) return status;
  const int count = program.read->next_address;
  if (s.options.output_file.empty()) {
    s.out << program_table(s.state, count);
    return kExitOk;
  }
  const std::string outcome = s.record.message;
  const OperationResult config = run_op(s, ops, OperationKind::kReadConfig);
  if (const int status = conclude(s, config); status != kExitOk) return status;
  const OperationResult eeprom = run_op(s, ops, OperationKind::kReadEeprom);
  if (const int status = conclude(s, eeprom); status != kExitOk) return status;
  std::vector<HexWord> words = program_hex_words(s.state, count);
  words.push_back({kConfigWordAddress, static_cast<std::uint16_t>(*config.config_read)});
  for (const HexWord& word : eeprom_hex_words(s.state, s.state.EepromLastAddress + 1)) {
    words.push_back(word);
  }
  if (!save_hex(s, words)) return kExitFailed;
  s.record.message = outcome;
  return kExitOk;
}

int read_eeprom(Session& s, ChipOperations& ops) {
  if (const int status = conclude(s, run_op(s, ops, OperationKind::kReadEeprom));
      status != kExitOk) {
    return status;
  }
  const int count = s.state.EepromLastAddress + 1;
  if (s.options.output_file.empty()) {
    s.out << eeprom_table(s.state, count);
    return kExitOk;
  }
  return save_hex(s, eeprom_hex_words(s.state, count)) ? kExitOk : kExitFailed;
}

}  // namespace

std::string four_digits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(value) & 0xFFFFu);
  return text;
}

std::optional<DeviceChoice> device_choice(const std::string& text) {
  if (text.empty()) return DeviceChoice{1, std::nullopt};
  if (text == "auto") return DeviceChoice{kAutoDevice, std::nullopt};
  if (const auto entry = find_device(text)) return DeviceChoice{*entry, std::nullopt};
  if (const auto chip = chip_by_name(text))
    return DeviceChoice{chip->entry.value_or(kNoEntry), chip};
  return std::nullopt;
}

std::string device_choices() {
  std::string entries;
  for (const DeviceRecord& record : DeviceCatalogue()) {
    entries += std::string(entries.empty() ? "" : ", ") + record.caption;
  }
  std::string chips;
  for (const ChipDescription& chip : devices().chips) {
    chips += (chips.empty() ? "" : ", ") + chip.name;
  }
  return "auto, an entry (" + entries + ", or its index 0 to 7) or a chip (" + chips + ")";
}

int run_command(Session& s) {
  switch (s.options.command) {
    case Command::kCapture:
    case Command::kVolts:
    case Command::kFreq:
    case Command::kCount:
      return run_instrument(s);
    default:
      break;
  }
  Unit::Operation operation(s.unit);
  if (s.options.command == Command::kVersion) return version(s);
  ChipOperations ops(s.unit, s.state, s.console);
  std::optional<OperationResult> identified;
  if (const int status = choose_device(s, ops, identified); status != kExitOk) return status;
  // Each command calls its button sequence once; the safe-programming
  // pre-flight (skipped with --exact) goes just before that call.
  switch (s.options.command) {
    case Command::kId:
      return identify(s, ops, identified);
    case Command::kErase:
      return erase(s, ops);
    case Command::kWrite:
      return write(s, ops);
    case Command::kVerify:
      return verify(s, ops);
    case Command::kRead:
      return read_program(s, ops);
    case Command::kReadEeprom:
      return read_eeprom(s, ops);
    default:
      return kExitUsage;
  }
}

}  // namespace zenta::cli

#include "cli/commands.h"

#include <cctype>
#include <cstdio>

#include "cli/output.h"
#include "common/number_text.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "programming/commands.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"

namespace zenta::cli {

namespace {

std::string four_digits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
  return text;
}

// The outcome line: what the panel's notes line would show.
void print_notes(Session& s) {
  s.console.finish();
  s.out << s.console.notes_text() << '\n';
  s.out.flush();
}

int exit_status(const CommandResult& result) {
  return result.refused || result.mismatch || (result.config && !result.config->written)
             ? kExitFailed
             : kExitOk;
}

// What the panel's LAST box holds after the number was put in: a value
// above the program size is replaced by the size.
std::int16_t last_box(const ProgrammerState& state, int value) {
  return static_cast<std::int16_t>(value > state.ProgramSize ? state.ProgramSize : value);
}

// Loads FILE.hex with the panel's loader; false when it cannot be read.
bool load_image(Session& s) {
  s.state.HexFileName = s.options.hex_file;
  if (load_hex_file(s.options.hex_file, s.state).ok) {
    s.state.DataLoaded = 1;
    return true;
  }
  s.console.stop_box("Can't Open or Read the FILE", "FILE ERROR");
  s.console.finish();
  return false;
}

// --last when given, else the address the loader reached, as the LAST box
// shows it after the load.
std::int16_t image_last_address(const Session& s) {
  return last_box(s.state, s.options.last ? *s.options.last : s.state.LastAddress);
}

bool save_hex(Session& s, const std::vector<HexWord>& words) {
  if (write_inhx8m_file(s.options.output_file, words)) return true;
  s.console.finish();
  s.err << "zenta: cannot write '" << s.options.output_file << "'\n";
  return false;
}

int version(Session& s) {
  const bool ok = s.unit.read_firmware_version();
  std::string ident = s.unit.FirmwareVersion();
  s.console.finish();
  if (!ok || ident.size() < 8) {
    s.err << "zenta: the unit did not report its firmware identification\n";
    return kExitFailed;
  }
  for (char& c : ident) {
    if (!std::isprint(static_cast<unsigned char>(c))) c = '.';
  }
  s.out << "Firmware version " << ident[6] << '.' << ident[7] << " (" << ident << ")\n";
  return kExitOk;
}

int write(Session& s, ChipOperations& ops) {
  if (!load_image(s)) return kExitFailed;
  const int image_config = s.state.word(0x2007);
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
  word = config_word_from_text(four_digits(word));
  s.state.ConfigWord = static_cast<std::int16_t>(word);
  s.state.ConfigHigh = static_cast<std::int16_t>(word >> 8);
  s.state.ConfigLow = static_cast<std::int16_t>(word & 0xFF);
  s.console.finish();
  s.out << "Configuration word " << four_digits(word) << " (" << source << ")\n";
  const CommandResult result = run_write(ops, image_last_address(s));
  print_notes(s);
  return exit_status(result);
}

int verify(Session& s, ChipOperations& ops) {
  if (!load_image(s)) return kExitFailed;
  // The verify button compares up to LastAddress as it stands, which the
  // loader leaves past any configuration record. The command compares the
  // range the WRITE button's own verify covers: the LAST box as the write
  // takes it.
  s.state.LastAddress = image_last_address(s);
  const CommandResult result = run_verify(ops);
  print_notes(s);
  return exit_status(result);
}

// What a read brought back goes to the -o file as INHX8M, or to standard
// output as a table; then the outcome line.
int put_read(Session& s, const std::vector<HexWord>& words, const std::string& table) {
  if (!s.options.output_file.empty()) {
    if (!save_hex(s, words)) return kExitFailed;
  } else {
    s.console.finish();
    s.out << table;
  }
  print_notes(s);
  return kExitOk;
}

int read_program(Session& s, ChipOperations& ops) {
  // The read stops before the word at the LAST box's address; without
  // --last it reads the device entry's whole program memory.
  const int end = s.options.last ? *s.options.last : s.state.ProgramSize;
  const CommandResult result = run_read(ops, last_box(s.state, end));
  if (result.refused) {
    print_notes(s);
    return kExitFailed;
  }
  const int count = result.read->next_address;
  return put_read(s, program_hex_words(s.state, count), program_table(s.state, count));
}

int read_eeprom(Session& s, ChipOperations& ops) {
  run_read_eeprom(ops);
  const int count = s.state.EepromLastAddress + 1;
  return put_read(s, eeprom_hex_words(s.state, count), eeprom_table(s.state, count));
}

}  // namespace

std::optional<int> device_index(const std::string& text) {
  if (text.empty()) return 1;
  return find_device(text);
}

int run_command(Session& s) {
  Unit::Operation operation(s.unit);
  if (s.options.command == Command::kVersion) return version(s);
  select_device_parameters(s.state, s.device);
  ChipOperations ops(s.unit, s.state, s.console);
  switch (s.options.command) {
    case Command::kId:
      run_identify(ops);
      print_notes(s);
      return kExitOk;
    case Command::kErase:
      run_erase(ops);
      print_notes(s);
      return kExitOk;
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

#include "cli/commands.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "cli/output.h"
#include "common/number_text.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "programming/device_catalogue.h"

namespace zenta::cli {

namespace {

std::string four_digits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
  return text;
}

// The outcome line: the panel's notes line.
void print_notes(Session& s) {
  s.host.finish();
  s.out << s.form.view().NotesLabel << '\n';
  s.out.flush();
}

bool save_hex(Session& s, const std::vector<HexWord>& words) {
  if (write_inhx8m_file(s.options.output_file, words)) return true;
  s.host.finish();
  s.err << "zenta: cannot write '" << s.options.output_file << "'\n";
  return false;
}

// Loads FILE.hex with the panel's loader; false when it cannot be read.
bool load_image(Session& s) {
  s.form.state().HexFileName = s.options.hex_file;
  s.form.LOAD_HEX();
  return !s.form.outcome().load_error;
}

// --last is typed into the LAST box, as a user would; without it the box
// keeps what the loader showed there, as in the panel.
void apply_last_address(Session& s) {
  if (s.options.last) s.form.LastAddrText_Change(hex_text(*s.options.last));
}

int version(Session& s) {
  UnitLink& link = s.form.link();
  const bool ok = link.SENDCMD(UNIT_VERSION) == kLinkOk;
  // The first exchange: the reply text holds exactly its reply.
  std::string ident = link.reply_text.head();
  s.host.finish();
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

int identify(Session& s) {
  MainForm& form = s.form;
  if (form.view().Command_VCC == "VCC off") form.Command_VCC_Click();
  form.READ_DEVID();
  if (form.view().Command_VCC == "VCC on") form.Command_VCC_Click();
  // The supply button leaves the notes line alone: it still names the chip.
  print_notes(s);
  return kExitOk;
}

int erase(Session& s) {
  s.form.ERASEButton_Click();
  print_notes(s);
  return s.form.outcome().refused ? kExitFailed : kExitOk;
}

int write(Session& s) {
  MainForm& form = s.form;
  if (!load_image(s)) return kExitFailed;
  apply_last_address(s);
  const int image_config = form.state().word(0x2007);
  std::string source;
  if (s.options.config) {
    form.ConfigAddrText_Change(four_digits(*s.options.config));
    source = "from --config";
  } else if (image_config != kBlankWord) {
    form.ConfigAddrText_Change(four_digits(image_config));
    source = "from the file";
  } else {
    source = "the device's default";
  }
  s.host.finish();
  s.out << "Configuration word " << four_digits(form.state().ConfigWord) << " (" << source << ")\n";
  form.WriteButton_Click();
  print_notes(s);
  const CommandOutcome& outcome = form.outcome();
  return outcome.refused || outcome.verify_error || outcome.config_error ? kExitFailed : kExitOk;
}

int verify(Session& s) {
  MainForm& form = s.form;
  if (!load_image(s)) return kExitFailed;
  // The verify button compares up to LastAddress as it stands, which the
  // loader leaves past any configuration record. The command compares the
  // range the WRITE button's own verify covers: the LAST box, after its own
  // checks, as the write takes it.
  apply_last_address(s);
  form.state().LastAddress = read_hex16(form.view().LastAddrText).value_or(0);
  form.VerifyButton_Click();
  print_notes(s);
  const CommandOutcome& outcome = form.outcome();
  return outcome.refused || outcome.verify_error ? kExitFailed : kExitOk;
}

// What a read brought back goes to the -o file as INHX8M, or to standard
// output as a table; then the notes line.
int put_read(Session& s, const std::vector<HexWord>& words, const std::string& table) {
  if (!s.options.output_file.empty()) {
    if (!save_hex(s, words)) return kExitFailed;
  } else {
    s.host.finish();
    s.out << table;
  }
  print_notes(s);
  return kExitOk;
}

int read_program(Session& s) {
  MainForm& form = s.form;
  // The read stops before the word at the LAST box's address; without
  // --last it reads the device entry's whole program memory.
  form.LastAddrText_Change(hex_text(s.options.last ? *s.options.last : form.state().ProgramSize));
  form.READ_Click();
  if (form.outcome().refused) {
    print_notes(s);
    return kExitFailed;
  }
  // The read shows the address after the last word it stored.
  const int count = read_hex(form.view().CurrentAddrText).value_or(0);
  return put_read(s, program_hex_words(form.state(), count), program_table(form.state(), count));
}

int read_eeprom(Session& s) {
  MainForm& form = s.form;
  form.READ_EEPROM_Click();
  if (form.outcome().refused) {
    print_notes(s);
    return kExitFailed;
  }
  const int count = form.state().EepromLastAddress + 1;
  return put_read(s, eeprom_hex_words(form.state(), count), eeprom_table(form.state(), count));
}

}  // namespace

std::optional<int> device_index(const std::string& text) {
  if (text.empty()) return 1;
  return find_device(text);
}

int run_command(Session& s) {
  if (s.options.command == Command::kVersion) return version(s);
  s.form.PICsel_Click(s.device);
  switch (s.options.command) {
    case Command::kId:
      return identify(s);
    case Command::kErase:
      return erase(s);
    case Command::kWrite:
      return write(s);
    case Command::kVerify:
      return verify(s);
    case Command::kRead:
      return read_program(s);
    case Command::kReadEeprom:
      return read_eeprom(s);
    default:
      return kExitUsage;
  }
}

}  // namespace zenta::cli

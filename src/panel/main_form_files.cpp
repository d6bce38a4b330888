// Choosing the target file, deriving its HEX file, and loading HEX images.
#include "common/file_names.h"
#include "common/input_file.h"
#include "common/number_text.h"
#include "image/hex_check.h"
#include "image/hex_loader.h"
#include "panel/main_form.h"
#include "panel/shell.h"
#include "programming/config_word.h"

namespace zenta {

namespace {
// A broken file can have thousands of bad lines; the box names the first few.
constexpr std::size_t kShownHexErrors = 5;
constexpr const char* kFileFilter = "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|";

// Characters `position` (1-based) onward, at most `count`; positions beyond
// the end of the text read as nothing.
std::string characters(const std::string& text, std::size_t position, std::size_t count) {
  if (position < 1 || position > text.size()) return {};
  return text.substr(position - 1, count);
}
}  // namespace

bool MainForm::LOAD_HEX() {
  Unit::Operation operation(unit_);
  return operation && load_hex();
}

bool MainForm::load_hex() {
  HexLoadReport report;
  if (view_.exact) {
    report = load_hex_file(state_.HexFileName, state_);
  } else {
    // Read once: the check and the image see the same bytes, from any
    // kind of file.
    const std::string path = resolve_case_insensitive(state_.HexFileName);
    const InputFile file =
        read_input_file(path.empty() ? state_.HexFileName : path, kLargestHexFile);
    if (!hex_file_ok(file)) return false;
    report = load_hex_text(file.text, state_, {.extended_addresses = true});
  }
  if (report.last_field) view_.Text2 = *report.last_field;
  if (report.last_byte) view_.Text_ADMON = *report.last_byte;
  if (!report.ok) {
    // The buffer keeps the blank image and what was stored before the
    // failure, LastAddress the value reached; the rest stays as it was.
    host_.message_box("Can't Open or Read the FILE", "FILE ERROR", MessageIcon::kStop);
    changed();
    return false;
  }
  state_.DataLoaded = 1;
  view_.CurrentAddrText = hex_text(state_.LastAddress);
  LastAddrText_Change(hex_text(state_.LastAddress));
  // Half the first record's byte address, an exact half to the even
  // neighbour; no record at all (first address -1) gives 0.
  const std::int16_t start =
      report.first_address < 0 ? std::int16_t{0} : last_word_of_byte(report.first_address);
  state_.StartAddress = start;
  StartAddrText_Change(hex_text(start));
  if (!view_.exact) take_image_facts();
  if (windows_.window_visible(WindowId::kDataView)) FILL_PROG_VIEW(program_view_, state_);
  changed();
  return true;
}

bool MainForm::hex_file_ok(const InputFile& file) {
  // Checked before the loader touches the buffer: a file with errors leaves
  // the image that was loaded before as it was.
  if (!file.ok) {
    const std::string text = state_.HexFileName + ": " + file.reason;
    host_.message_box(text, "FILE ERROR", MessageIcon::kStop);
    show_findings({"not loaded: " + text});
    return false;
  }
  const HexCheck check = check_hex_text(
      file.text, {state_.ProgramSize, static_cast<int>(state_.EepromLastAddress) + 1,
                  view_.PICsel < 0 ? std::string()
                                   : std::string(device_record(view_.PICsel).caption) + " entry"});
  if (check.ok()) return true;
  std::vector<std::string> errors;
  for (const HexFinding& finding : check.findings) {
    if (finding.error) errors.push_back(finding.message(state_.HexFileName));
  }
  std::string text;
  for (std::size_t i = 0; i < errors.size() && i < kShownHexErrors; ++i) {
    text += (i == 0 ? "" : "\n") + errors[i];
  }
  if (errors.size() > kShownHexErrors) {
    text += "\n(" + std::to_string(errors.size() - kShownHexErrors) + " more)";
  }
  host_.message_box(text, "FILE ERROR", MessageIcon::kStop);
  show_findings({"not loaded: " + errors.front()});
  return false;
}

void MainForm::take_image_facts() {
  // The file's configuration word and range go into the boxes, visibly, so
  // the chip gets what the file says and the write and verify cover just
  // the image's words.
  std::vector<std::string> findings;
  if (const auto config = image_config_word(state_)) {
    const std::string text = config_hex_text(*config >> 8, *config & 0xFF);
    ConfigAddrText_Change(text);
    // The option controls show the file's word, not the settings before it.
    const ConfigControls controls =
        controls_of_word(static_cast<std::uint16_t>(*config & kConfigBits), patterns_);
    view_.OSCsel = controls.oscillator;
    view_.WDTsel = controls.wdt;
    view_.PUTsel = controls.put;
    view_.PRTsel = controls.protect;
    view_.BORsel = controls.bor;
    findings.push_back("configuration word " + text + " from the file");
  }
  LastAddrText_Change(hex_text(image_last_address(state_, state_.ProgramSize)));
  if (const auto eeprom = eeprom_data_finding(state_)) findings.push_back(*eeprom);
  show_findings(findings);
}

bool MainForm::F_OpenButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return false;
  const std::string path = host_.open_file_dialog(kFileFilter);
  if (path.empty()) return false;
  return open_chosen_file(path);
}

bool MainForm::open_file(const std::string& path) {
  Unit::Operation operation(unit_);
  if (!operation || path.empty()) return false;
  return open_chosen_file(path);
}

bool MainForm::open_chosen_file(const std::string& path) {
  view_.FilenameTextbox = path;
  const std::string last3 = path.size() >= 3 ? path.substr(path.size() - 3) : path;
  const char last = path.back();
  if (last3 == "asm" || last3 == "ASM" || last == 'c' || last == 'C') {
    // A source file: the user assembles or compiles it, or derives its HEX.
    state_.TargetFileName = path;
    changed();
    return true;
  }
  // Any other ending, mixed case included, loads the HEX file named before.
  if (last3 == "hex" || last3 == "HEX") state_.HexFileName = path;
  const bool loaded = load_hex();
  notes("", kLavender);
  return loaded;
}

bool MainForm::HexSet_Button_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return false;
  const std::string& target = state_.TargetFileName;
  if (target.empty()) return false;
  // The derivation looks at the target name through the length of the file
  // name box, which after a file choice shows the same path.
  const std::size_t n = view_.FilenameTextbox.size();
  notes("Set HEX file", kWhite);
  // A box text shorter than three characters (empty after a program read)
  // matches neither ending: the HEX file named before is loaded again.
  if (n >= 3) {
    const std::string tail = characters(target, n - 2, 3);
    const std::string last = characters(target, n, 1);
    if (tail == "ASM" || tail == "asm") {
      state_.HexFileName = target.substr(0, n - 3) + "HEX";
    } else if (last == "C" || last == "c") {
      state_.HexFileName = target.substr(0, n - 1) + "HEX";
    }
  }
  view_.TEST = state_.HexFileName;
  return load_hex();
}

void MainForm::HomePage_Click() {
  open_homepage(host_, homepage_url(settings_));
}

}  // namespace zenta

// The chip operations' buttons: each turns the boxes into numbers and runs
// the button's sequence inside the unit's operation guard.
#include "common/number_text.h"
#include "panel/main_form.h"
#include "programming/config_word.h"

namespace zenta {

OperationRequest MainForm::request(OperationKind what) const {
  OperationRequest request;
  request.what = what;
  request.target = {view_.PICsel, std::nullopt};
  request.exact = view_.exact;
  request.last_address = read_hex16(view_.LastAddrText);
  return request;
}

CommandResult MainForm::WriteButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  // A tool run is writing the image to be written: the write waits for it.
  if (state_.WaitTicks != 0)
    status("WRITE refused: the tool run has not ended; its HEX file loads when it has");
  const bool checked = !view_.exact && state_.WaitTicks == 0 && state_.DataLoaded != 0;
  const std::optional<std::uint16_t> file_config = image_config_word(state_);
  const OperationResult result = do_op(ops_, request(OperationKind::kWrite));
  if (!checked) return result;
  const Preflight& preflight = result.preflight;
  std::vector<std::string> findings = preflight.findings;
  if (file_config && *file_config == (state_.ConfigWord & 0x3FFF)) {
    findings.insert(findings.begin() + (findings.empty() ? 0 : 1),
                    "configuration word " +
                        config_hex_text(*file_config >> 8, *file_config & 0xFF) + " from the file");
  }
  if (preflight.refused) {
    if (!preflight.refusal.empty()) {
      host_.message_box(preflight.refusal, "WRITE ERROR", MessageIcon::kStop);
    }
    if (!preflight.failed_while.empty()) {
      findings.push_back("an exchange failed while " + preflight.failed_while +
                         ": the chip was not touched");
    }
    show_findings(findings);
    notes(preflight.interrupted ? kStoppedText : "Write refused", kRed);
    warn_after(result);
    return result;
  }
  show_findings(findings);
  // What the checks changed is shown in the boxes.
  LastAddrText_Change(hex_text(state_.LastAddress));
  ConfigAddrText_Change(config_hex_text(state_.ConfigHigh(), state_.ConfigLow()));
  warn_after(result);
  return result;
}

void MainForm::warn_after(const CommandResult& result) {
  if (result.calibration_at_risk) {
    host_.message_box("The chip was erased, but its " + *result.calibration_at_risk +
                          " could not be written back. Write them back before the chip is used.",
                      "WRITE ERROR", MessageIcon::kStop);
  }
  // A lost unit's message already says to unplug it.
  if (result.target_powered && !unit_.link().lost()) {
    host_.message_box(
        "Switching the target off failed: it may still be powered. Unplug the unit before "
        "taking the chip out.",
        "USB ERROR", MessageIcon::kStop);
  }
}

CommandResult MainForm::VerifyButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  OperationRequest verify = request(OperationKind::kVerify);
  // The verify compares up to LastAddress as it stands.
  verify.last_address = state_.LastAddress;
  const CommandResult result = do_op(ops_, verify);
  changed();
  return result;
}

CommandResult MainForm::ERASEButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const OperationResult result = do_op(ops_, request(OperationKind::kErase));
  if (!view_.exact) {
    const Preflight& preflight = result.preflight;
    show_findings(preflight.findings);
    if (preflight.refused) {
      if (!preflight.refusal.empty()) {
        host_.message_box(preflight.refusal, "ERASE ERROR", MessageIcon::kStop);
      }
      notes("Erase refused", kRed);
    } else if (!result.calibration_at_risk) {
      notes("Chip Erase Complete", kWhite);
    }
    warn_after(result);
  }
  changed();
  return result;
}

CommandResult MainForm::READ_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  OperationRequest read = request(OperationKind::kRead);
  // A checked read stops at the LAST box or at the chip's end, whichever comes first.
  if (read.last_address) read.limit = *read.last_address;
  const OperationResult result = do_op(ops_, read);
  if (result.refused) return result;
  if (windows_.window_visible(WindowId::kDataView)) FILL_PROG_VIEW(program_view_, state_);
  view_.FilenameTextbox.clear();
  buffer_view_command();
  return result;
}

CommandResult MainForm::READ_EEPROM_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const CommandResult result = do_op(ops_, request(OperationKind::kReadEeprom));
  windows_.show_window(WindowId::kEepromView);
  FILL_EE_VIEW(eeprom_view_, state_);
  changed();
  return result;
}

bool MainForm::run_procedure(const std::function<void(ChipOperations&)>& procedure) {
  Unit::Operation operation(unit_);
  if (!operation) return false;
  procedure(ops_);
  changed();
  return true;
}

void MainForm::show_findings(const std::vector<std::string>& findings) {
  std::string line;
  for (const std::string& finding : findings) {
    if (!line.empty()) line += " \u2013 ";
    line += finding;
  }
  view_.StatusLine = line;
  changed();
}

void MainForm::Exact_Click(bool checked) {
  view_.exact = checked;
  unit_.link().stop_on_loss = !checked;
  if (checked) view_.StatusLine.clear();
  settings_.save(kSettingsApp, kPanelSection, kExactKey, checked ? "1" : "0");
  changed();
}

void MainForm::Buffer_view_Click() {
  buffer_view_command();
}

void MainForm::BUFVIEWButton_Click() {
  buffer_view_command();
  notes("Show Read BUFFER", kLavender);
}

void MainForm::buffer_view_command() {
  windows_.show_window(WindowId::kDataView);
  FILL_PROG_VIEW(program_view_, state_);
  state_.WaitTicks = 0;
  changed();
}

}  // namespace zenta

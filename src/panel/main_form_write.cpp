// The chip operations' buttons: each turns the boxes into numbers and runs
// the button's sequence inside the unit's operation guard.
#include "common/number_text.h"
#include "panel/main_form.h"

namespace zenta {

CommandResult MainForm::WriteButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  return run_write(ops_, read_hex16(view_.LastAddrText));
}

CommandResult MainForm::VerifyButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const CommandResult result = run_verify(ops_);
  changed();
  return result;
}

CommandResult MainForm::ERASEButton_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const CommandResult result = run_erase(ops_);
  changed();
  return result;
}

CommandResult MainForm::READ_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const CommandResult result = run_read(ops_, read_hex16(view_.LastAddrText));
  if (result.refused) return result;
  if (host_.window_visible(WindowId::kDataView)) FILL_PROG_VIEW(program_view_, state_);
  view_.FilenameTextbox.clear();
  buffer_view_command();
  return result;
}

CommandResult MainForm::READ_EEPROM_Click() {
  Unit::Operation operation(unit_);
  if (!operation) return refused();
  const CommandResult result = run_read_eeprom(ops_);
  host_.show_window(WindowId::kEepromView);
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

void MainForm::Buffer_view_Click() {
  buffer_view_command();
}

void MainForm::BUFVIEWButton_Click() {
  buffer_view_command();
  notes("Show Read BUFFER", kLavender);
}

void MainForm::buffer_view_command() {
  host_.show_window(WindowId::kDataView);
  FILL_PROG_VIEW(program_view_, state_);
  state_.WaitTicks = 0;
  changed();
}

}  // namespace zenta

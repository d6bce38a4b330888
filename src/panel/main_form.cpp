#include "panel/main_form.h"

#include <cmath>

#include "common/number_text.h"
#include "link/command_codes.h"

namespace zenta {

MainForm::MainForm(UnitDriver& driver, Host& host, SettingsStore& settings, ProgrammerState& state)
    : host_(host),
      settings_(settings),
      state_(state),
      link_(driver, host),
      program_view_(make_program_view()),
      eeprom_view_(make_eeprom_view()) {
  link_.on_status_changed = [this] { changed(); };
}

MainForm::~MainForm() = default;

bool MainForm::Form_Load() {
  // 1. The driver result texts are a constant table (driver_result_texts).
  // 2. Control state.
  state_.DataLoaded = 0;
  state_.WaitTicks = 0;
  reset_state_ = 0;
  // 3. Boxes and notes line.
  view_.FilenameTextbox.clear();
  view_.CurrentAddrText.clear();
  view_.StartAddrText.clear();
  view_.LastAddrText.clear();
  view_.NotesLabel.clear();
  // 4. Start folder and size.
  start_folder_ = host_.current_folder();
  view_.width_twips = kFormWidthTwips;
  view_.height_twips = kFormHeightTwips;
  changed();
  // 5. Open the unit; without it there is nothing the panel can do.
  if (link_.open_driver() != 0) {
    host_.message_box("Unit not Found", "USB ERROR", MessageIcon::kStop);
    return false;
  }
  // 6. Firmware identification: the first exchange, so the reply text holds
  // exactly this reply, or nothing when it failed.
  link_.SENDCMD(UNIT_VERSION);
  firmware_version_ = link_.reply_text.head();
  // 7. Device choice.
  restore_device();
  // 8. Tool settings.
  load_tool_settings();
  // 9. Folders.
  view_.Label7 = "TopDIR = " + start_folder_;
  view_.Label9 = "Current DIR = " + host_.current_folder();
  // 10. Target supply on.
  link_.SENDCMD(UNIT_VCC, 1);
  view_.Command_VCC = "VCC on";
  // 11. LED off.
  link_.SENDCMD(UNIT_LED, 0);
  view_.Command_LED = "LED off";
  changed();
  return true;
}

void MainForm::restore_device() {
  const std::string stored = settings_.get(kSettingsApp, kSettingsSection, "DEVICE");
  int choice = 1;
  if (!stored.empty()) {
    const double value = round_half_even(leading_number(stored));
    choice = (value < 0 || value > 7) ? 1 : static_cast<int>(value);
  }
  view_.PICsel = choice;
  select_device(choice);
}

void MainForm::load_tool_settings() {
  if (settings_.get(kSettingsApp, kSettingsSection, "F_ASM").empty()) {
    // First run: the defaults are stored and used at once, so the first
    // Assembler run and HELP work without a restart.
    tools_ = startup_tool_defaults();
    const auto defaults = tool_values(tools_);
    for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
      settings_.save(kSettingsApp, kSettingsSection, kToolKeys[i], defaults[i]);
    }
    return;
  }
  std::array<std::string, 6> values;
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    values[i] = settings_.get(kSettingsApp, kSettingsSection, kToolKeys[i]);
  }
  tools_ = tools_from_values(values);
}

void MainForm::shutdown() {
  link_.close_driver();
}

}  // namespace zenta

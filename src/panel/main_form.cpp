#include "panel/main_form.h"

#include <cmath>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "link/unit_controls.h"

namespace zenta {

MainForm::MainForm(const PanelParts& parts)
    : unit_(parts.unit),
      host_(parts.host),
      windows_(parts.windows),
      settings_(parts.settings),
      state_(parts.state),
      tools_(parts.tools),
      program_view_(parts.program_view),
      eeprom_view_(parts.eeprom_view),
      ops_(parts.unit, parts.state, *this) {
  unit_.link().on_status_changed = [this] { changed(); };
  // Whoever holds the unit (a chip operation here, an instrument elsewhere),
  // the commands that would send are shown disabled until it is free.
  busy_listener_ = unit_.subscribe([this](bool busy) {
    view_.busy = busy;
    if (busy) pauses_.reset();
    if (!busy) view_.progress = Progress{};
    changed();
  });
}

MainForm::~MainForm() {
  unit_.unsubscribe(busy_listener_);
  unit_.link().on_status_changed = nullptr;
}

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
  Unit::Operation operation(unit_);
  // 5. Open the unit; without it there is nothing the panel can do.
  if (unit_.open() != 0) {
    // The box keeps its text; what the driver found out follows it, so the
    // user can tell an absent unit from a busy or forbidden one.
    const std::string hint = unit_.link().open_failure_hint();
    host_.message_box(hint.empty() ? "Unit not Found" : "Unit not Found\n\n" + hint, "USB ERROR",
                      MessageIcon::kStop);
    return false;
  }
  // The exact setting decides how the link treats failures from the first
  // packet on: in exact mode every exchange of the start-up is tried and
  // each failure says so.
  view_.exact = settings_.get(kSettingsApp, kPanelSection, kExactKey) == "1";
  unit_.link().stop_on_loss = !view_.exact;
  ops_.checked = !view_.exact;
  // 6. Firmware identification: the first exchange, so the reply text holds
  // exactly this reply, or nothing when it failed.
  unit_.read_firmware_version();
  // 7. Device choice.
  restore_device();
  // 8. Tool settings.
  load_tool_settings();
  // 9. Folders.
  view_.Label7 = "TopDIR = " + start_folder_;
  view_.Label9 = "Current DIR = " + host_.current_folder();
  // 10. Target supply on.
  ops_.set_supply(true);
  // 11. LED off.
  ops_.set_led(false);
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
  unit_.close();
}

// ---- the operations' reports, shown on the view ----

void MainForm::notes(const std::string& text, std::uint32_t colour) {
  view_.NotesColor = colour;
  view_.NotesLabel = text;
  changed();
}

void MainForm::current_address(int address) {
  view_.CurrentAddrText = hex_text(address);
}

void MainForm::start_address(int address) {
  StartAddrText_Change(hex_text(address));
}

void MainForm::progress(int value, int maximum) {
  view_.progress = Progress{value, maximum};
}

void MainForm::supply(bool on) {
  view_.Command_VCC = on ? "VCC on" : "VCC off";
}

void MainForm::led(bool on) {
  view_.Command_LED = on ? "LED on" : "LED off";
}

void MainForm::stop_box(const std::string& text, const std::string& title) {
  host_.message_box(text, title, MessageIcon::kStop);
}

void MainForm::let_events_run() {
  if (!pauses_.due()) return;
  changed();
  host_.process_events();
}

CommandResult MainForm::refused() const {
  CommandResult result;
  result.refused = true;
  return result;
}

}  // namespace zenta

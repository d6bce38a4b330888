// The bracket around every public command, and the small helpers the
// operations share: notes line, supply and LED with their captions,
// yielding to the window system.
#include "link/command_codes.h"
#include "panel/main_form.h"

namespace zenta {

MainForm::CommandScope::CommandScope(MainForm& form) : form_(form), started_(!form.view_.busy) {
  if (!started_) {
    // Another command is running and has let events run. This one does not
    // start; the running one's outcome replaces this when it ends.
    form_.outcome_ = CommandOutcome{};
    form_.outcome_.refused = true;
    form_.changed();
    return;
  }
  form_.running_ = CommandOutcome{};
  failures_at_start_ = form_.link_.failures();
  form_.view_.busy = true;
  form_.changed();
}

MainForm::CommandScope::~CommandScope() {
  if (!started_) return;
  form_.running_.link_failures = form_.link_.failures() - failures_at_start_;
  form_.outcome_ = form_.running_;
  form_.view_.busy = false;
  form_.view_.progress = Progress{};
  form_.changed();
}

void MainForm::set_notes(const std::string& text, std::uint32_t color) {
  view_.NotesColor = color;
  view_.NotesLabel = text;
  changed();
}

void MainForm::set_vcc(bool on) {
  link_.SENDCMD(UNIT_VCC, on ? 1 : 0);
  view_.Command_VCC = on ? "VCC on" : "VCC off";
}

void MainForm::set_led(bool on) {
  link_.SENDCMD(UNIT_LED, on ? 1 : 0);
  view_.Command_LED = on ? "LED on" : "LED off";
}

void MainForm::yield_to_events() {
  changed();
  host_.process_events();
}

void MainForm::set_progress(int value, int maximum) {
  view_.progress = Progress{value, maximum};
}

}  // namespace zenta

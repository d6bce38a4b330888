// The tool buttons and TOOL menu items, forwarded to the toolchain model on
// this form's file name box, notes line, TEST box and LOAD_HEX.
#include "panel/main_form.h"

namespace zenta {

Toolchain& MainForm::toolchain() {
  if (!toolchain_) {
    ToolPanel panel;
    panel.file_name = [this] { return view_.FilenameTextbox; };
    panel.set_file_name = [this](const std::string& path) {
      view_.FilenameTextbox = path;
      changed();
    };
    panel.notes = [this](const std::string& text, std::uint32_t color) {
      notes(text, color);
      changed();
    };
    panel.test_box = [this](const std::string& text) {
      view_.TEST = text;
      changed();
    };
    panel.load_hex = [this] { LOAD_HEX(); };
    panel.busy = [this] { return view_.busy; };
    panel.exact = [this] { return view_.exact; };
    panel.status = [this](const std::string& text) { status(text); };
    panel.show_editor = [this] { windows_.show_window(WindowId::kEditor); };
    panel.editor_visible = [this] { return windows_.window_visible(WindowId::kEditor); };
    panel.show_errors = [this] { windows_.show_window(WindowId::kErrorView); };
    toolchain_ = std::make_unique<Toolchain>(tools_, state_, host_, std::move(panel));
  }
  return *toolchain_;
}

void MainForm::ASSMButton_Click() {
  toolchain().ASSMButton_Click();
  changed();
}

void MainForm::C_Button_Click() {
  toolchain().C_Button_Click();
  changed();
}

void MainForm::EditorButton_Click() {
  toolchain().EditorButton_Click();
  changed();
}

void MainForm::New_EditorButton_Click() {
  toolchain().New_EditorButton_Click();
  changed();
}

void MainForm::open_instrument(WindowId id, const std::string& caption) {
  if (view_.busy) {
    status(caption + " not opened: a chip operation is running");
    return;
  }
  windows_.show_window(id);
}

void MainForm::status(const std::string& text) {
  view_.StatusLine = text;
  changed();
}

}  // namespace zenta

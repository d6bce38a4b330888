#include "panel/setup_dialog.h"

namespace zenta {

void SetupDialog::Form_Load() {
  boxes = tool_values(tools_);
}

void SetupDialog::Command_default_Click() {
  boxes = tool_values(setup_tool_defaults());
}

void SetupDialog::EXTButton_Click() {
  tools_ = tools_from_values(boxes);
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    settings_.save(kSettingsApp, kSettingsSection, kToolKeys[i], boxes[i]);
  }
}

}  // namespace zenta

#pragma once
// The setup dialog Setup_Form without its window: six boxes for the tool
// folders and command lines. Only EXIT takes the boxes over; closing the
// window any other way leaves every setting as it was.
#include <array>
#include <string>

#include "common/settings_store.h"
#include "toolchain/tool_settings.h"

namespace zenta {

// The dialog's rows, top to bottom, in the order of kToolKeys.
struct SetupRow {
  const char* box;         // text box name
  const char* label;       // name of the label above it
  const char* label_text;  // its caption
};
inline constexpr std::array<SetupRow, 6> kSetupRows = {{
    {"Text_ASM_Folder", "Label10", "Assembler / HELP Folder"},
    {"Text_ASM_Command", "Label1", "Assembler Command line"},
    {"Text_C_Folder", "Label6", "C compiler Folder"},
    {"Text_C_Commandline", "Label2", "C compiler command line"},
    {"Text_Editor_Folder", "Label11", "Editor Folder"},
    {"Text_Editor_Filename", "Label13", "Editor File name"},
}};

class SetupDialog {
 public:
  SetupDialog(ToolSettings& tools, SettingsStore& settings) : tools_(tools), settings_(settings) {}

  // Window load: the boxes show the settings in memory.
  void Form_Load();
  // Default: the boxes show the defaults; nothing is stored yet.
  void Command_default_Click();
  // EXIT: the boxes, as typed, become the settings in memory and are
  // stored under the six keys in order. The window then closes.
  void EXTButton_Click();

  // The six boxes' texts, in kSetupRows order.
  std::array<std::string, 6> boxes;

 private:
  ToolSettings& tools_;
  SettingsStore& settings_;
};

}  // namespace zenta

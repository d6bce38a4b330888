#pragma once
// The tool folders and command lines held in memory, and their defaults.
#include <array>
#include <string>

namespace zenta {

struct ToolSettings {
  std::string AsmFolder;
  std::string AsmCommand;
  std::string CFolder;
  std::string CCommand;
  std::string EditorFolder;
  std::string EditorCommand;
};

// Settings keys in the order the panel reads and writes them.
inline constexpr std::array<const char*, 6> kToolKeys = {"F_ASM", "CMD_ASM", "F_C",
                                                         "CMD_C", "F_EDIT",  "CMD_EDIT"};

// The defaults the start-up writes on a first run. On Windows they are the
// original tools' folders; elsewhere the assembler is gputils' gpasm and its
// folder is the installed data folder that holds the help file.
ToolSettings startup_tool_defaults();
// The defaults of the setup dialog's Default button; they differ from the
// start-up's only in the compiler folder.
ToolSettings setup_tool_defaults();

// Values of a ToolSettings in kToolKeys order, and back.
std::array<std::string, 6> tool_values(const ToolSettings& tools);
ToolSettings tools_from_values(const std::array<std::string, 6>& values);

}  // namespace zenta

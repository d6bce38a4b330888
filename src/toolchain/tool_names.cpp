#include "toolchain/tool_names.h"

#include "common/file_names.h"

namespace zenta {

namespace {
constexpr const char* kCompilerErrorFile = "cerr.txt";

bool ends_with(const std::string& text, const std::string& ending) {
  return text.size() >= ending.size() &&
         text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}
}  // namespace

std::optional<ToolNames> tool_names(ToolKind kind, const std::string& path,
                                    const std::string& current_folder) {
  if (kind == ToolKind::kAssembler) {
    if (!ends_with(path, "asm") && !ends_with(path, "ASM")) return std::nullopt;
    const std::string stem = path.substr(0, path.size() - 3);
    return ToolNames{stem + "ERR", stem + "HEX"};
  }
  if (!ends_with(path, "c") && !ends_with(path, "C")) return std::nullopt;
  return ToolNames{join_folder(current_folder, kCompilerErrorFile),
                   path.substr(0, path.size() - 1) + "HEX"};
}

std::string tool_command(const std::string& folder, const std::string& command) {
  return join_folder(folder, command);
}

std::string tool_command_line(const std::string& folder, const std::string& command,
                              const std::string& path) {
  return tool_command(folder, command) + " " + path;
}

}  // namespace zenta

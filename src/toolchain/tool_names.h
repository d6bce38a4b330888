#pragma once
// The names a tool run derives from the target path, and the command lines
// it composes. Pure text work.
#include <optional>
#include <string>

namespace zenta {

enum class ToolKind { kAssembler, kCompiler };

struct ToolNames {
  std::string error_file;
  std::string hex_file;
};

// The assembler takes paths ending exactly in "asm" or "ASM"; its error
// and HEX files replace those three characters with "ERR" and "HEX". The
// compiler takes paths ending in "c" or "C"; its HEX file replaces that
// character with "HEX", and its error file is "cerr.txt" in the current
// folder wherever the source lies. Other endings, mixed case included, and
// paths shorter than their ending give nothing.
std::optional<ToolNames> tool_names(ToolKind kind, const std::string& path,
                                    const std::string& current_folder);

// Folder and command as the settings hold them, joined with the platform's
// separator: the program and its options, without the target.
std::string tool_command(const std::string& folder, const std::string& command);
// The command line as shown in TEST: the tool command, one blank and the
// path, nothing quoted.
std::string tool_command_line(const std::string& folder, const std::string& command,
                              const std::string& path);

}  // namespace zenta

#pragma once
// Rules by which the platform layer carries out the core's requests: the
// panel's file dialog filters and the command lines with which it starts
// programs. Pure text work, so that every platform applies them alike.
#include <functional>
#include <string>
#include <vector>

namespace zenta {

// One choice of a file dialog: its caption and the name patterns.
struct DialogFilter {
  std::string caption;
  std::vector<std::string> patterns;
};

// Splits a filter such as "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|"
// into its choices. On systems whose file names are case-sensitive
// (case_sensitive_names), each pattern with letters in its ending gets its
// upper-case twin, so blink.ASM is offered beside blink.asm, and "*.*"
// becomes "*", which also matches names without a dot.
std::vector<DialogFilter> parse_dialog_filter(const std::string& filter, bool case_sensitive_names);
// A choice as a name filter of the usual dialog form: "HEX FILES (*.hex *.HEX)".
std::string name_filter_text(const DialogFilter& filter);

// Where a file dialog opens and which of its filters it shows first. The
// panel's section keeps the folder and the filter each kind of dialog
// ("OPEN", "SAVE") ended with last, under OPEN_FOLDER, OPEN_FILTER and so on.
struct DialogStart {
  std::string folder;
  std::string filter;  // one of the dialog's name filters; empty for its first
};
// The remembered folder while it still exists, else `current_folder`; the
// remembered filter when this dialog offers it (the open and the export
// dialogs offer different ones).
DialogStart dialog_start(const std::string& remembered_folder, const std::string& remembered_filter,
                         const std::vector<std::string>& name_filters,
                         const std::string& current_folder,
                         const std::function<bool(const std::string&)>& folder_exists);
std::string dialog_folder_key(const std::string& kind);
std::string dialog_filter_key(const std::string& kind);

// A program to start and its arguments.
struct LaunchCommand {
  std::string program;
  std::vector<std::string> arguments;
};

// Breaks a command line into words at blanks; double quotes group words and
// are removed.
std::vector<std::string> split_command_line(const std::string& command_line);

// What a command line starts. The settings join a folder and a command line
// without quoting, and folders may hold blanks ("C:\Program Files\..."), so
// the shortest run of leading words that names an existing file is the
// program, as the original platform took it. When no such file exists and
// look_up_on_path is set, the program's own name (the last part of its
// path) is looked up on the PATH: a tool configured under a folder that
// does not exist on this system is still found where it is installed.
// find_on_path returns an empty text when the name is not found; then the
// first word is returned unchanged and starting it will fail.
LaunchCommand resolve_launch(const std::string& command_line,
                             const std::function<bool(const std::string&)>& file_exists,
                             const std::function<std::string(const std::string&)>& find_on_path,
                             bool look_up_on_path);

}  // namespace zenta

// The external editor, the built-in editor's load and save, and the jump
// from an error message to its line.
#include <filesystem>
#include <system_error>

#include "common/atomic_file.h"
#include "common/file_names.h"
#include "toolchain/text_views.h"
#include "toolchain/toolchain.h"

namespace zenta {

namespace {
constexpr const char* kSaveFilter = "ASM FILES|*.asm|ALL FILES|*.*|";

bool same_file(const std::string& a, const std::string& b) {
  if (a == b) return true;
  std::error_code error;
  return std::filesystem::equivalent(a, b, error) && !error;
}
}  // namespace

void Toolchain::EditorButton_Click() {
  editor_request_.clear();  // the editor opens on the file name box
  notes("Open EDITER", kLavender);
  const std::string& target = state_.TargetFileName;
  test_box(tool_command_line(tools_.EditorFolder, tools_.EditorCommand, target));
  if (tools_.EditorCommand.empty()) {
    show_editor();
    return;
  }
  if (!host_.start_detached(tool_command(tools_.EditorFolder, tools_.EditorCommand), target)) {
    host_.message_box("File not found", "OPEN ERROR", MessageIcon::kStop);
  }
}

void Toolchain::New_EditorButton_Click() {
  if (panel_.set_file_name) panel_.set_file_name("");
  state_.TargetFileName.clear();
  EditorButton_Click();
}

void Toolchain::open_editor_at(const std::string& file, int line) {
  if (panel_.editor_visible && panel_.editor_visible()) {
    if (same_file(editor_file_, file)) {
      editor_line_ = line;
      show_editor();
      if (on_editor_line) on_editor_line(take_editor_line());
    } else {
      host_.beep();
      show_editor();
    }
    return;
  }
  if (exact()) {
    if (panel_.set_file_name) panel_.set_file_name(file);
    state_.TargetFileName = file;
  } else {
    editor_request_ = file;
  }
  editor_line_ = line;
  show_editor();
}

bool Toolchain::ErrText_DblClick(const std::string& line) {
  const std::string folder = std::filesystem::path(state_.TargetFileName).parent_path().string();
  const std::optional<SourceLocation> location = message_location(line, folder);
  if (!location) return false;
  open_editor_at(resolve_case_insensitive(location->file), location->line);
  return true;
}

std::string Toolchain::load_editor() {
  const std::string box = panel_.file_name ? panel_.file_name() : std::string();
  // A file that does not exist yet opens empty, so that a new source can be
  // typed and saved under the name in the box.
  if (exact()) {
    editor_file_ = box;
    return editor_file_.empty() ? std::string() : read_lines_crlf(editor_file_);
  }
  editor_file_ = editor_request_.empty() ? box : editor_request_;
  editor_request_.clear();
  const std::string text = editor_file_.empty() ? std::string() : read_whole_text(editor_file_);
  editor_crlf_ = crlf_line_ends(text);
  return text;
}

std::string Toolchain::editor_title() const {
  if (exact()) return "Editor";
  const std::string name = std::filesystem::path(editor_file_).filename().string();
  return "Editor - " + (name.empty() ? std::string("new file") : name);
}

int Toolchain::take_editor_line() {
  const int line = editor_line_;
  editor_line_ = 0;
  return line;
}

bool Toolchain::save_editor(const std::string& text) {
  // Checked, the text goes back to the file it came from, whatever the file
  // name box holds by now (a HEX file chosen since, say).
  const bool checked = !exact();
  std::string path = checked ? editor_file_ : panel_.file_name ? panel_.file_name() : std::string();
  if (path.empty()) {
    path = host_.save_file_dialog(kSaveFilter);
    if (path.empty()) return false;
    if (panel_.set_file_name) panel_.set_file_name(path);
    state_.TargetFileName = path;
    editor_file_ = path;
  }
  const std::string file_text = !checked       ? with_crlf(text) + "\r\n"
                                : editor_crlf_ ? with_crlf(text)
                                               : text;
  if (!write_file_atomically(path, file_text)) {
    host_.message_box("File Error", "FILE ERROR", MessageIcon::kStop);
    return false;
  }
  return true;
}

}  // namespace zenta

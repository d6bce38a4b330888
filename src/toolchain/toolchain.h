#pragma once
// The main window's tool buttons and TOOL menu items: the assembler and C
// compiler runs, the error window's text, and the external and built-in
// editors. What the runs need of the main window (its file name box, notes
// line, TEST box and HEX load) comes through a ToolPanel, so this model
// knows nothing of the window that hosts it.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "common/colours.h"
#include "common/host.h"
#include "image/programmer_state.h"
#include "toolchain/tool_names.h"
#include "toolchain/tool_settings.h"

namespace zenta {

struct ToolPanel {
  std::function<std::string()> file_name;                 // FilenameTextbox
  std::function<void(const std::string&)> set_file_name;  // FilenameTextbox
  std::function<void(const std::string&, std::uint32_t)> notes;
  std::function<void(const std::string&)> test_box;  // TEST
  std::function<void()> load_hex;                    // LOAD_HEX of HexFileName
  // The status line under the notes line: why a button did nothing.
  std::function<void(const std::string&)> status;
  // True while a chip operation runs; a finished run loads its image after it.
  std::function<bool()> busy;
  // The "exact" setting: the documented editor and runs, none of the checks.
  std::function<bool()> exact;
  // The toolchain's own windows, kept by the panel.
  std::function<void()> show_editor;
  std::function<bool()> editor_visible;
  std::function<void()> show_errors;
};

class Toolchain {
 public:
  // Timer1 ticks (100 ms) a run waits before it looks at the tool's files,
  // and the most it waits for the tool to end.
  static constexpr int kWaitTicks = 11;
  static constexpr int kLimitTicks = 600;

  Toolchain(const ToolSettings& tools, ProgrammerState& state, Host& host, ToolPanel panel);
  ~Toolchain();
  Toolchain(const Toolchain&) = delete;
  Toolchain& operator=(const Toolchain&) = delete;

  // ---- tool runs ----
  void ASSMButton_Click();
  void C_Button_Click();
  // Each Timer1 tick, after Timer1 has lowered WaitTicks.
  void Timer1_Tick();
  bool running() const { return run_ != nullptr; }
  const std::string& ToolErrorFile() const { return tool_error_file_; }
  // What a tool printed when it failed without writing messages; shown in
  // the error window after the error file's text.
  const std::string& ToolOutput() const { return tool_output_; }

  // ---- error window ----
  // The text ErrText shows when the window opens: the error file's lines,
  // each followed by CR LF, then what the tool printed, if it failed so.
  std::string error_view_text() const;
  // A double-click on a line of ErrText. A message line of the assembler
  // opens the built-in editor at its line; returns whether it was one.
  bool ErrText_DblClick(const std::string& line);

  // ---- editors ----
  void EditorButton_Click();
  void New_EditorButton_Click();
  // The built-in editor on `file` at `line` (1-based). An open editor on the
  // same file goes to the line; one open on another file is only brought
  // forward, so its unsaved text is not lost. Checked, the target stays as
  // it is (the file may be one the source includes); exact, the file goes
  // into the file name box, which the editor loads and saves.
  void open_editor_at(const std::string& file, int line);
  // The built-in editor's load: the text of the file in the file name box
  // (or the one open_editor_at asked for), empty when there is none or it
  // cannot be read. Exact, each line is followed by CR LF; checked, the
  // text is the file's own, whose line ends the save keeps. Remembers the
  // file for open_editor_at and SAVE.
  std::string load_editor();
  // The editor window's title: "Editor", and checked, the file's name.
  std::string editor_title() const;
  // The line the editor should show after it loads or comes forward; 0
  // for none. Reading it clears it.
  int take_editor_line();
  // Set by the open editor window, to be told of a line to go to.
  std::function<void(int line)> on_editor_line;
  void editor_closed() { editor_file_.clear(); }
  // SAVE with the editor's text as the window holds it (lines ending in LF).
  // Exact, it writes the file in the file name box, with CR LF line ends
  // and one more; checked, the file the editor loaded, as it was laid out.
  // Either asks for a name when it has none. Returns whether it wrote.
  bool save_editor(const std::string& text);

 private:
  struct Run;
  void start_run(ToolKind kind);
  void finish_run();
  void fail_run(const std::string& text, const std::string& title);
  void notes(const std::string& text, std::uint32_t color);
  bool exact() const { return panel_.exact && panel_.exact(); }
  void show_editor() {
    if (panel_.show_editor) panel_.show_editor();
  }
  void test_box(const std::string& text);

  const ToolSettings& tools_;
  ProgrammerState& state_;
  Host& host_;
  ToolPanel panel_;
  std::unique_ptr<Run> run_;
  std::string tool_error_file_;
  std::string tool_output_;
  std::string editor_file_;
  // Checked: the file open_editor_at asked the next load for, and the line
  // ends of the loaded file (CR LF or LF).
  std::string editor_request_;
  bool editor_crlf_ = false;
  int editor_line_ = 0;
};

}  // namespace zenta

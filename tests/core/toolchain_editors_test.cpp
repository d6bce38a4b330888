// The editor launches, the built-in editor's files and the message lines
// that open it, through the main form.
#include <gtest/gtest.h>

#include <filesystem>

#include "toolchain_rig.h"

namespace zenta {
namespace {

TEST(Editors, ExternalEditorGetsTheTargetAsOneArgumentAndBuiltInOpensOtherwise) {
  struct Case {
    std::string folder, command, target;
    bool new_file, starts;
    std::string test, box;
  };
  const Case cases[] = {
      {"/opt/tools", "ed", "/src/a.asm", false, true, "/opt/tools/ed /src/a.asm", ""},
      {"/opt/my tools", "ed -n", "/my src/a b.asm", false, true,
       "/opt/my tools/ed -n /my src/a b.asm", ""},
      {"/opt/tools", "ed", "/src/a.asm", false, false, "/opt/tools/ed /src/a.asm",
       "File not found"},
      {"/opt/tools", "ed", "/src/a.asm", true, true, "/opt/tools/ed ", ""},
      // No editor set up: the built-in one.
      {"", "", "/src/a.asm", false, true, "/ /src/a.asm", ""},
      {"", "", "/src/a.asm", true, true, "/ ", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.test);
    Runs r("a.asm");
    r.rig.tools.EditorFolder = c.folder;
    r.rig.tools.EditorCommand = c.command;
    r.rig.state.TargetFileName = c.target;
    r.rig.form.view().FilenameTextbox = c.target;
    if (!c.starts) r.rig.host.tool = nullptr;
    c.new_file ? r.rig.form.New_EditorButton_Click() : r.rig.form.EditorButton_Click();
    const bool builtin = c.command.empty();
    EXPECT_EQ(r.rig.form.view().TEST, c.test);
    EXPECT_EQ(r.rig.form.view().NotesLabel, "Open EDITER");
    EXPECT_EQ(r.rig.form.view().NotesColor, kLavender);
    EXPECT_EQ(r.box_texts(),
              c.box.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.box});
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, c.new_file ? "" : c.target);
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kEditor), builtin ? 1u : 0u);
    ASSERT_EQ(r.rig.host.tool_starts.size(), builtin ? 0u : 1u);
    if (builtin) continue;
    EXPECT_TRUE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command, c.folder + "/" + c.command);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, c.new_file ? "" : c.target);
  }
}

// An empty file name box asks for a name; a cancelled dialog writes nothing.
TEST(Editors, BuiltInEditorAsksForANameOnlyWhenItHasNone) {
  Runs r("two.asm");
  Toolchain& tools = r.rig.form.toolchain();
  r.rig.form.view().FilenameTextbox.clear();
  r.rig.state.TargetFileName.clear();
  EXPECT_FALSE(tools.save_editor("X\n"));
  EXPECT_EQ(r.rig.host.save_filters, std::vector<std::string>{"ASM FILES|*.asm|ALL FILES|*.*|"});
  EXPECT_EQ(r.rig.form.view().FilenameTextbox, "");
  EXPECT_EQ(r.rig.state.TargetFileName, "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(r.dir.path()), {}), 0);

  const std::string chosen = r.dir.file("new.asm");
  r.rig.host.save_answers.push_back(chosen);
  EXPECT_TRUE(tools.save_editor("X"));
  EXPECT_EQ(read_text(chosen), "X\r\n");
  EXPECT_EQ(r.rig.form.view().FilenameTextbox, chosen);
  EXPECT_EQ(r.rig.state.TargetFileName, chosen);

  r.rig.form.view().FilenameTextbox = r.dir.file("no/folder/x.asm");
  EXPECT_FALSE(tools.save_editor("Y\n"));
  EXPECT_EQ(r.box_texts(), std::vector<std::string>{"File Error"});
  EXPECT_EQ(r.rig.host.boxes[0].title, "FILE ERROR");
}

// Checked, the editor keeps the file's own layout and saves to the file it
// loaded, whatever the file name box holds by then; exact, the box decides.
TEST(Editors, CheckedEditorSavesTheFileItLoadedAsItWasLaidOut) {
  const struct {
    const char* name;
    bool exact;
    std::string file, loads, edited, saves;
  } cases[] = {
      {"LF, no last line end", false, "A\nB", "A\nB", "A\nC", "A\nC"},
      {"LF", false, "A\nB\n", "A\nB\n", "A\nC\n", "A\nC\n"},
      {"CR LF", false, "A\r\nB\r\n", "A\r\nB\r\n", "A\nC\n", "A\r\nC\r\n"},
      {"exact", true, "A\nB", "A\r\nB\r\n", "A\nC\n", "A\r\nC\r\n\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Runs r("a.asm", c.exact);
    write_text(r.source, c.file);
    const std::string hex = r.dir.file("b.hex");
    write_text(hex, kHex);
    Toolchain& tools = r.rig.form.toolchain();
    EXPECT_EQ(tools.load_editor(), c.loads);
    EXPECT_EQ(tools.editor_title(), c.exact ? "Editor" : "Editor - a.asm");
    // A HEX file chosen while the editor is open.
    r.rig.form.open_file(hex);
    ASSERT_TRUE(tools.save_editor(c.edited));
    EXPECT_EQ(read_text(c.exact ? hex : r.source), c.saves);
    EXPECT_EQ(read_text(c.exact ? r.source : hex), c.exact ? c.file : kHex);
    EXPECT_TRUE(r.rig.host.save_filters.empty());
  }
  // A new file has no name until the save asks for one.
  Runs r("a.asm", false);
  r.rig.form.New_EditorButton_Click();
  Toolchain& tools = r.rig.form.toolchain();
  EXPECT_EQ(tools.load_editor(), "");
  EXPECT_EQ(tools.editor_title(), "Editor - new file");
  r.rig.form.view().FilenameTextbox = r.source;
  r.rig.host.save_answers.push_back(r.dir.file("new.asm"));
  EXPECT_TRUE(tools.save_editor("N\n"));
  EXPECT_EQ(read_text(r.dir.file("new.asm")), "N\n");
  EXPECT_FALSE(std::filesystem::exists(r.source));
  EXPECT_EQ(tools.editor_title(), "Editor - new.asm");
}

TEST(Editors, MessageLineOpensTheEditorAtItsLineUnlessAnotherFileIsOpen) {
  Runs r("bad.asm");
  write_text(r.source, "a\nb\nc\n");
  r.rig.state.TargetFileName = r.source;
  r.rig.form.view().FilenameTextbox.clear();
  Toolchain& tools = r.rig.form.toolchain();
  EXPECT_FALSE(tools.ErrText_DblClick("Assembler ERROR"));
  EXPECT_TRUE(r.rig.host.shown.empty());

  // Relative to the source's folder, as gpasm names included files.
  EXPECT_TRUE(tools.ErrText_DblClick("bad.asm:3:Error[113] x"));
  EXPECT_EQ(r.rig.form.view().FilenameTextbox, r.source);
  EXPECT_EQ(r.rig.host.shown, std::vector<WindowId>{WindowId::kEditor});
  tools.load_editor();  // what the window does when it opens
  EXPECT_EQ(tools.take_editor_line(), 3);
  EXPECT_EQ(tools.take_editor_line(), 0);

  int told = 0;
  tools.on_editor_line = [&](int line) { told = line; };
  EXPECT_TRUE(tools.ErrText_DblClick("Error[113]   " + r.source + " 2 : y"));
  EXPECT_EQ(told, 2);
  EXPECT_EQ(r.rig.host.beeps, 0);

  told = 0;
  EXPECT_TRUE(tools.ErrText_DblClick("Error[113]   " + r.dir.file("other.asm") + " 5 : z"));
  EXPECT_EQ(told, 0);
  EXPECT_EQ(r.rig.host.beeps, 1);
  EXPECT_EQ(r.rig.form.view().FilenameTextbox, r.source);
}

// A message in a file the source includes opens that file; checked, the
// source stays the target, so the next run assembles it again.
TEST(Editors, MessageInAnIncludedFileLeavesTheTargetUnlessExact) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("bad.asm", exact);
    write_text(r.source, "\tinclude defs.inc\n");
    const std::string include = r.dir.file("defs.inc");
    write_text(include, "x\ny\n");
    r.rig.state.TargetFileName = r.source;
    Toolchain& tools = r.rig.form.toolchain();
    EXPECT_TRUE(tools.ErrText_DblClick("Error[113]   defs.inc 2 : Symbol not previously defined"));
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, exact ? include : r.source);
    EXPECT_EQ(r.rig.state.TargetFileName, exact ? include : r.source);
    EXPECT_EQ(tools.load_editor(), exact ? "x\r\ny\r\n" : "x\ny\n");
    EXPECT_EQ(tools.take_editor_line(), 2);
    ASSERT_TRUE(tools.save_editor("x\nY\n"));
    EXPECT_EQ(read_text(include), exact ? "x\r\nY\r\n\r\n" : "x\nY\n");
    EXPECT_EQ(read_text(r.source), "\tinclude defs.inc\n");
    if (exact) continue;
    EXPECT_EQ(tools.editor_title(), "Editor - defs.inc");
    // A request the editor never took does not outlive the Editor button.
    tools.editor_closed();
    r.rig.host.visible.clear();
    tools.ErrText_DblClick("Error[113]   defs.inc 1 : x");
    r.rig.form.EditorButton_Click();
    EXPECT_EQ(tools.load_editor(), "\tinclude defs.inc\n");
    r.rig.form.ASSMButton_Click();
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, r.source);
  }
}

}  // namespace
}  // namespace zenta

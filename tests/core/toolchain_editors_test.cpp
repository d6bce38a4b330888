// The editor launches, the built-in editor's files and the message lines
// that open it, through the main form.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "toolchain_rig.h"

namespace zenta {
namespace {

TEST(Editors, ExternalEditorGetsTheTargetAsOneArgumentAndBuiltInOpensOtherwise) {
  struct Case {
    std::string folder, command, target;
    bool new_file, starts;
    std::string test;
  };
  const Case cases[] = {
      {"/opt/tools", "ed", "/src/a.asm", false, true, "/opt/tools/ed /src/a.asm"},
      {"/opt/my tools", "ed -n", "/my src/a b.asm", false, true,
       "/opt/my tools/ed -n /my src/a b.asm"},
      {"/opt/tools", "ed", "/src/a.asm", false, false, "/opt/tools/ed /src/a.asm"},
      {"/opt/tools", "ed", "/src/a.asm", true, true, "/opt/tools/ed "},
      // No editor set up: the built-in one.
      {"", "", "/src/a.asm", false, true, "/ /src/a.asm"},
      {"", "", "/src/a.asm", true, true, "/ "},
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
    EXPECT_EQ(r.box_texts().size(), c.starts ? 0u : 1u);
    EXPECT_TRUE(c.starts || r.box_texts()[0] == "File not found");
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, c.new_file ? "" : c.target);
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kEditor), builtin ? 1u : 0u);
    ASSERT_EQ(r.rig.host.tool_starts.size(), builtin ? 0u : 1u);
    if (builtin) continue;
    EXPECT_TRUE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command, c.folder + "/" + c.command);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, c.new_file ? "" : c.target);
  }
}

// A new file has no name until the save asks for one, whatever the file name
// box holds by then when checked; a cancelled dialog writes nothing.
TEST(Editors, NewFileIsNamedWhenSaved) {
  for (const bool exact : {true, false}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("a.asm", exact);
    Toolchain& tools = r.rig.form.toolchain();
    r.rig.form.New_EditorButton_Click();
    EXPECT_EQ(tools.load_editor(), "");
    EXPECT_EQ(tools.editor_title(), exact ? "Editor" : "Editor - new file");
    if (!exact) r.rig.form.view().FilenameTextbox = r.source;
    EXPECT_FALSE(tools.save_editor("X\n"));
    EXPECT_EQ(r.rig.host.save_filters, std::vector<std::string>{"ASM FILES|*.asm|ALL FILES|*.*|"});
    EXPECT_EQ(r.rig.state.TargetFileName, "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(r.dir.path()), {}), 0);

    const std::string chosen = r.dir.file("new.asm");
    r.rig.host.save_answers.push_back(chosen);
    EXPECT_TRUE(tools.save_editor("N"));
    EXPECT_EQ(read_text(chosen), exact ? "N\r\n" : "N");
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, chosen);
    EXPECT_EQ(r.rig.state.TargetFileName, chosen);
    EXPECT_FALSE(std::filesystem::exists(r.source));
    EXPECT_EQ(tools.editor_title(), exact ? "Editor" : "Editor - new.asm");
  }
  Runs r("two.asm");
  r.rig.form.view().FilenameTextbox = r.dir.file("no/folder/x.asm");
  EXPECT_FALSE(r.rig.form.toolchain().save_editor("Y\n"));
  EXPECT_EQ(r.box_texts(), std::vector<std::string>{"File Error"});
  EXPECT_EQ(r.rig.host.boxes[0].title, "FILE ERROR");
}

// Checked, the editor keeps the file's own layout and saves to the file it
// loaded, whatever the file name box holds by then; exact, the box decides.
TEST(Editors, CheckedEditorSavesTheFileItLoadedAsItWasLaidOut) {
  // The file, as loaded; the text edited, as saved.
  using Row = std::tuple<bool, std::string, std::string, std::string, std::string>;
  for (const auto& [exact, file, loads, edited, saves] :
       std::vector<Row>{{false, "A\nB", "A\nB", "A\nC", "A\nC"},
                        {false, "A\nB\n", "A\nB\n", "A\nC\n", "A\nC\n"},
                        {false, "A\r\nB\r\n", "A\r\nB\r\n", "A\nC\n", "A\r\nC\r\n"},
                        {true, "A\nB", "A\r\nB\r\n", "A\nC\n", "A\r\nC\r\n\r\n"}}) {
    SCOPED_TRACE(file);
    Runs r("a.asm", exact);
    write_text(r.source, file);
    const std::string hex = r.dir.file("b.hex");
    write_text(hex, kHex);
    Toolchain& tools = r.rig.form.toolchain();
    EXPECT_EQ(tools.load_editor(), loads);
    EXPECT_EQ(tools.editor_title(), exact ? "Editor" : "Editor - a.asm");
    // A HEX file chosen while the editor is open.
    r.rig.form.open_file(hex);
    ASSERT_TRUE(tools.save_editor(edited));
    EXPECT_EQ(read_text(exact ? hex : r.source), saves);
    EXPECT_EQ(read_text(exact ? r.source : hex), exact ? file : kHex);
    EXPECT_TRUE(r.rig.host.save_filters.empty());
  }
}

// A message line opens the editor at its line, in the file it names
// (relative to the source's folder, as gpasm names included files); while
// the editor shows another file, it only beeps. Checked, the source stays the
// target, so the next run assembles it again.
TEST(Editors, MessageLineOpensItsFileAtItsLine) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("bad.asm", exact);
    write_text(r.source, "\tinclude defs.inc\n");
    const std::string include = r.dir.file("defs.inc");
    write_text(include, "x\ny\n");
    r.rig.state.TargetFileName = r.source;
    Toolchain& tools = r.rig.form.toolchain();
    EXPECT_FALSE(tools.ErrText_DblClick("Assembler ERROR"));
    EXPECT_TRUE(r.rig.host.shown.empty());
    EXPECT_TRUE(tools.ErrText_DblClick("Error[113]   defs.inc 2 : Symbol not previously defined"));
    EXPECT_EQ(r.rig.host.shown, std::vector<WindowId>{WindowId::kEditor});
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, exact ? include : r.source);
    EXPECT_EQ(r.rig.state.TargetFileName, exact ? include : r.source);
    EXPECT_EQ(tools.load_editor(), exact ? "x\r\ny\r\n" : "x\ny\n");
    EXPECT_EQ(tools.take_editor_line(), 2);
    EXPECT_EQ(tools.take_editor_line(), 0);

    int told = 0;
    tools.on_editor_line = [&](int line) { told = line; };
    EXPECT_TRUE(tools.ErrText_DblClick("defs.inc:1:Error[113] x"));
    EXPECT_EQ(std::pair(told, r.rig.host.beeps), std::pair(1, 0));
    told = 0;
    EXPECT_TRUE(tools.ErrText_DblClick("Error[113]   " + r.dir.file("other.asm") + " 5 : z"));
    EXPECT_EQ(std::pair(told, r.rig.host.beeps), std::pair(0, 1));
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, exact ? include : r.source);

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

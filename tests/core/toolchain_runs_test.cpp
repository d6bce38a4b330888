// The tool runs and editor launches through the main form, with a fake
// host whose "tools" write their files when they end, and the simulated
// unit as the peer.
#include <gtest/gtest.h>

#include <filesystem>

#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::FakeTool;
using testing::PanelRig;
using testing::read_text;
using testing::TempDir;
using testing::write_text;

constexpr const char* kHex = ":0400000001280800CB\n:00000001FF\n";  // goto 1; nop at 1

// A panel with a source in a temporary folder, recording every text the
// TEST box shows, in order.
struct Runs {
  explicit Runs(const std::string& source_name, bool exact = true)
      : rig("16F877A", 1, exact), source(dir.file(source_name)) {
    rig.host.folder = dir.path().string();
    rig.tools = {"/opt/gputils", "gpasm -k", "/opt/cc", "cc -Ecerr.txt", "", ""};
    rig.form.view().FilenameTextbox = source;
    rig.form.on_changed = [this] {
      const std::string& test = rig.form.view().TEST;
      if (!test.empty() && (tests.empty() || tests.back() != test)) tests.push_back(test);
    };
  }
  // Ticks Timer1 until the run has ended; returns the ticks it took.
  int tick_until_done(int limit = 2000) {
    int ticks = 0;
    while (rig.form.toolchain().running() && ticks < limit) {
      rig.form.Timer1_Timer();
      ++ticks;
    }
    return ticks;
  }
  std::vector<std::string> box_texts() const { return rig.box_texts(); }

  TempDir dir;
  PanelRig rig;
  std::string source;
  std::vector<std::string> tests;
};

TEST(ToolRuns, EachOutcomeOfAnAssemblerOrCompilerRun) {
  struct Case {
    const char* name;
    bool assembler;
    std::string source;
    // What the tool writes when it ends, beside the source ("" writes nothing).
    std::string err_name, err_text, hex_name;
    int status;
    bool starts;
    std::string notes;
    std::vector<std::string> boxes;
    bool loaded;
    bool error_window;
  };
  const Case cases[] = {
      {"clean assembly",
       true,
       "blink.asm",
       "blink.ERR",
       "",
       "blink.HEX",
       0,
       true,
       "Assembler complete",
       {},
       true,
       false},
      {"tool writes lower case names",
       true,
       "blink.ASM",
       "blink.err",
       "",
       "blink.hex",
       0,
       true,
       "Assembler complete",
       {},
       true,
       false},
      {"messages in the error file",
       true,
       "bad.asm",
       "bad.err",
       "Error[113] x 1 : y\n",
       "",
       1,
       true,
       "Assembler ERROR",
       {},
       false,
       true},
      {"no error file",
       true,
       "blink.asm",
       "",
       "",
       "blink.HEX",
       0,
       true,
       "Assembler",
       {"File not found"},
       false,
       false},
      {"failed without messages",
       true,
       "blink.asm",
       "blink.ERR",
       "",
       "",
       2,
       true,
       "Assembler ERROR",
       {},
       false,
       true},
      {"assembler cannot start",
       true,
       "blink.asm",
       "",
       "",
       "",
       0,
       false,
       "Assembler",
       {"File not found"},
       false,
       false},
      {"clean compile",
       false,
       "main.C",
       "cerr.txt",
       "",
       "main.HEX",
       0,
       true,
       "Compile complete",
       {},
       true,
       false},
      {"compiler writes no message file",
       false,
       "main.c",
       "",
       "",
       "main.HEX",
       0,
       true,
       "Compile complete",
       {},
       true,
       false},
      {"compiler messages",
       false,
       "main.c",
       "cerr.txt",
       "main.c:3: error\n",
       "",
       1,
       true,
       "Compile ERROR",
       {},
       false,
       true},
      {"compiler cannot start",
       false,
       "main.c",
       "",
       "",
       "",
       0,
       false,
       "Compile",
       {"File not found"},
       false,
       false},
      {"compile without a HEX file",
       false,
       "main.c",
       "cerr.txt",
       "",
       "",
       0,
       true,
       "Compile complete",
       {"Can't Open or Read the FILE"},
       false,
       false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Runs r(c.source);
    if (c.starts) {
      r.rig.host.tool->status = c.status;
      r.rig.host.tool->output = "tool says no";
      r.rig.host.tool->on_end = [&r, &c] {
        if (!c.err_name.empty()) write_text(r.dir.file(c.err_name), c.err_text);
        if (!c.hex_name.empty()) write_text(r.dir.file(c.hex_name), kHex);
      };
    } else {
      r.rig.host.tool = nullptr;
    }
    c.assembler ? r.rig.form.ASSMButton_Click() : r.rig.form.C_Button_Click();
    r.tick_until_done();
    EXPECT_EQ(r.rig.form.view().NotesLabel, c.notes);
    EXPECT_EQ(r.rig.form.view().NotesColor, c.notes.ends_with("ERROR") ? kRed : kWhite);
    EXPECT_EQ(r.box_texts(), c.boxes);
    EXPECT_EQ(r.rig.state.DataLoaded, c.loaded ? 1 : 0);
    if (c.loaded) {
      EXPECT_EQ(r.rig.state.word(0), 0x2801);
      EXPECT_EQ(r.rig.state.word(1), 0x0008);
    }
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kErrorView), c.error_window ? 1u : 0u);
    EXPECT_EQ(r.rig.state.TargetFileName, r.source);
    EXPECT_EQ(r.rig.state.WaitTicks, 0);
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, r.source);
    EXPECT_FALSE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command,
              c.assembler ? "/opt/gputils/gpasm -k" : "/opt/cc/cc -Ecerr.txt");
    if (c.status != 0 && c.err_text.empty()) {
      EXPECT_NE(r.rig.form.toolchain().error_view_text().find("tool says no"), std::string::npos);
    }
  }
}

TEST(ToolRuns, TestBoxShowsErrorFileCommandLineAndHexFileInTurn) {
  for (const bool assembler : {true, false}) {
    Runs r(assembler ? "test.ASM" : "main.C");
    const std::string stem = r.source.substr(0, r.source.size() - (assembler ? 3 : 1));
    r.rig.host.tool->on_end = [&] {
      write_text(assembler ? stem + "ERR" : r.dir.file("cerr.txt"), "");
      write_text(stem + "HEX", kHex);
    };
    assembler ? r.rig.form.ASSMButton_Click() : r.rig.form.C_Button_Click();
    r.tick_until_done();
    std::vector<std::string> expected;
    if (assembler) expected.push_back(stem + "ERR");
    expected.push_back((assembler ? "/opt/gputils/gpasm -k " : "/opt/cc/cc -Ecerr.txt ") +
                       r.source);
    expected.push_back(stem + "HEX");
    EXPECT_EQ(r.tests, expected);
    EXPECT_EQ(r.rig.state.HexFileName, stem + "HEX");
    EXPECT_EQ(r.rig.form.toolchain().ToolErrorFile(),
              assembler ? stem + "ERR" : r.dir.file("cerr.txt"));
  }
}

TEST(ToolRuns, PathsThatAreNotSourcesStartNothing) {
  struct Case {
    std::string box;
    bool assembler;
    int beeps;
  };
  for (const Case& c :
       {Case{"", true, 1}, Case{"", false, 1}, Case{"/src/Test.Asm", true, 0},
        Case{"/src/main.c", true, 0}, Case{"/src/blink.asm", false, 0}, Case{"sm", true, 0}}) {
    SCOPED_TRACE(c.box);
    Runs r("x");
    r.rig.form.view().FilenameTextbox = c.box;
    r.rig.form.view().NotesLabel = "before";
    c.assembler ? r.rig.form.ASSMButton_Click() : r.rig.form.C_Button_Click();
    EXPECT_EQ(r.rig.host.beeps, c.beeps);
    EXPECT_TRUE(r.rig.host.tool_starts.empty());
    EXPECT_EQ(r.rig.form.view().NotesLabel, "before");
    EXPECT_TRUE(r.rig.state.TargetFileName.empty());
    EXPECT_FALSE(r.rig.form.toolchain().running());
  }
}

// The run looks at the files after eleven ticks when the tool has ended by
// then, and otherwise as soon as it ends; WRITE stays idle all the while
// and sends nothing.
TEST(ToolRuns, WaitsElevenTicksThenForTheToolAndHoldsWriteMeanwhile) {
  // The fake tool is first asked after the wait; it ends at its polls-th answer.
  for (const int polls : {0, 2, 20, Toolchain::kLimitTicks - 10}) {
    SCOPED_TRACE(polls);
    Runs r("blink.asm");
    r.rig.host.tool->polls = polls;
    r.rig.host.tool->on_end = [&] {
      write_text(r.dir.file("blink.ERR"), "");
      write_text(r.dir.file("blink.HEX"), kHex);
    };
    r.rig.form.ASSMButton_Click();
    EXPECT_EQ(r.rig.state.WaitTicks, 50);
    int ticks = 0;
    while (r.rig.form.toolchain().running()) {
      EXPECT_TRUE(r.rig.form.WriteButton_Click().refused) << "tick " << ticks;
      r.rig.form.Timer1_Timer();
      ++ticks;
      ASSERT_LT(ticks, 700);
    }
    EXPECT_EQ(ticks, polls <= 1 ? 11 : 10 + polls);
    EXPECT_TRUE(r.rig.unit.trace().empty());
    EXPECT_EQ(r.rig.form.view().NotesLabel, "Assembler complete");
    EXPECT_EQ(r.rig.state.WaitTicks, 0);
  }
}

TEST(ToolRuns, ToolThatNeverEndsIsStoppedAfterSixtySeconds) {
  Runs r("blink.asm");
  r.rig.host.tool->polls = 100000;
  r.rig.form.ASSMButton_Click();
  EXPECT_EQ(r.tick_until_done(), Toolchain::kLimitTicks);
  EXPECT_TRUE(r.rig.host.tool->killed);
  ASSERT_EQ(r.rig.host.boxes.size(), 1u);
  EXPECT_EQ(r.rig.host.boxes[0].title, "TOOL ERROR");
  EXPECT_EQ(r.rig.form.view().NotesLabel, "Assembler ERROR");
  EXPECT_EQ(r.rig.state.WaitTicks, 0);
  EXPECT_EQ(r.rig.state.DataLoaded, 0);
}

TEST(ToolRuns, SecondRunWhileOneWorksOnlyBeeps) {
  Runs r("blink.asm");
  r.rig.host.tool->polls = 20;
  r.rig.form.ASSMButton_Click();
  r.rig.form.ASSMButton_Click();
  r.rig.form.C_Button_Click();
  EXPECT_EQ(r.rig.host.beeps, 2);
  EXPECT_EQ(r.rig.host.tool_starts.size(), 1u);
}

// Checked, a tool runs in its source's folder and leaves its files there;
// exact, in the panel's folder, where the compiler's cerr.txt is then read.
TEST(ToolRuns, ToolsRunInTheSourcesFolderUnlessExact) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("src/main.c", exact);
    std::filesystem::create_directory(r.dir.file("src"));
    const std::string folder = exact ? "" : r.dir.file("src");
    r.rig.host.tool->on_end = [&] {
      write_text(r.dir.file(exact ? "cerr.txt" : "src/cerr.txt"), "main.c:1: error\n");
    };
    r.rig.form.C_Button_Click();
    r.tick_until_done();
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].folder, folder);
    EXPECT_EQ(r.rig.form.view().NotesLabel, "Compile ERROR");
    EXPECT_EQ(r.rig.form.toolchain().error_view_text(), "main.c:1: error\r\n");
  }
  // A relative path reaches a tool in the source's folder as a whole path.
  Runs r("x.c", false);
  r.rig.form.view().FilenameTextbox = "sub/main.c";
  r.rig.form.C_Button_Click();
  ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
  EXPECT_EQ(r.rig.host.tool_starts[0].folder, r.dir.file("sub"));
  EXPECT_EQ(r.rig.host.tool_starts[0].argument, r.dir.file("sub/main.c"));
}

TEST(ToolRuns, LeftoverCompilerMessagesFromAnEarlierRunAreIgnored) {
  namespace fs = std::filesystem;
  Runs r("main.c");
  write_text(r.dir.file("cerr.txt"), "main.c:1: old error\n");
  fs::last_write_time(r.dir.file("cerr.txt"),
                      fs::file_time_type::clock::now() - std::chrono::hours(1));
  r.rig.host.tool->on_end = [&] { write_text(r.dir.file("main.HEX"), kHex); };
  r.rig.form.C_Button_Click();
  r.tick_until_done();
  EXPECT_EQ(r.rig.form.view().NotesLabel, "Compile complete");
  EXPECT_EQ(r.rig.state.DataLoaded, 1);
}

// A chip operation that lets events run keeps its buffer: the image of a
// run that ends meanwhile is loaded after it.
TEST(ToolRuns, ImageLoadsOnlyAfterARunningChipOperation) {
  Runs r("blink.asm");
  r.rig.host.tool->on_end = [&] {
    write_text(r.dir.file("blink.ERR"), "");
    write_text(r.dir.file("blink.HEX"), kHex);
  };
  r.rig.form.ASSMButton_Click();
  for (int i = 0; i < 10; ++i) r.rig.form.Timer1_Timer();
  bool loaded_during_read = true;
  r.rig.host.during_events = [&] {
    r.rig.form.Timer1_Timer();
    r.rig.form.Timer1_Timer();
    loaded_during_read = r.rig.state.DataLoaded == 1;
  };
  r.rig.form.view().LastAddrText = "10";
  r.rig.form.READ_Click();
  EXPECT_FALSE(loaded_during_read);
  r.tick_until_done();
  EXPECT_EQ(r.rig.form.view().NotesLabel, "Assembler complete");
  EXPECT_EQ(r.rig.state.word(0), 0x2801);
}

TEST(ErrorView, ShowsTheErrorFileLineByLineThenWhatAFailedToolPrinted) {
  Runs r("bad.asm");
  r.rig.host.tool->status = 1;
  r.rig.host.tool->on_end = [&] { write_text(r.dir.file("bad.ERR"), "one\ntwo\r\nthree"); };
  r.rig.form.ASSMButton_Click();
  r.tick_until_done();
  EXPECT_EQ(r.rig.form.toolchain().error_view_text(), "one\r\ntwo\r\nthree\r\n");
}

TEST(Editors, ExternalEditorGetsTheTargetAsOneArgumentAndBuiltInOpensOtherwise) {
  struct Case {
    std::string folder, command, target;
    bool new_file;
    bool starts;
    std::string test;
    bool builtin;
    std::vector<std::string> boxes;
  };
  const Case cases[] = {
      {"/opt/tools", "ed", "/src/a.asm", false, true, "/opt/tools/ed /src/a.asm", false, {}},
      {"/opt/my tools",
       "ed -n",
       "/my src/a b.asm",
       false,
       true,
       "/opt/my tools/ed -n /my src/a b.asm",
       false,
       {}},
      {"/opt/tools",
       "ed",
       "/src/a.asm",
       false,
       false,
       "/opt/tools/ed /src/a.asm",
       false,
       {"File not found"}},
      {"/opt/tools", "ed", "/src/a.asm", true, true, "/opt/tools/ed ", false, {}},
      {"", "", "/src/a.asm", false, true, "/ /src/a.asm", true, {}},
      {"", "", "/src/a.asm", true, true, "/ ", true, {}},
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
    EXPECT_EQ(r.rig.form.view().TEST, c.test);
    EXPECT_EQ(r.rig.form.view().NotesLabel, "Open EDITER");
    EXPECT_EQ(r.rig.form.view().NotesColor, kLavender);
    EXPECT_EQ(r.box_texts(), c.boxes);
    EXPECT_EQ(r.rig.form.view().FilenameTextbox, c.new_file ? "" : c.target);
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kEditor), c.builtin ? 1u : 0u);
    if (c.builtin) {
      EXPECT_TRUE(r.rig.host.tool_starts.empty());
      continue;
    }
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_TRUE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command, c.folder + "/" + c.command);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, c.new_file ? "" : c.target);
  }
}

TEST(Editors, BuiltInEditorLoadsAndSavesWithOneLineBreakMore) {
  Runs r("two.asm");
  write_text(r.source, "A\nB");
  Toolchain& tools = r.rig.form.toolchain();
  const std::string loaded = tools.load_editor();
  EXPECT_EQ(loaded, "A\r\nB\r\n");
  EXPECT_EQ(tools.editor_title(), "Editor");
  // The text box holds LF line ends.
  ASSERT_TRUE(tools.save_editor("A\nB\n"));
  EXPECT_EQ(read_text(r.source), "A\r\nB\r\n\r\n");
  EXPECT_TRUE(r.rig.host.save_filters.empty());

  // An empty box asks for a name; a cancelled dialog writes nothing.
  r.rig.form.view().FilenameTextbox.clear();
  r.rig.state.TargetFileName.clear();
  EXPECT_FALSE(tools.save_editor("X\n"));
  EXPECT_EQ(r.rig.host.save_filters, std::vector<std::string>{"ASM FILES|*.asm|ALL FILES|*.*|"});
  EXPECT_EQ(r.rig.form.view().FilenameTextbox, "");
  EXPECT_EQ(r.rig.state.TargetFileName, "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(r.dir.path()), {}), 1);

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

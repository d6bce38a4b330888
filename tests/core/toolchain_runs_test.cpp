// The tool runs through the main form, with a fake host whose "tools"
// write their files when they end, and the simulated unit as the peer.
#include <gtest/gtest.h>

#include <filesystem>

#include "toolchain_rig.h"

namespace zenta {
namespace {

constexpr int kNoTool = -99;  // the tool cannot be started

TEST(ToolRuns, EachOutcomeOfAnAssemblerOrCompilerRun) {
  // Mixed line ends in a tool's messages show as CR LF lines.
  const std::string messages = "Error[113] x 1 : y\nsecond\r\nthird";
  struct Case {
    const char* name;
    bool assembler;
    // The source, and what the tool writes beside it when it ends ("": nothing).
    std::string source, err_file;
    bool messages;  // in the error file
    std::string hex_file;
    int status;
    std::string notes, box;
  };
  const Case cases[] = {
      {"clean assembly", true, "blink.asm", "blink.ERR", false, "blink.HEX", 0,
       "Assembler complete", ""},
      {"tool writes lower case names", true, "blink.ASM", "blink.err", false, "blink.hex", 0,
       "Assembler complete", ""},
      {"messages", true, "bad.asm", "bad.err", true, "", 1, "Assembler ERROR", ""},
      {"no error file", true, "blink.asm", "", false, "blink.HEX", 0, "Assembler",
       "File not found"},
      {"failed without messages", true, "blink.asm", "blink.ERR", false, "", 2, "Assembler ERROR",
       ""},
      {"assembler cannot start", true, "blink.asm", "", false, "", kNoTool, "Assembler",
       "File not found"},
      {"clean compile", false, "main.C", "cerr.txt", false, "main.HEX", 0, "Compile complete", ""},
      // The cerr.txt an earlier run left is no message of this one.
      {"compiler writes no message file", false, "main.c", "", false, "main.HEX", 0,
       "Compile complete", ""},
      {"compiler messages", false, "main.c", "cerr.txt", true, "", 1, "Compile ERROR", ""},
      {"compiler cannot start", false, "main.c", "", false, "", kNoTool, "Compile",
       "File not found"},
      {"compile without a HEX file", false, "main.c", "cerr.txt", false, "", 0, "Compile complete",
       "Can't Open or Read the FILE"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Runs r(c.source);
    namespace fs = std::filesystem;
    write_text(r.dir.file("cerr.txt"), "main.c:1: old error\n");
    fs::last_write_time(r.dir.file("cerr.txt"),
                        fs::file_time_type::clock::now() - std::chrono::hours(1));
    if (c.status == kNoTool) {
      r.rig.host.tool = nullptr;
    } else {
      r.rig.host.tool->status = c.status;
      r.rig.host.tool->output = "tool says no";
      std::vector<std::pair<std::string, std::string>> files;
      if (!c.err_file.empty()) files.emplace_back(c.err_file, c.messages ? messages : "");
      if (!c.hex_file.empty()) files.emplace_back(c.hex_file, kHex);
      r.tool_writes(files);
    }
    r.start(c.assembler);
    r.tick_until_done();
    const bool failed = c.notes.ends_with("ERROR");
    const bool loaded = c.notes.ends_with("complete") && c.box.empty();
    EXPECT_EQ(r.rig.form.view().NotesLabel, c.notes);
    EXPECT_EQ(r.rig.form.view().NotesColor, failed ? kRed : kWhite);
    EXPECT_EQ(r.box_texts(),
              c.box.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.box});
    EXPECT_EQ(r.rig.state.DataLoaded, loaded ? 1 : 0);
    if (loaded) {
      EXPECT_EQ(r.rig.state.word(0), 0x2801);
      EXPECT_EQ(r.rig.state.word(1), 0x0008);
    }
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kErrorView), failed ? 1u : 0u);
    EXPECT_EQ(r.rig.state.TargetFileName, r.source);
    EXPECT_EQ(r.rig.state.WaitTicks, 0);
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, r.source);
    EXPECT_FALSE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command,
              c.assembler ? "/opt/gputils/gpasm -k" : "/opt/cc/cc -Ecerr.txt");
    if (c.messages) {
      EXPECT_EQ(r.rig.form.toolchain().error_view_text(),
                "Error[113] x 1 : y\r\nsecond\r\nthird\r\n");
    } else if (failed) {
      EXPECT_NE(r.rig.form.toolchain().error_view_text().find("tool says no"), std::string::npos);
    }
  }
}

TEST(ToolRuns, TestBoxShowsErrorFileCommandLineAndHexFileInTurn) {
  for (const bool assembler : {true, false}) {
    Runs r(assembler ? "test.ASM" : "main.C");
    const std::string stem = r.source.substr(0, r.source.size() - (assembler ? 3 : 1));
    r.tool_writes(
        {{assembler ? "test.ERR" : "cerr.txt", ""}, {assembler ? "test.HEX" : "main.HEX", kHex}});
    r.start(assembler);
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
    r.start(c.assembler);
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
    r.tool_writes({{"blink.ERR", ""}, {"blink.HEX", kHex}});
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

// One run at a time: a second click only beeps; a tool that never ends is
// stopped after sixty seconds.
TEST(ToolRuns, SecondRunBeepsAndAToolThatNeverEndsIsStopped) {
  Runs r("blink.asm");
  r.rig.host.tool->polls = 100000;
  r.rig.form.ASSMButton_Click();
  r.rig.form.ASSMButton_Click();
  r.rig.form.C_Button_Click();
  EXPECT_EQ(r.rig.host.beeps, 2);
  EXPECT_EQ(r.rig.host.tool_starts.size(), 1u);
  EXPECT_EQ(r.tick_until_done(), Toolchain::kLimitTicks);
  EXPECT_TRUE(r.rig.host.tool->killed);
  ASSERT_EQ(r.rig.host.boxes.size(), 1u);
  EXPECT_EQ(r.rig.host.boxes[0].title, "TOOL ERROR");
  EXPECT_EQ(r.rig.form.view().NotesLabel, "Assembler ERROR");
  EXPECT_EQ(r.rig.state.WaitTicks, 0);
  EXPECT_EQ(r.rig.state.DataLoaded, 0);
}

// Checked, a tool runs in its source's folder and leaves its files there;
// exact, in the panel's folder, where the compiler's cerr.txt is then read.
TEST(ToolRuns, ToolsRunInTheSourcesFolderUnlessExact) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("src/main.c", exact);
    std::filesystem::create_directory(r.dir.file("src"));
    r.tool_writes({{exact ? "cerr.txt" : "src/cerr.txt", "main.c:1: error\n"}});
    r.rig.form.C_Button_Click();
    r.tick_until_done();
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].folder, exact ? "" : r.dir.file("src"));
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

// A chip operation that lets events run keeps its buffer: the image of a
// run that ends meanwhile is loaded after it.
TEST(ToolRuns, ImageLoadsOnlyAfterARunningChipOperation) {
  Runs r("blink.asm");
  r.tool_writes({{"blink.ERR", ""}, {"blink.HEX", kHex}});
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

}  // namespace
}  // namespace zenta

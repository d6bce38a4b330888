// The tool runs through the main form, with a fake host whose "tools"
// write their files when they end, and the simulated unit as the peer.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "toolchain_rig.h"

namespace zenta {
namespace {

constexpr int kNoTool = -99;  // the tool cannot be started

TEST(ToolRuns, EachOutcomeOfAnAssemblerOrCompilerRun) {
  // Mixed line ends in a tool's messages show as CR LF lines.
  const std::string messages = "Error[113] x 1 : y\nsecond\r\nthird";
  struct Case {
    bool assembler;
    // The source, and what the tool writes beside it when it ends ("": nothing).
    std::string source, err_file;
    bool messages;  // in the error file
    std::string hex_file;
    int status;
    std::string notes, box;
  };
  const Case cases[] = {
      {true, "blink.asm", "blink.ERR", false, "blink.HEX", 0, "Assembler complete", ""},
      // The tool writes the names in lower case.
      {true, "blink.ASM", "blink.err", false, "blink.hex", 0, "Assembler complete", ""},
      {true, "bad.asm", "bad.err", true, "", 1, "Assembler ERROR", ""},
      {true, "blink.asm", "", false, "blink.HEX", 0, "Assembler", "File not found"},
      // Failed without messages.
      {true, "blink.asm", "blink.ERR", false, "", 2, "Assembler ERROR", ""},
      {true, "blink.asm", "", false, "", kNoTool, "Assembler", "File not found"},
      {false, "main.C", "cerr.txt", false, "main.HEX", 0, "Compile complete", ""},
      // No message file: the cerr.txt an earlier run left is no message of this one.
      {false, "main.c", "", false, "main.HEX", 0, "Compile complete", ""},
      {false, "main.c", "cerr.txt", true, "", 1, "Compile ERROR", ""},
      {false, "main.c", "", false, "", kNoTool, "Compile", "File not found"},
      {false, "main.c", "cerr.txt", false, "", 0, "Compile complete",
       "Can't Open or Read the FILE"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
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
    const std::string command = c.assembler ? "/opt/gputils/gpasm -k" : "/opt/cc/cc -Ecerr.txt";
    if (loaded) {
      EXPECT_EQ(r.rig.state.word(0), 0x2801);
      EXPECT_EQ(r.rig.state.word(1), 0x0008);
      // The TEST box shows the error file, the command line and the HEX file in turn.
      const std::string stem = r.source.substr(0, r.source.rfind('.') + 1);
      std::vector<std::string> shown = {command + " " + r.source, stem + "HEX"};
      if (c.assembler) shown.insert(shown.begin(), stem + "ERR");
      EXPECT_EQ(r.tests, shown);
      EXPECT_EQ(r.rig.state.HexFileName, stem + "HEX");
    }
    if (!c.err_file.empty()) {
      EXPECT_EQ(r.rig.form.toolchain().ToolErrorFile(), r.dir.file(c.err_file));
    }
    EXPECT_EQ(r.rig.host.visible.count(WindowId::kErrorView), failed ? 1u : 0u);
    EXPECT_EQ(r.rig.state.TargetFileName, r.source);
    EXPECT_EQ(r.rig.state.WaitTicks, 0);
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, r.source);
    EXPECT_FALSE(r.rig.host.tool_starts[0].detached);
    EXPECT_EQ(r.rig.host.tool_starts[0].command, command);
    if (c.messages) {
      EXPECT_EQ(r.rig.form.toolchain().error_view_text(),
                "Error[113] x 1 : y\r\nsecond\r\nthird\r\n");
    } else if (failed) {
      EXPECT_NE(r.rig.form.toolchain().error_view_text().find("tool says no"), std::string::npos);
    }
  }
}

TEST(ToolRuns, PathsThatAreNotSourcesStartNothing) {
  // The file name box, the button, and the beeps
  for (const auto& [box, assembler, beeps] : {std::tuple{"", true, 1},
                                              {"", false, 1},
                                              {"/src/Test.Asm", true, 0},
                                              {"/src/main.c", true, 0},
                                              {"/src/blink.asm", false, 0},
                                              {"sm", true, 0}}) {
    SCOPED_TRACE(box);
    Runs r("x");
    r.rig.form.view().FilenameTextbox = box;
    r.rig.form.view().NotesLabel = "before";
    r.start(assembler);
    EXPECT_EQ(r.rig.host.beeps, beeps);
    EXPECT_TRUE(r.rig.host.tool_starts.empty());
    EXPECT_EQ(r.rig.form.view().NotesLabel, "before");
    EXPECT_TRUE(r.rig.state.TargetFileName.empty());
    EXPECT_FALSE(r.rig.form.toolchain().running());
  }
}

// The run looks at the files after eleven ticks when the tool has ended by
// then, and otherwise as soon as it ends; a tool that never ends is stopped
// after sixty seconds. One run at a time: another click only beeps; WRITE
// stays idle all the while and sends nothing.
TEST(ToolRuns, WaitsElevenTicksThenForTheToolAndHoldsWriteMeanwhile) {
  constexpr int kLimit = Toolchain::kLimitTicks, kNever = 100000;
  // The fake tool is first asked after the wait; it ends at its polls-th answer.
  for (const auto& [polls, ticks] :
       {std::pair{0, 11}, {2, 12}, {20, 30}, {kLimit - 10, kLimit}, {kNever, kLimit}}) {
    SCOPED_TRACE(polls);
    const bool stopped = polls == kNever;
    Runs r("blink.asm");
    r.rig.host.tool->polls = polls;
    r.tool_writes({{"blink.ERR", ""}, {"blink.HEX", kHex}});
    r.rig.form.ASSMButton_Click();
    EXPECT_EQ(r.rig.state.WaitTicks, 50);
    r.rig.form.ASSMButton_Click();
    r.rig.form.C_Button_Click();
    EXPECT_EQ(r.rig.host.beeps, 2);
    int counted = 0;
    while (r.rig.form.toolchain().running()) {
      EXPECT_TRUE(r.rig.form.WriteButton_Click().refused) << "tick " << counted;
      r.rig.form.Timer1_Timer();
      ASSERT_LT(++counted, 700);
    }
    EXPECT_EQ(counted, ticks);
    EXPECT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_TRUE(r.rig.unit.trace().empty());
    EXPECT_EQ(r.rig.host.tool->killed, stopped);
    EXPECT_EQ(r.rig.form.view().NotesLabel, stopped ? "Assembler ERROR" : "Assembler complete");
    ASSERT_EQ(r.rig.host.boxes.size(), stopped ? 1u : 0u);
    EXPECT_TRUE(!stopped || r.rig.host.boxes[0].title == "TOOL ERROR");
    EXPECT_EQ(r.rig.state.WaitTicks, 0);
    EXPECT_EQ(r.rig.state.DataLoaded, stopped ? 0 : 1);
  }
}

// Checked, a tool runs in its source's folder and leaves its files there;
// exact, in the panel's folder, where the compiler's cerr.txt is then read.
TEST(ToolRuns, ToolsRunInTheSourcesFolderUnlessExact) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    Runs r("src/main.c", exact);
    r.rig.form.view().FilenameTextbox = "src/main.c";  // relative to the panel's folder
    std::filesystem::create_directory(r.dir.file("src"));
    r.tool_writes({{exact ? "cerr.txt" : "src/cerr.txt", "main.c:1: error\n"}});
    r.rig.form.C_Button_Click();
    r.tick_until_done();
    ASSERT_EQ(r.rig.host.tool_starts.size(), 1u);
    EXPECT_EQ(r.rig.host.tool_starts[0].folder, exact ? "" : r.dir.file("src"));
    // Checked, the tool in the source's folder gets the whole path.
    EXPECT_EQ(r.rig.host.tool_starts[0].argument, exact ? "src/main.c" : r.dir.file("src/main.c"));
    EXPECT_EQ(r.rig.form.view().NotesLabel, "Compile ERROR");
    EXPECT_EQ(r.rig.form.toolchain().error_view_text(), "main.c:1: error\r\n");
  }
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

// Names, command lines, message lines, window geometry and the editor's
// files: the text work of the tool runs and editors.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "common/atomic_file.h"
#include "temp_dir.h"
#include "toolchain/text_views.h"
#include "toolchain/tool_names.h"

namespace zenta {
namespace {

using testing::read_text;
using testing::TempDir;
using testing::write_text;

// The endings a run accepts or refuses are pinned by the tool-run tests;
// these are the names derived from the ones accepted.
TEST(ToolNames, EndingsDecideTheDerivedNames) {
  constexpr ToolKind kAsm = ToolKind::kAssembler, kCc = ToolKind::kCompiler;
  const std::string cwd = "/home/user/work";
  const struct {
    ToolKind kind;
    std::string path, error_file, hex_file;  // "": refused
  } cases[] = {{kAsm, "/w/blink.asm", "/w/blink.ERR", "/w/blink.HEX"},
               {kAsm, "/src/x.asM", "", ""},
               {kAsm, "asm", "ERR", "HEX"},
               {kCc, "/other/dir/main.c", cwd + "/cerr.txt", "/other/dir/main.HEX"},
               {kCc, "c", cwd + "/cerr.txt", "HEX"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const auto names = tool_names(c.kind, c.path, cwd);
    ASSERT_EQ(names.has_value(), !c.hex_file.empty());
    if (!names) continue;
    EXPECT_EQ(names->error_file, c.error_file);
    EXPECT_EQ(names->hex_file, c.hex_file);
  }
}

TEST(MessageLines, AssemblerMessagesPointAtTheirFileAndLine) {
  struct Case {
    std::string line;
    std::string file;  // empty: not a message line
    int number;
  };
  const Case cases[] = {
      {"Error[113]   /src/bad.asm 3 : Symbol not previously defined", "/src/bad.asm", 3},
      {"/src/bad.asm:3:Error[113]   Symbol not previously defined", "/src/bad.asm", 3},
      {"Warning[205] /src/w.asm 12 : Found directive in column 1. (list)", "/src/w.asm", 12},
      {"Message[302] /src/m.asm 40 : Register in operand not in bank 0.", "/src/m.asm", 40},
      {"/src/m.asm:40:Message[302] Register in operand not in bank 0.", "/src/m.asm", 40},
      {"Error[113]   /my src/bad file.asm 7 : text\r", "/my src/bad file.asm", 7},
      {"/my src/a:b.asm:9:Warning[202] Argument out of range.", "/my src/a:b.asm", 9},
      {"Error[113]   bad.asm 3 : relative", "/proj/bad.asm", 3},
      {"bad.asm:3:Error[113] relative", "/proj/bad.asm", 3},
      {"Error[113]   /src/bad.asm 0 : no line 0", "", 0},
      {"Error[113]   /src/bad.asm 99999999999999 : too far", "", 0},
      {"Error: can't open file", "", 0},
      {"Assembler ERROR", "", 0},
      {"", "", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const auto location = message_location(c.line, "/proj");
    ASSERT_EQ(location.has_value(), !c.file.empty());
    if (!location) continue;
    EXPECT_EQ(location->file, c.file);
    EXPECT_EQ(location->line, c.number);
  }
}

TEST(WindowLayouts, ControlsFollowTheWindowSizeAndNeverGoNegative) {
  struct ErrorCase {
    int w, h, text_w, text_h, exit_left, exit_top;
  };
  for (const ErrorCase& c :
       {ErrorCase{6000, 4000, 5860, 3500, 4500, 3000}, ErrorCase{1500, 1000, 1360, 500, 0, 0},
        ErrorCase{100, 100, 0, 0, 0, 0}}) {
    const ErrorViewLayout layout = error_view_layout(c.w, c.h);
    EXPECT_EQ(layout.text.left, 0);
    EXPECT_EQ(layout.text.top, 0);
    EXPECT_EQ(layout.text.width, c.text_w) << c.w;
    EXPECT_EQ(layout.text.height, c.text_h) << c.h;
    EXPECT_EQ(layout.exit_left, c.exit_left) << c.w;
    EXPECT_EQ(layout.exit_top, c.exit_top) << c.h;
  }
  struct EditorCase {
    int w, h;
    bool changes;
    int text_w, text_h, save_left, save_top, exit_left;
  };
  for (const EditorCase& c : {EditorCase{6045, 8430, true, 5905, 7930, 3545, 7230, 4545},
                              EditorCase{6045, 499, false, 0, 0, 0, 0, 0},
                              EditorCase{2000, 500, true, 1860, 0, 0, 0, 500},
                              EditorCase{100, 1300, true, 0, 800, 0, 100, 0}}) {
    SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h));
    const auto layout = editor_layout(c.w, c.h);
    ASSERT_EQ(layout.has_value(), c.changes);
    if (!layout) continue;
    EXPECT_EQ(layout->text.width, c.text_w);
    EXPECT_EQ(layout->text.height, c.text_h);
    EXPECT_EQ(layout->save_left, c.save_left);
    EXPECT_EQ(layout->save_top, c.save_top);
    EXPECT_EQ(layout->exit_left, c.exit_left);
    EXPECT_EQ(layout->exit_top, c.save_top);
  }
}

TEST(TextFiles, LinesLoadWithCrLfAndTextBoxTextSavesWithCrLf) {
  TempDir dir;
  struct Case {
    std::string file;
    std::string loaded;
  };
  for (const Case& c : {Case{"A\r\nB\r\n", "A\r\nB\r\n"}, Case{"", ""}, Case{"\n\n", "\r\n\r\n"}}) {
    write_text(dir.file("in.txt"), c.file);
    bool ok = false;
    EXPECT_EQ(read_lines_crlf(dir.file("in.txt"), &ok), c.loaded);
    EXPECT_TRUE(ok);
  }
  for (const std::string& unreadable : {dir.file("missing.txt"), dir.path().string()}) {
    bool ok = true;
    EXPECT_EQ(read_lines_crlf(unreadable, &ok), "");
    EXPECT_FALSE(ok);
  }
  // What the text box holds, as saved.
  for (const Case& c :
       {Case{"A\nB\n", "A\r\nB\r\n"}, Case{"A\r\nB", "A\r\nB"}, Case{"\n", "\r\n"}}) {
    EXPECT_EQ(with_crlf(c.file), c.loaded);
  }
}

TEST(AtomicFile, ReplacesTheTargetKeepingItsPermissionsOrLeavesItAlone) {
  namespace fs = std::filesystem;
  TempDir dir;
  const std::string target = dir.file("src.asm");
  write_text(target, "old");
  fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  ASSERT_TRUE(write_file_atomically(target, "new text"));
  EXPECT_EQ(read_text(target), "new text");
  EXPECT_EQ(fs::status(target).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);

  // Written through a link: the link stays a link to the new text.
  const std::string link = dir.file("link.asm");
  fs::create_symlink(target, link);
  ASSERT_TRUE(write_file_atomically(link, "via link"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(read_text(target), "via link");

  EXPECT_FALSE(write_file_atomically(dir.file("no/such/folder/x.asm"), "x"));
  EXPECT_FALSE(write_file_atomically(dir.path().string(), "x"));  // a folder
  EXPECT_FALSE(write_file_atomically("", "x"));
  // Nothing but the files made above: no temporary file is left behind.
  int entries = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(dir.path())) ++entries;
  EXPECT_EQ(entries, 2);

  // What runs killed before their rename left: the next write of the same
  // target removes its own kind, and only those of ended processes.
  const std::string dead = std::to_string(900000001);  // beyond any process number
  const std::string alive = std::to_string(::getppid());
  const std::string own = std::to_string(::getpid());  // a write of this process's own
  const struct {
    std::string name;
    bool removed;
  } leftovers[] = {
      {"src.asm.part", true},
      {"src.asm.zenta-" + dead + "-10.tmp", true},
      {"src.asm.zenta-" + alive + "-1.tmp", false},
      {"src.asm.zenta-" + own + "-1.tmp", false},
      {"src.asm.zenta-" + dead + "-x.tmp", false},
      {"src.asm.bak", false},
      {"link.asm.part", false},
  };
  for (const auto& leftover : leftovers) write_text(dir.file(leftover.name), "half");
  ASSERT_TRUE(write_file_atomically(target, "again"));
  for (const auto& leftover : leftovers) {
    EXPECT_EQ(fs::exists(dir.file(leftover.name)), !leftover.removed) << leftover.name;
  }
}

}  // namespace
}  // namespace zenta

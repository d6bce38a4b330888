// Names, command lines, message lines, window geometry and the editor's
// files: the text work of the tool runs and editors.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <tuple>

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
  // The source; its error and HEX files ("": refused).
  for (const auto& [kind, path, error_file, hex_file] :
       std::vector<std::tuple<ToolKind, std::string, std::string, std::string>>{
           {kAsm, "/w/blink.asm", "/w/blink.ERR", "/w/blink.HEX"},
           {kAsm, "/src/x.asM", "", ""},
           {kAsm, "asm", "ERR", "HEX"},
           {kCc, "/other/dir/main.c", cwd + "/cerr.txt", "/other/dir/main.HEX"},
           {kCc, "c", cwd + "/cerr.txt", "HEX"}}) {
    const auto names = tool_names(kind, path, cwd);
    ASSERT_EQ(names.has_value(), !hex_file.empty()) << path;
    if (!names) continue;
    EXPECT_EQ(std::tie(names->error_file, names->hex_file), std::tie(error_file, hex_file));
  }
}

TEST(MessageLines, AssemblerMessagesPointAtTheirFileAndLine) {
  // The line; the file it names ("": not a message line) and the line number.
  for (const auto& [line, file, number] : std::vector<std::tuple<std::string, std::string, int>>{
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
           {"", "", 0}}) {
    const auto location = message_location(line, "/proj");
    ASSERT_EQ(location.has_value(), !file.empty()) << line;
    if (!location) continue;
    EXPECT_EQ(std::tie(location->file, location->line), std::tie(file, number));
  }
}

// Controls follow the window size, and a window too small for them gets
// sizes and places of 0, never negative ones.
TEST(WindowLayouts, ControlsFollowTheWindowSizeAndNeverGoNegative) {
  // Window width and height; text width and height, EXIT left and top.
  for (const auto& [w, h, text_w, text_h, exit_left, exit_top] :
       {std::array{6000, 4000, 5860, 3500, 4500, 3000}, std::array{1500, 1000, 1360, 500, 0, 0},
        std::array{100, 100, 0, 0, 0, 0}}) {
    const ErrorViewLayout l = error_view_layout(w, h);
    EXPECT_EQ(std::vector<int>(
                  {l.text.left, l.text.top, l.text.width, l.text.height, l.exit_left, l.exit_top}),
              std::vector<int>({0, 0, text_w, text_h, exit_left, exit_top}))
        << w << "x" << h;
  }
  // Window width and height; whether the editor changes anything, text width
  // and height, SAVE left and top (EXIT's top too), and EXIT left.
  for (const auto& [w, h, changes, text_w, text_h, save_left, save_top, exit_left] :
       {std::tuple{6045, 8430, true, 5905, 7930, 3545, 7230, 4545},
        {6045, 499, false, 0, 0, 0, 0, 0},
        {2000, 500, true, 1860, 0, 0, 0, 500},
        {100, 1300, true, 0, 800, 0, 100, 0}}) {
    const auto l = editor_layout(w, h);
    ASSERT_EQ(l.has_value(), changes) << w << "x" << h;
    if (!l) continue;
    EXPECT_EQ(std::vector<int>({l->text.width, l->text.height, l->save_left, l->save_top,
                                l->exit_left, l->exit_top}),
              std::vector<int>({text_w, text_h, save_left, save_top, exit_left, save_top}))
        << w << "x" << h;
  }
}

TEST(TextFiles, LinesLoadWithCrLfAndTextBoxTextSavesWithCrLf) {
  TempDir dir;
  for (const auto& [file, loaded] :
       {std::pair{"A\r\nB\r\n", "A\r\nB\r\n"}, {"", ""}, {"\n\n", "\r\n\r\n"}}) {
    write_text(dir.file("in.txt"), file);
    bool ok = false;
    EXPECT_EQ(read_lines_crlf(dir.file("in.txt"), &ok), loaded);
    EXPECT_TRUE(ok);
  }
  for (const std::string& unreadable : {dir.file("missing.txt"), dir.path().string()}) {
    bool ok = true;
    EXPECT_EQ(read_lines_crlf(unreadable, &ok), "");
    EXPECT_FALSE(ok);
  }
  // What the text box holds, as saved.
  for (const auto& [text, saved] :
       {std::pair{"A\nB\n", "A\r\nB\r\n"}, {"A\r\nB", "A\r\nB"}, {"\n", "\r\n"}}) {
    EXPECT_EQ(with_crlf(text), saved);
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
  const std::pair<std::string, bool> leftovers[] = {
      // and whether the write removes it
      {"src.asm.part", true},
      {"src.asm.zenta-" + dead + "-10.tmp", true},
      {"src.asm.zenta-" + alive + "-1.tmp", false},
      {"src.asm.zenta-" + own + "-1.tmp", false},
      {"src.asm.zenta-" + dead + "-x.tmp", false},
      {"src.asm.bak", false},
      {"link.asm.part", false},
  };
  for (const auto& [name, removed] : leftovers) write_text(dir.file(name), "half");
  ASSERT_TRUE(write_file_atomically(target, "again"));
  for (const auto& [name, removed] : leftovers)
    EXPECT_EQ(fs::exists(dir.file(name)), !removed) << name;
}

}  // namespace
}  // namespace zenta

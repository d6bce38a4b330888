// How the platform layer turns the panel's dialog filters and command
// lines into what it hands to the system.
#include <gtest/gtest.h>

#include <set>

#include "panel/host_rules.h"

namespace zenta {
namespace {

constexpr const char* kPanelFilter = "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|";

TEST(DialogFilter, CaseSensitiveNamesGetUpperCaseTwins) {
  struct Case {
    bool case_sensitive;
    std::vector<std::string> texts;
  };
  for (const Case& c :
       {Case{true,
             {"Source Files (*.asm *.ASM *.c *.C)", "HEX FILES (*.hex *.HEX)", "ALL FILES (*)"}},
        Case{false, {"Source Files (*.asm *.c)", "HEX FILES (*.hex)", "ALL FILES (*.*)"}}}) {
    std::vector<std::string> texts;
    for (const DialogFilter& filter : parse_dialog_filter(kPanelFilter, c.case_sensitive)) {
      texts.push_back(name_filter_text(filter));
    }
    EXPECT_EQ(texts, c.texts) << "case sensitive: " << c.case_sensitive;
  }
  // No trailing bar, an odd part and an empty pattern change nothing else.
  const auto filters = parse_dialog_filter("HEX|*.HEX;;*.hex|lonely", true);
  ASSERT_EQ(filters.size(), 1u);
  EXPECT_EQ(filters[0].patterns, (std::vector<std::string>{"*.HEX", "*.hex", "*.HEX"}));
}

TEST(CommandLine, WordsSplitAtBlanksAndQuotesGroupThem) {
  struct Case {
    const char* line;
    std::vector<std::string> words;
  };
  for (const Case& c : {
           Case{"gpasm -k  -w2\t-r dec", {"gpasm", "-k", "-w2", "-r", "dec"}},
           Case{"\"C:\\Program Files\\x.exe\" /q", {"C:\\Program Files\\x.exe", "/q"}},
           Case{"  ", {}},
           Case{"a \"\" b", {"a", "", "b"}},
           Case{"say\"hello world\"", {"sayhello world"}},
       }) {
    EXPECT_EQ(split_command_line(c.line), c.words) << c.line;
  }
}

TEST(CommandLine, ProgramIsTheLongestExistingPathOrFoundOnThePath) {
  const std::set<std::string> files = {"/opt/My Tools/gpasm", "/opt/My Tools/gpasm -k",
                                       "/work/blink.asm"};
  const std::set<std::string> on_path = {"gpasm", "kcalc", "calc.exe"};
  auto exists = [&](const std::string& path) { return files.count(path) != 0; };
  auto find = [&](const std::string& name) {
    return on_path.count(name) ? "/usr/bin/" + name : std::string();
  };
  struct Case {
    const char* line;
    bool look_up;
    std::string program;
    std::vector<std::string> arguments;
  };
  for (const Case& c : {
           // A folder with blanks, unquoted: the first existing path wins.
           Case{"/opt/My Tools/gpasm -k /work/blink.asm",
                true,
                "/opt/My Tools/gpasm",
                {"-k", "/work/blink.asm"}},
           Case{"/opt/My Tools/gpasm", true, "/opt/My Tools/gpasm", {}},
           // A folder that does not exist here: the tool's own name on the PATH.
           Case{"/nonexistent/gpasm -k x.asm", true, "/usr/bin/gpasm", {"-k", "x.asm"}},
           Case{"C:\\tools\\calc.exe", true, "/usr/bin/calc.exe", {}},
           Case{"kcalc", true, "/usr/bin/kcalc", {}},
           // Not looked up (Windows), or found nowhere: left as written.
           Case{"/nonexistent/gpasm -k", false, "/nonexistent/gpasm", {"-k"}},
           Case{"/nonexistent/picl -16F877", true, "/nonexistent/picl", {"-16F877"}},
           Case{"", true, "", {}},
       }) {
    const LaunchCommand launch = resolve_launch(c.line, exists, find, c.look_up);
    EXPECT_EQ(launch.program, c.program) << c.line;
    EXPECT_EQ(launch.arguments, c.arguments) << c.line;
  }
}

}  // namespace
}  // namespace zenta

// How the platform layer turns the panel's dialog filters and command
// lines into what it hands to the system.
#include <gtest/gtest.h>

#include <set>

#include "platform/host_rules.h"

namespace zenta {
namespace {

TEST(DialogFilter, CaseSensitiveNamesGetUpperCaseTwins) {
  const char* panel = "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|";
  for (const auto& [case_sensitive, filter, texts] : {
           std::tuple{true, panel,
                      "Source Files (*.asm *.ASM *.c *.C)|HEX FILES (*.hex *.HEX)|ALL FILES (*)|"},
           {false, panel, "Source Files (*.asm *.c)|HEX FILES (*.hex)|ALL FILES (*.*)|"},
           // No trailing bar, an odd part and an empty pattern change nothing else.
           {true, "HEX|*.HEX;;*.hex|lonely", "HEX (*.HEX *.hex *.HEX)|"},
       }) {
    std::string got;
    for (const DialogFilter& choice : parse_dialog_filter(filter, case_sensitive)) {
      got += name_filter_text(choice) + "|";
    }
    EXPECT_EQ(got, texts) << filter;
  }
}

TEST(CommandLine, ProgramIsTheShortestExistingPathOrFoundOnThePath) {
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
           // A folder that does not exist here: the tool's own name on the PATH.
           Case{"/nonexistent/gpasm -k  x.asm", true, "/usr/bin/gpasm", {"-k", "x.asm"}},
           Case{"C:\\tools\\calc.exe", true, "/usr/bin/calc.exe", {}},
           // Not looked up (Windows), or found nowhere: left as written.
           Case{"/nonexistent/gpasm\t-k", false, "/nonexistent/gpasm", {"-k"}},
           Case{"/nonexistent/picl -16F877", true, "/nonexistent/picl", {"-16F877"}},
           // Quotes group words and go; blanks alone are no program.
           Case{"\"C:\\Program Files\\x.exe\" /q", false, "C:\\Program Files\\x.exe", {"/q"}},
           Case{"say\"hello world\" \"\"", false, "sayhello world", {""}},
           Case{"  ", true, "", {}},
       }) {
    const LaunchCommand launch = resolve_launch(c.line, exists, find, c.look_up);
    EXPECT_EQ(launch.program, c.program) << c.line;
    EXPECT_EQ(launch.arguments, c.arguments) << c.line;
  }
}

}  // namespace
}  // namespace zenta

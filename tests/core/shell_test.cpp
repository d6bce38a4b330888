// The shell's functions behind the help and version windows and the
// calculator.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "cli/args.h"
#include "core/fakes.h"
#include "core/temp_dir.h"
#include "panel/shell.h"

namespace zenta::testing {
namespace {

TEST(HelpForm, EachLineEndsInCrLfAndAMissingFileLeavesTheTextEmpty) {
  const struct {
    const char* file;  // null: no help file
    const char* text1;
  } cases[] = {
      {"A\nB\nC", "A\r\nB\r\nC\r\n"},
      {"A\r\nB\r\n", "A\r\nB\r\n"},
      {"A\n\nB\n", "A\r\n\r\nB\r\n"},
      {nullptr, ""},  // after a file that filled the box
      {"", ""},
  };
  FakeHost host;
  HelpForm form;  // one form: each load starts from an empty box
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file ? c.file : "no file");
    TempDir dir;
    if (c.file) write_text(dir.file("ZENTA.TXT"), c.file);
    const std::size_t boxes = host.boxes.size();
    form.Form_Load(host, help_file_path(dir.path().string()));
    EXPECT_EQ(form.Text1(), c.text1);
    ASSERT_EQ(host.boxes.size(), boxes + (c.file ? 0 : 1));
    EXPECT_TRUE(c.file || host.boxes.back().text == "File not found");
  }
}

// The help text has a section on each instrument window and names the
// controls that have no caption of their own elsewhere; the manual page has
// an entry for every command of the zenta program.
TEST(HelpForm, HelpTextAndManualPageCoverEveryWindowAndCommand) {
  const std::string help = read_text(ZENTA_TEST_DATA "/../../data/ZENTA.TXT");
  std::set<std::string> headings;
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    const bool heading =
        !line.empty() && std::none_of(line.begin(), line.end(),
                                      [](unsigned char c) { return std::islower(c) != 0; });
    if (heading) headings.insert(line.substr(0, line.find(" (")));
  }
  for (const char* section : {"LOGIC VIEW", "VOLT METER", "FREQUENCY COUNTER", "COUNTER", "LOG"}) {
    EXPECT_EQ(headings.count(section), 1u) << section;
  }
  for (const char* control : {"EXPORT", "MORE >>", "DATA SET", "SAMPLE DISPLAY", "COMP", "OVER"}) {
    EXPECT_NE(help.find(control), std::string::npos) << control;
  }

  // Each command is the first word of an entry's tag, in bold.
  const std::string man = read_text(ZENTA_TEST_DATA "/../../packaging/zenta.1");
  const auto tagged = [&man](const std::string& tag) {
    return man.find(".TP\n" + tag) != std::string::npos;
  };
  for (auto command = static_cast<int>(cli::Command::kVersion);
       command <= static_cast<int>(cli::Command::kCount); ++command) {
    const std::string name = cli::command_name(static_cast<cli::Command>(command));
    std::string word;  // as troff spells it
    for (char c : name) word += c == '-' ? std::string("\\-") : std::string(1, c);
    EXPECT_TRUE(tagged(".B " + word + "\n") || tagged(".BI " + word + " ") ||
                tagged("\\fB" + word + "\\fR"))
        << name;
  }
}

TEST(Shell, FirmwareVersionTakesCharactersSevenAndEight) {
  for (const auto& [firmware, label] : {std::pair{"ZENTA 12", "Firmware version 1.2"},
                                        {"", "Firmware version ."},
                                        {"ZENTA 1", "Firmware version 1."},
                                        {"ABCDEFGHIJ", "Firmware version G.H"}}) {
    EXPECT_EQ(firmware_version_text(firmware), label) << firmware;
  }
}

// A host on which the programs start from the `works_from`-th try on.
struct CalculatorHost : FakeHost {
  std::size_t works_from = 0;
  bool start_program(const std::string& command_line, bool minimized) override {
    FakeHost::start_program(command_line, minimized);
    return started.size() > works_from;
  }
};

TEST(Shell, CalculatorIsTheFirstThatStartsMinimized) {
  const std::vector<std::string>& candidates = calculator_candidates();
  const std::size_t n = candidates.size();
  for (std::size_t works_from : {n - 1, std::size_t{0}, n}) {  // the last, the first, none
    CalculatorHost host;
    host.works_from = works_from;
    EXPECT_EQ(start_calculator(host), works_from < n);
    ASSERT_EQ(host.started.size(), std::min(works_from + 1, n));
    for (std::size_t i = 0; i < host.started.size(); ++i) {
      EXPECT_EQ(host.started[i].command_line, candidates[i]);
      EXPECT_TRUE(host.started[i].minimized);
    }
    EXPECT_EQ(host.boxes.size(), works_from < n ? 0u : 1u);  // none: the user hears of it
  }
}

}  // namespace
}  // namespace zenta::testing

// The shell's functions behind the help and version windows and the
// calculator.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "core/fakes.h"
#include "core/temp_dir.h"
#include "panel/shell.h"

namespace zenta::testing {
namespace {

TEST(HelpForm, EachLineEndsInCrLfAndAMissingFileLeavesTheTextEmpty) {
  FakeHost host;
  HelpForm form;  // one form: each load starts from an empty box
  // The help file (null: none; after a file that filled the box) and the text shown.
  for (const auto& [file, text1] :
       {std::pair<const char*, const char*>{"A\nB\nC", "A\r\nB\r\nC\r\n"},
        {"A\r\nB\r\n", "A\r\nB\r\n"},
        {"A\n\nB\n", "A\r\n\r\nB\r\n"},
        {nullptr, ""},
        {"", ""}}) {
    TempDir dir;
    if (file) write_text(dir.file("ZENTA.TXT"), file);
    const std::size_t boxes = host.boxes.size();
    form.Form_Load(host, help_file_path(dir.path().string()));
    EXPECT_EQ(form.Text1(), text1);
    ASSERT_EQ(host.boxes.size(), boxes + (file ? 0 : 1));
    EXPECT_TRUE(file || host.boxes.back().text == "File not found");
  }
}

// The help text has a section on each instrument window and names the
// controls that have no caption of their own elsewhere.
TEST(HelpForm, HelpTextCoversEveryInstrumentWindow) {
  const std::string help = read_text(ZENTA_TEST_DATA "/../../data/ZENTA.TXT");
  std::set<std::string> headings;
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && std::none_of(line.begin(), line.end(),
                                      [](unsigned char c) { return std::islower(c) != 0; })) {
      headings.insert(line.substr(0, line.find(" (")));
    }
  }
  for (const char* section : {"LOGIC VIEW", "VOLT METER", "FREQUENCY COUNTER", "COUNTER", "LOG"}) {
    EXPECT_EQ(headings.count(section), 1u) << section;
  }
  for (const char* control : {"EXPORT", "MORE >>", "DATA SET", "SAMPLE DISPLAY", "COMP", "OVER"}) {
    EXPECT_NE(help.find(control), std::string::npos) << control;
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

// The shell's functions behind the help and version windows and the
// calculator.
#include <gtest/gtest.h>

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

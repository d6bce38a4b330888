// The shell's functions behind the help, version and setup windows, the
// home page, the calculator, and the viewers' resize rules.
#include <gtest/gtest.h>

#include "core/fakes.h"
#include "core/temp_dir.h"
#include "image/viewer_layout.h"
#include "panel/setup_dialog.h"
#include "panel/shell.h"

namespace zenta::testing {
namespace {

TEST(HelpForm, EachLineEndsInCrLf) {
  struct Case {
    const char* file;
    const char* text1;
  };
  for (const Case& c : {Case{"A\nB\nC\n", "A\r\nB\r\nC\r\n"}, Case{"A\nB\nC", "A\r\nB\r\nC\r\n"},
                        Case{"A\r\nB\r\n", "A\r\nB\r\n"}, Case{"", ""},
                        Case{"A\n\nB\n", "A\r\n\r\nB\r\n"}, Case{"\n", "\r\n"}}) {
    TempDir dir;
    write_text(dir.file("ZENTA.TXT"), c.file);
    FakeHost host;
    HelpForm form;
    form.Form_Load(host, help_file_path(dir.path().string()));
    EXPECT_EQ(form.Text1(), c.text1) << "file: " << c.file;
    EXPECT_TRUE(host.boxes.empty());
  }
}

TEST(HelpForm, MissingFileIsReportedAndLeavesTheTextEmpty) {
  TempDir dir;
  write_text(dir.file("ZENTA.TXT"), "old\n");
  FakeHost host;
  HelpForm form;
  form.Form_Load(host, dir.file("ZENTA.TXT"));
  ASSERT_EQ(form.Text1(), "old\r\n");
  // A second load starts from an empty box, whatever the first one read.
  form.Form_Load(host, dir.file("NOPE.TXT"));
  EXPECT_EQ(form.Text1(), "");
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].text, "File not found");
  EXPECT_EQ(host.boxes[0].title, "FILE ERROR");
  EXPECT_EQ(host.boxes[0].icon, MessageIcon::kStop);
}

TEST(Shell, HelpFileLivesInTheAssemblerFolder) {
#ifdef _WIN32
  EXPECT_EQ(help_file_path("C:\\Tools"), "C:\\Tools\\ZENTA.TXT");
#else
  EXPECT_EQ(help_file_path("/usr/share/zenta"), "/usr/share/zenta/ZENTA.TXT");
  EXPECT_EQ(help_file_path(""), "/ZENTA.TXT");
#endif
}

TEST(Shell, FirmwareVersionTakesCharactersSevenAndEight) {
  struct Case {
    const char* firmware;
    const char* label;
  };
  for (const Case& c :
       {Case{"ZENTA 12", "Firmware version 1.2"}, Case{"", "Firmware version ."},
        Case{"ZENTA 1", "Firmware version 1."}, Case{"ABCDEFGHIJ", "Firmware version G.H"}}) {
    EXPECT_EQ(firmware_version_text(c.firmware), c.label) << c.firmware;
  }
  EXPECT_EQ(panel_version_text(), "Version " + std::to_string(ZENTA_VERSION_MAJOR) + "." +
                                      std::to_string(ZENTA_VERSION_MINOR));
}

// A host whose programs start only when their name is in `installed`.
class CalculatorHost : public FakeHost {
 public:
  std::vector<std::string> installed;
  bool start_program(const std::string& command_line, bool minimized) override {
    FakeHost::start_program(command_line, minimized);
    return std::find(installed.begin(), installed.end(), command_line) != installed.end();
  }
};

TEST(Shell, CalculatorIsTheFirstThatStarts) {
  const std::vector<std::string>& candidates = calculator_candidates();
  ASSERT_FALSE(candidates.empty());
  {
    CalculatorHost host;
    host.installed = {candidates.back()};
    EXPECT_TRUE(start_calculator(host));
    ASSERT_EQ(host.started.size(), candidates.size());
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      EXPECT_EQ(host.started[i].command_line, candidates[i]);
      EXPECT_TRUE(host.started[i].minimized);
    }
    EXPECT_TRUE(host.boxes.empty());
  }
  {
    CalculatorHost host;
    host.installed = candidates;
    EXPECT_TRUE(start_calculator(host));
    EXPECT_EQ(host.started.size(), 1u);
  }
  {
    CalculatorHost host;  // none installed: the user hears of it, nothing more
    EXPECT_FALSE(start_calculator(host));
    EXPECT_EQ(host.started.size(), candidates.size());
    EXPECT_EQ(host.boxes.size(), 1u);
  }
}

TEST(Shell, HomePageOpensInTheBrowserAndAFailureOnlyBeeps) {
  FakeHost host;
  open_homepage(host);
  EXPECT_EQ(host.urls, std::vector<std::string>{kHomePageUrl});
  EXPECT_EQ(host.beeps, 0);
  host.url_result = false;
  open_homepage(host);
  EXPECT_EQ(host.beeps, 1);
  EXPECT_TRUE(host.boxes.empty());
}

TEST(WindowLayout, ResizeRulesPlaceGridsAndButtons) {
  const ViewerLayout data = viewer_layout(kDataViewGeometry, 9990, 6000);
  EXPECT_EQ(data.grid_height, 5500);
  EXPECT_EQ(data.exit_top, 5000);
  EXPECT_EQ(data.exit_left, 8490);
  EXPECT_EQ(data.window_width, 9850 + 140);
  const ViewerLayout eeprom = viewer_layout(kEepromViewGeometry, 6100, 3465);
  EXPECT_EQ(eeprom.grid_height, 3065);
  EXPECT_EQ(eeprom.window_width, 6500 - 400);
  // Windows lower than the rules allow get an empty grid, not a negative one.
  EXPECT_EQ(viewer_layout(kDataViewGeometry, 9990, 300).grid_height, 0);
  EXPECT_EQ(viewer_layout(kEepromViewGeometry, 6100, 100).grid_height, 0);

  const HelpLayout help = help_layout(5685, 5670);
  EXPECT_EQ(help.text.width, 5545);
  EXPECT_EQ(help.text.height, 5170);
  EXPECT_EQ(help.exit_top, 4570);
  EXPECT_EQ(help.exit_left, 4185);
}

// A store that also keeps the order of its saves.
class OrderedStore : public MemorySettingsStore {
 public:
  std::vector<std::string> keys;
  void save(const std::string& application, const std::string& section, const std::string& key,
            const std::string& value) override {
    keys.push_back(key);
    MemorySettingsStore::save(application, section, key, value);
  }
};

TEST(SetupDialog, DefaultChangesNothingUntilExitStoresTheBoxesInOrder) {
  ToolSettings tools{"/asm", "asm -x", "/c", "cc", "/ed", "vi"};
  OrderedStore store;
  SetupDialog dialog(tools, store);
  dialog.Form_Load();
  EXPECT_EQ(dialog.boxes, tool_values(tools));

  dialog.Command_default_Click();
  EXPECT_EQ(dialog.boxes, tool_values(setup_tool_defaults()));
  EXPECT_EQ(tools.AsmFolder, "/asm");
  EXPECT_EQ(store.saves(), 0);

  dialog.boxes[2] = "";          // taken as typed: empty,
  dialog.boxes[5] = " ed  -n ";  // and with its blanks
  dialog.EXTButton_Click();
  std::array<std::string, 6> expected = tool_values(setup_tool_defaults());
  expected[2] = "";
  expected[5] = " ed  -n ";
  EXPECT_EQ(tool_values(tools), expected);
  EXPECT_EQ(store.keys, std::vector<std::string>(kToolKeys.begin(), kToolKeys.end()));
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    EXPECT_EQ(store.get(kSettingsApp, kSettingsSection, kToolKeys[i]), expected[i]);
  }
  // The setup's compiler folder is its own default, not the start-up's.
#ifdef _WIN32
  EXPECT_NE(setup_tool_defaults().CFolder, startup_tool_defaults().CFolder);
#endif
}

}  // namespace
}  // namespace zenta::testing

// The shell's other windows and the Qt side of the platform.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include "platform/qt_settings_store.h"
#include "toolchain/tool_settings.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

TEST(HelpWindow, F1OpensOneWindowWithTheHelpFile) {
  PanelRig rig;
  TempDir dir;
  write_text(dir.file("ZENTA.TXT"), "First line\r\nSecond\n");
  rig.tools.AsmFolder = dir.path().string();
  auto* help = rig.find<QAction>("HELP");
  ASSERT_NE(help, nullptr);
  EXPECT_EQ(help->shortcut(), QKeySequence(Qt::Key_F1));
  for (int i = 0; i < 3; ++i) rig.click("HELP");
  ASSERT_EQ(rig.count("HELP_FORM"), 1);
  EXPECT_EQ(rig.find<QPlainTextEdit>("Text1")->toPlainText(), "First line\nSecond\n");
  EXPECT_EQ(rig.boxes, std::vector<std::string>{});
}

TEST(SetupWindow, DefaultThenCloseBoxChangesNothingDefaultThenExitStoresTheBoxes) {
  PanelRig rig;
  const ToolSettings before = rig.tools;  // empty on a first run
  const int saves = rig.store.saves();
  QWidget* window = nullptr;
  auto open_and_default = [&] {
    rig.click("System_Setup");
    window = rig.find<QWidget>("Setup_Form");
    ASSERT_NE(window, nullptr);
    window->findChild<QPushButton*>("Command_default")->click();
  };
  ASSERT_NO_FATAL_FAILURE(open_and_default());
  EXPECT_EQ(window->findChild<QLineEdit*>("Text_ASM_Command")->text().toStdString(),
            setup_tool_defaults().AsmCommand);
  window->close();  // the frame's close box
  rig.settle();
  EXPECT_EQ(rig.count("Setup_Form"), 0);
  EXPECT_EQ(rig.store.saves(), saves);
  EXPECT_EQ(tool_values(rig.tools), tool_values(before));

  ASSERT_NO_FATAL_FAILURE(open_and_default());
  window->findChild<QLineEdit*>("Text_Editor_Filename")->setText(" my editor ");
  window->findChild<QPushButton*>("EXTButton")->click();
  rig.settle();
  EXPECT_EQ(rig.count("Setup_Form"), 0);
  ToolSettings expected = setup_tool_defaults();
  expected.EditorCommand = " my editor ";  // kept as typed, blanks and all
  EXPECT_EQ(tool_values(rig.tools), tool_values(expected));
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    EXPECT_EQ(rig.store.get("ZENTA", "DATA", kToolKeys[i]), tool_values(expected)[i]);
  }
}

TEST(QtPlatform, SettingsStoreKeepsTextsAsSavedAndProgramsAreFoundOnThePath) {
  TempDir dir;
  const QString file = QString::fromStdString(dir.file("settings.ini"));
  for (const char* value : {"C:\\Program Files\\KRV_TOOLs\\ZENTA", "gpasm -k, -w2 ;x", ""}) {
    QtSettingsStore(file).save("ZENTA", "DATA", "F_ASM", value);  // written and read anew
    EXPECT_EQ(QtSettingsStore(file).get("ZENTA", "DATA", "F_ASM"), value);
  }
  EXPECT_EQ(QtSettingsStore(file).get("OTHER", "DATA", "F_ASM"), "");

  QtHost host;  // a program under a folder that does not exist here
  EXPECT_TRUE(host.start_program("/no/such/folder/true --ignored", false));
  EXPECT_FALSE(host.start_program("/no/such/folder/zenta-no-such-program", false));
}

}  // namespace
}  // namespace zenta::testing

// The shell's other windows and the Qt side of the platform.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include "panel/shell.h"
#include "panel/tool_settings.h"
#include "platform/qt_settings_store.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

TEST(HelpWindow, F1OpensOneWindowWithTheHelpFile) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  TempDir dir;
  write_text(dir.file("ZENTA.TXT"), "First line\r\nSecond\n");
  rig.form->tools().AsmFolder = dir.path().string();

  auto* help = rig.find<QAction>("HELP");
  ASSERT_NE(help, nullptr);
  EXPECT_EQ(help->shortcut(), QKeySequence(Qt::Key_F1));
  rig.trigger("HELP");
  rig.trigger("HELP");
  rig.trigger("HELP");
  ASSERT_EQ(rig.count("HELP_FORM"), 1);
  auto* window = rig.find<QWidget>("HELP_FORM");
  EXPECT_EQ(window->windowTitle(), "HELP");
  EXPECT_EQ(window->findChild<QPlainTextEdit*>("Text1")->toPlainText(), "First line\nSecond\n");
  EXPECT_TRUE(rig.boxes.empty());

  // Without its file the window still opens, after telling the user.
  window->findChild<QPushButton*>("EXITButton")->click();
  rig.settle();
  EXPECT_EQ(rig.count("HELP_FORM"), 0);
  rig.form->tools().AsmFolder = dir.file("missing");
  rig.trigger("HELP");
  ASSERT_EQ(rig.boxes.size(), 1u);
  EXPECT_EQ(rig.boxes[0].text, "File not found");
  EXPECT_EQ(rig.boxes[0].title, "FILE ERROR");
  ASSERT_EQ(rig.count("HELP_FORM"), 1);
  EXPECT_TRUE(rig.find<QPlainTextEdit>("Text1")->toPlainText().isEmpty());
}

TEST(SetupWindow, OnlyExitStoresTheBoxes) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  const ToolSettings before = rig.form->tools();  // empty on a first run
  const int saves = rig.store.saves();
  auto setup = [&] {
    rig.trigger("System_Setup");
    return rig.find<QWidget>("Setup_Form");
  };
  auto box = [](QWidget* window, const char* name) {
    return window->findChild<QLineEdit*>(name)->text().toStdString();
  };

  QWidget* window = setup();
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->windowTitle(), "Setup");
  window->findChild<QPushButton*>("Command_default")->click();
  EXPECT_EQ(box(window, "Text_ASM_Command"), setup_tool_defaults().AsmCommand);
  window->close();  // the frame's close box
  rig.settle();
  EXPECT_EQ(rig.count("Setup_Form"), 0);
  EXPECT_EQ(rig.store.saves(), saves);
  EXPECT_EQ(tool_values(rig.form->tools()), tool_values(before));

  // Opened again, it shows the settings in memory, not the discarded boxes.
  window = setup();
  EXPECT_EQ(box(window, "Text_ASM_Command"), before.AsmCommand);
  window->findChild<QPushButton*>("Command_default")->click();
  window->findChild<QLineEdit*>("Text_Editor_Filename")->setText(" my editor ");
  window->findChild<QPushButton*>("EXTButton")->click();
  rig.settle();
  EXPECT_EQ(rig.count("Setup_Form"), 0);
  ToolSettings expected = setup_tool_defaults();
  expected.EditorCommand = " my editor ";
  EXPECT_EQ(tool_values(rig.form->tools()), tool_values(expected));
  const auto values = tool_values(expected);
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    EXPECT_EQ(rig.store.get("ZENTA", "DATA", kToolKeys[i]), values[i]) << kToolKeys[i];
  }
  EXPECT_EQ(rig.store.saves(), saves + 6);
}

TEST(VersionWindow, IsModalAndShowsTheVersionsAndTheHomePage) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  rig.trigger("VER");
  rig.trigger("VER");
  ASSERT_EQ(rig.count("ZENTA_VERFORM"), 1);
  auto* window = rig.find<QWidget>("ZENTA_VERFORM");
  EXPECT_EQ(window->windowTitle(), "Quillon V3");
  EXPECT_EQ(window->windowModality(), Qt::ApplicationModal);
  auto label = [window](const char* name) {
    return window->findChild<QLabel*>(name)->text().toStdString();
  };
  EXPECT_EQ(label("Label2"), "ZENTA Control Panel");
  EXPECT_EQ(label("Label4"), "Version 1.1");
  // The simulated unit identifies itself as "ZENTA 12".
  EXPECT_EQ(rig.form->FirmwareVersion(), "ZENTA 12");
  EXPECT_EQ(label("Label1"), "Firmware version 1.2");
  EXPECT_EQ(label("Label5"), kHomePageUrl);
  EXPECT_FALSE(window->findChild<QLabel*>("Picture1")->pixmap().isNull());

  PanelRig::click_on(window->findChild<QLabel*>("Label3"));
  EXPECT_EQ(rig.urls, std::vector<std::string>{kHomePageUrl});
  window->findChild<QPushButton*>("Command1")->click();
  rig.settle();
  EXPECT_EQ(rig.count("ZENTA_VERFORM"), 0);
  rig.click_label("Label12");
  rig.trigger("HomePage_OPEN");
  EXPECT_EQ(rig.urls, std::vector<std::string>(3, kHomePageUrl));
}

TEST(QtPlatform, SettingsStoreKeepsTextsAsSaved) {
  TempDir dir;
  const QString file = QString::fromStdString(dir.file("settings.ini"));
  {
    QtSettingsStore store(file);
    store.save("ZENTA", "DATA", "F_ASM", "C:\\Program Files\\KRV_TOOLs\\ZENTA");
    store.save("ZENTA", "DATA", "CMD_ASM", "gpasm -k, -w2 ;x");
    store.save("ZENTA", "DATA", "F_EDIT", "");
  }
  QtSettingsStore store(file);
  EXPECT_EQ(store.get("ZENTA", "DATA", "F_ASM"), "C:\\Program Files\\KRV_TOOLs\\ZENTA");
  EXPECT_EQ(store.get("ZENTA", "DATA", "CMD_ASM"), "gpasm -k, -w2 ;x");
  EXPECT_EQ(store.get("ZENTA", "DATA", "F_EDIT"), "");
  EXPECT_EQ(store.get("ZENTA", "DATA", "DEVICE"), "");
  EXPECT_EQ(store.get("OTHER", "DATA", "F_ASM"), "");
}

TEST(QtPlatform, ProgramsUnderAMissingFolderAreFoundOnThePath) {
  if (!tool_available("true")) GTEST_SKIP() << "no 'true' program on the PATH";
  QtHost host;
  EXPECT_TRUE(host.start_program("/no/such/folder/true --ignored", false));
  EXPECT_FALSE(host.start_program("/no/such/folder/zenta-no-such-program", false));
  EXPECT_FALSE(host.start_program("", false));
}

}  // namespace
}  // namespace zenta::testing

#include "panel/ui/screenshots.h"

#include <QCoreApplication>
#include <QDir>
#include <QPixmap>
#include <QTemporaryDir>
#include <QThread>
#include <fstream>
#include <iostream>

namespace zenta {

namespace {

void settle() {
  for (int i = 0; i < 5; ++i) {
    QCoreApplication::processEvents();
    QThread::msleep(40);
  }
}

bool save(QWidget* window, const QString& path) {
  settle();
  if (!window) return false;
  const bool saved = window->grab().save(path);
  std::cerr << (saved ? "saved " : "could not save ") << path.toStdString() << '\n';
  return saved;
}

}  // namespace

bool take_screenshots(PanelWindows& windows, QtHost& host, const QString& folder) {
  QDir().mkpath(folder);
  host.message_hook = [](const std::string& text, const std::string& title, MessageIcon) {
    std::cerr << title << ": " << text << '\n';
  };
  MainWindow& main = windows.main_window();
  MainForm& form = main.form();
  bool ok = true;

  // With the supply on since the start-up, the ID button names the chip.
  main.run([&form] { form.Command_ID_Click(); });
  ok &= save(&main, folder + "/main-collapsed.png");
  // The test area opens at the second click on the blank picture box.
  main.run([&form] { form.kage_Click(); });
  main.run([&form] { form.kage_Click(); });
  ok &= save(&main, folder + "/main.png");

  struct Shot {
    WindowId id;
    const char* file;
  };
  for (const Shot& shot :
       {Shot{WindowId::kHelp, "help.png"}, Shot{WindowId::kVersion, "version.png"},
        Shot{WindowId::kSetup, "setup.png"}}) {
    host.show_window(shot.id);
    ok &= save(host.windows().find(shot.id), folder + "/" + shot.file);
    if (QWidget* window = host.windows().find(shot.id)) window->close();
  }
  main.run([&form] { form.BUFVIEWButton_Click(); });
  ok &= save(host.windows().find(WindowId::kDataView), folder + "/dataview.png");
  main.run([&form] { form.READ_EEPROM_Click(); });
  ok &= save(host.windows().find(WindowId::kEepromView), folder + "/eeview.png");
  ok &= save(&main, folder + "/main-after.png");

  // A source with a mistake, assembled: the error window lists the
  // assembler's messages, and the editor shows the source.
  QTemporaryDir sources;
  const std::string source = QDir(sources.path()).filePath("blink.asm").toStdString();
  std::ofstream(source) << "\tlist p=16f877a\n\torg 0\nstart:\tbsf 0x06, 0\n\tgoto strat\n"
                           "\tmovlw 0x2A\n\tend\n";
  form.view().FilenameTextbox = source;
  main.run([&form] { form.ASSMButton_Click(); });
  for (int ticks = 0; form.toolchain().running() && ticks < 600; ++ticks) settle();
  ok &= save(host.windows().find(WindowId::kErrorView), folder + "/errview.png");
  main.run([&form] { form.EditorButton_Click(); });
  ok &= save(host.windows().find(WindowId::kEditor), folder + "/editor.png");

  main.close();
  return ok;
}

}  // namespace zenta

#include "panel/ui/screenshots.h"

#include <QCoreApplication>
#include <QDir>
#include <QPixmap>
#include <QThread>
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

  main.close();
  return ok;
}

}  // namespace zenta

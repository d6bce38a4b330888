#include "panel/ui/screenshots.h"

#include <QCoreApplication>
#include <QDir>
#include <QPainter>
#include <QPixmap>
#include <QTemporaryDir>
#include <QThread>
#include <fstream>
#include <iostream>

#include "converter/ui/data_conv_window.h"
#include "image/hex_writer.h"
#include "instruments/ui/logic_window.h"
#include "instruments/ui/meter_windows.h"

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

// The window with its title above it, as its frame would show it: a grab
// holds the client area only.
bool save_with_title(QWidget* window, const QString& path) {
  settle();
  if (!window) return false;
  const QPixmap client = window->grab();
  constexpr int kBar = 24;
  QPixmap picture(client.width(), client.height() + kBar);
  picture.fill(window->palette().color(QPalette::Window).darker(120));
  QPainter painter(&picture);
  painter.setPen(window->palette().color(QPalette::WindowText));
  painter.drawText(QRect(8, 0, client.width() - 16, kBar), Qt::AlignVCenter | Qt::AlignLeft,
                   window->windowTitle());
  painter.drawPixmap(0, kBar, client);
  painter.end();
  const bool saved = picture.save(path);
  std::cerr << (saved ? "saved " : "could not save ") << path.toStdString() << '\n';
  return saved;
}

template <typename W>
W* open(QtWindowManager& manager, WindowId id) {
  return qobject_cast<W*>(manager.show(id));
}

void shoot(QtWindowManager& manager, WindowId id, QWidget* window, const QString& path, bool& ok) {
  ok &= save(window, path);
  if (QWidget* open_window = manager.find(id)) open_window->close();
}

// Every instrument with something to show: a capture drawn, readings taken.
bool save_instruments(QtWindowManager& manager, const QString& folder, sim::SimUnit* sim) {
  bool ok = true;
  if (auto* conv = open<DataConvWindow>(manager, WindowId::kConverter)) {
    conv->model().Text1 = "165";
    conv->model().Command1_Click();
    conv->model().Text3 = "A";
    conv->model().Command2_Click();
    conv->render();
  }
  shoot(manager, WindowId::kConverter, manager.find(WindowId::kConverter),
        folder + "/converter.png", ok);
  if (auto* la = open<LogicWindow>(manager, WindowId::kLogicView)) {
    la->model().Command7_Click();
    la->render();
    ok &= save(la, folder + "/logicview.png");
    la->model().STIME = "2";
    la->model().Option2_Click();
    la->model().MAG_Check_Click(true);
    la->model().Command7_Click();
    la->model().extend_Click();
    la->model().Command10_Click();
    la->render();
  }
  shoot(manager, WindowId::kLogicView, manager.find(WindowId::kLogicView),
        folder + "/logicview-extended.png", ok);
  // The closed window goes first, so the view opens anew.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  if (auto* la = open<LogicWindow>(manager, WindowId::kLogicView); la && sim) {
    // The second exchange of the capture, its first block, gets no answer.
    sim->fail_read_at(static_cast<int>(sim->trace().size()) + 2);
    if (la->model().extended) la->model().extend_Click();
    la->model().MAG_Check_Click(false);
    la->model().Command7_Click();
    la->render();
    shoot(manager, WindowId::kLogicView, la, folder + "/logicview-failed.png", ok);
  }
  if (auto* vm = open<VoltMeterWindow>(manager, WindowId::kVoltMeter)) {
    vm->model().Command_READ_Click();
    vm->model().Command_AUTO_Click();
    vm->render();
    ok &= save(vm, folder + "/voltmeter.png");
    vm->model().Command_COMP_Click();
    vm->render();
    ok &= save(vm, folder + "/voltmeter-comp.png");
    vm->model().Volt_Bar_MouseDown();
    vm->render();
  }
  shoot(manager, WindowId::kVoltMeter, manager.find(WindowId::kVoltMeter),
        folder + "/voltmeter-diagnostic.png", ok);
  if (auto* f = open<FrequencyCounterWindow>(manager, WindowId::kFrequencyCounter)) {
    // Past 16 bits on the 100 mS gate: the widest reading, with the lamp.
    if (sim) sim->set_input_frequency(1300000);
    f->model().Command_READ_Click();
    f->render();
  }
  shoot(manager, WindowId::kFrequencyCounter, manager.find(WindowId::kFrequencyCounter),
        folder + "/fcounter.png", ok);
  if (auto* cnt = open<EventCounterWindow>(manager, WindowId::kEventCounter)) {
    cnt->model().Command_START_Click();
    cnt->model().Command_READ_Click();
    cnt->render();
  }
  shoot(manager, WindowId::kEventCounter, manager.find(WindowId::kEventCounter),
        folder + "/counter.png", ok);
  return ok;
}

}  // namespace

bool take_screenshots(PanelWindows& windows, QtHost& host, const QString& folder,
                      sim::SimUnit* sim) {
  QtWindowManager& manager = windows.windows();
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

  // A program with its configuration word and EEPROM data, loaded and
  // written: the status line shows what the checks found.
  QTemporaryDir images;
  const std::string image = images.filePath("blink.hex").toStdString();
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w)
    words.push_back({w, static_cast<std::uint16_t>(0x2800 + w)});
  words.push_back({kConfigWordAddress, 0x3F32});
  words.push_back({0x2100, 0x12});
  if (write_inhx8m_file(image, words)) {
    host.open_dialog_hook = [image](const std::string&) { return image; };
    main.run([&form] { form.F_OpenButton_Click(); });
    main.run([&form] { form.WriteButton_Click(); });
    host.open_dialog_hook = nullptr;
    ok &= save(&main, folder + "/main-written.png");
  }

  struct Shot {
    WindowId id;
    const char* file;
  };
  for (const Shot& shot :
       {Shot{WindowId::kHelp, "help.png"}, Shot{WindowId::kVersion, "version.png"},
        Shot{WindowId::kSetup, "setup.png"}}) {
    manager.show_window(shot.id);
    ok &= save(manager.find(shot.id), folder + "/" + shot.file);
    if (QWidget* window = manager.find(shot.id)) window->close();
  }
  main.run([&form] { form.BUFVIEWButton_Click(); });
  ok &= save(manager.find(WindowId::kDataView), folder + "/dataview.png");
  main.run([&form] { form.READ_EEPROM_Click(); });
  ok &= save(manager.find(WindowId::kEepromView), folder + "/eeview.png");
  ok &= save(&main, folder + "/main-after.png");
  ok &= save_instruments(manager, folder, sim);

  // A source with a mistake, assembled: the error window lists the
  // assembler's messages, and the editor shows the source.
  QTemporaryDir sources;
  const std::string source = QDir(sources.path()).filePath("blink.asm").toStdString();
  std::ofstream(source) << "\tlist p=16f877a\n\torg 0\nstart:\tbsf 0x06, 0\n\tgoto strat\n"
                           "\tmovlw 0x2A\n\tend\n";
  form.view().FilenameTextbox = source;
  main.run([&form] { form.ASSMButton_Click(); });
  for (int ticks = 0; form.toolchain().running() && ticks < 600; ++ticks) settle();
  ok &= save(manager.find(WindowId::kErrorView), folder + "/errview.png");
  main.run([&form] { form.EditorButton_Click(); });
  ok &= save_with_title(manager.find(WindowId::kEditor), folder + "/editor.png");

  main.close();
  return ok;
}

}  // namespace zenta

// zenta-panel [FILE]: the control panel's windows on the unit that ZENTA_UNIT
// names (the USB unit by default); FILE (a HEX file or a source) opens as
// FILE OPEN would open it. ZENTA_TRACE=FILE writes every exchange
// to FILE; ZENTA_SCREENSHOTS=DIR saves a picture of each window to DIR and
// ends.
#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QTimer>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>

#include "common/interrupt.h"
#include "image/programmer_state.h"
#include "link/trace_driver.h"
#include "link/unit.h"
#include "panel/link_boxes.h"
#include "panel/main_form.h"
#include "panel/ui/panel_windows.h"
#include "panel/ui/screenshots.h"
#include "platform/driver_factory.h"
#include "platform/qt_host.h"
#include "platform/qt_settings_store.h"

namespace {

// Exit statuses, as the command-line program has them.
constexpr int kBadUsage = 2;
constexpr int kNoUnit = 3;

int refuse(const std::string& text) {
  std::cerr << "zenta-panel: " << text << '\n';
  QMessageBox::critical(nullptr, "ZENTA Control Panel", QString::fromStdString(text));
  return kBadUsage;
}

}  // namespace

int main(int argc, char** argv) {
  // The pictures live in the window library's resources.
  Q_INIT_RESOURCE(zenta);
  QApplication app(argc, argv);
  // SIGINT, SIGTERM and SIGHUP (a logout, kill) end the panel as closing its
  // window does: an operation ends at its next step with programming mode
  // left and the target off, then the window closes and the trace is
  // flushed. Caught from the start, so none is lost while the panel starts.
  zenta::install_interrupt_handlers();
  QApplication::setOrganizationName("ZENTA");
  QApplication::setApplicationName("ZENTA");
  QApplication::setWindowIcon(QIcon(":/zenta/zenta-panel.png"));

  // The file a desktop hands over opens once the window is up.
  const zenta::PanelArguments arguments = zenta::panel_arguments(QApplication::arguments());
  if (!arguments.error.isEmpty()) return refuse(arguments.error.toStdString());

  zenta::DriverChoice choice = zenta::make_driver(zenta::unit_spec_from_environment());
  if (!choice.driver) return refuse(choice.error);
  zenta::UnitDriver* driver = choice.driver.get();

  std::ofstream trace_file;
  std::unique_ptr<zenta::TraceDriver> trace;
  if (const char* path = std::getenv("ZENTA_TRACE"); path && *path) {
    trace_file.open(path);
    if (!trace_file) return refuse(std::string("cannot write the trace file ") + path);
    trace = std::make_unique<zenta::TraceDriver>(*driver, trace_file);
    driver = trace.get();
  }

  // The composition root: the unit, the state, the tool settings and the
  // viewer models live here and are handed to the parts that use them.
  zenta::QtSettingsStore settings;
  zenta::QtHost host;
  host.remember_dialogs_in(&settings);
  zenta::LinkBoxes link_boxes(host);
  zenta::Unit unit(*driver, link_boxes);
  zenta::ToolSettings tools;
  zenta::BufferViewModel program_view = zenta::make_program_view();
  zenta::BufferViewModel eeprom_view = zenta::make_eeprom_view();
  zenta::QtWindowManager window_manager;
  const zenta::PanelParts parts{
      unit,  host,         window_manager, settings, zenta::programmer_state(),
      tools, program_view, eeprom_view};
  zenta::MainForm form(parts);
  // The start-up runs before any window shows; without a unit the user has
  // been told, and the panel ends.
  if (!form.Form_Load()) return kNoUnit;

  zenta::PanelWindows windows(form, parts, host, window_manager, choice.simulated);
  windows.main_window().show();
  // The operation sees the interrupt flag itself; this timer closes the
  // window, also when the panel is idle.
  QTimer interrupt_watch;
  QObject::connect(&interrupt_watch, &QTimer::timeout, [&windows] {
    if (zenta::interrupted()) windows.main_window().close();
  });
  interrupt_watch.start(100);
  if (!arguments.file.isEmpty()) {
    QTimer::singleShot(0, &windows.main_window(), [&windows, file = arguments.file] {
      windows.main_window().open_desktop_file(file);
    });
  }

  bool pictures_ok = true;
  if (const char* folder = std::getenv("ZENTA_SCREENSHOTS"); folder && *folder) {
    // The timer fires after this block has ended: the folder goes in by value.
    auto* sim = dynamic_cast<zenta::sim::SimUnit*>(choice.driver.get());
    QTimer::singleShot(300,
                       [&windows, &host, &pictures_ok, sim, out = QString::fromLocal8Bit(folder)] {
                         pictures_ok = zenta::take_screenshots(windows, host, out, sim);
                       });
  }
  const int status = QApplication::exec();
  // Closing the main window has shut the unit down; this covers an end of
  // the event loop by any other way.
  windows.main_window().close();
  return pictures_ok ? status : 1;
}

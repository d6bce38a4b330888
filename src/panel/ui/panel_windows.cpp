#include "panel/ui/panel_windows.h"

#include "image/ui/buffer_viewer.h"
#include "image/viewer_layout.h"
#include "panel/shell.h"
#include "panel/ui/help_window.h"
#include "panel/ui/setup_window.h"
#include "panel/ui/version_window.h"
#include "toolchain/ui/editor_window.h"
#include "toolchain/ui/error_window.h"

namespace zenta {

PanelWindows::PanelWindows(MainForm& form, QtHost& host, bool simulated)
    : form_(form), host_(host), main_(std::make_unique<MainWindow>(form, host, simulated)) {
  MainWindow* main = main_.get();
  QtWindowManager& windows = host_.windows();
  // Every other window is a window of its own that closes with the main one.
  windows.set_factory(WindowId::kHelp, [this, main] {
    return new HelpWindow(host_, help_file_path(form_.tools().AsmFolder), main);
  });
  windows.set_factory(WindowId::kVersion, [this, main] {
    return new VersionWindow(host_, form_.FirmwareVersion(), main);
  });
  windows.set_factory(WindowId::kSetup, [this, main] {
    return new SetupWindow(form_.tools(), form_.settings(), main);
  });
  windows.set_factory(WindowId::kDataView, [this, main] {
    return new BufferViewer(form_.program_view(), kDataViewGeometry, "DATAVIEW", "Data buffer",
                            form_.state().ProgramSize / 16, main);
  });
  windows.set_factory(WindowId::kEepromView, [this, main] {
    return new BufferViewer(form_.eeprom_view(), kEepromViewGeometry, "EEVIEW",
                            "EEPROM Data buffer", 16, main);
  });
  windows.set_factory(WindowId::kErrorView,
                      [this, main] { return new ErrorWindow(form_.toolchain(), main); });
  windows.set_factory(WindowId::kEditor,
                      [this, main] { return new EditorWindow(form_.toolchain(), main); });
  main_->after_render = [this] { refresh_viewers(); };
}

PanelWindows::~PanelWindows() {
  // The factories refer to this object and the main window.
  for (WindowId id : {WindowId::kHelp, WindowId::kVersion, WindowId::kSetup, WindowId::kDataView,
                      WindowId::kEepromView, WindowId::kErrorView, WindowId::kEditor}) {
    host_.windows().set_factory(id, nullptr);
  }
  host_.before_events = nullptr;
  host_.set_dialog_parent(nullptr);
  form_.on_changed = nullptr;
}

void PanelWindows::refresh_viewers() {
  for (WindowId id : {WindowId::kDataView, WindowId::kEepromView}) {
    if (auto* viewer = qobject_cast<BufferViewer*>(host_.windows().find(id))) viewer->refresh();
  }
}

}  // namespace zenta

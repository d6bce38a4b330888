#include "panel/ui/panel_windows.h"

#include "converter/ui/data_conv_window.h"
#include "image/ui/buffer_viewer.h"
#include "image/viewer_layout.h"
#include "instruments/ui/logic_window.h"
#include "instruments/ui/meter_windows.h"
#include "panel/shell.h"
#include "panel/ui/help_window.h"
#include "panel/ui/setup_window.h"
#include "panel/ui/version_window.h"
#include "toolchain/ui/editor_window.h"
#include "toolchain/ui/error_window.h"

namespace zenta {

PanelWindows::PanelWindows(MainForm& form, const PanelParts& parts, QtHost& host,
                           QtWindowManager& windows, bool simulated)
    : form_(form),
      parts_(parts),
      host_(host),
      windows_(windows),
      logic_view_(parts.unit, parts.host),
      main_(std::make_unique<MainWindow>(form, host, windows, simulated)) {
  MainWindow* main = main_.get();
  // Every other window is a window of its own that closes with the main one.
  windows_.set_factory(WindowId::kHelp, [this, main] {
    return new HelpWindow(host_, help_file_path(parts_.tools.AsmFolder), main);
  });
  windows_.set_factory(WindowId::kVersion, [this, main] {
    return new VersionWindow(host_, parts_.unit.FirmwareVersion(), homepage_url(parts_.settings),
                             main);
  });
  windows_.set_factory(WindowId::kSetup, [this, main] {
    return new SetupWindow(parts_.tools, parts_.settings, main);
  });
  windows_.set_factory(WindowId::kDataView, [this, main] {
    return new BufferViewer(parts_.program_view, kDataViewGeometry, "DATAVIEW", "Data buffer",
                            parts_.state.ProgramSize / 16, main);
  });
  windows_.set_factory(WindowId::kEepromView, [this, main] {
    return new BufferViewer(parts_.eeprom_view, kEepromViewGeometry, "EEVIEW", "EEPROM Data buffer",
                            16, main);
  });
  windows_.set_factory(WindowId::kErrorView,
                       [this, main] { return new ErrorWindow(form_.toolchain(), main); });
  windows_.set_factory(WindowId::kEditor,
                       [this, main] { return new EditorWindow(form_.toolchain(), main); });
  main_->after_render = [this] { refresh_viewers(); };
  set_instrument_factories();
}

void PanelWindows::set_instrument_factories() {
  MainWindow* main = main_.get();
  windows_.set_factory(WindowId::kConverter, [main] { return new DataConvWindow(main); });
  windows_.set_factory(WindowId::kLogicView,
                       [this, main] { return new LogicWindow(logic_view_, parts_.unit, main); });
  windows_.set_factory(WindowId::kVoltMeter, [this, main] {
    return new VoltMeterWindow(parts_.unit, parts_.host, parts_.settings, main);
  });
  windows_.set_factory(WindowId::kFrequencyCounter, [this, main] {
    return new FrequencyCounterWindow(parts_.unit, parts_.host, main);
  });
  windows_.set_factory(WindowId::kEventCounter, [this, main] {
    return new EventCounterWindow(parts_.unit, parts_.host, main);
  });
}

PanelWindows::~PanelWindows() {
  // The factories refer to this object and the main window.
  for (WindowId id : {WindowId::kHelp, WindowId::kVersion, WindowId::kSetup, WindowId::kDataView,
                      WindowId::kEepromView, WindowId::kConverter, WindowId::kLogicView,
                      WindowId::kVoltMeter, WindowId::kFrequencyCounter, WindowId::kEventCounter,
                      WindowId::kErrorView, WindowId::kEditor}) {
    windows_.set_factory(id, nullptr);
  }
  host_.before_events = nullptr;
  host_.set_dialog_parent(nullptr);
  form_.on_changed = nullptr;
}

void PanelWindows::refresh_viewers() {
  for (WindowId id : {WindowId::kDataView, WindowId::kEepromView}) {
    if (auto* viewer = qobject_cast<BufferViewer*>(windows_.find(id))) viewer->refresh();
  }
}

}  // namespace zenta

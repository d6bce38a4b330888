#pragma once
// The panel's windows around one MainForm: the main window, and the
// factories by which the host makes every other window at most once.
#include <memory>
#include <optional>

#include "instruments/logic_view.h"
#include "link/unit.h"
#include "panel/main_form.h"
#include "panel/ui/main_window.h"
#include "platform/qt_host.h"

namespace zenta {

class PanelWindows {
 public:
  // Call after MainForm's start-up, so the windows open on its state.
  // The instruments send through `unit`, inside its operation guard.
  PanelWindows(MainForm& form, QtHost& host, bool simulated, Unit& unit);
  ~PanelWindows();
  PanelWindows(const PanelWindows&) = delete;
  PanelWindows& operator=(const PanelWindows&) = delete;

  MainWindow& main_window() { return *main_; }

 private:
  void refresh_viewers();
  void set_instrument_factories();
  void sync_chip_guard();

  MainForm& form_;
  QtHost& host_;
  Unit& unit_;
  // The logic view's samples outlive its window, as the panel keeps them.
  LogicView logic_view_;
  // The main window's chip commands mark its view busy; while they run
  // they hold the unit's guard here, and while an instrument holds it the
  // view shows busy, so neither can start inside the other.
  std::optional<Unit::Operation> chip_guard_;
  bool bridging_ = false;
  int subscription_ = -1;
  std::unique_ptr<MainWindow> main_;
};

}  // namespace zenta

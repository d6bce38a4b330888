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
  PanelWindows(MainForm& form, const PanelParts& parts, QtHost& host, QtWindowManager& windows,
               bool simulated);
  ~PanelWindows();
  PanelWindows(const PanelWindows&) = delete;
  PanelWindows& operator=(const PanelWindows&) = delete;

  MainWindow& main_window() { return *main_; }
  QtWindowManager& windows() { return windows_; }

 private:
  void refresh_viewers();
  void set_instrument_factories();

  MainForm& form_;
  PanelParts parts_;
  QtHost& host_;
  QtWindowManager& windows_;
  // The logic view's samples outlive its window, as the panel keeps them.
  LogicView logic_view_;
  std::unique_ptr<MainWindow> main_;
};

}  // namespace zenta

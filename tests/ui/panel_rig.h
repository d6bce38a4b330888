#pragma once
// One panel on a simulated unit, driven through its windows as a user
// would: controls are found by name, message boxes are recorded and file
// dialogs answered from a queue, so nothing waits for a person.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <deque>
#include <utility>

#include "core/temp_dir.h"
#include "image/hex_loader.h"
#include "link/sim/sim_unit.h"
#include "link/unit.h"
#include "panel/link_boxes.h"
#include "panel/main_form.h"
#include "panel/ui/panel_windows.h"
#include "platform/qt_host.h"

namespace zenta::testing {

class PanelRig {
 public:
  PanelRig() {
    host.message_hook = [this](const std::string& text, const std::string& title, MessageIcon) {
      boxes.push_back(title + ": " + text);
    };
    host.open_dialog_hook = [this](const std::string&) {
      if (open_answers.empty()) return std::string();
      std::string answer = open_answers.front();
      open_answers.pop_front();
      return answer;
    };
    // The documented sequences, which these tests pin.
    store.save(kSettingsApp, kPanelSection, kExactKey, "1");
    form = std::make_unique<MainForm>(parts);
    started = form->Form_Load();
    windows = std::make_unique<PanelWindows>(*form, parts, host, window_manager, true);
    main().show();
    settle();
  }

  MainWindow& main() { return windows->main_window(); }
  template <typename W>
  W* find(const char* name) {
    return main().findChild<W*>(name);
  }
  int count(const char* name) {
    return static_cast<int>(main().findChildren<QWidget*>(name).size());
  }

  // Clicks a button, triggers a menu command, or clicks on a label, which
  // has no click() of its own.
  void click(const char* name) {
    if (auto* action = find<QAction>(name)) {
      action->trigger();
    } else if (auto* button = find<QAbstractButton>(name)) {
      button->click();
    } else if (QWidget* label = find<QWidget>(name)) {
      const QPointF inside(2, 2);
      for (auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, inside, label->mapToGlobal(inside), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QApplication::sendEvent(label, &event);
      }
    } else {
      ADD_FAILURE() << "no control named " << name;
    }
    settle();
  }
  // Runs `operation` and, at the first pause in which it lets events run,
  // `action`, as a click in that pause would; says whether there was one.
  template <typename Operation, typename Action>
  bool at_first_pause(Operation operation, Action action) {
    bool paused = false;
    const auto render = host.before_events;
    host.before_events = [&] {
      if (render) render();
      if (!std::exchange(paused, true)) action();
    };
    operation();
    host.before_events = render;
    return paused;
  }
  // Lets queued renders and deferred deletions of closed windows run.
  static void settle() {
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
  }

  sim::SimUnit sim{"16F877A"};
  MemorySettingsStore store;
  QtHost host;
  std::unique_ptr<ProgrammerState> state = std::make_unique<ProgrammerState>();
  ToolSettings tools;
  BufferViewModel program_view = make_program_view();
  BufferViewModel eeprom_view = make_eeprom_view();
  LinkBoxes link_boxes{host};
  Unit unit{sim, link_boxes};
  QtWindowManager window_manager;
  PanelParts parts{unit, host, window_manager, store, *state, tools, program_view, eeprom_view};
  std::unique_ptr<MainForm> form;
  std::unique_ptr<PanelWindows> windows;
  bool started = false;
  std::vector<std::string> boxes;  // "title: text"
  std::deque<std::string> open_answers;
};

// The words of a HEX file as the panel's loader reads them, blank-filled.
inline std::unique_ptr<ProgrammerState> hex_image(const std::string& path) {
  auto image = std::make_unique<ProgrammerState>();
  blank_program_image(*image);
  std::istringstream text(read_text(path));
  EXPECT_TRUE(load_hex_records(text, *image).ok) << path;
  return image;
}

}  // namespace zenta::testing

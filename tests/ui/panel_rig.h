#pragma once
// One panel on a simulated unit, driven through its windows as a user
// would: controls are found by name, message boxes are recorded and file
// dialogs answered from a queue, so nothing waits for a person.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/temp_dir.h"
#include "image/programmer_state.h"
#include "link/sim/sim_unit.h"
#include "panel/main_form.h"
#include "panel/settings_store.h"
#include "panel/ui/panel_windows.h"
#include "platform/qt_host.h"

namespace zenta::testing {

struct Box {
  std::string text;
  std::string title;
};

class PanelRig {
 public:
  explicit PanelRig(const std::string& chip = "16F877A") : sim(chip) {
    host.message_hook = [this](const std::string& text, const std::string& title, MessageIcon) {
      boxes.push_back({text, title});
    };
    host.open_dialog_hook = [this](const std::string& filter) {
      filters.push_back(filter);
      if (open_answers.empty()) return std::string();
      std::string answer = open_answers.front();
      open_answers.pop_front();
      return answer;
    };
    host.url_hook = [this](const std::string& url) {
      urls.push_back(url);
      return true;
    };
    form = std::make_unique<MainForm>(sim, host, store, *state);
    started = form->Form_Load();
    windows = std::make_unique<PanelWindows>(*form, host, true);
    main().show();
    settle();
  }

  MainWindow& main() { return windows->main_window(); }

  template <typename W>
  W* find(const char* name) {
    return main().findChild<W*>(name);
  }
  void click(const char* name) {
    auto* button = find<QAbstractButton>(name);
    ASSERT_NE(button, nullptr) << name;
    button->click();
    settle();
  }
  void trigger(const char* name) {
    auto* action = find<QAction>(name);
    ASSERT_NE(action, nullptr) << name;
    action->trigger();
    settle();
  }
  // A click on a label, which has no click() of its own.
  void click_label(const char* name) {
    auto* label = find<QWidget>(name);
    ASSERT_NE(label, nullptr) << name;
    click_on(label);
  }
  static void click_on(QWidget* label) {
    const QPointF inside(2, 2);
    QMouseEvent press(QEvent::MouseButtonPress, inside, label->mapToGlobal(inside), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, inside, label->mapToGlobal(inside),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(label, &press);
    QApplication::sendEvent(label, &release);
    settle();
  }
  // Lets queued renders and deferred deletions of closed windows run.
  static void settle() {
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
  }
  int count(const char* name) {
    return static_cast<int>(main().findChildren<QWidget*>(name).size());
  }

  sim::SimUnit sim;
  MemorySettingsStore store;
  QtHost host;
  std::unique_ptr<ProgrammerState> state = std::make_unique<ProgrammerState>();
  std::unique_ptr<MainForm> form;
  std::unique_ptr<PanelWindows> windows;
  bool started = false;
  std::vector<Box> boxes;
  std::deque<std::string> open_answers;
  std::vector<std::string> filters;
  std::vector<std::string> urls;
};

// Program words of an INHX8M file, read here independently of the panel's
// loader: word address -> word.
inline std::map<int, int> hex_words(const std::string& path) {
  std::map<int, int> words;
  std::istringstream lines(read_text(path));
  std::string line;
  while (std::getline(lines, line)) {
    if (line.size() < 11 || line[0] != ':') continue;
    const int count = std::stoi(line.substr(1, 2), nullptr, 16);
    const int address = std::stoi(line.substr(3, 4), nullptr, 16);
    if (line.substr(7, 2) != "00") continue;
    for (int i = 0; i < count; ++i) {
      const int byte = std::stoi(line.substr(9 + 2 * i, 2), nullptr, 16);
      const int a = address + i;
      words[a / 2] |= (a % 2 == 0) ? byte : byte << 8;
    }
  }
  return words;
}

// Assembles a source of tests/data with gputils into `dir`; the HEX path,
// or "" when gpasm is missing or fails.
inline std::string assemble(const TempDir& dir, const std::string& source) {
  const std::string hex = dir.file("image.hex");
  const std::string command =
      "gpasm -a inhx8m -o '" + hex + "' '" + ZENTA_TEST_DATA + "/" + source + "' >/dev/null 2>&1";
  return run_command(command).status == 0 ? hex : std::string();
}

}  // namespace zenta::testing

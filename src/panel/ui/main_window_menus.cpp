// The menu bar: Function, TOOL and ABOUT, items named as the panel names them.
#include <QMenuBar>

#include "panel/shell.h"
#include "panel/ui/main_window.h"

namespace zenta {

namespace {
QAction* add_item(QMenu* menu, const char* name, const char* caption, QKeySequence shortcut = {}) {
  QAction* action = menu->addAction(caption);
  action->setObjectName(name);
  if (!shortcut.isEmpty()) action->setShortcut(shortcut);
  return action;
}
}  // namespace

void MainWindow::build_menus() {
  QMenuBar* bar = menuBar();
  auto menu = [bar](const char* name) {
    QMenu* item = bar->addMenu(name);
    item->setObjectName(name);
    return item;
  };
  auto on = [this](QAction* action, std::function<void()> handler) {
    connect(action, &QAction::triggered, this, [this, handler] { run(handler); });
  };

  QMenu* function = menu("Function");
  fileopen_menu_ = add_item(function, "FILEOPENMENU", "File Open", QKeySequence(Qt::Key_F3));
  on(fileopen_menu_, [this] { form_.F_OpenButton_Click(); });
  read_menu_ = add_item(function, "READ", "READ");
  on(read_menu_, [this] { form_.READ_Click(); });
  on(add_item(function, "Buffer_view", "Buffer_view"), [this] { form_.Buffer_view_Click(); });
  read_eeprom_menu_ = add_item(function, "READ_EEPROM", "READ_EEPROM");
  // The documented sequences byte for byte, without the safe-programming
  // checks; kept in the settings.
  function->addSeparator();
  exact_menu_ = add_item(function, "EXACT_MENU", "Exact sequences (no checks)");
  exact_menu_->setCheckable(true);
  connect(exact_menu_, &QAction::triggered, this,
          [this](bool checked) { run([this, checked] { form_.Exact_Click(checked); }); });
  on(read_eeprom_menu_, [this] { form_.READ_EEPROM_Click(); });

  QMenu* tool = menu("TOOL");
  on(add_item(tool, "Editor", "Editor", QKeySequence(Qt::Key_F5)),
     [this] { form_.EditorButton_Click(); });
  on(add_item(tool, "Assembler", "Assembler", QKeySequence(Qt::Key_F6)),
     [this] { form_.ASSMButton_Click(); });
  on(add_item(tool, "Ccmp", "C compiler", QKeySequence(Qt::Key_F7)),
     [this] { form_.C_Button_Click(); });
  on(add_item(tool, "NEW_EDITOR", "New File"), [this] { form_.New_EditorButton_Click(); });
  // The instruments cannot start while a chip command runs.
  const auto instrument = [this](WindowId id, const char* caption) {
    return [this, id, caption] { form_.open_instrument(id, caption); };
  };
  on(add_item(tool, "Convertor", "Convertor", QKeySequence(Qt::Key_F8)),
     [this] { windows_.show_window(WindowId::kConverter); });
  on(add_item(tool, "CALC", "Calculator"), [this] { start_calculator(host_); });
  on(add_item(tool, "LAview", "Logic View", QKeySequence(Qt::Key_F9)),
     instrument(WindowId::kLogicView, "Logic View"));
  on(add_item(tool, "VM_MANU", "Volt meter", QKeySequence(Qt::Key_F11)),
     instrument(WindowId::kVoltMeter, "Volt meter"));
  on(add_item(tool, "CNT_MENU", "F-Counter", QKeySequence(Qt::Key_F12)),
     instrument(WindowId::kFrequencyCounter, "F-Counter"));
  on(add_item(tool, "CNT_MENU2", "Counter"), instrument(WindowId::kEventCounter, "Counter"));
  on(add_item(tool, "System_Setup", "Setup"), [this] { windows_.show_window(WindowId::kSetup); });

  QMenu* about = menu("ABOUT");
  on(add_item(about, "HELP", "HELP", QKeySequence(Qt::Key_F1)),
     [this] { windows_.show_window(WindowId::kHelp); });
  on(add_item(about, "VER", "Information"), [this] { windows_.show_window(WindowId::kVersion); });
  on(add_item(about, "HomePage_OPEN", "HomePage"), [this] { form_.HomePage_Click(); });
}

}  // namespace zenta

#include "panel/ui/window_manager.h"

#include <QApplication>

namespace zenta {

void QtWindowManager::set_factory(WindowId id, Factory factory) {
  if (factory) {
    factories_[id] = std::move(factory);
  } else {
    factories_.erase(id);
  }
}

QWidget* QtWindowManager::show(WindowId id) {
  QWidget* window = find(id);
  if (!window) {
    auto factory = factories_.find(id);
    if (factory == factories_.end()) return nullptr;
    window = factory->second();
    // A closed window is gone: choosing it again makes it anew and its
    // load steps run again.
    window->setAttribute(Qt::WA_DeleteOnClose);
    windows_[id] = window;
  }
  window->show();
  window->raise();
  window->activateWindow();
  return window;
}

void QtWindowManager::show_window(WindowId id) {
  if (!show(id)) QApplication::beep();
}

QWidget* QtWindowManager::find(WindowId id) const {
  auto it = windows_.find(id);
  return it == windows_.end() ? nullptr : it->second.data();
}

bool QtWindowManager::visible(WindowId id) const {
  const QWidget* window = find(id);
  return window && window->isVisible();
}

void QtWindowManager::close_all() {
  for (auto& [id, window] : windows_) {
    if (window) window->close();
  }
}

}  // namespace zenta

#pragma once
// Keeps the panel's other windows: at most one of each. Showing a window
// that is open brings it forward; one that is not open is made by its
// factory, which also decides whether it is modal.
#include <QPointer>
#include <QWidget>
#include <functional>
#include <map>

#include "panel/windows.h"

namespace zenta {

class QtWindowManager : public Windows {
 public:
  using Factory = std::function<QWidget*()>;

  // An empty factory forgets the window kind.
  void set_factory(WindowId id, Factory factory);
  bool has_factory(WindowId id) const { return factories_.count(id) != 0; }
  // Shows the window, making it first when needed; null when the panel has
  // no such window.
  QWidget* show(WindowId id);
  // The open window, or null.
  QWidget* find(WindowId id) const;
  bool visible(WindowId id) const;
  // Shows the window; a beep when the panel has no such window.
  void show_window(WindowId id) override;
  bool window_visible(WindowId id) const override { return visible(id); }
  // Closes every window it keeps.
  void close_all();

 private:
  std::map<WindowId, Factory> factories_;
  std::map<WindowId, QPointer<QWidget>> windows_;
};

}  // namespace zenta

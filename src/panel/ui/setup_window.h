#pragma once
// The setup dialog Setup_Form: six boxes for the tool folders and command
// lines; EXIT stores them, the close box forgets them.
#include <QWidget>
#include <array>

#include "panel/setup_dialog.h"

class QLineEdit;

namespace zenta {

class SetupWindow : public QWidget {
  Q_OBJECT
 public:
  SetupWindow(ToolSettings& tools, SettingsStore& settings, QWidget* parent);

 private:
  void render();

  SetupDialog dialog_;
  std::array<QLineEdit*, 6> boxes_{};
};

}  // namespace zenta

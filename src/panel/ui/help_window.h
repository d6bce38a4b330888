#pragma once
// The help window HELP_FORM: the help file in a read-only text box.
#include <QWidget>

#include "panel/shell.h"

class QPlainTextEdit;
class QPushButton;

namespace zenta {

class HelpWindow : public QWidget {
  Q_OBJECT
 public:
  // Loads the help file at once; a missing one has been reported when the
  // constructor returns, and the window opens all the same.
  HelpWindow(Host& host, const std::string& help_path, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  HelpForm form_;
  QPlainTextEdit* text1_;
  QPushButton* exit_button_;
};

}  // namespace zenta

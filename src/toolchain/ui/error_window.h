#pragma once
// The error window ZENTA_ERRVIEW: the tool's error file, read when the
// window opens. A double-click on a message line opens the editor there.
#include <QWidget>

#include "toolchain/toolchain.h"

class QPlainTextEdit;
class QPushButton;

namespace zenta {

class ErrorWindow : public QWidget {
  Q_OBJECT
 public:
  ErrorWindow(Toolchain& toolchain, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  Toolchain& toolchain_;
  QPlainTextEdit* err_text_;
  QPushButton* exit_button_;
};

}  // namespace zenta

#pragma once
// The built-in editor ZENTA_Editor: loads the file named in the main
// window's file name box when it opens, saves it back on SAVE.
#include <QWidget>

#include "toolchain/toolchain.h"

class QPlainTextEdit;
class QPushButton;

namespace zenta {

class EditorWindow : public QWidget {
  Q_OBJECT
 public:
  EditorWindow(Toolchain& toolchain, QWidget* parent);
  ~EditorWindow() override;

  // Puts the cursor at the start of the line (1-based) and shows it.
  void go_to_line(int line);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  Toolchain& toolchain_;
  QPlainTextEdit* editor_text_;
  QPushButton* save_button_;
  QPushButton* exit_button_;
};

}  // namespace zenta

#include "panel/ui/help_window.h"

#include <QPlainTextEdit>
#include <QPushButton>

#include "platform/widgets.h"

namespace zenta {

HelpWindow::HelpWindow(Host& host, const std::string& help_path, QWidget* parent)
    : QWidget(parent, Qt::Window) {
  setObjectName("HELP_FORM");
  setWindowTitle("HELP");
  text1_ = new QPlainTextEdit(this);
  text1_->setObjectName("Text1");
  text1_->setReadOnly(true);
  text1_->setLineWrapMode(QPlainTextEdit::NoWrap);
  exit_button_ = make_button(this, "EXITButton", "EXIT", "Exit Program", {0, 0, 80, 28});
  connect(exit_button_, &QPushButton::clicked, this, &QWidget::close);

  form_.Form_Load(host, help_path);
  // The form keeps each line end as CR LF; the text box wants LF alone.
  text1_->setPlainText(QString::fromStdString(form_.Text1()).replace("\r\n", "\n"));
  resize(px(5685), px(5670));
}

void HelpWindow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const HelpLayout layout = help_layout(twips(width()), twips(height()));
  const int exit_top = px(layout.exit_top);
  exit_button_->move(px(layout.exit_left), exit_top);
  // The text stops above the EXIT button, so no line hides behind it.
  const int text_height = std::max(0, std::min(px(layout.text.height), exit_top - 4));
  text1_->setGeometry(0, 0, std::max(0, px(layout.text.width)), text_height);
}

}  // namespace zenta

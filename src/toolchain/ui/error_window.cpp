#include "toolchain/ui/error_window.h"

#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>

#include "platform/widgets.h"
#include "toolchain/text_views.h"

namespace zenta {

namespace {
// Wide enough for a message line of gpasm with a short path.
constexpr int kWidthTwips = 9600;
constexpr int kHeightTwips = 3600;
}  // namespace

ErrorWindow::ErrorWindow(Toolchain& toolchain, QWidget* parent)
    : QWidget(parent, Qt::Window), toolchain_(toolchain) {
  setObjectName("ZENTA_ERRVIEW");
  setWindowTitle("Error view");
  err_text_ = new QPlainTextEdit(this);
  err_text_->setObjectName("ErrText");
  err_text_->setReadOnly(true);
  err_text_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  err_text_->viewport()->installEventFilter(this);
  err_text_->setToolTip("Double-click a message to edit its line");
  exit_button_ = make_button(this, "EXITButton", "EXIT", "Exit Program", {0, 0, 80, 28});
  connect(exit_button_, &QPushButton::clicked, this, &QWidget::close);

  // The text keeps CR LF line ends; the text box wants LF alone.
  err_text_->setPlainText(
      QString::fromStdString(toolchain_.error_view_text()).replace("\r\n", "\n"));
  resize(px(kWidthTwips), px(kHeightTwips));
}

void ErrorWindow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const ErrorViewLayout layout = error_view_layout(twips(width()), twips(height()));
  const int exit_top = px(layout.exit_top);
  exit_button_->move(px(layout.exit_left), exit_top);
  // The text stops above the EXIT button, so no message hides behind it.
  const int text_height = std::max(0, std::min(px(layout.text.height), exit_top - 4));
  err_text_->setGeometry(0, 0, px(layout.text.width), text_height);
}

bool ErrorWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == err_text_->viewport() && event->type() == QEvent::MouseButtonDblClick) {
    const auto* mouse = static_cast<QMouseEvent*>(event);
    const QString line = err_text_->cursorForPosition(mouse->position().toPoint()).block().text();
    if (toolchain_.ErrText_DblClick(line.toStdString())) return true;
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace zenta

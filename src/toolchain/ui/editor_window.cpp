#include "toolchain/ui/editor_window.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>

#include "platform/widgets.h"
#include "toolchain/text_views.h"

namespace zenta {

namespace {
constexpr int kWidthTwips = 6045;
constexpr int kHeightTwips = 8430;
}  // namespace

EditorWindow::EditorWindow(Toolchain& toolchain, QWidget* parent)
    : QWidget(parent, Qt::Window), toolchain_(toolchain) {
  setObjectName("ZENTA_Editor");
  editor_text_ = new QPlainTextEdit(this);
  editor_text_->setObjectName("EditorText");
  editor_text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  editor_text_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  editor_text_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  editor_text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  save_button_ = make_button(this, "SAVEButton", "SAVE", "Save to File", {0, 0, 64, 28});
  exit_button_ = make_button(this, "EXITButton", "EXIT", "Exit program", {0, 0, 64, 28});
  connect(save_button_, &QPushButton::clicked, this, [this] {
    toolchain_.save_editor(editor_text_->toPlainText().toStdString());
    // A save under a new name renames the window.
    setWindowTitle(QString::fromStdString(toolchain_.editor_title()));
  });
  // No question on the way out: the editor keeps no unsaved-changes flag.
  connect(exit_button_, &QPushButton::clicked, this, &QWidget::close);

  editor_text_->setPlainText(
      QString::fromStdString(toolchain_.load_editor()).replace("\r\n", "\n"));
  setWindowTitle(QString::fromStdString(toolchain_.editor_title()));
  toolchain_.on_editor_line = [this](int line) { go_to_line(line); };
  go_to_line(toolchain_.take_editor_line());
  resize(px(kWidthTwips), px(kHeightTwips));
}

EditorWindow::~EditorWindow() {
  toolchain_.on_editor_line = nullptr;
  toolchain_.editor_closed();
}

void EditorWindow::go_to_line(int line) {
  if (line < 1) return;
  const QTextBlock block = editor_text_->document()->findBlockByNumber(line - 1);
  if (!block.isValid()) return;
  editor_text_->setTextCursor(QTextCursor(block));
  editor_text_->centerCursor();
  editor_text_->setFocus();
}

void EditorWindow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const std::optional<EditorLayout> layout = editor_layout(twips(width()), twips(height()));
  if (!layout) return;
  const int buttons_top = px(layout->save_top);
  save_button_->move(px(layout->save_left), buttons_top);
  exit_button_->move(px(layout->exit_left), px(layout->exit_top));
  // The text stops above the buttons, so no line hides behind them.
  const int text_height = std::max(0, std::min(px(layout->text.height), buttons_top - 4));
  editor_text_->setGeometry(0, 0, px(layout->text.width), text_height);
}

}  // namespace zenta

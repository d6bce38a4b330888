#include "panel/ui/setup_window.h"

#include "platform/widgets.h"

namespace zenta {

SetupWindow::SetupWindow(ToolSettings& tools, SettingsStore& settings, QWidget* parent)
    : QWidget(parent, Qt::Window), dialog_(tools, settings) {
  setObjectName("Setup_Form");
  setWindowTitle("Setup");
  QPalette grey = palette();
  grey.setColor(QPalette::Window, QColor(224, 224, 224));
  grey.setColor(QPalette::WindowText, Qt::black);
  setPalette(grey);
  setAutoFillBackground(true);
  resize(px(7020), px(5235));

  for (std::size_t i = 0; i < kSetupRows.size(); ++i) {
    const int top = 8 + 46 * static_cast<int>(i);
    const SetupRow& row = kSetupRows[i];
    make_label(this, row.label, row.label_text, {24, top, px(6000), 16});
    boxes_[i] = make_box(this, row.box, nullptr, {24, top + 17, px(6000), 24});
    connect(boxes_[i], &QLineEdit::textChanged, this,
            [this, i](const QString& text) { dialog_.boxes[i] = text.toStdString(); });
  }
  QPushButton* defaults =
      make_button(this, "Command_default", "Default", nullptr, {24, 300, 90, 30});
  connect(defaults, &QPushButton::clicked, this, [this] {
    dialog_.Command_default_Click();
    render();
  });
  QPushButton* exit =
      make_button(this, "EXTButton", "EXIT", "Exit", {24 + px(6000) - 90, 300, 90, 30});
  connect(exit, &QPushButton::clicked, this, [this] {
    dialog_.EXTButton_Click();
    close();
  });

  dialog_.Form_Load();
  render();
}

void SetupWindow::render() {
  for (std::size_t i = 0; i < boxes_.size(); ++i) render_text(boxes_[i], dialog_.boxes[i]);
}

}  // namespace zenta

#include "converter/ui/data_conv_window.h"

namespace zenta {

namespace {
constexpr int kWidth = 4500;
constexpr int kHeight = 2700;
}  // namespace

DataConvWindow::DataConvWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
  setObjectName("DataConv");
  setWindowTitle("Data Convertor");
  setFixedSize(px(kWidth), px(kHeight));

  make_label(this, "", "DEC", {10, 10, 110, 16});
  make_label(this, "", "HEX", {180, 10, 110, 16});
  text1_ = make_box(this, "Text1", nullptr, {10, 28, 100, 24});
  text2_ = make_box(this, "Text2", nullptr, {180, 28, 100, 24});
  auto* command1 = make_button(this, "Command1", "CNV>>", nullptr, {116, 16, 58, 22});
  auto* command3 = make_button(this, "Command3", "<<CNV", nullptr, {116, 42, 58, 22});
  label_bit_ = make_label(this, "Label_bit", "0000 0000", {180, 56, 100, 18});
  QFont fixed("Courier New");
  fixed.setStyleHint(QFont::Monospace);
  label_bit_->setFont(fixed);

  make_label(this, "", "Char", {10, 84, 110, 16});
  make_label(this, "", "ASCII", {180, 84, 50, 16});
  make_label(this, "", "(HEX)", {230, 84, 50, 16});
  text3_ = make_box(this, "Text3", nullptr, {10, 102, 100, 24});
  text4_ = make_box(this, "Text4", nullptr, {180, 102, 100, 24});
  auto* command2 = make_button(this, "Command2", "CNV>>", nullptr, {116, 90, 58, 22});
  auto* command4 = make_button(this, "Command4", "<<CNV", nullptr, {116, 116, 58, 22});

  make_label(this, "", "Korvan", {10, 150, 60, 16});
  auto* exit = make_button(this, "EXITButton", "EXIT", nullptr, {210, 144, 70, 28});

  const auto field = [this](QLineEdit* box, std::string DataConv::*member) {
    connect(box, &QLineEdit::textEdited, this,
            [this, member](const QString& text) { model_.*member = text.toStdString(); });
  };
  field(text1_, &DataConv::Text1);
  field(text3_, &DataConv::Text3);
  field(text4_, &DataConv::Text4);
  connect(text2_, &QLineEdit::textEdited, this, [this](const QString& text) {
    model_.Text2_Change(text.toStdString());
    render();
  });
  const auto on = [this](QPushButton* button, void (DataConv::*event)()) {
    connect(button, &QPushButton::clicked, this, [this, event] {
      (model_.*event)();
      render();
    });
  };
  on(command1, &DataConv::Command1_Click);
  on(command3, &DataConv::Command3_Click);
  on(command2, &DataConv::Command2_Click);
  on(command4, &DataConv::Command4_Click);
  connect(exit, &QPushButton::clicked, this, &QWidget::close);
  model_.Form_Load();
  render();
}

void DataConvWindow::render() {
  render_text(text1_, model_.Text1);
  render_text(text2_, model_.Text2);
  render_text(text3_, model_.Text3);
  render_text(text4_, model_.Text4);
  render_text(label_bit_, model_.Label_bit);
}

}  // namespace zenta

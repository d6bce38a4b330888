#include "instruments/ui/logic_window.h"

#include <QPainter>
#include <QPlainTextEdit>

#include "common/colours.h"

namespace zenta {

namespace {
constexpr double kTwipsPerPixel = 15.0;
}

LaPicture::LaPicture(const LaDrawing& drawing, QWidget* parent)
    : QWidget(parent), drawing_(drawing) {
  setObjectName("Picture1");
  setAutoFillBackground(true);
  QPalette white = palette();
  white.setColor(QPalette::Window, Qt::white);
  setPalette(white);
  QFont font("Arial");
  font.setPointSize(9);
  setFont(font);
}

void LaPicture::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  // Lines past the picture's edge (the X5 trace) are clipped here.
  painter.setClipRect(rect());
  const auto at = [](int x, int y) { return QPointF(x / kTwipsPerPixel, y / kTwipsPerPixel); };
  for (const DrawLine& line : drawing_.lines) {
    painter.setPen(QPen(rgb(line.color), 1));
    painter.drawLine(at(line.x1, line.y1), at(line.x2, line.y2));
  }
  const QFontMetrics metrics(font());
  for (const DrawText& text : drawing_.texts) {
    painter.setPen(rgb(text.color));
    const QPointF corner = at(text.x, text.y);
    painter.drawText(QPointF(corner.x(), corner.y() + metrics.ascent()),
                     QString::fromStdString(text.text));
  }
}

LogicWindow::LogicWindow(LogicView& model, Unit& unit, QWidget* parent)
    : QWidget(parent, Qt::Window), model_(model), unit_(unit) {
  setObjectName("LA");
  setWindowTitle("LOGIC VIEW");
  model_.Form_Load();
  picture_ = new LaPicture(model_.drawing, this);
  picture_->setGeometry(6, 6, px(kLaPictureWidth), px(kLaPictureHeight));

  const int right = 366;
  shape2_ = new QWidget(this);
  shape2_->setObjectName("Shape2");
  shape2_->setAutoFillBackground(true);
  shape2_->setGeometry(right, 8, 80, 6);
  trig_ = make_button(this, "Command7", "TRIG", "TRIG Go!", {right, 16, 80, 26});
  auto* clear = make_button(this, "Command9", "CLEAR", nullptr, {right, 46, 80, 26});
  auto* exp = make_button(this, "Command_EXPORT", "EXPORT", "Save the samples as VCD or CSV",
                          {right, 76, 80, 26});
  extend_ = make_button(this, "Command_MORE", "MORE >>", "Pattern, DATA SET and listing",
                        {right, 106, 80, 26});
  auto* exit = make_button(this, "Command6", "EXIT", nullptr, {right, 150, 80, 26});

  make_label(this, "", "Sample ", {6, 146, 48, 16});
  make_label(this, "", "Time", {6, 162, 48, 16});
  stime_ = make_box(this, "STIME", "Sample Time", {54, 150, 40, 22});
  make_label(this, "", "x0.1mS", {98, 154, 48, 16});
  option1_ = make_option(this, "Option1", "POS", nullptr, {150, 144, 52, 20});
  option2_ = make_option(this, "Option2", "NEG", nullptr, {150, 164, 52, 20});
  mag_ = make_check(this, "MAG_Check", "X5", nullptr, {206, 152, 44, 20});
  make_label(this, "Label4", "100 Sample /div", {252, 154, 104, 16});
  make_label(this, "", "Korvan", {6, 186, 60, 16});
  note_ = make_label(this, "Label_note", "", {70, 186, 376, 16});

  // The extended area, right of the window's usual width.
  const int extra = px(kLaWidth) + 4;
  text1_ = new QPlainTextEdit(this);
  text1_->setObjectName("Text1");
  text1_->setGeometry(extra, 6, 290, 70);
  auto* data_set = make_button(this, "Command25", "DATA SET", nullptr, {extra, 80, 100, 26});
  auto* display =
      make_button(this, "Command10", "SAMPLE DISPLAY", nullptr, {extra + 110, 80, 130, 26});
  text3_ = new QPlainTextEdit(this);
  text3_->setObjectName("Text3");
  text3_->setReadOnly(true);
  text3_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  text3_->setGeometry(extra, 110, 290, 90);

  const auto on = [this](QAbstractButton* button, std::function<void()> handler) {
    connect(button, &QAbstractButton::clicked, this, [this, handler] {
      handler();
      render();
    });
  };
  on(trig_, [this] {
    model_.Command7_Click([this] {
      render();
      shape2_->repaint();
    });
  });
  on(clear, [this] { model_.Command9_Click(); });
  on(exp, [this] { model_.Export_Click(); });
  on(extend_, [this] { model_.extend_Click(); });
  on(data_set, [this] { model_.Command25_Click(); });
  on(display, [this] { model_.Command10_Click(); });
  on(option1_, [this] { model_.Option1_Click(); });
  on(option2_, [this] { model_.Option2_Click(); });
  connect(mag_, &QCheckBox::toggled, this, [this](bool checked) {
    model_.MAG_Check_Click(checked);
    render();
  });
  connect(stime_, &QLineEdit::textChanged, this,
          [this](const QString& text) { model_.STIME = text.toStdString(); });
  connect(text1_, &QPlainTextEdit::textChanged, this,
          [this] { model_.Text1 = text1_->toPlainText().toStdString(); });
  connect(exit, &QPushButton::clicked, this, &QWidget::close);
  subscription_ = unit_.subscribe([this](bool) { render(); });
  render();
}

LogicWindow::~LogicWindow() {
  unit_.unsubscribe(subscription_);
}

void LogicWindow::render() {
  setFixedSize(px(model_.width), px(kLaHeight));
  QPalette strip = shape2_->palette();
  strip.setColor(QPalette::Window, rgb(model_.shape2));
  shape2_->setPalette(strip);
  // No capture while a chip operation holds the unit.
  trig_->setEnabled(!unit_.busy());
  render_text(stime_, model_.STIME);
  option1_->setChecked(model_.pos);
  option2_->setChecked(!model_.pos);
  if (mag_->isChecked() != model_.MAG_Check) {
    const QSignalBlocker blocker(mag_);
    mag_->setChecked(model_.MAG_Check);
  }
  render_text(extend_, model_.extended ? "<< LESS" : "MORE >>");
  render_text(note_, model_.Label_note);
  QPalette note = note_->palette();
  note.setColor(QPalette::WindowText, model_.content == LaContent::kFailedCapture
                                          ? rgb(kRed)
                                          : palette().color(QPalette::WindowText));
  note_->setPalette(note);
  const QString pattern = QString::fromStdString(model_.Text1);
  if (text1_->toPlainText() != pattern) {
    const QSignalBlocker blocker(text1_);
    text1_->setPlainText(pattern);
  }
  const QString listing = QString::fromStdString(model_.Text3);
  if (text3_->toPlainText() != listing) text3_->setPlainText(listing);
  picture_->update();
}

}  // namespace zenta

#include "platform/widgets.h"

#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>

namespace zenta {

void ClickableLabel::mouseReleaseEvent(QMouseEvent* event) {
  QLabel::mouseReleaseEvent(event);
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
    emit clicked();
  }
}

OuterSizer::OuterSizer(QWidget* window) : window_(window) {
  window_->installEventFilter(this);
}

OuterSizer::~OuterSizer() {
  window_->removeEventFilter(this);
}

QSize OuterSizer::frame() const {
  return window_->frameGeometry().size() - window_->geometry().size();
}

void OuterSizer::resize(QSize outer) {
  outer_ = outer;
  frame_pending_ = !window_->isVisible() || frame().isNull();
  window_->resize(outer_ - frame());
}

bool OuterSizer::eventFilter(QObject* watched, QEvent* event) {
  // The frame arrives with the show, or with the move that follows it when
  // the window manager frames the window later; the first of them with a
  // frame, or the first move, settles it, so the user's sizing is kept.
  if (watched == window_ && frame_pending_ &&
      (event->type() == QEvent::Show || event->type() == QEvent::Move)) {
    frame_pending_ = frame().isNull() && event->type() == QEvent::Show;
    window_->resize(outer_ - frame());
  }
  return false;
}

void Lamp::set_color(const QColor& color) {
  if (color == color_) return;
  color_ = color;
  update();
}

void Lamp::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(color_);
  painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
}

namespace {
template <typename W>
W* placed(W* widget, const char* name, Place place) {
  widget->setObjectName(name);
  widget->setGeometry(place.x, place.y, place.width, place.height);
  return widget;
}
}  // namespace

QPushButton* make_button(QWidget* parent, const char* name, const char* caption, const char* tip,
                         Place place) {
  auto* button = placed(new QPushButton(caption, parent), name, place);
  if (tip) button->setToolTip(tip);
  return button;
}

QLabel* make_label(QWidget* parent, const char* name, const char* caption, Place place) {
  return placed(new QLabel(caption, parent), name, place);
}

ClickableLabel* make_link(QWidget* parent, const char* name, const char* caption, Place place) {
  auto* label = placed(new ClickableLabel(caption, parent), name, place);
  label->setCursor(Qt::PointingHandCursor);
  return label;
}

QLineEdit* make_box(QWidget* parent, const char* name, const char* tip, Place place) {
  auto* box = placed(new QLineEdit(parent), name, place);
  if (tip) box->setToolTip(tip);
  return box;
}

QRadioButton* make_option(QWidget* parent, const char* name, const char* caption, const char* tip,
                          Place place) {
  auto* option = placed(new QRadioButton(caption, parent), name, place);
  if (tip) option->setToolTip(tip);
  return option;
}

QCheckBox* make_check(QWidget* parent, const char* name, const char* caption, const char* tip,
                      Place place) {
  auto* check = placed(new QCheckBox(caption, parent), name, place);
  if (tip) check->setToolTip(tip);
  return check;
}

void render_text(QLineEdit* box, const std::string& text) {
  const QString value = QString::fromStdString(text);
  if (box->text() == value) return;
  const QSignalBlocker blocker(box);
  box->setText(value);
}

void render_text(QLabel* label, const std::string& text) {
  const QString value = QString::fromStdString(text);
  if (label->text() != value) label->setText(value);
}

void render_text(QAbstractButton* button, const std::string& text) {
  const QString value = QString::fromStdString(text);
  if (button->text() != value) button->setText(value);
}

}  // namespace zenta

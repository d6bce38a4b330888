#include "instruments/ui/meter_windows.h"

#include <QCloseEvent>
#include <QFrame>
#include <QMouseEvent>
#include <QProgressBar>

namespace zenta {

namespace {
// What a reading box's frame and inner margins take of its width, in pixels,
// and the least size its text is set in.
constexpr int kDisplayMargins = 12;
constexpr double kSmallestPoints = 12;

// Arial 27.75 pt bold, cyan on dark grey.
QFont display_font() {
  QFont font("Arial");
  font.setPointSizeF(27.75);
  font.setBold(true);
  return font;
}
}  // namespace

MeterWindow::MeterWindow(const char* name, const char* caption, QWidget* parent)
    : QWidget(parent, Qt::Dialog) {
  setObjectName(name);
  setWindowTitle(caption);
  setWindowModality(Qt::ApplicationModal);
  timer_auto_.setObjectName("Timer_AUTO");
}

QLineEdit* MeterWindow::make_display(Place place) {
  QLineEdit* box = make_box(this, "VMtext", nullptr, place);
  box->setFont(display_font());
  box->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  QPalette colours = box->palette();
  colours.setColor(QPalette::Base, rgb(kMeterBackColor));
  colours.setColor(QPalette::Text, rgb(kMeterTextColor));
  box->setPalette(colours);
  box->setReadOnly(true);
  return box;
}

Lamp* MeterWindow::make_lamp(const char* name, Place place) {
  auto* lamp = new Lamp(this);
  lamp->setObjectName(name);
  lamp->setGeometry(place.x, place.y, place.width, place.height);
  lamp->set_color(rgb(kLampGrey));
  return lamp;
}

QLabel* MeterWindow::make_grey_label(const char* caption, Place place) {
  QLabel* label = make_label(this, "", caption, place);
  QPalette grey = label->palette();
  grey.setColor(QPalette::WindowText, Qt::gray);
  label->setPalette(grey);
  return label;
}

void MeterWindow::render_display(QLineEdit* box, const std::string& text) {
  render_text(box, text);
  // The reading shows whole: where the face is wider than Arial, it is set smaller.
  const QString shown = QString::fromStdString(text);
  const int room = box->width() - kDisplayMargins;
  QFont font = display_font();
  while (QFontMetrics(font).horizontalAdvance(shown) > room && font.pointSizeF() > kSmallestPoints)
    font.setPointSizeF(font.pointSizeF() - 0.5);
  if (box->font() != font) box->setFont(font);
}

void MeterWindow::render_auto(const AutoRead& autoread, Lamp* lamp) {
  lamp->set_color(rgb(autoread.lamp));
  if (timer_auto_.interval() != autoread.interval_ms) timer_auto_.setInterval(autoread.interval_ms);
  if (autoread.timer_enabled && !timer_auto_.isActive()) timer_auto_.start();
  if (!autoread.timer_enabled && timer_auto_.isActive()) timer_auto_.stop();
}

// ---- VM ----

VoltMeterWindow::VoltMeterWindow(Unit& unit, Host& host, SettingsStore& settings, QWidget* parent)
    : MeterWindow("VM", "Volt Meter", parent), model_(unit, host, settings) {
  model_.Form_Load();
  for (int i = 0; i < 3; ++i) {
    channels_[static_cast<std::size_t>(i)] = make_option(
        this, ("Option_CH_" + std::to_string(i)).c_str(),
        kVoltChannelNames[static_cast<std::size_t>(i)], nullptr, {8 + 58 * i, 6, 56, 20});
    connect(channels_[static_cast<std::size_t>(i)], &QRadioButton::clicked, this, [this, i] {
      model_.Option_CH_Click(i);
      render();
    });
  }
  make_label(this, "", "Input  Vin", {8, 28, 90, 16});
  make_grey_label("Max 20V", {100, 28, 70, 16});
  display_ = make_display({8, 48, 150, 48});
  make_label(this, "", "V", {164, 66, 16, 24});
  bar_ = new QProgressBar(this);
  bar_->setObjectName("Volt_Bar");
  bar_->setRange(0, kVoltBarMax);
  bar_->setTextVisible(false);
  bar_->setGeometry(8, 102, 172, 14);
  bar_->installEventFilter(this);
  auto* read = make_button(this, "Command_READ", "READ", nullptr, {180, 8, 56, 26});
  auto* autob = make_button(this, "Command_AUTO", "AUTO", nullptr, {180, 40, 40, 26});
  auto_lamp_ = make_lamp("Shape_AUTO", {222, 46, 14, 14});
  auto* comp = make_button(this, "Command_COMP", "COMP", nullptr, {180, 72, 56, 26});
  log_ = make_button(this, "Command_LOG", "LOG", "Log the AUTO readings to a CSV file",
                     {8, 124, 80, 26});
  auto* exit = make_button(this, "Command_EXIT", "EXIT", nullptr, {180, 124, 56, 26});
  // The attenuation area, brought into view by COMP.
  make_label(this, "", "ATT=", {256, 40, 36, 20});
  make_label(this, "", "1", {300, 24, 30, 16})->setAlignment(Qt::AlignCenter);
  auto* rule = new QFrame(this);
  rule->setFrameShape(QFrame::HLine);
  rule->setGeometry(292, 41, 46, 4);
  text_comp_ = make_box(this, "Text_COMP", "Attenuation", {292, 46, 46, 22});
  // The diagnostic fields, brought into view by a press on the bar.
  text3_ = make_box(this, "Text3", "Raw reading", {8, 184, 72, 22});
  text1_ = make_box(this, "Text1", "Scaled x 0.0196", {84, 184, 72, 22});
  text2_ = make_box(this, "Text2", "Scaled x 5 / 255", {160, 184, 76, 22});

  forward(read, this, model_, &VoltMeter::Command_READ_Click);
  forward(autob, this, model_, &VoltMeter::Command_AUTO_Click);
  forward(comp, this, model_, &VoltMeter::Command_COMP_Click);
  forward(log_, this, model_, &VoltMeter::Command_LOG_Click);
  connect(exit, &QPushButton::clicked, this, &QWidget::close);
  connect(text_comp_, &QLineEdit::textChanged, this,
          [this](const QString& text) { model_.Text_COMP_Change(text.toStdString()); });
  connect(&timer_auto_, &QTimer::timeout, this, [this] {
    model_.Timer_AUTO_Timer();
    render();
  });
  render();
}

void VoltMeterWindow::render() {
  setFixedSize(px(model_.width), px(model_.height));
  channels_[static_cast<std::size_t>(model_.channel)]->setChecked(true);
  render_display(display_, model_.VMtext);
  bar_->setValue(model_.bar);
  render_text(text_comp_, model_.Text_COMP);
  for (auto [box, text] : {std::pair{text1_, &model_.Text1}, std::pair{text2_, &model_.Text2},
                           std::pair{text3_, &model_.Text3}}) {
    render_text(box, *text);
    box->setCursorPosition(0);  // the leading digits matter most
  }
  render_text(log_, log_caption(model_.log));
  render_auto(model_.autoread, auto_lamp_);
}

bool VoltMeterWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == bar_ && event->type() == QEvent::MouseButtonPress) {
    model_.Volt_Bar_MouseDown();
    render();
  }
  return QWidget::eventFilter(watched, event);
}

void VoltMeterWindow::closeEvent(QCloseEvent* event) {
  model_.Form_Unload();
  render_auto(model_.autoread, auto_lamp_);
  event->accept();
}

// ---- Form_FCNT ----

FrequencyCounterWindow::FrequencyCounterWindow(Unit& unit, Host& host, QWidget* parent)
    : MeterWindow("Form_FCNT", "Frequency Counter", parent), model_(unit, host) {
  model_.Form_Load();
  gateh_ = make_option(this, "Option_GATEH", "100mS", nullptr, {8, 6, 64, 20});
  gatel_ = make_option(this, "Option_GATEL", "1S", nullptr, {76, 6, 48, 20});
  make_grey_label("Input  LA-TP", {8, 28, 90, 16});
  make_grey_label("Max 1MHz", {100, 28, 70, 16});
  // Wide enough for eight characters: 1299.990 KHz at 1.3 MHz.
  display_ = make_display({8, 48, 190, 48});
  unit_label_ = make_label(this, "Label_unit", "KHz", {202, 66, 36, 24});
  over_lamp_ = make_lamp("Shape_over", {8, 106, 14, 14});
  make_label(this, "", "OVER", {26, 104, 40, 18});
  auto* read = make_button(this, "Command_READ", "READ", nullptr, {176, 8, 56, 26});
  auto* autob = make_button(this, "Command_AUTO", "AUTO", nullptr, {176, 102, 40, 26});
  auto_lamp_ = make_lamp("Shape_AUTO", {218, 108, 14, 14});
  log_ = make_button(this, "Command_LOG", "LOG", "Log the AUTO readings to a CSV file",
                     {8, 150, 80, 26});
  auto* exit = make_button(this, "Command_EXIT", "EXIT", nullptr, {176, 150, 56, 26});
  connect(gateh_, &QRadioButton::clicked, this, [this] { model_.Option_GATEH_Click(); });
  connect(gatel_, &QRadioButton::clicked, this, [this] { model_.Option_GATEL_Click(); });
  forward(read, this, model_, &FrequencyCounter::Command_READ_Click);
  forward(autob, this, model_, &FrequencyCounter::Command_AUTO_Click);
  forward(log_, this, model_, &FrequencyCounter::Command_LOG_Click);
  connect(exit, &QPushButton::clicked, this, &QWidget::close);
  connect(&timer_auto_, &QTimer::timeout, this, [this] {
    model_.Timer_AUTO_Timer();
    render();
  });
  setFixedSize(px(kFcntWidth), px(kFcntHeight));
  render();
}

void FrequencyCounterWindow::render() {
  (model_.gate == Gate::k100ms ? gateh_ : gatel_)->setChecked(true);
  render_display(display_, model_.VMtext);
  render_text(unit_label_, model_.Label_unit);
  over_lamp_->set_color(rgb(model_.over_lamp));
  render_text(log_, log_caption(model_.log));
  render_auto(model_.autoread, auto_lamp_);
}

void FrequencyCounterWindow::closeEvent(QCloseEvent* event) {
  model_.Form_Unload();
  render_auto(model_.autoread, auto_lamp_);
  event->accept();
}

// ---- Form_CNT ----

EventCounterWindow::EventCounterWindow(Unit& unit, Host& host, QWidget* parent)
    : MeterWindow("Form_CNT", "Counter", parent), model_(unit, host) {
  model_.Form_Load();
  make_grey_label("Input  LA-TP", {8, 6, 90, 16});
  make_grey_label("Max 1MHz", {100, 6, 70, 16});
  display_ = make_display({8, 26, 140, 48});
  make_label(this, "", "Cnt", {152, 44, 28, 24});
  over_lamp_ = make_lamp("Shape_over", {8, 84, 14, 14});
  make_label(this, "", "OVER", {26, 82, 40, 18});
  struct Button {
    const char* name;
    const char* caption;
    void (EventCounter::*event)();
    Place place;
  };
  const Button buttons[] = {
      {"Command_START", "START", &EventCounter::Command_START_Click, {8, 108, 54, 26}},
      {"Command_STOP", "STOP", &EventCounter::Command_STOP_Click, {66, 108, 54, 26}},
      {"Command_RESET", "RESET", &EventCounter::Command_RESET_Click, {124, 108, 54, 26}},
      {"Command_READ", "READ", &EventCounter::Command_READ_Click, {184, 8, 50, 26}},
      {"Command_AUTO", "AUTO", &EventCounter::Command_AUTO_Click, {184, 40, 36, 26}},
      {"Command_LOG", "LOG", &EventCounter::Command_LOG_Click, {8, 150, 80, 26}},
  };
  for (const Button& b : buttons) {
    QPushButton* button = make_button(this, b.name, b.caption, nullptr, b.place);
    connect(button, &QPushButton::clicked, this, [this, event = b.event] {
      (model_.*event)();
      render();
    });
    if (b.event == &EventCounter::Command_LOG_Click) log_ = button;
  }
  auto_lamp_ = make_lamp("Shape_AUTO", {222, 46, 14, 14});
  auto* exit = make_button(this, "Command_EXIT", "EXIT", nullptr, {184, 150, 50, 26});
  connect(exit, &QPushButton::clicked, this, &QWidget::close);
  connect(&timer_auto_, &QTimer::timeout, this, [this] {
    model_.Timer_AUTO_Timer();
    render();
  });
  setFixedSize(px(kCntWidth), px(kCntHeight));
  render();
}

void EventCounterWindow::render() {
  render_display(display_, model_.VMtext);
  over_lamp_->set_color(rgb(model_.over_lamp));
  render_text(log_, log_caption(model_.log));
  render_auto(model_.autoread, auto_lamp_);
}

void EventCounterWindow::closeEvent(QCloseEvent* event) {
  model_.Form_Unload();
  render_auto(model_.autoread, auto_lamp_);
  event->accept();
}

}  // namespace zenta

#pragma once
// The three meter windows VM, Form_FCNT and Form_CNT. Modal: the main
// window takes no input while one is open, and their AUTO timers run all
// the same (the modality is the window's, not a nested event loop).
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <memory>

#include "instruments/counters.h"
#include "instruments/volt_meter.h"
#include "platform/widgets.h"

class QProgressBar;

namespace zenta {

// The parts every meter window has: the display, the AUTO lamp and timer,
// the log button.
class MeterWindow : public QWidget {
  Q_OBJECT
 public:
  MeterWindow(const char* name, const char* caption, QWidget* parent);

 protected:
  QLineEdit* make_display(Place place);
  // The reading, in a smaller size of the face when it would not show whole.
  void render_display(QLineEdit* box, const std::string& text);
  Lamp* make_lamp(const char* name, Place place);
  QLabel* make_grey_label(const char* caption, Place place);
  // Brings the timer in line with the model's AUTO state.
  void render_auto(const AutoRead& autoread, Lamp* lamp);
  // A button runs one event of the window's model, then the window shows it.
  template <typename Window, typename Model>
  void forward(QPushButton* button, Window* window, Model& model, void (Model::*event)()) {
    connect(button, &QPushButton::clicked, this, [window, &model, event] {
      (model.*event)();
      window->render();
    });
  }
  QTimer timer_auto_;
};

class VoltMeterWindow : public MeterWindow {
  Q_OBJECT
 public:
  VoltMeterWindow(Unit& unit, Host& host, SettingsStore& settings, QWidget* parent);
  VoltMeter& model() { return model_; }
  void render();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  VoltMeter model_;
  std::array<QRadioButton*, 3> channels_{};
  QLineEdit* display_;
  Lamp* auto_lamp_;
  QProgressBar* bar_;
  QLineEdit* text_comp_;
  QLineEdit* text1_;
  QLineEdit* text2_;
  QLineEdit* text3_;
  QPushButton* log_;
};

class FrequencyCounterWindow : public MeterWindow {
  Q_OBJECT
 public:
  FrequencyCounterWindow(Unit& unit, Host& host, QWidget* parent);
  FrequencyCounter& model() { return model_; }
  void render();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  FrequencyCounter model_;
  QRadioButton* gateh_;
  QRadioButton* gatel_;
  QLineEdit* display_;
  QLabel* unit_label_;
  Lamp* auto_lamp_;
  Lamp* over_lamp_;
  QPushButton* log_;
};

class EventCounterWindow : public MeterWindow {
  Q_OBJECT
 public:
  EventCounterWindow(Unit& unit, Host& host, QWidget* parent);
  EventCounter& model() { return model_; }
  void render();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  EventCounter model_;
  QLineEdit* display_;
  Lamp* auto_lamp_;
  Lamp* over_lamp_;
  QPushButton* log_;
};

}  // namespace zenta

#pragma once
// The logic view window LA: a modeless window that paints the model's
// drawing and forwards its buttons. MORE >> widens it to show the pattern,
// DATA SET and the sample listing.
#include <QWidget>

#include "instruments/logic_view.h"
#include "platform/widgets.h"

class QPlainTextEdit;

namespace zenta {

// Picture1: paints lines and texts given in twips.
class LaPicture : public QWidget {
  Q_OBJECT
 public:
  LaPicture(const LaDrawing& drawing, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const LaDrawing& drawing_;
};

class LogicWindow : public QWidget {
  Q_OBJECT
 public:
  LogicWindow(LogicView& model, Unit& unit, QWidget* parent);
  ~LogicWindow() override;
  LogicView& model() { return model_; }
  void render();

 private:
  LogicView& model_;
  Unit& unit_;
  int subscription_;
  LaPicture* picture_;
  QWidget* shape2_;
  QPushButton* trig_;
  QLineEdit* stime_;
  QRadioButton* option1_;
  QRadioButton* option2_;
  QCheckBox* mag_;
  QPushButton* extend_;
  QLabel* note_;
  QPlainTextEdit* text1_;
  QPlainTextEdit* text3_;
};

}  // namespace zenta

#pragma once
// The data converter window DataConv, modeless; it forwards its buttons and
// the edits of the HEX field to the DataConv model and shows its fields.
#include <QWidget>

#include "converter/data_conv.h"
#include "platform/widgets.h"

namespace zenta {

class DataConvWindow : public QWidget {
  Q_OBJECT
 public:
  explicit DataConvWindow(QWidget* parent);
  DataConv& model() { return model_; }
  void render();

 private:
  DataConv model_;
  QLineEdit* text1_;
  QLineEdit* text2_;
  QLineEdit* text3_;
  QLineEdit* text4_;
  QLabel* label_bit_;
};

}  // namespace zenta

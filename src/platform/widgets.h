#pragma once
// Small pieces shared by the panel's windows: twips, a clickable label,
// the round lamp, and makers that give each control its name, caption,
// tool tip and place in one line.
#include <QCheckBox>
#include <QColor>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWidget>
#include <cstdint>

namespace zenta {

// Window sizes are given in twips, 15 to a pixel at the usual density; Qt
// scales pixels on dense screens itself.
constexpr int px(int twips) {
  return twips / 15;
}
constexpr int twips(int pixels) {
  return pixels * 15;
}

inline QColor rgb(std::uint32_t value) {
  return QColor((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF);
}

// A label that reports clicks: links, and the panel's hidden switches.
class ClickableLabel : public QLabel {
  Q_OBJECT
 public:
  using QLabel::QLabel;
 signals:
  void clicked();

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
};

// A filled round lamp.
class Lamp : public QWidget {
  Q_OBJECT
 public:
  using QWidget::QWidget;
  void set_color(const QColor& color);
  QColor color() const { return color_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor color_;
};

// Gives a top-level window an outer size, frame and title bar included.
// The window system tells the frame only once it has framed the window, so
// a size asked for before then is given again when the frame is known.
class OuterSizer : public QObject {
 public:
  explicit OuterSizer(QWidget* window);
  ~OuterSizer() override;
  OuterSizer(const OuterSizer&) = delete;
  OuterSizer& operator=(const OuterSizer&) = delete;
  void resize(QSize outer);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QSize frame() const;

  QWidget* window_;
  QSize outer_;
  bool frame_pending_ = false;
};

struct Place {
  int x;
  int y;
  int width;
  int height;
};

QPushButton* make_button(QWidget* parent, const char* name, const char* caption, const char* tip,
                         Place place);
QLabel* make_label(QWidget* parent, const char* name, const char* caption, Place place);
ClickableLabel* make_link(QWidget* parent, const char* name, const char* caption, Place place);
QLineEdit* make_box(QWidget* parent, const char* name, const char* tip, Place place);
QRadioButton* make_option(QWidget* parent, const char* name, const char* caption, const char* tip,
                          Place place);
QCheckBox* make_check(QWidget* parent, const char* name, const char* caption, const char* tip,
                      Place place);

// Sets a box's text only when it differs, without firing its edit signals,
// so the user's cursor and selection stay and no change runs twice.
void render_text(QLineEdit* box, const std::string& text);
void render_text(QLabel* label, const std::string& text);
void render_text(QAbstractButton* button, const std::string& text);

}  // namespace zenta

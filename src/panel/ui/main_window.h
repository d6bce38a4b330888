#pragma once
// The main window ZENTA_form: every control of the panel, placed as the
// panel has always placed them. It forwards each event to the MainForm and
// renders what the MainForm's view holds; it decides nothing itself.
#include <QMainWindow>
#include <QStringList>
#include <QTimer>
#include <array>
#include <functional>

#include "panel/main_form.h"
#include "panel/ui/window_manager.h"
#include "platform/qt_host.h"
#include "platform/widgets.h"

class QAction;
class QGroupBox;
class QProgressBar;

namespace zenta {

// What the panel's command line asks for: at most one file, made absolute;
// `error` says what is wrong with the arguments otherwise.
struct PanelArguments {
  QString file;
  QString error;
};
PanelArguments panel_arguments(const QStringList& arguments);

// The row under the notes line that the progress bar and the status line
// share, in pixels; the bar's width when both show.
inline constexpr int kStatusRowX = 256;
inline constexpr int kStatusRowY = 238;
inline constexpr int kStatusRowWidth = 336;
inline constexpr int kStatusRowHeight = 16;
inline constexpr int kProgressBesideStatus = 104;

class MainWindow : public QMainWindow {
  Q_OBJECT
 public:
  MainWindow(MainForm& form, QtHost& host, QtWindowManager& windows, bool simulated);

  // Brings every control in line with the form's view. Cheap when nothing
  // changed: texts are compared before they are set.
  void render();
  // Runs an event handler of the form, then shows its outcome. A close
  // asked for while an operation ran is carried out when it has ended.
  void run(const std::function<void()>& handler);

  MainForm& form() { return form_; }
  // Opens a file from the desktop (the panel's argument, a drop) as FILE
  // OPEN opens the file its dialog returns; false when it did not load.
  bool open_desktop_file(const QString& path);
  // Runs at the end of each render, for the windows that show the form's
  // buffers.
  std::function<void()> after_render;

 protected:
  void closeEvent(QCloseEvent* event) override;
  // A file dropped from the desktop opens as FILE OPEN would open it.
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void build_controls(QWidget* panel);
  void build_option_controls(QWidget* panel);
  void build_test_area(QWidget* panel);
  void build_menus();
  void connect_controls();
  void connect_text(QLineEdit* box, std::string MainView::*field,
                    void (MainForm::*change)(const std::string&));
  void schedule_render();

  MainForm& form_;
  QtHost& host_;
  QtWindowManager& windows_;
  QTimer timer1_;
  bool render_queued_ = false;
  bool close_pending_ = false;
  bool shut_down_ = false;
  int shown_size_request_ = -1;
  OuterSizer outer_size_{this};

  // Device and configuration.
  QGroupBox* frame1_ = nullptr;
  std::array<QRadioButton*, kDeviceCount> picsel_{};
  QGroupBox* frame2_ = nullptr;
  std::array<QRadioButton*, 4> oscsel_{};
  QCheckBox* wdtsel_ = nullptr;
  QCheckBox* putsel_ = nullptr;
  QCheckBox* prtsel_ = nullptr;
  QCheckBox* borsel_ = nullptr;
  QLineEdit* config_addr_text_ = nullptr;
  QLineEdit* text_configbit_ = nullptr;
  // File and operations.
  QLineEdit* filename_textbox_ = nullptr;
  QPushButton* f_open_button_ = nullptr;
  QPushButton* hexset_button_ = nullptr;
  QPushButton* write_button_ = nullptr;
  QPushButton* verify_button_ = nullptr;
  QPushButton* erase_button_ = nullptr;
  QLineEdit* start_addr_text_ = nullptr;
  QLineEdit* last_addr_text_ = nullptr;
  QLineEdit* current_addr_text_ = nullptr;
  QPushButton* bufview_button_ = nullptr;
  std::array<QPushButton*, 4> tool_buttons_{};
  QLabel* notes_label_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QLabel* status_line_ = nullptr;
  QPushButton* ext_button_ = nullptr;
  // Bottom row.
  QPushButton* command_reset_ = nullptr;
  Lamp* reset_lamp_ = nullptr;
  ClickableLabel* kage_ = nullptr;
  ClickableLabel* label_krvname_ = nullptr;
  ClickableLabel* label12_ = nullptr;
  // Test area.
  QPushButton* command_vcc_ = nullptr;
  QPushButton* command_led_ = nullptr;
  QPushButton* command_id_ = nullptr;
  std::array<QPushButton*, 3> command_vset_{};
  QLineEdit* text_ad_ = nullptr;
  QLineEdit* text2_ = nullptr;
  QLineEdit* usbmsg_ = nullptr;
  QLineEdit* text_device_ = nullptr;
  QLineEdit* text_admon_ = nullptr;
  QLineEdit* test_ = nullptr;
  QLabel* label7_ = nullptr;
  QLabel* label9_ = nullptr;
  // Menu items that start an operation.
  QAction* fileopen_menu_ = nullptr;
  QAction* read_menu_ = nullptr;
  QAction* read_eeprom_menu_ = nullptr;
  QAction* exact_menu_ = nullptr;
};

}  // namespace zenta

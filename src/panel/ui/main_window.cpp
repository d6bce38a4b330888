#include "panel/ui/main_window.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QProgressBar>

#include "panel/shell.h"

namespace zenta {

MainWindow::MainWindow(MainForm& form, QtHost& host, QtWindowManager& windows, bool simulated)
    : form_(form), host_(host), windows_(windows) {
  setObjectName("ZENTA_form");
  setWindowTitle(simulated ? "ZENTA Control Panel (simulated unit)" : "ZENTA Control Panel");

  auto* panel = new QWidget(this);
  panel->setObjectName("panel");
  QPalette palette = panel->palette();
  palette.setColor(QPalette::Window, rgb(kTeal));
  palette.setColor(QPalette::WindowText, Qt::white);
  panel->setPalette(palette);
  panel->setAutoFillBackground(true);
  setCentralWidget(panel);

  build_controls(panel);
  build_menus();
  setAcceptDrops(true);
  connect_controls();

  host_.set_dialog_parent(this);
  // Operations that let events run show their progress first.
  host_.before_events = [this] { render(); };
  form_.on_changed = [this] { schedule_render(); };

  timer1_.setObjectName("Timer1");
  timer1_.setInterval(100);
  connect(&timer1_, &QTimer::timeout, this, [this] { run([this] { form_.Timer1_Timer(); }); });
  timer1_.start();

  render();
}

void MainWindow::schedule_render() {
  if (render_queued_) return;
  render_queued_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        // A render since the request (an operation's pause) has shown it.
        if (render_queued_) render();
      },
      Qt::QueuedConnection);
}

void MainWindow::run(const std::function<void()>& handler) {
  if (shut_down_) return;
  handler();
  render();
  if (close_pending_ && !form_.view().busy) close();
}

void MainWindow::connect_text(QLineEdit* box, std::string MainView::*field,
                              void (MainForm::*change)(const std::string&)) {
  connect(box, &QLineEdit::textChanged, this, [this, field, change](const QString& text) {
    const std::string value = text.toStdString();
    form_.view().*field = value;
    if (change) run([this, change, value] { (form_.*change)(value); });
  });
}

void MainWindow::connect_controls() {
  for (int i = 0; i < kDeviceCount; ++i) {
    // Clicks only: the panel checks the buttons itself when it renders.
    connect(picsel_[i], &QRadioButton::clicked, this,
            [this, i] { run([this, i] { form_.PICsel_Click(i); }); });
  }
  for (int i = 0; i < 4; ++i) {
    connect(oscsel_[i], &QRadioButton::clicked, this,
            [this, i] { run([this, i] { form_.OSCsel_Click(i); }); });
  }
  auto check = [this](QCheckBox* box, void (MainForm::*handler)(bool)) {
    connect(box, &QCheckBox::clicked, this,
            [this, handler](bool checked) { run([=, this] { (form_.*handler)(checked); }); });
  };
  check(wdtsel_, &MainForm::WDTsel_Click);
  check(putsel_, &MainForm::PUTsel_Click);
  check(prtsel_, &MainForm::PRTsel_Click);
  check(borsel_, &MainForm::BORsel_Click);

  connect_text(config_addr_text_, &MainView::ConfigAddrText, &MainForm::ConfigAddrText_Change);
  connect_text(last_addr_text_, &MainView::LastAddrText, &MainForm::LastAddrText_Change);
  connect_text(start_addr_text_, &MainView::StartAddrText, &MainForm::StartAddrText_Change);
  // The file name box only holds its text; the HEX derivation reads it.
  connect_text(filename_textbox_, &MainView::FilenameTextbox, nullptr);

  // Handlers may return what they did; the window shows it from the view.
  auto click = [this](QAbstractButton* button, auto handler) {
    connect(button, &QAbstractButton::clicked, this,
            [this, handler] { run([this, handler] { (form_.*handler)(); }); });
  };
  click(f_open_button_, &MainForm::F_OpenButton_Click);
  click(hexset_button_, &MainForm::HexSet_Button_Click);
  click(write_button_, &MainForm::WriteButton_Click);
  click(verify_button_, &MainForm::VerifyButton_Click);
  click(erase_button_, &MainForm::ERASEButton_Click);
  click(bufview_button_, &MainForm::BUFVIEWButton_Click);
  click(tool_buttons_[0], &MainForm::ASSMButton_Click);
  click(tool_buttons_[1], &MainForm::C_Button_Click);
  click(tool_buttons_[2], &MainForm::EditorButton_Click);
  click(tool_buttons_[3], &MainForm::New_EditorButton_Click);
  click(command_reset_, &MainForm::Command_RESET_Click);
  click(command_vcc_, &MainForm::Command_VCC_Click);
  click(command_led_, &MainForm::Command_LED_Click);
  click(command_id_, &MainForm::Command_ID_Click);
  for (int i = 0; i < 3; ++i) {
    connect(command_vset_[i], &QPushButton::clicked, this,
            [this, i] { run([this, i] { form_.Command_Vset_Click(i); }); });
  }
  connect(ext_button_, &QPushButton::clicked, this, &QWidget::close);

  connect(kage_, &ClickableLabel::clicked, this, [this] { run([this] { form_.kage_Click(); }); });
  connect(label_krvname_, &ClickableLabel::clicked, this,
          [this] { run([this] { form_.Label_KRVname_Click(); }); });
  connect(label12_, &ClickableLabel::clicked, this, [this] { form_.HomePage_Click(); });
}

void MainWindow::render() {
  render_queued_ = false;
  if (shut_down_) return;
  const MainView& view = form_.view();

  for (int i = 0; i < kDeviceCount; ++i) {
    if (picsel_[i]->isChecked() != (view.PICsel == i)) {
      // Unchecking one button of an exclusive group needs the group's
      // exclusivity lifted for a moment (no button may be checked before
      // the first selection).
      picsel_[i]->setAutoExclusive(false);
      picsel_[i]->setChecked(view.PICsel == i);
      picsel_[i]->setAutoExclusive(true);
    }
  }
  for (int i = 0; i < 4; ++i) {
    if (oscsel_[i]->isChecked() != (view.OSCsel == i)) {
      oscsel_[i]->setAutoExclusive(false);
      oscsel_[i]->setChecked(view.OSCsel == i);
      oscsel_[i]->setAutoExclusive(true);
    }
  }
  wdtsel_->setChecked(view.WDTsel);
  putsel_->setChecked(view.PUTsel);
  prtsel_->setChecked(view.PRTsel);
  borsel_->setChecked(view.BORsel);

  render_text(config_addr_text_, view.ConfigAddrText);
  render_text(text_configbit_, view.Text_Configbit);
  render_text(filename_textbox_, view.FilenameTextbox);
  render_text(start_addr_text_, view.StartAddrText);
  render_text(last_addr_text_, view.LastAddrText);
  render_text(current_addr_text_, view.CurrentAddrText);

  render_text(notes_label_, view.NotesLabel);
  QPalette notes = notes_label_->palette();
  if (notes.color(QPalette::WindowText) != rgb(view.NotesColor)) {
    notes.setColor(QPalette::WindowText, rgb(view.NotesColor));
    notes_label_->setPalette(notes);
  }
  // The checks' findings and why a command did nothing share the progress
  // bar's row: beside a running operation's bar, in its place otherwise.
  const bool running = view.progress.maximum > 0;
  const QString status = QString::fromStdString(view.StatusLine);
  const QRect row(kStatusRowX, kStatusRowY, kStatusRowWidth, kStatusRowHeight);
  const int bar_width = status.isEmpty() ? row.width() : kProgressBesideStatus;
  if (running) {
    progress_->setMaximum(view.progress.maximum);
    progress_->setValue(view.progress.value);
    progress_->setGeometry(row.x(), row.y() + 2, bar_width, 12);
  }
  progress_->setVisible(running);
  const QRect status_place = running ? row.adjusted(kProgressBesideStatus + 8, 0, 0, 0) : row;
  if (status_line_->toolTip() != status || status_line_->geometry() != status_place) {
    status_line_->setGeometry(status_place);
    status_line_->setToolTip(status);
    status_line_->setText(
        status_line_->fontMetrics().elidedText(status, Qt::ElideRight, status_place.width()));
  }
  status_line_->setVisible(!status.isEmpty());
  if (exact_menu_->isChecked() != view.exact) exact_menu_->setChecked(view.exact);

  // One operation at a time: what would send while another holds the unit
  // is shown disabled.
  const bool idle = !view.busy;
  for (QWidget* control :
       std::initializer_list<QWidget*>{write_button_, verify_button_, erase_button_, f_open_button_,
                                       hexset_button_, command_id_, frame1_}) {
    control->setEnabled(idle);
  }
  // The documented panel lets the unit controls send in an operation's
  // pauses; with the checks on they wait, and show it.
  for (QWidget* control :
       std::initializer_list<QWidget*>{command_vcc_, command_led_, command_reset_, command_vset_[0],
                                       command_vset_[1], command_vset_[2]}) {
    control->setEnabled(idle || view.exact);
  }
  for (QAction* action : {fileopen_menu_, read_menu_, read_eeprom_menu_}) {
    action->setEnabled(idle);
  }

  render_text(command_vcc_, view.Command_VCC);
  render_text(command_led_, view.Command_LED);
  reset_lamp_->set_color(rgb(view.RESET_LAMP));
  render_text(text_ad_, view.Text_AD);
  render_text(text2_, view.Text2);
  render_text(usbmsg_, form_.USBMSG());
  render_text(text_device_, view.Text_Device);
  render_text(text_admon_, view.Text_ADMON);
  render_text(test_, view.TEST);
  render_text(label7_, view.Label7);
  render_text(label9_, view.Label9);
  label7_->setToolTip(label7_->text());
  label9_->setToolTip(label9_->text());

  // The window takes the size the form asks for, each time it asks; in
  // between the user may size it as they like.
  if (view.size_request != shown_size_request_) {
    shown_size_request_ = view.size_request;
    outer_size_.resize(QSize(px(view.width_twips), px(view.height_twips)));
  }
  if (after_render) after_render();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (form_.view().busy) {
    // An operation is between two packets: it ends at its next pause,
    // leaving the chip out of programming mode and unpowered, and then the
    // window closes.
    close_pending_ = true;
    form_.request_stop();
    event->ignore();
    return;
  }
  if (!shut_down_) {
    shut_down_ = true;
    timer1_.stop();
    form_.shutdown();
    windows_.close_all();
  }
  event->accept();
}

}  // namespace zenta

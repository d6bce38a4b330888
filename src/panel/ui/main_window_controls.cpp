// Where every control of the main window stands. Places are pixels of the
// panel below the menu bar. The window is 600 by 360 pixels (9000 by 5400
// twips) outside its frame; with a title bar and the menu bar that leaves
// about 305 pixels of panel, down to the row of kage. The test area, from
// y 318 down, shows when the window grows to 460 pixels.
#include <QGroupBox>
#include <QProgressBar>

#include "panel/shell.h"
#include "panel/ui/main_window.h"

namespace zenta {

namespace {

// Captions of the device options, in catalogue order.
constexpr std::array<const char*, 8> kDeviceCaptions = {
    "16F87x", "16F87xA", "16F84", "16F84A", "16F62x", "16F62xA", "12F629/675", "16F818/819"};
constexpr std::array<const char*, 4> kOscCaptions = {"RC", "XT", "HS", "LP"};

// Boxes that only show what the panel writes.
QLineEdit* make_display(QWidget* parent, const char* name, const char* tip, Place place) {
  QLineEdit* box = make_box(parent, name, tip, place);
  box->setReadOnly(true);
  return box;
}

}  // namespace

void MainWindow::build_option_controls(QWidget* panel) {
  frame1_ = new QGroupBox("PIC Select", panel);
  frame1_->setObjectName("Frame1");
  frame1_->setGeometry(8, 2, 240, 154);
  for (int i = 0; i < kDeviceCount; ++i) {
    const std::string name = "PICsel_" + std::to_string(i);
    // Entries 0 to 5 in the first column; 6 and 7 in the second, with the
    // 12F629/675's twins named under entry 6.
    const Place place =
        i < 6 ? Place{10, 22 + 21 * i, 110, 20} : Place{126, i == 6 ? 22 : 64, 110, 20};
    picsel_[i] =
        make_option(frame1_, name.c_str(), kDeviceCaptions[i], "Select device 16F84", place);
  }
  make_label(frame1_, "Label6", "16F630/676", {146, 43, 90, 18});

  frame2_ = new QGroupBox("OSC Type", panel);
  frame2_->setObjectName("Frame2");
  frame2_->setToolTip("OSC Type");
  frame2_->setGeometry(8, 160, 120, 62);
  for (int i = 0; i < 4; ++i) {
    const std::string name = "OSCsel_" + std::to_string(i);
    oscsel_[i] = make_option(frame2_, name.c_str(), kOscCaptions[i], nullptr,
                             {10 + 54 * (i % 2), 22 + 20 * (i / 2), 52, 20});
  }
  wdtsel_ = make_check(panel, "WDTsel", "WDT", "WDT enable", {136, 162, 100, 19});
  putsel_ = make_check(panel, "PUTsel", "PUT", "Power up timer", {136, 181, 100, 19});
  prtsel_ = make_check(panel, "PRTsel", "Protect", "Code protect", {136, 200, 100, 19});
  borsel_ = make_check(panel, "BORsel", "BOR", "Brown Out Reset", {136, 219, 100, 19});

  make_label(panel, "Label8", "Configration bit", {8, 224, 120, 16});
  config_addr_text_ = make_box(panel, "ConfigAddrText", "Config data", {8, 241, 56, 22});
  config_addr_text_->setMaxLength(8);
  text_configbit_ = make_display(panel, "Text_Configbit", "Config data", {68, 241, 150, 22});
}

void MainWindow::build_controls(QWidget* panel) {
  build_option_controls(panel);

  make_label(panel, "Label1", "Target File name", {256, 4, 200, 16});
  filename_textbox_ = make_box(panel, "FilenameTextbox", nullptr, {256, 21, 336, 24});
  f_open_button_ =
      make_button(panel, "F_OpenButton", "FILE OPEN", "Open your ASM,HEX file", {256, 50, 100, 28});
  hexset_button_ = make_button(panel, "HexSet_Button", "HEX set", "Set", {360, 50, 72, 28});
  write_button_ =
      make_button(panel, "WriteButton", "WRITE", "Write program to PIC", {256, 84, 100, 42});
  verify_button_ =
      make_button(panel, "VerifyButton", "VERIFY", "Program verify", {256, 130, 100, 28});
  erase_button_ =
      make_button(panel, "ERASEButton", "ERASE", "Erase to the PIC", {256, 162, 100, 28});

  make_label(panel, "Label2", "START", {364, 88, 56, 22});
  start_addr_text_ = make_box(panel, "StartAddrText", "Program start Address", {422, 88, 66, 22});
  make_label(panel, "Label5", "LAST", {364, 114, 56, 22});
  last_addr_text_ = make_box(panel, "LastAddrText", "Program last Address", {422, 114, 66, 22});
  make_label(panel, "Label4", "Current", {364, 140, 56, 22});
  current_addr_text_ =
      make_display(panel, "CurrentAddrText", "Current Address", {422, 140, 66, 22});
  start_addr_text_->setMaxLength(8);
  last_addr_text_->setMaxLength(8);

  bufview_button_ = make_button(panel, "BUFVIEWButton", "BUFFER", "Buffer view", {496, 50, 96, 28});
  tool_buttons_ = {
      make_button(panel, "ASSMButton", "Assembler", "Assembler", {496, 82, 96, 28}),
      make_button(panel, "C_Button", "C compiler", "C Compiler", {496, 114, 96, 28}),
      make_button(panel, "EditorButton", "Editor", "Edit and View", {496, 146, 96, 28}),
      make_button(panel, "New_EditorButton", "NEW", "New", {496, 178, 96, 28}),
  };

  notes_label_ = make_label(panel, "NotesLabel", "", {256, 214, 336, 22});
  progress_ = new QProgressBar(panel);
  progress_->setObjectName("ProgressBar");
  progress_->setGeometry(kStatusRowX, kStatusRowY + 2, kStatusRowWidth, 12);
  progress_->setTextVisible(false);
  progress_->hide();
  status_line_ = make_label(panel, "StatusLine", "",
                            {kStatusRowX, kStatusRowY, kStatusRowWidth, kStatusRowHeight});
  QFont small = status_line_->font();
  small.setPointSizeF(small.pointSizeF() * 0.85);
  status_line_->setFont(small);
  status_line_->hide();

  command_reset_ = make_button(panel, "Command_RESET", "RESET", "Reset", {256, 258, 72, 28});
  reset_lamp_ = new Lamp(panel);
  reset_lamp_->setObjectName("RESET_LAMP");
  reset_lamp_->setGeometry(334, 263, 18, 18);
  ext_button_ = make_button(panel, "EXTButton", "EXIT", "Exit", {496, 256, 96, 30});

  // The row that the collapsed window shows last: a blank picture box at
  // the left edge, the maker's name and its home page.
  kage_ = make_link(panel, "kage", "", {8, 291, 13, 16});
  kage_->setCursor(Qt::ArrowCursor);
  label_krvname_ = make_link(panel, "Label_KRVname", "Korvan", {26, 290, 60, 18});
  label_krvname_->setCursor(Qt::ArrowCursor);
  label12_ = make_link(panel, "Label12", kHomePageUrl, {92, 290, 240, 18});
  QFont link_font = label12_->font();
  link_font.setUnderline(true);
  label12_->setFont(link_font);

  build_test_area(panel);
}

void MainWindow::build_test_area(QWidget* panel) {
  make_label(panel, "Label3", "Test mode", {8, 322, 70, 20});
  command_vcc_ = make_button(panel, "Command_VCC", "VCC off", nullptr, {80, 318, 70, 28});
  command_led_ = make_button(panel, "Command_LED", "LED off", nullptr, {154, 318, 70, 28});
  command_id_ = make_button(panel, "Command_ID", "ID", nullptr, {228, 318, 40, 28});
  constexpr std::array<const char*, 3> kLevels = {"0v", "5v", "Vpp"};
  for (int i = 0; i < 3; ++i) {
    const std::string name = "Command_Vset_" + std::to_string(i);
    command_vset_[i] = make_button(panel, name.c_str(), kLevels[i], nullptr,
                                   {272 + 44 * i, 318, i == 2 ? 46 : 40, 28});
  }
  make_label(panel, "Label10", "AD", {414, 322, 22, 20});
  text_ad_ = make_display(panel, "Text_AD", nullptr, {436, 321, 56, 22});
  text2_ = make_display(panel, "Text2", nullptr, {500, 321, 92, 22});

  usbmsg_ = make_display(panel, "USBMSG", nullptr, {8, 352, 210, 22});
  text_device_ = make_display(panel, "Text_Device", nullptr, {222, 352, 150, 22});
  text_admon_ = make_display(panel, "Text_ADMON", nullptr, {376, 352, 112, 22});
  test_ = make_display(panel, "TEST", nullptr, {492, 352, 100, 22});

  label7_ = make_label(panel, "Label7", "", {8, 380, 288, 18});
  label9_ = make_label(panel, "Label9", "", {304, 380, 288, 18});
}

}  // namespace zenta

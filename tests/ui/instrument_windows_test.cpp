// The instrument and converter windows in the panel: menu items, modality,
// the AUTO timer while modal, and the guard between them and chip commands.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleOptionFrame>
#include <algorithm>

#include "instruments/ui/meter_windows.h"
#include "link/command_codes.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

int packets_with_code(const sim::SimUnit& sim, std::uint8_t code) {
  int count = 0;
  for (const sim::Exchange& exchange : sim.trace()) count += exchange.tx[0] == code;
  return count;
}

TEST(InstrumentWindows, MenuItemsOpenEachWindowOnceWithItsModality) {
  struct Row {
    const char* item;
    const char* caption;
    QKeySequence key;
    const char* window;
    const char* title;
    bool modal;
  };
  const Row rows[] = {
      {"Convertor", "Convertor", QKeySequence(Qt::Key_F8), "DataConv", "Data Convertor", false},
      {"LAview", "Logic View", QKeySequence(Qt::Key_F9), "LA", "LOGIC VIEW", false},
      {"VM_MANU", "Volt meter", QKeySequence(Qt::Key_F11), "VM", "Volt Meter", true},
      {"CNT_MENU", "F-Counter", QKeySequence(Qt::Key_F12), "Form_FCNT", "Frequency Counter", true},
      {"CNT_MENU2", "Counter", QKeySequence(), "Form_CNT", "Counter", true},
  };
  PanelRig rig;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.item);
    auto* action = rig.find<QAction>(row.item);
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->text().toStdString(), row.caption);
    EXPECT_EQ(action->shortcut(), row.key);
    rig.click(row.item);
    rig.click(row.item);
    rig.settle();
    ASSERT_EQ(rig.count(row.window), 1);
    QWidget* window = rig.find<QWidget>(row.window);
    EXPECT_EQ(window->windowTitle().toStdString(), row.title);
    EXPECT_EQ(window->windowModality() == Qt::ApplicationModal, row.modal);
    window->close();
    rig.settle();
  }
}

TEST(InstrumentWindows, AutoTimerReadsWhileTheModalMeterIsOpen) {
  PanelRig rig;
  rig.click("VM_MANU");
  rig.settle();
  QWidget* vm = rig.find<QWidget>("VM");
  ASSERT_NE(vm, nullptr);
  rig.sim.clear_trace();
  vm->findChild<QPushButton*>("Command_AUTO")->click();
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < 1300) QApplication::processEvents(QEventLoop::AllEvents, 50);
  EXPECT_GE(packets_with_code(rig.sim, UNIT_AD_READ), 2);
  vm->close();
  rig.settle();
  rig.sim.clear_trace();
  clock.restart();
  while (clock.elapsed() < 700) QApplication::processEvents(QEventLoop::AllEvents, 50);
  EXPECT_EQ(packets_with_code(rig.sim, UNIT_AD_READ), 0) << "the timer ends with the window";
}

TEST(InstrumentWindows, ChipCommandsAndInstrumentsNeverRunTogether) {
  PanelRig rig;
  rig.form->Exact_Click(false);  // the documented unit controls would send at once
  rig.click("LAview");
  rig.settle();
  auto* trig = rig.find<QWidget>("LA")->findChild<QPushButton*>("Command7");
  ASSERT_NE(trig, nullptr);
  {
    // An instrument holds the unit: chip commands are refused, meters stay shut.
    Unit::Operation instrument(rig.unit);
    EXPECT_TRUE(rig.form->view().busy);
    rig.sim.clear_trace();
    rig.form->Command_VCC_Click();
    EXPECT_TRUE(rig.form->READ_Click().refused);
    EXPECT_TRUE(rig.sim.trace().empty());
    rig.click("VM_MANU");
    rig.settle();
    EXPECT_EQ(rig.count("VM"), 0);
    EXPECT_FALSE(trig->isEnabled());
  }
  EXPECT_FALSE(rig.form->view().busy);
  EXPECT_TRUE(trig->isEnabled());
  // A chip command holds the unit while it lets events run: TRIG is shown
  // disabled, and a click in that pause sends nothing.
  EXPECT_TRUE(rig.at_first_pause([&] { rig.form->READ_Click(); },
                                 [&] {
                                   EXPECT_TRUE(rig.unit.busy());
                                   EXPECT_FALSE(trig->isEnabled());
                                   trig->click();
                                   EXPECT_EQ(packets_with_code(rig.sim, UNIT_LA_START), 0);
                                 }));
  EXPECT_FALSE(rig.unit.busy());
  rig.settle();
  EXPECT_TRUE(trig->isEnabled());
  rig.sim.clear_trace();
  trig->click();
  EXPECT_EQ(packets_with_code(rig.sim, UNIT_LA_START), 1);
}

// 1.3 MHz on the 100 mS gate is the widest reading: eight characters that
// must show whole in the reading box.
TEST(InstrumentWindows, FrequencyReadingOfEightCharactersShowsWhole) {
  PanelRig rig;
  rig.sim.set_input_frequency(1300000);
  rig.click("CNT_MENU");
  QWidget* fcnt = rig.find<QWidget>("Form_FCNT");
  ASSERT_NE(fcnt, nullptr);
  fcnt->findChild<QPushButton*>("Command_READ")->click();
  auto* display = fcnt->findChild<QLineEdit*>("VMtext");
  EXPECT_EQ(display->text(), "1299.990");
  EXPECT_EQ(fcnt->findChild<QLabel*>("Label_unit")->text(), "KHz");
  QStyleOptionFrame frame;
  frame.initFrom(display);
  frame.rect = display->rect();
  frame.lineWidth = display->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, display);
  const QRect contents =
      display->style()->subElementRect(QStyle::SE_LineEditContents, &frame, display);
  // The line edit keeps 2 pixels free on either side of its text.
  EXPECT_LE(QFontMetrics(display->font()).horizontalAdvance(display->text()), contents.width() - 4);
  EXPECT_TRUE(fcnt->rect().contains(display->geometry()));
  fcnt->close();
}

// Readings shown, logged and converted with the point, whatever the locale
// the toolkit handed to the C library (the suite runs once under de_DE).
TEST(InstrumentWindows, NumbersShowAndLogWithThePoint) {
  PanelRig rig;
  TempDir dir;
  rig.host.save_choice_hook = [&dir](const std::string&) { return SaveAnswer{dir.file("vm"), 0}; };
  rig.click("VM_MANU");
  auto* vm = qobject_cast<VoltMeterWindow*>(rig.find<QWidget>("VM"));
  ASSERT_NE(vm, nullptr);
  vm->findChild<QPushButton*>("Command_LOG")->click();
  vm->findChild<QPushButton*>("Command_AUTO")->click();
  vm->model().Timer_AUTO_Timer();
  vm->render();
  EXPECT_EQ(vm->findChild<QLineEdit*>("VMtext")->text(), "5.0");
  EXPECT_EQ(vm->findChild<QLineEdit*>("Text1")->text(), "1.136408");
  vm->close();
  rig.settle();
  const std::string log = read_text(dir.file("vm.csv"));
  const std::string row = log.substr(log.find('\n') + 1);
  EXPECT_EQ(std::count(row.begin(), row.end(), ','), 3) << row;
  EXPECT_EQ(row.substr(row.find(',')), ",Vin,2899,5.0\n");

  rig.click("Convertor");
  QWidget* conv = rig.find<QWidget>("DataConv");
  ASSERT_NE(conv, nullptr);
  const std::pair<const char*, const char*> conversions[] = {
      {"13.5", "E"}, {"2.5e1", "19"}, {"255.7", "100"}};
  for (const auto& [dec, hex] : conversions) {
    auto* box = conv->findChild<QLineEdit*>("Text1");
    box->selectAll();
    box->insert(dec);  // as typed
    conv->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(conv->findChild<QLineEdit*>("Text2")->text().toStdString(), hex) << dec;
  }
  conv->close();
}

}  // namespace
}  // namespace zenta::testing

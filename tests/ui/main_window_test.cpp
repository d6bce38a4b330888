// The main window driven as a user drives it, on the simulated unit.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

#include "image/ui/buffer_viewer.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

std::string text_of(QWidget* widget) {
  if (auto* box = qobject_cast<QLineEdit*>(widget)) return box->text().toStdString();
  if (auto* label = qobject_cast<QLabel*>(widget)) return label->text().toStdString();
  return {};
}

TEST(MainWindow, WritesAnAssembledImageIntoTheChip) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  TempDir dir;
  const std::string hex = assemble(dir, "ui_blink.asm");
  ASSERT_FALSE(hex.empty()) << "gpasm could not assemble ui_blink.asm";

  // While the write lets events run, what would start another operation
  // must be shown disabled and the progress bar must be up.
  auto* write = rig.find<QPushButton>("WriteButton");
  auto* progress = rig.find<QProgressBar>("ProgressBar");
  int yields = 0, yields_enabled = 0, yields_with_progress = 0;
  const auto render = rig.host.before_events;
  rig.host.before_events = [&] {
    render();
    ++yields;
    if (write->isEnabled()) ++yields_enabled;
    if (progress->isVisible()) ++yields_with_progress;
  };

  rig.open_answers.push_back(hex);
  rig.click("F_OpenButton");
  ASSERT_EQ(rig.filters.size(), 1u);
  EXPECT_EQ(rig.filters[0], "Source Files|*.asm;*.c|HEX FILES|*.hex|ALL FILES|*.*|");
  EXPECT_EQ(text_of(rig.find<QLineEdit>("FilenameTextbox")), hex);
  EXPECT_EQ(text_of(rig.find<QLineEdit>("StartAddrText")), "0");

  rig.click("WriteButton");
  EXPECT_EQ(text_of(rig.find<QLabel>("NotesLabel")), "Write Complete");
  for (const Box& box : rig.boxes) ADD_FAILURE() << box.title << ": " << box.text;
  EXPECT_GT(yields, 0);
  EXPECT_EQ(yields_enabled, 0);
  EXPECT_EQ(yields_with_progress, yields);
  EXPECT_TRUE(write->isEnabled());
  EXPECT_FALSE(progress->isVisible());

  const std::map<int, int> image = hex_words(hex);
  int wrong = 0;
  for (int w = 0; w < 0x2000; ++w) {
    const int expected = image.count(w) ? image.at(w) : 0x3FFF;
    if (rig.sim.program_word(w) != expected && ++wrong <= 5) {
      ADD_FAILURE() << "word " << w << " holds " << rig.sim.program_word(w) << ", not " << expected;
    }
  }
  EXPECT_EQ(wrong, 0);
  // The configuration word is the editor's, not the file's.
  EXPECT_EQ(rig.sim.config_word(), rig.state->ConfigWord);
  EXPECT_EQ(text_of(rig.find<QLineEdit>("ConfigAddrText")), "3F3B");
}

TEST(MainWindow, BufferViewerFollowsTheProgramBuffer) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  TempDir dir;
  const std::string hex = assemble(dir, "ui_blink.asm");
  ASSERT_FALSE(hex.empty());

  rig.click("BUFVIEWButton");
  EXPECT_EQ(text_of(rig.find<QLabel>("NotesLabel")), "Show Read BUFFER");
  ASSERT_EQ(rig.count("DATAVIEW"), 1);
  auto* viewer = rig.find<BufferViewer>("DATAVIEW");
  QAbstractItemModel* model = viewer->grid()->model();
  EXPECT_EQ(viewer->windowTitle(), "Data buffer");
  EXPECT_EQ(model->rowCount(), 514);
  EXPECT_EQ(model->columnCount(), 16);
  EXPECT_EQ(model->headerData(15, Qt::Horizontal).toString(), "+F");
  EXPECT_EQ(model->headerData(1, Qt::Vertical).toString(), "   10");
  EXPECT_EQ(model->headerData(511, Qt::Vertical).toString(), " 1FF0");
  EXPECT_EQ(model->headerData(512, Qt::Vertical).toString(), "");
  EXPECT_EQ(model->data(model->index(0, 0)).toString(), "0000 ");

  // Loading a file while the viewer is open refills it, and the table is
  // told which rows changed.
  int changes = 0;
  QObject::connect(model, &QAbstractItemModel::dataChanged, [&] { ++changes; });
  rig.open_answers.push_back(hex);
  rig.click("F_OpenButton");
  EXPECT_GE(changes, 1);
  const std::map<int, int> image = hex_words(hex);
  for (int w : {0, 4, 5, 15, 16}) {
    const int word = image.count(w) ? image.at(w) : 0x3FFF;
    EXPECT_EQ(model->data(model->index(w / 16, w % 16)).toString(),
              QString("%1 ").arg(word, 4, 16, QChar('0')).toUpper())
        << "word " << w;
  }

  rig.click("BUFVIEWButton");
  EXPECT_EQ(rig.count("DATAVIEW"), 1);
  viewer->findChild<QPushButton*>("EXITButton")->click();
  rig.settle();
  EXPECT_EQ(rig.count("DATAVIEW"), 0);
  EXPECT_FALSE(rig.form->program_view().loaded());
}

TEST(MainWindow, TestAreaOpensAtTheSecondClickOnKage) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  MainWindow& main = rig.main();
  EXPECT_EQ(main.windowTitle(), "ZENTA Control Panel (simulated unit)");
  EXPECT_EQ(main.size(), QSize(600, 360));
  auto* vcc = rig.find<QWidget>("Command_VCC");
  EXPECT_GE(vcc->mapTo(&main, QPoint(0, 0)).y(), 360) << "test area shows while collapsed";

  struct Step {
    const char* label;
    int height;
  };
  for (const Step& step : {Step{"kage", 360}, Step{"kage", 460}, Step{"Label_KRVname", 360},
                           Step{"kage", 460}, Step{"kage", 360}}) {
    rig.click_label(step.label);
    EXPECT_EQ(main.height(), step.height) << "after a click on " << step.label;
  }
}

// Every control stands inside the enlarged window, none overlaps another,
// and each caption fits its control in the default style.
TEST(MainWindow, ControlsNeitherOverlapNorClip) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  rig.click_label("kage");
  rig.click_label("kage");
  MainWindow& main = rig.main();
  QWidget* panel = main.centralWidget();
  const QRect window(QPoint(0, 0), main.size());

  std::vector<QWidget*> controls;
  for (QWidget* child : panel->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    if (!child->isHidden() && !child->objectName().isEmpty()) controls.push_back(child);
  }
  ASSERT_GT(controls.size(), 40u);
  for (std::size_t i = 0; i < controls.size(); ++i) {
    const QRect a(controls[i]->mapTo(&main, QPoint(0, 0)), controls[i]->size());
    EXPECT_TRUE(window.contains(a)) << controls[i]->objectName().toStdString();
    for (std::size_t j = i + 1; j < controls.size(); ++j) {
      const QRect b(controls[j]->mapTo(&main, QPoint(0, 0)), controls[j]->size());
      EXPECT_FALSE(a.intersects(b)) << controls[i]->objectName().toStdString() << " overlaps "
                                    << controls[j]->objectName().toStdString();
    }
  }
  for (QAbstractButton* button : main.findChildren<QAbstractButton*>()) {
    const int needed = qobject_cast<QPushButton*>(button)
                           ? button->fontMetrics().horizontalAdvance(button->text()) + 8
                           : button->sizeHint().width();
    EXPECT_LE(needed, button->width()) << button->objectName().toStdString();
  }
  for (QLabel* label : main.findChildren<QLabel*>()) {
    if (label->text().isEmpty() || label->objectName() == "NotesLabel" ||
        label->objectName().startsWith("Label7") || label->objectName().startsWith("Label9")) {
      continue;
    }
    EXPECT_LE(label->sizeHint().width(), label->width()) << label->objectName().toStdString();
  }
}

TEST(MainWindow, TypedTextsReachTheFormAndItsAnswersComeBack) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  EXPECT_TRUE(rig.find<QRadioButton>("PICsel_1")->isChecked());
  auto* config = rig.find<QLineEdit>("ConfigAddrText");
  config->setText("1");
  rig.settle();
  EXPECT_EQ(text_of(rig.find<QLineEdit>("Text_Configbit")), "00 0000 0000 0001");
  EXPECT_EQ(config->text(), "1");  // what was typed stays as typed
  rig.click("WDTsel");
  EXPECT_EQ(config->text(), "0005");

  auto* last = rig.find<QLineEdit>("LastAddrText");
  last->setText("2001");
  rig.settle();
  EXPECT_EQ(last->text(), "2000");

  rig.click("PICsel_6");
  EXPECT_EQ(config->text(), "01D7");
  EXPECT_EQ(last->text(), "3FE");
  EXPECT_FALSE(rig.find<QAbstractButton>("WDTsel")->isChecked());
  EXPECT_TRUE(rig.find<QRadioButton>("OSCsel_0")->isChecked());
}

TEST(MainWindow, ExitClosesEveryWindow) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  rig.trigger("HELP");
  rig.trigger("System_Setup");
  rig.click("BUFVIEWButton");
  ASSERT_EQ(rig.count("HELP_FORM") + rig.count("Setup_Form") + rig.count("DATAVIEW"), 3);
  rig.click("EXTButton");
  EXPECT_FALSE(rig.main().isVisible());
  EXPECT_EQ(rig.count("HELP_FORM") + rig.count("Setup_Form") + rig.count("DATAVIEW"), 0);
  // The unit is closed: the timer no longer talks to it.
  const std::size_t exchanges = rig.sim.trace().size();
  rig.click("Command_VCC");
  EXPECT_EQ(rig.sim.trace().size(), exchanges);
}

}  // namespace
}  // namespace zenta::testing

// The main window driven as a user drives it, on the simulated unit.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>

#include "image/ui/buffer_viewer.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

TEST(MainWindow, OpensAnAssembledImageShowsItInTheBufferAndWritesItIntoTheChip) {
  PanelRig rig;
  ASSERT_TRUE(rig.started);
  TempDir dir;
  const std::string hex = dir.file("image.hex");
  ASSERT_EQ(
      run_command("gpasm -p p16f877a -o '" + hex + "' '" ZENTA_TEST_DATA "/blink.asm'").status, 0);
  const auto image = hex_image(hex);

  // The buffer viewer, open while a file is loaded, shows the new words.
  rig.click("BUFVIEWButton");
  ASSERT_EQ(rig.count("DATAVIEW"), 1);
  QAbstractItemModel* model = rig.find<BufferViewer>("DATAVIEW")->grid()->model();
  rig.open_answers.push_back(hex);
  rig.click("F_OpenButton");
  EXPECT_EQ(rig.find<QLineEdit>("FilenameTextbox")->text().toStdString(), hex);
  for (int w : {0, 5, 15, 16}) {
    EXPECT_EQ(model->data(model->index(w / 16, w % 16)).toString(),
              QString("%1 ").arg(image->word(w), 4, 16, QChar('0')).toUpper())
        << "word " << w;
  }

  // While the write lets events run, what would start another operation
  // must be shown disabled and the progress bar must be up.
  // The unit controls too: their commands would wait for the unit.
  std::vector<QPushButton*> senders;
  for (const char* name : {"WriteButton", "Command_VCC", "Command_LED", "Command_RESET",
                           "Command_Vset_0", "Command_Vset_2"}) {
    senders.push_back(rig.find<QPushButton>(name));
    ASSERT_NE(senders.back(), nullptr) << name;
  }
  QPushButton* write = senders.front();
  auto* progress = rig.find<QProgressBar>("ProgressBar");
  int yields = 0, yields_enabled = 0, yields_with_progress = 0;
  const auto render = rig.host.before_events;
  rig.host.before_events = [&] {
    render();
    ++yields;
    for (QPushButton* sender : senders) yields_enabled += sender->isEnabled();
    yields_with_progress += progress->isVisible();
  };
  // The program's own last address, as the user types it: the loader's
  // 2000 (from the configuration record) would run the last row past the
  // chip's memory onto words 0 to 7.
  int end = 0x1FFF;
  while (end > 0 && image->word(end) == 0x3FFF) --end;
  rig.find<QLineEdit>("LastAddrText")->setText(QString::number(end + 1, 16));
  rig.click("WriteButton");
  EXPECT_EQ(rig.find<QLabel>("NotesLabel")->text(), "Write Complete");
  EXPECT_EQ(rig.boxes, std::vector<std::string>{});
  EXPECT_GT(yields, 0);
  EXPECT_EQ(yields_enabled, 0);
  EXPECT_EQ(yields_with_progress, yields);
  EXPECT_TRUE(write->isEnabled());
  EXPECT_FALSE(progress->isVisible());
  for (int w = 0; w < 0x2000; ++w)
    ASSERT_EQ(rig.sim.program_word(w), image->word(w)) << "word " << w;
  EXPECT_EQ(rig.sim.config_word(), rig.state->ConfigWord);  // the editor's, not the file's
}

// The test area opens at the second click on kage; then every control
// stands inside the enlarged window and none overlaps another.
TEST(MainWindow, TestAreaOpensAtTheSecondClickOnKageAndNoControlsOverlap) {
  PanelRig rig;
  MainWindow& main = rig.main();
  EXPECT_EQ(main.windowTitle(), "ZENTA Control Panel (simulated unit)");
  EXPECT_EQ(main.size(), QSize(600, 360));
  for (const auto& [label, height] : {std::pair{"kage", 360},
                                      {"kage", 460},
                                      {"Label_KRVname", 360},
                                      {"kage", 460},
                                      {"kage", 360},
                                      {"kage", 460}}) {
    rig.click(label);
    EXPECT_EQ(main.height(), height) << "after a click on " << label;
  }
  std::vector<QRect> areas;
  std::vector<std::string> names;
  for (QWidget* child : main.centralWidget()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    if (child->isHidden() || child->objectName().isEmpty()) continue;
    areas.emplace_back(child->mapTo(&main, QPoint(0, 0)), child->size());
    names.push_back(child->objectName().toStdString());
  }
  ASSERT_GT(areas.size(), 40u);
  for (std::size_t i = 0; i < areas.size(); ++i) {
    EXPECT_TRUE(QRect(QPoint(0, 0), main.size()).contains(areas[i])) << names[i];
    for (std::size_t j = i + 1; j < areas.size(); ++j) {
      EXPECT_FALSE(areas[i].intersects(areas[j])) << names[i] << " overlaps " << names[j];
    }
  }
}

}  // namespace
}  // namespace zenta::testing

// The main window driven as a user drives it, on the simulated unit.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <filesystem>

#include "image/hex_writer.h"
#include "image/ui/buffer_viewer.h"
#include "link/command_codes.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

// The window's sizes are outer sizes, frame included. The test area opens
// at the second click on kage, the name label always collapses it, and
// both size a window the user has resized; then every control stands
// inside the enlarged window and none overlaps another.
TEST(MainWindow, SizesFollowKageAndTheNameLabelAndNoControlsOverlap) {
  PanelRig rig;
  MainWindow& main = rig.main();
  EXPECT_EQ(main.windowTitle(), "ZENTA Control Panel (simulated unit)");
  ASSERT_NE(main.frameGeometry().size(), main.size()) << "the platform draws no frame";
  EXPECT_EQ(main.frameGeometry().size(), QSize(600, 360));
  const char* const user = nullptr;  // the user sizes the window by hand
  for (const auto& [label, height] : {std::pair{"kage", 360},
                                      {"kage", 460},
                                      {"Label_KRVname", 360},
                                      {user, 300},
                                      {"Label_KRVname", 360},
                                      {user, 500},
                                      {"Label_KRVname", 360},
                                      {"kage", 460},
                                      {user, 400},
                                      {"kage", 360},
                                      {"kage", 460}}) {
    if (label) {
      rig.click(label);
    } else {
      main.resize(QSize(640, height) - (main.frameGeometry().size() - main.size()));
      rig.settle();
    }
    const std::string after = label ? label : "the user";
    EXPECT_EQ(main.frameGeometry().size(), QSize(label ? 600 : 640, height)) << "after " << after;
  }
  // Under a title bar of 30 pixels the collapsed window still shows the
  // row of kage, and none of the test area.
  const int shown = 360 - 30 - main.menuBar()->height();
  for (const char* name : {"Command_RESET", "EXTButton", "kage", "Label_KRVname", "Label12"}) {
    EXPECT_LE(rig.find<QWidget>(name)->geometry().bottom(), shown) << name;
  }
  for (const char* name : {"Label3", "Command_VCC", "Command_Vset_2", "Text2"}) {
    EXPECT_GT(rig.find<QWidget>(name)->geometry().top(), shown) << name;
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

// Client sizes at opening, in pixels of 15 twips: DATAVIEW is as wide as its
// grid and border (9990 twips); EEVIEW opens at its given 6465 by 3465
// twips, its rows scrolling, rather than growing to its 17 rows.
TEST(BufferViewers, OpenAtTheirClientSizes) {
  for (const auto& [command, window, size] :
       {std::tuple{"Buffer_view", "DATAVIEW", QSize(666, 455)},
        std::tuple{"READ_EEPROM", "EEVIEW", QSize(431, 231)}}) {
    PanelRig rig;
    rig.click(command);
    auto* viewer = rig.find<BufferViewer>(window);
    ASSERT_NE(viewer, nullptr) << window;
    EXPECT_TRUE(viewer->isVisible()) << window;
    EXPECT_EQ(viewer->size(), size) << window;
  }
}

// Closing the window in a write's pause ends the write there, the way a
// failure does, and then the window closes: the chip is left unpowered and
// out of programming mode, and nothing more is programmed.
TEST(MainWindow, ClosingDuringAWriteEndsItAtTheNextPauseAndCloses) {
  // Checked: the write ends the way a failure does, the chip left out of
  // programming mode and unpowered. Exact: the program ends at once, as the
  // documented panel does, and nothing more is sent.
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    PanelRig rig;
    rig.form->Exact_Click(exact);
    TempDir dir;
    std::vector<HexWord> words;
    for (std::uint16_t w = 0; w < 0x200; ++w) words.push_back({w, static_cast<std::uint16_t>(w)});
    ASSERT_TRUE(write_inhx8m_file(dir.file("big.hex"), words));
    rig.open_answers.push_back(dir.file("big.hex"));
    rig.click("F_OpenButton");
    std::size_t at_close = 0;
    const auto render = rig.host.before_events;
    rig.host.before_events = [&] {
      render();
      if (at_close == 0 && rig.sim.in_programming_mode()) {
        at_close = rig.sim.trace().size();
        rig.main().close();
      }
    };
    rig.click("WriteButton");
    ASSERT_GT(at_close, 0u);
    EXPECT_FALSE(rig.main().isVisible());
    const auto& trace = rig.sim.trace();
    for (std::size_t i = at_close; i < trace.size(); ++i) {
      EXPECT_NE(trace[i].tx[0], ICSP_LOAD_DATA) << "exchange " << i;
    }
    if (exact) {
      EXPECT_EQ(trace.size(), at_close);
    } else {
      EXPECT_FALSE(rig.sim.in_programming_mode());
      EXPECT_FALSE(rig.sim.vcc());
    }
    EXPECT_TRUE(rig.boxes.empty());
  }
}

// The checks' findings show below the notes line; the menu item turns the
// checks off and is kept in the settings.
TEST(MainWindow, ExactMenuItemAndTheStatusLine) {
  PanelRig rig;  // starts exact
  TempDir dir;
  ASSERT_TRUE(write_inhx8m_file(dir.file("p.hex"), {{0, 0x2805}, {0x2007, 0x3F32}}));
  auto* exact = rig.find<QAction>("EXACT_MENU");
  ASSERT_NE(exact, nullptr);
  EXPECT_TRUE(exact->isChecked());
  exact->trigger();
  rig.settle();
  EXPECT_FALSE(rig.form->view().exact);
  EXPECT_EQ(rig.store.get(kSettingsApp, kPanelSection, kExactKey), "0");
  rig.open_answers.push_back(dir.file("p.hex"));
  rig.click("F_OpenButton");
  auto* status = rig.find<QLabel>("StatusLine");
  ASSERT_NE(status, nullptr);
  EXPECT_TRUE(status->isVisible());
  EXPECT_TRUE(status->toolTip().contains("configuration word 3F32 from the file"))
      << status->toolTip().toStdString();
  EXPECT_EQ(rig.find<QLineEdit>("ConfigAddrText")->text(), "3F32");
  exact->trigger();
  rig.settle();
  EXPECT_FALSE(status->isVisible());
}

// What is refused while the unit or a tool run is busy says why on the
// status line, beside the progress bar when an operation shows one.
TEST(MainWindow, RefusedCommandsSayWhyOnTheStatusLine) {
  struct Row {
    const char* item;
    const char* during;  // "READ" or "tool run"
    const char* status;
  };
  const Row rows[] = {
      {"LAview", "READ", "Logic View not opened: a chip operation is running"},
      {"VM_MANU", "READ", "Volt meter not opened: a chip operation is running"},
      {"CNT_MENU", "READ", "F-Counter not opened: a chip operation is running"},
      {"CNT_MENU2", "READ", "Counter not opened: a chip operation is running"},
      {"WriteButton", "tool run", "WRITE refused: the tool run has not ended"},
      {"ASSMButton", "tool run",
       "Assembler not started: the C compiler run before it has not ended"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.item);
    PanelRig rig;
    TempDir dir;
    auto* status = rig.find<QLabel>("StatusLine");
    auto* progress = rig.find<QProgressBar>("ProgressBar");
    std::string said;
    bool beside_progress = false;
    const auto look = [&] {
      said = status->isVisible() ? status->toolTip().toStdString() : "";
      beside_progress =
          progress->isVisible() && !progress->geometry().intersects(status->geometry());
    };
    if (std::string(row.during) == "READ") {
      rig.at_first_pause([&] { rig.form->READ_Click(); },
                         [&] {
                           rig.click(row.item);
                           look();
                         });
      rig.settle();
      EXPECT_EQ(rig.count("VM") + rig.count("Form_FCNT") + rig.count("Form_CNT") + rig.count("LA"),
                0);
      EXPECT_TRUE(beside_progress);
    } else {
      // A compiler that takes its time; the write must not take the image it replaces.
      write_text(dir.file("cc"), "#!/bin/sh\nsleep 1\n");
      std::filesystem::permissions(dir.file("cc"), std::filesystem::perms::owner_all);
      rig.tools.CFolder = dir.path().string();
      rig.tools.CCommand = "cc";
      write_text(dir.file("main.c"), "void main(void) {}\n");
      rig.find<QLineEdit>("FilenameTextbox")->setText(QString::fromStdString(dir.file("main.c")));
      rig.click("C_Button");
      ASSERT_TRUE(rig.form->toolchain().running());
      rig.sim.clear_trace();
      rig.click(row.item);
      look();
      EXPECT_TRUE(rig.sim.trace().empty());
      while (rig.form->toolchain().running())
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    EXPECT_EQ(said.rfind(row.status, 0), 0u) << said;
  }
}

}  // namespace
}  // namespace zenta::testing

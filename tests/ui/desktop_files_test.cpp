// Files handed over by the desktop: a drop onto the main window and the
// panel's file argument open as FILE OPEN opens the file its dialog returns.
#include <gtest/gtest.h>

#include <QDir>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>

#include "image/hex_writer.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

// Three words a blank chip does not hold, at 0, 1 and 0x20.
std::string small_hex(TempDir& dir, const std::string& name) {
  const std::string path = dir.file(name);
  write_text(path, format_inhx8m({{0x0000, 0x3001}, {0x0001, 0x2802}, {0x0020, 0x0008}}));
  return path;
}

bool drop(MainWindow& window, const QList<QUrl>& urls) {
  QMimeData data;
  data.setUrls(urls);
  const QPointF inside(20, 20);
  QDragEnterEvent enter(inside.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &enter);
  if (!enter.isAccepted()) return false;
  QDropEvent dropped(inside, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &dropped);
  return dropped.isAccepted();
}

TEST(DesktopFiles, ADroppedFileOpensAsFileOpenWould) {
  TempDir dir;
  const std::string hex = small_hex(dir, "image.hex");
  const std::string source = dir.file("blink.asm");
  write_text(source, "  end\n");
  PanelRig rig;
  ASSERT_TRUE(rig.started);

  ASSERT_TRUE(drop(rig.main(), {QUrl::fromLocalFile(QString::fromStdString(hex))}));
  PanelRig::settle();
  EXPECT_EQ(rig.state->DataLoaded, 1);
  EXPECT_EQ(rig.state->word(0), 0x3001);
  EXPECT_EQ(rig.state->word(0x20), 0x0008);
  EXPECT_EQ(rig.find<QLineEdit>("FilenameTextbox")->text().toStdString(), hex);
  EXPECT_TRUE(rig.boxes.empty());

  // A source becomes the target; the loaded image stays.
  ASSERT_TRUE(drop(rig.main(), {QUrl::fromLocalFile(QString::fromStdString(source))}));
  EXPECT_EQ(rig.state->TargetFileName, source);
  EXPECT_EQ(rig.state->word(0), 0x3001);

  // Several files, a web address: not taken, nothing changes.
  const QUrl file = QUrl::fromLocalFile(QString::fromStdString(hex));
  EXPECT_FALSE(drop(rig.main(), {file, file}));
  EXPECT_FALSE(drop(rig.main(), {QUrl("https://example.org/a.hex")}));
  EXPECT_EQ(rig.state->TargetFileName, source);

  // While an operation holds the unit, a drop is refused like the button.
  bool taken = true;
  EXPECT_TRUE(
      rig.at_first_pause([&] { rig.click("READ"); }, [&] { taken = drop(rig.main(), {file}); }));
  EXPECT_FALSE(taken);
  EXPECT_EQ(rig.state->TargetFileName, source);
}

TEST(DesktopFiles, TheFileArgumentOpensAtStart) {
  TempDir dir;
  const std::string hex = small_hex(dir, "start.hex");
  const struct {
    QStringList arguments;
    bool loads;
    bool error;
  } cases[] = {
      {{"zenta-panel", QString::fromStdString(hex)}, true, false},
      {{"zenta-panel", QUrl::fromLocalFile(QString::fromStdString(hex)).toString()}, true, false},
      {{"zenta-panel"}, false, false},
      {{"zenta-panel", "a.hex", "b.hex"}, false, true},
      {{"zenta-panel", "--fast"}, false, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments.join(' ').toStdString());
    const PanelArguments parsed = panel_arguments(c.arguments);
    EXPECT_EQ(!parsed.error.isEmpty(), c.error);
    PanelRig rig;
    ASSERT_TRUE(rig.started);
    EXPECT_EQ(rig.main().open_desktop_file(parsed.file), c.loads);
    EXPECT_EQ(rig.state->DataLoaded, c.loads ? 1 : 0);
    if (c.loads) {
      EXPECT_EQ(rig.find<QLineEdit>("FilenameTextbox")->text().toStdString(), hex);
    }
  }
  // A relative name is taken from the current folder, as a shell gives it.
  const QString here = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(QString::fromStdString(dir.path().string())));
  EXPECT_EQ(panel_arguments({"zenta-panel", "start.hex"}).file.toStdString(), hex);
  QDir::setCurrent(here);
}

}  // namespace
}  // namespace zenta::testing

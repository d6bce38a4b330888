// The tool buttons, menu items and windows of the toolchain, with the real
// gpasm and with stand-in compiler scripts, on a simulated unit.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTextBlock>
#include <QThread>
#include <filesystem>

#include "image/ui/buffer_viewer.h"
#include "ui/panel_rig.h"

namespace zenta::testing {
namespace {

// Lets the panel run, Timer1 included, until the tool run has ended.
bool wait_for_run(PanelRig& rig, int limit_ms = 20000) {
  QElapsedTimer clock;
  clock.start();
  while (rig.form->toolchain().running()) {
    if (clock.elapsed() > limit_ms) return false;
    QApplication::processEvents(QEventLoop::AllEvents, 20);
    QThread::msleep(5);
  }
  PanelRig::settle();
  return true;
}

std::string notes(PanelRig& rig) {
  return rig.find<QLabel>("NotesLabel")->text().toStdString();
}

QColor notes_color(PanelRig& rig) {
  return rig.find<QLabel>("NotesLabel")->palette().color(QPalette::WindowText);
}

void double_click_line(QPlainTextEdit* text, int block) {
  QTextCursor cursor(text->document()->findBlockByNumber(block));
  const QPoint at = text->cursorRect(cursor).center();
  QMouseEvent event(QEvent::MouseButtonDblClick, at, text->viewport()->mapToGlobal(at),
                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(text->viewport(), &event);
  PanelRig::settle();
}

void make_executable(const std::string& path, const std::string& script) {
  write_text(path, "#!/bin/sh\n" + script);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// The current folder, where the compiler leaves cerr.txt, for one test.
class InFolder {
 public:
  explicit InFolder(const std::string& folder) : before_(QDir::currentPath()) {
    QDir::setCurrent(QString::fromStdString(folder));
  }
  ~InFolder() { QDir::setCurrent(before_); }

 private:
  QString before_;
};

// Line 3 names a label that does not exist.
constexpr const char* kBad =
    "\tlist p=16f877a\n\torg 0\n\tgoto strat\nstart:\tmovlw 0x2A\n\tgoto start\n\tend\n";

TEST(Toolchain, AssembleWithGpasmFixAnErrorInTheEditorAndWriteTheChip) {
  if (!tool_available("gpasm")) GTEST_SKIP() << "gpasm (gputils) is not installed";
  PanelRig rig;  // a first run: the default tools are used at once
  TempDir dir;
  const std::string source = dir.file("my prog.asm");
  write_text(source, kBad);
  rig.open_answers.push_back(source);
  rig.click("F_OpenButton");
  rig.click("ASSMButton");
  ASSERT_TRUE(wait_for_run(rig));
  EXPECT_EQ(notes(rig), "Assembler ERROR");
  EXPECT_EQ(notes_color(rig), QColor(0xFF, 0, 0));
  EXPECT_EQ(rig.boxes, std::vector<std::string>{});
  ASSERT_EQ(rig.count("ZENTA_ERRVIEW"), 1);
  auto* err_text = rig.find<QPlainTextEdit>("ErrText");
  const QString messages = err_text->toPlainText();
  EXPECT_TRUE(messages.startsWith("Error[113]")) << messages.toStdString();
  EXPECT_TRUE(messages.contains(QString::fromStdString(source) + " 3 :")) << messages.toStdString();

  double_click_line(err_text, 0);
  ASSERT_EQ(rig.count("ZENTA_Editor"), 1);
  auto* editor = rig.find<QPlainTextEdit>("EditorText");
  EXPECT_EQ(editor->textCursor().blockNumber(), 2);
  EXPECT_EQ(editor->textCursor().block().text(), "\tgoto strat");
  EXPECT_TRUE(QFontInfo(editor->font()).fixedPitch());

  // The buffer viewer, open while the image loads, shows the new words.
  rig.click("BUFVIEWButton");
  ASSERT_EQ(rig.count("DATAVIEW"), 1);
  QAbstractItemModel* model = rig.find<BufferViewer>("DATAVIEW")->grid()->model();
  editor->setPlainText(QString(kBad).replace("strat", "start"));
  rig.find<QWidget>("ZENTA_Editor")->findChild<QPushButton*>("SAVEButton")->click();
  rig.find<QAction>("Assembler")->trigger();
  ASSERT_TRUE(wait_for_run(rig));
  EXPECT_EQ(notes(rig), "Assembler complete");
  EXPECT_EQ(rig.boxes, std::vector<std::string>{});
  EXPECT_EQ(rig.state->DataLoaded, 1);
  const auto image = hex_image(dir.file("my prog.hex"));
  EXPECT_EQ(image->word(0), 0x2801);  // goto start
  EXPECT_EQ(image->word(1), 0x302A);  // movlw 0x2A
  EXPECT_EQ(model->data(model->index(0, 0)).toString(), "2801 ");
  EXPECT_EQ(model->data(model->index(0, 1)).toString(), "302A ");

  // While the write lets events run, what would start another operation
  // must be shown disabled and the progress bar must be up; with the checks
  // on, the unit controls too, as their commands would wait for the unit.
  rig.form->Exact_Click(false);
  std::vector<QPushButton*> senders;
  for (const char* name : {"WriteButton", "Command_VCC", "Command_LED", "Command_RESET",
                           "Command_Vset_0", "Command_Vset_2"}) {
    senders.push_back(rig.find<QPushButton>(name));
    ASSERT_NE(senders.back(), nullptr) << name;
  }
  auto* progress = rig.find<QProgressBar>("ProgressBar");
  int yields = 0, yields_enabled = 0, yields_with_progress = 0;
  const auto render = rig.host.before_events;
  rig.host.before_events = [&] {
    render();
    ++yields;
    for (QPushButton* sender : senders) yields_enabled += sender->isEnabled();
    yields_with_progress += progress->isVisible();
  };
  rig.click("WriteButton");
  EXPECT_EQ(notes(rig), "Write Complete");
  EXPECT_EQ(rig.boxes, std::vector<std::string>{});
  EXPECT_GT(yields, 0);
  EXPECT_EQ(yields_enabled, 0);
  EXPECT_EQ(yields_with_progress, yields);
  EXPECT_TRUE(senders.front()->isEnabled());
  EXPECT_FALSE(progress->isVisible());
  for (int w = 0; w < 0x2000; ++w) ASSERT_EQ(rig.sim.program_word(w), image->word(w)) << w;
  EXPECT_EQ(rig.sim.config_word(), rig.state->ConfigWord);  // the editor's, not the file's
}

TEST(Toolchain, CompilerStandInsAreWaitedForAndGetThePathAsOneArgument) {
  struct Case {
    const char* name;
    std::string script;  // empty: the compiler does not exist
    std::string notes, box;
  };
  // $2 is the source; its HEX file replaces the final "c" with "HEX".
  const std::string hex = "\"${2%?}HEX\"";
  const Case cases[] = {
      {"slow compiler",
       ": > cerr.txt\nprintf ':020000000A28CC\\n' > " + hex +
           "\nsleep 3\nprintf ':02000200FF3FBE\\n:00000001FF\\n' >> " + hex + "\n",
       "Compile complete", ""},
      // What it printed is all there is to go on.
      {"compiler that fails silently", "echo 'no licence' >&2\nexit 3\n", "Compile ERROR", ""},
      {"missing compiler", "", "Compile", "OPEN ERROR: File not found"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    PanelRig rig;
    TempDir dir;
    InFolder in(dir.path().string());
    std::filesystem::create_directories(dir.file("tool dir"));
    std::filesystem::create_directories(dir.file("my src"));
    if (!c.script.empty()) {
      make_executable(dir.file("tool dir/cc.sh"),
                      "printf '%s\\n' \"$#\" \"$2\" > args.txt\n" + c.script);
    }
    rig.tools.CFolder = dir.file("tool dir");
    rig.tools.CCommand = "cc.sh -Ecerr.txt";
    const std::string source = dir.file("my src/main; rm -rf x.c");
    write_text(source, "int main(void) { return 0; }\n");
    rig.find<QLineEdit>("FilenameTextbox")->setText(QString::fromStdString(source));
    rig.click("C_Button");
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(wait_for_run(rig));
    const bool loaded = c.notes == "Compile complete";
    EXPECT_EQ(notes(rig), c.notes);
    EXPECT_EQ(rig.boxes, c.box.empty() ? std::vector<std::string>{} : std::vector{c.box});
    EXPECT_EQ(rig.state->DataLoaded, loaded ? 1 : 0);
    EXPECT_EQ(rig.count("ZENTA_ERRVIEW"), c.notes == "Compile ERROR" ? 1 : 0);
    EXPECT_EQ(rig.find<QLineEdit>("TEST")->text().toStdString(),
              loaded ? dir.file("my src/main; rm -rf x.HEX")
                     : dir.file("tool dir") + "/cc.sh -Ecerr.txt " + source);
    if (loaded) {
      EXPECT_GE(clock.elapsed(), 3000);
      EXPECT_EQ(rig.state->word(0), 0x280A);
      EXPECT_EQ(rig.state->word(1), 0x3FFF);
    }
    if (c.script.empty()) {
      EXPECT_EQ(rig.state->WaitTicks, 0);
      EXPECT_TRUE(rig.find<QPushButton>("WriteButton")->isEnabled());
      continue;
    }
    EXPECT_EQ(read_text(dir.file("args.txt")), "2\n" + source + "\n");
    if (!loaded) {
      EXPECT_TRUE(rig.find<QPlainTextEdit>("ErrText")->toPlainText().contains("no licence"));
    }
  }
}

TEST(Toolchain, ToolKeysButtonsAndOneWindowOfEachKind) {
  PanelRig rig;
  for (const auto& [name, key] :
       {std::pair{"Editor", Qt::Key_F5}, std::pair{"Assembler", Qt::Key_F6},
        std::pair{"Ccmp", Qt::Key_F7}}) {
    ASSERT_NE(rig.find<QAction>(name), nullptr) << name;
    EXPECT_EQ(rig.find<QAction>(name)->shortcut(), QKeySequence(key)) << name;
  }
  ASSERT_NE(rig.find<QAction>("NEW_EDITOR"), nullptr);
  EXPECT_EQ(rig.find<QAction>("NEW_EDITOR")->text(), "New File");
  for (const char* name : {"ASSMButton", "C_Button", "EditorButton", "New_EditorButton"}) {
    EXPECT_TRUE(rig.find<QPushButton>(name)->isEnabled()) << name;
  }

  // Checked, the editor names the file it loaded.
  rig.form->Exact_Click(false);
  TempDir dir;
  InFolder in(dir.path().string());
  const std::string source = dir.file("a.asm");
  write_text(source, "A\nB");
  rig.open_answers.push_back(source);
  rig.click("F_OpenButton");
  rig.click("Editor");
  ASSERT_EQ(rig.count("ZENTA_Editor"), 1);
  EXPECT_EQ(rig.find<QWidget>("ZENTA_Editor")->windowTitle(), "Editor - a.asm");
  auto* editor = rig.find<QPlainTextEdit>("EditorText");
  EXPECT_EQ(editor->toPlainText(), "A\nB");
  editor->setPlainText("typed");
  rig.click("EditorButton");  // brought forward, not loaded again
  EXPECT_EQ(rig.count("ZENTA_Editor"), 1);
  EXPECT_EQ(rig.find<QPlainTextEdit>("EditorText")->toPlainText(), "typed");
  rig.find<QWidget>("ZENTA_Editor")->findChild<QPushButton*>("EXITButton")->click();
  rig.settle();
  EXPECT_EQ(rig.count("ZENTA_Editor"), 0);
  EXPECT_EQ(read_text(source), "A\nB");  // EXIT saves nothing
  rig.click("New_EditorButton");
  EXPECT_EQ(rig.find<QLineEdit>("FilenameTextbox")->text(), "");
  EXPECT_EQ(rig.find<QPlainTextEdit>("EditorText")->toPlainText(), "");

  // The error window: a later failing run brings it forward with the text
  // it shows; it reads the file again only when opened anew.
  make_executable(dir.file("cc"), "cat msg.txt > cerr.txt\n");
  rig.tools.CFolder = dir.path().string();
  rig.tools.CCommand = "cc";
  rig.find<QLineEdit>("FilenameTextbox")->setText(QString::fromStdString(dir.file("m.c")));
  for (const char* text : {"first", "second"}) {
    write_text(dir.file("msg.txt"), text);
    rig.click("Ccmp");
    ASSERT_TRUE(wait_for_run(rig));
    ASSERT_EQ(rig.count("ZENTA_ERRVIEW"), 1);
    EXPECT_EQ(rig.find<QPlainTextEdit>("ErrText")->toPlainText(), "first\n");
  }
  rig.find<QWidget>("ZENTA_ERRVIEW")->findChild<QPushButton*>("EXITButton")->click();
  rig.settle();
  rig.click("C_Button");
  ASSERT_TRUE(wait_for_run(rig));
  EXPECT_EQ(rig.find<QPlainTextEdit>("ErrText")->toPlainText(), "second\n");
}

}  // namespace
}  // namespace zenta::testing

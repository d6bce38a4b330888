#pragma once
// A panel with a source in a temporary folder for the tool-run and editor
// tests, with a fake host whose "tools" write their files when they end.
#include <string>
#include <utility>
#include <vector>

#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta {

using testing::FakeTool;
using testing::PanelRig;
using testing::read_text;
using testing::TempDir;
using testing::write_text;

constexpr const char* kHex = ":0400000001280800CB\n:00000001FF\n";  // goto 1; nop at 1

// A panel with a source in a temporary folder, recording every text the
// TEST box shows, in order.
struct Runs {
  explicit Runs(const std::string& source_name, bool exact = true)
      : rig("16F877A", 1, exact), source(dir.file(source_name)) {
    rig.host.folder = dir.path().string();
    rig.tools = {"/opt/gputils", "gpasm -k", "/opt/cc", "cc -Ecerr.txt", "", ""};
    rig.form.view().FilenameTextbox = source;
    rig.form.on_changed = [this] {
      const std::string& test = rig.form.view().TEST;
      if (!test.empty() && (tests.empty() || tests.back() != test)) tests.push_back(test);
    };
  }
  // Ticks Timer1 until the run has ended; returns the ticks it took.
  int tick_until_done(int limit = 2000) {
    int ticks = 0;
    while (rig.form.toolchain().running() && ticks < limit) {
      rig.form.Timer1_Timer();
      ++ticks;
    }
    return ticks;
  }
  std::vector<std::string> box_texts() const { return rig.box_texts(); }
  // The fake tool writes these files, named inside the folder, when it ends.
  void tool_writes(std::vector<std::pair<std::string, std::string>> files) {
    rig.host.tool->on_end = [this, files] {
      for (const auto& [name, text] : files) write_text(dir.file(name), text);
    };
  }
  void start(bool assembler) {
    assembler ? rig.form.ASSMButton_Click() : rig.form.C_Button_Click();
  }

  TempDir dir;
  PanelRig rig;
  std::string source;
  std::vector<std::string> tests;
};

}  // namespace zenta

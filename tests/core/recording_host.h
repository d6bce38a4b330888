#pragma once
// A host that records message boxes and answers dialogs from fields, for
// the foundation tests.
#include <string>
#include <vector>

#include "panel/host.h"

namespace zenta::testing {

struct RecordedBox {
  std::string text;
  std::string title;
  MessageIcon icon;
};

class RecordingHost : public Host {
 public:
  std::vector<RecordedBox> boxes;
  std::string folder = "/home/user/work";
  int events = 0;

  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override {
    boxes.push_back({text, title, icon});
  }
  void process_events() override { ++events; }
  void beep() override {}
  std::string open_file_dialog(const std::string&) override { return {}; }
  std::string save_file_dialog(const std::string&) override { return {}; }
  bool start_program(const std::string&, bool) override { return false; }
  bool open_url(const std::string&) override { return false; }
  void show_window(WindowId) override {}
  bool window_visible(WindowId) const override { return false; }
  std::string current_folder() const override { return folder; }
};

}  // namespace zenta::testing

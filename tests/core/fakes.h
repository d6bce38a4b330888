#pragma once
// A host for core tests: it records what the core asked of the platform
// (message boxes, event pumps, beeps, programs, URLs, windows) and answers
// dialogs and questions from fields the test sets.
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "common/host.h"

namespace zenta::testing {

struct ShownBox {
  std::string text;
  std::string title;
  MessageIcon icon;
};

class FakeHost : public Host {
 public:
  std::vector<ShownBox> boxes;
  int events = 0;  // process_events calls
  int beeps = 0;
  // Answers of the file dialogs, in order; an empty queue is a cancel.
  std::deque<std::string> open_answers;
  std::deque<std::string> save_answers;
  std::vector<std::string> open_filters;
  std::vector<std::string> save_filters;
  struct Started {
    std::string command_line;
    bool minimized;
  };
  std::vector<Started> started;
  bool start_result = true;
  std::vector<std::string> urls;
  bool url_result = true;
  std::vector<WindowId> shown;
  std::set<WindowId> visible;
  std::string folder = "/home/user/work";

  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override {
    boxes.push_back({text, title, icon});
  }
  void process_events() override { ++events; }
  void beep() override { ++beeps; }
  std::string open_file_dialog(const std::string& filter) override {
    open_filters.push_back(filter);
    return take(open_answers);
  }
  std::string save_file_dialog(const std::string& filter) override {
    save_filters.push_back(filter);
    return take(save_answers);
  }
  bool start_program(const std::string& command_line, bool minimized) override {
    started.push_back({command_line, minimized});
    return start_result;
  }
  bool open_url(const std::string& url) override {
    urls.push_back(url);
    return url_result;
  }
  // Showing a window makes it visible, as the real windows do.
  void show_window(WindowId id) override {
    shown.push_back(id);
    visible.insert(id);
  }
  bool window_visible(WindowId id) const override { return visible.count(id) > 0; }
  std::string current_folder() const override { return folder; }

 private:
  static std::string take(std::deque<std::string>& answers) {
    if (answers.empty()) return {};
    std::string answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

}  // namespace zenta::testing

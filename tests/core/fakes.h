#pragma once
// A host for core tests: it records what the core asked of the platform
// (message boxes, event pumps, beeps, programs, URLs, windows) and answers
// dialogs and questions from fields the test sets.
#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/host.h"
#include "link/link_report.h"
#include "panel/windows.h"

namespace zenta::testing {

// A tool the fake host "started": it ends after `polls` calls of
// finished(), running `on_end` (which writes the tool's files) as it does.
struct FakeTool {
  int polls = 0;
  int status = 0;
  std::string output;
  std::function<void()> on_end;
  bool killed = false;
};

class FakeToolProcess : public ToolProcess {
 public:
  explicit FakeToolProcess(std::shared_ptr<FakeTool> tool) : tool_(std::move(tool)) {}
  bool finished() override {
    if (tool_->killed) return true;
    if (tool_->polls > 0 && --tool_->polls > 0) return false;
    if (tool_->on_end) {
      auto end = std::move(tool_->on_end);
      tool_->on_end = nullptr;
      end();
    }
    return true;
  }
  int exit_status() const override { return tool_->killed ? -1 : tool_->status; }
  std::string output() override { return tool_->output; }
  void kill() override { tool_->killed = true; }

 private:
  std::shared_ptr<FakeTool> tool_;
};

struct ShownBox {
  std::string text;
  std::string title;
  MessageIcon icon;
};

// Hears the link too: a failed exchange is a box as the panel shows it.
class FakeHost : public Host, public LinkReport, public Windows {
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
  // Tool starts: command, argument and folder as the core gave them. The
  // next start runs `tool`; a null tool cannot start.
  struct ToolStart {
    std::string command;
    std::string argument;
    bool detached;
    std::string folder;
  };
  std::vector<ToolStart> tool_starts;
  std::shared_ptr<FakeTool> tool = std::make_shared<FakeTool>();
  std::vector<std::string> urls;
  bool url_result = true;
  std::vector<WindowId> shown;
  std::set<WindowId> visible;
  std::string folder = "/home/user/work";

  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override {
    boxes.push_back({text, title, icon});
  }
  void exchange_failed(const std::string& text) override {
    message_box(text, "USB ERROR", MessageIcon::kStop);
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
  // The filter choice of each save answer, 0 when none is queued.
  std::deque<std::size_t> save_choices;
  SaveAnswer save_file_choice(const std::string& filter) override {
    std::size_t choice = 0;
    if (!save_choices.empty()) {
      choice = save_choices.front();
      save_choices.pop_front();
    }
    return {save_file_dialog(filter), choice};
  }
  bool start_program(const std::string& command_line, bool minimized) override {
    started.push_back({command_line, minimized});
    return start_result;
  }
  std::unique_ptr<ToolProcess> start_tool(const std::string& command, const std::string& argument,
                                          const std::string& folder) override {
    tool_starts.push_back({command, argument, false, folder});
    if (!tool) return nullptr;
    return std::make_unique<FakeToolProcess>(tool);
  }
  bool start_detached(const std::string& command, const std::string& argument) override {
    tool_starts.push_back({command, argument, true, {}});
    return tool != nullptr;
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

#pragma once
// The Host of the command-line program: message boxes become lines
// "TITLE: text" on standard error, pending events redraw a progress bar
// there when it is a terminal, and every dialog is cancelled.
#include <cstdint>
#include <ostream>
#include <string>

#include "common/host.h"
#include "panel/main_view.h"

namespace zenta::cli {

class ConsoleHost : public Host {
 public:
  // `terminal`: whether `err` is a terminal, so that a bar can be redrawn in place.
  ConsoleHost(std::ostream& err, bool terminal) : err_(err), terminal_(terminal) {}

  // The view whose progress the bar shows; set once the form exists.
  void attach(const MainView& view) { view_ = &view; }
  // Clears the bar and reports repeated messages still pending; call before
  // printing anything else.
  void finish();
  int message_count() const { return message_count_; }

  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override;
  void process_events() override;
  void beep() override {}
  std::string open_file_dialog(const std::string&) override { return ""; }
  std::string save_file_dialog(const std::string&) override { return ""; }
  bool start_program(const std::string&, bool) override { return false; }
  bool open_url(const std::string&) override { return false; }
  void show_window(WindowId) override {}
  bool window_visible(WindowId) const override { return false; }
  std::string current_folder() const override;

 private:
  void clear_bar();
  void flush_repeats();

  std::ostream& err_;
  bool terminal_;
  const MainView* view_ = nullptr;
  int shown_percent_ = -1;  // -1: no bar on the screen
  std::string last_message_;
  int repeats_ = 0;  // times last_message_ came again and was not printed
  int message_count_ = 0;
};

}  // namespace zenta::cli

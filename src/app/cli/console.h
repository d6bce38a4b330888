#pragma once
// What the command-line program shows while a command runs: message boxes
// become lines "TITLE: text" on standard error (repeats folded into a
// count), progress a bar there when it is a terminal, every dialog is
// cancelled. With --verbose each change of the notes line is a line there.
#include <cstdint>
#include <ostream>
#include <string>

#include "common/host.h"
#include "link/link_report.h"
#include "programming/operation_report.h"

namespace zenta::cli {

class Console : public Host, public LinkReport, public OperationReport {
 public:
  // `terminal`: whether `err` is a terminal, so that a bar can be redrawn in
  // place. `verbose`: every change of the notes line is a line on `err`.
  Console(std::ostream& err, bool terminal, bool verbose = false)
      : err_(err), terminal_(terminal), verbose_(verbose) {}

  // Clears the bar and reports repeated messages still pending; call before
  // printing anything else.
  void finish();
  int message_count() const { return message_count_; }

  // Host
  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override;
  void process_events() override {}
  void beep() override {}
  std::string open_file_dialog(const std::string&) override { return ""; }
  std::string save_file_dialog(const std::string&) override { return ""; }
  bool start_program(const std::string&, bool) override { return false; }
  bool open_url(const std::string&) override { return false; }
  std::string current_folder() const override;

  // LinkReport
  void exchange_failed(const std::string& text) override {
    message_box(text, "USB ERROR", MessageIcon::kStop);
  }

  // OperationReport
  void notes(const std::string& text, std::uint32_t) override;
  void current_address(int) override {}
  void start_address(int) override {}
  void progress(int value, int maximum) override;
  void supply(bool) override {}
  void led(bool) override {}
  void stop_box(const std::string& text, const std::string& title) override {
    message_box(text, title, MessageIcon::kStop);
  }
  void let_events_run() override {}
  // Ctrl-C or a termination request (common/interrupt.h).
  bool stop_requested() override;

 private:
  void clear_bar();
  void flush_repeats();

  std::ostream& err_;
  bool terminal_;
  bool verbose_;
  std::string notes_;
  int shown_percent_ = -1;  // -1: no bar on the screen
  std::string last_message_;
  int repeats_ = 0;  // times last_message_ came again and was not printed
  int message_count_ = 0;
};

}  // namespace zenta::cli

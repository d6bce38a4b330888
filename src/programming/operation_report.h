#pragma once
// How a chip operation tells its front end what it is doing. The panel
// shows it in the main window (notes line, address box, progress bar,
// supply and LED captions, message boxes); the command-line program prints
// progress and keeps the boxes' texts for its messages.
#include <cstdint>
#include <string>

namespace zenta {

class OperationReport {
 public:
  virtual ~OperationReport() = default;
  // The notes line: text and colour (common/colours.h).
  virtual void notes(const std::string& text, std::uint32_t colour) = 0;
  // The word or byte address the operation has reached (CurrentAddrText).
  virtual void current_address(int address) = 0;
  // A read starts its buffer at word 0 (StartAddrText).
  virtual void start_address(int address) = 0;
  // value of maximum steps done; maximum 0 when the operation has ended.
  virtual void progress(int value, int maximum) = 0;
  // The supply and LED were switched (the buttons' captions follow).
  virtual void supply(bool on) = 0;
  virtual void led(bool on) = 0;
  // A modal box with the stop icon; returns when the user closed it.
  virtual void stop_box(const std::string& text, const std::string& title) = 0;
  // Between the steps of a long loop: repaint and let pending events run.
  virtual void let_events_run() = 0;
  // Asked between the steps of a long loop, after let_events_run: true when
  // the user wants the operation ended (the program is being closed or
  // interrupted). The operation then ends as after a failure: programming
  // mode left, supply switched off.
  virtual bool stop_requested() { return false; }
};

// A report that shows nothing: for callers that only want the result.
class SilentReport : public OperationReport {
 public:
  void notes(const std::string&, std::uint32_t) override {}
  void current_address(int) override {}
  void start_address(int) override {}
  void progress(int, int) override {}
  void supply(bool) override {}
  void led(bool) override {}
  void stop_box(const std::string&, const std::string&) override {}
  void let_events_run() override {}
};

}  // namespace zenta

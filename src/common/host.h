#pragma once
// What the core asks of the platform. The Qt layer implements it for the
// panel, the command-line program prints instead, and tests use fakes.
#include <cstddef>
#include <memory>
#include <string>

#include "common/tool_process.h"

namespace zenta {

enum class MessageIcon { kStop, kInformation, kExclamation };

// A save dialog's answer: the path, and which of the filter's choices the
// user had chosen (0 the first).
struct SaveAnswer {
  std::string path;
  std::size_t choice = 0;
};

class Host {
 public:
  virtual ~Host() = default;
  // A modal box with an OK button; returns when the user closed it.
  virtual void message_box(const std::string& text, const std::string& title, MessageIcon icon) = 0;
  // Lets pending window events (repaints, timer ticks, clicks) run.
  virtual void process_events() = 0;
  virtual void beep() = 0;
  // File dialogs take a filter as "Caption|*.a;*.b|Caption|*.c|"; they
  // return the chosen path, or an empty text when the user cancelled.
  virtual std::string open_file_dialog(const std::string& filter) = 0;
  virtual std::string save_file_dialog(const std::string& filter) = 0;
  // The save dialog with the choice of filter; hosts that cannot tell it
  // answer the first.
  virtual SaveAnswer save_file_choice(const std::string& filter) {
    return {save_file_dialog(filter), 0};
  }
  // Starts a program without waiting for it; false when it cannot start.
  virtual bool start_program(const std::string& command_line, bool minimized) = 0;
  // Starts `command` (a program and its options, split into words as a
  // command line is) with `argument` appended as one more argument when it
  // is not empty, so a path with blanks or shell characters reaches the
  // program as it stands. No shell is involved. start_tool returns a handle
  // to watch, or null when the program cannot start; start_detached lets
  // the program run on its own. A tool runs in `folder`, or in the
  // panel's current folder when it is empty. Hosts that start nothing keep
  // the defaults.
  virtual std::unique_ptr<ToolProcess> start_tool(const std::string& command,
                                                  const std::string& argument,
                                                  const std::string& folder) {
    (void)command;
    (void)argument;
    (void)folder;
    return nullptr;
  }
  virtual bool start_detached(const std::string& command, const std::string& argument) {
    (void)command;
    (void)argument;
    return false;
  }
  virtual bool open_url(const std::string& url) = 0;
  virtual std::string current_folder() const = 0;
};

}  // namespace zenta

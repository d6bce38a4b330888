#pragma once
// The platform's side of the core's Host on Qt: message boxes, dialogs,
// program starts, the browser, the current folder.
// Tests replace the message boxes and dialogs through the hooks, so
// nothing blocks without a screen.
#include <QWidget>
#include <functional>
#include <string>

#include "common/host.h"
#include "common/settings_store.h"

namespace zenta {

class QtHost : public Host {
 public:
  void message_box(const std::string& text, const std::string& title, MessageIcon icon) override;
  void process_events() override;
  void beep() override;
  std::string open_file_dialog(const std::string& filter) override;
  std::string save_file_dialog(const std::string& filter) override;
  SaveAnswer save_file_choice(const std::string& filter) override;
  bool start_program(const std::string& command_line, bool minimized) override;
  std::unique_ptr<ToolProcess> start_tool(const std::string& command, const std::string& argument,
                                          const std::string& folder) override;
  bool start_detached(const std::string& command, const std::string& argument) override;
  bool open_url(const std::string& url) override;
  std::string current_folder() const override;

  // Parent of message boxes and dialogs (the main window), when there is one.
  void set_dialog_parent(QWidget* parent) { parent_ = parent; }
  // The file dialogs open where the last one of their kind ended, with its
  // filter, kept in the panel's section of `store`; without a store they
  // open in the current folder.
  void remember_dialogs_in(SettingsStore* store) { dialog_store_ = store; }

  // ---- replacements, for tests ----
  std::function<void(const std::string& text, const std::string& title, MessageIcon icon)>
      message_hook;
  // Gets the filter as the core gave it; returns the chosen path or "".
  std::function<std::string(const std::string& filter)> open_dialog_hook;
  std::function<std::string(const std::string& filter)> save_dialog_hook;
  std::function<SaveAnswer(const std::string& filter)> save_choice_hook;
  std::function<bool(const std::string& url)> url_hook;
  // Runs before pending events are let through, so the windows show the
  // state of the operation that yields.
  std::function<void()> before_events;

 private:
  SaveAnswer file_dialog(bool save, const std::string& filter);

  QWidget* parent_ = nullptr;
  SettingsStore* dialog_store_ = nullptr;
};

}  // namespace zenta

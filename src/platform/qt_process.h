#pragma once
// Program starts through QProcess, never through a shell: the command (a
// folder and command line from the settings) is split into program and
// options by the launch rules, and the target path is appended as one
// argument, so blanks and shell characters in it are only characters.
#include <QProcess>
#include <memory>
#include <string>

#include "common/tool_process.h"
#include "platform/host_rules.h"

namespace zenta {

// What `command` plus `argument` starts on this system.
LaunchCommand tool_launch(const std::string& command, const std::string& argument);

class QtToolProcess : public ToolProcess {
 public:
  // Null when the program cannot start. It runs in `folder`, or in the
  // current folder when that is empty.
  static std::unique_ptr<QtToolProcess> start(const LaunchCommand& launch,
                                              const std::string& folder = {});
  ~QtToolProcess() override;

  bool finished() override;
  int exit_status() const override;
  std::string output() override;
  void kill() override;

 private:
  QtToolProcess() = default;
  QProcess process_;
  QByteArray output_;
};

// Starts the program on its own; false when it cannot start.
bool start_detached_program(const LaunchCommand& launch);

}  // namespace zenta

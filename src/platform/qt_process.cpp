#include "platform/qt_process.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>

namespace zenta {

namespace {

QString q(const std::string& text) {
  return QString::fromStdString(text);
}

QStringList arguments_of(const LaunchCommand& launch) {
  QStringList arguments;
  for (const std::string& argument : launch.arguments) arguments << q(argument);
  return arguments;
}

}  // namespace

LaunchCommand tool_launch(const std::string& command, const std::string& argument) {
#ifdef _WIN32
  constexpr bool kLookUpOnPath = false;
#else
  constexpr bool kLookUpOnPath = true;
#endif
  LaunchCommand launch = resolve_launch(
      command, [](const std::string& path) { return QFileInfo(q(path)).isFile(); },
      [](const std::string& name) { return QStandardPaths::findExecutable(q(name)).toStdString(); },
      kLookUpOnPath);
  if (!argument.empty()) launch.arguments.push_back(argument);
  return launch;
}

std::unique_ptr<QtToolProcess> QtToolProcess::start(const LaunchCommand& launch,
                                                    const std::string& folder) {
  if (launch.program.empty()) return nullptr;
  std::unique_ptr<QtToolProcess> tool(new QtToolProcess);
  if (!folder.empty()) tool->process_.setWorkingDirectory(q(folder));
  tool->process_.setProcessChannelMode(QProcess::MergedChannels);
  // The tool reads nothing; a closed input never leaves it waiting for one.
  tool->process_.setStandardInputFile(QProcess::nullDevice());
  tool->process_.start(q(launch.program), arguments_of(launch));
  if (!tool->process_.waitForStarted()) return nullptr;
  return tool;
}

QtToolProcess::~QtToolProcess() {
  if (process_.state() != QProcess::NotRunning) {
    process_.kill();
    process_.waitForFinished(1000);
  }
}

bool QtToolProcess::finished() {
  if (process_.state() != QProcess::NotRunning) process_.waitForFinished(0);
  output_ += process_.readAll();
  return process_.state() == QProcess::NotRunning;
}

int QtToolProcess::exit_status() const {
  if (process_.exitStatus() == QProcess::CrashExit) return -1;
  return process_.exitCode();
}

std::string QtToolProcess::output() {
  output_ += process_.readAll();
  return output_.toStdString();
}

void QtToolProcess::kill() {
  process_.kill();
  process_.waitForFinished(1000);
}

bool start_detached_program(const LaunchCommand& launch) {
  if (launch.program.empty()) return false;
  return QProcess::startDetached(q(launch.program), arguments_of(launch));
}

}  // namespace zenta

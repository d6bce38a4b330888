#include "platform/qt_host.h"

#include <algorithm>

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include "platform/host_rules.h"
#include "platform/qt_process.h"

namespace zenta {

namespace {

QString q(const std::string& text) {
  return QString::fromStdString(text);
}

#ifdef _WIN32
constexpr bool kCaseSensitiveNames = false;
#else
constexpr bool kCaseSensitiveNames = true;
#endif

QString name_filters(const std::string& filter) {
  QStringList filters;
  for (const DialogFilter& choice : parse_dialog_filter(filter, kCaseSensitiveNames)) {
    filters << q(name_filter_text(choice));
  }
  return filters.join(";;");
}

}  // namespace

void QtHost::message_box(const std::string& text, const std::string& title, MessageIcon icon) {
  if (message_hook) {
    message_hook(text, title, icon);
    return;
  }
  QMessageBox::Icon box_icon = QMessageBox::Critical;
  if (icon == MessageIcon::kInformation) box_icon = QMessageBox::Information;
  if (icon == MessageIcon::kExclamation) box_icon = QMessageBox::Warning;
  QMessageBox box(box_icon, q(title), q(text), QMessageBox::Ok, parent_);
  box.exec();
}

void QtHost::process_events() {
  if (before_events) before_events();
  QCoreApplication::processEvents();
}

void QtHost::beep() {
  QApplication::beep();
}

std::string QtHost::open_file_dialog(const std::string& filter) {
  if (open_dialog_hook) return open_dialog_hook(filter);
  return file_dialog(false, filter).path;
}

std::string QtHost::save_file_dialog(const std::string& filter) {
  return save_file_choice(filter).path;
}

SaveAnswer QtHost::save_file_choice(const std::string& filter) {
  if (save_choice_hook) return save_choice_hook(filter);
  if (save_dialog_hook) return {save_dialog_hook(filter), 0};
  return file_dialog(true, filter);
}

SaveAnswer QtHost::file_dialog(bool save, const std::string& filter) {
  const std::string kind = save ? "SAVE" : "OPEN";
  const QString filters = name_filters(filter);
  std::vector<std::string> choices;
  for (const QString& choice : filters.split(";;")) choices.push_back(choice.toStdString());
  const auto remembered = [&](const std::string& key) {
    return dialog_store_ ? dialog_store_->get(kSettingsApp, kPanelSection, key) : std::string();
  };
  const DialogStart start =
      dialog_start(remembered(dialog_folder_key(kind)), remembered(dialog_filter_key(kind)),
                   choices, QDir::currentPath().toStdString(),
                   [](const std::string& folder) { return QFileInfo(q(folder)).isDir(); });
  QString selected = q(start.filter);
  const QString path =
      save ? QFileDialog::getSaveFileName(parent_, "Save", q(start.folder), filters, &selected)
           : QFileDialog::getOpenFileName(parent_, "Open", q(start.folder), filters, &selected);
  if (!path.isEmpty() && dialog_store_ != nullptr) {
    dialog_store_->save(kSettingsApp, kPanelSection, dialog_folder_key(kind),
                        QFileInfo(path).absolutePath().toStdString());
    dialog_store_->save(kSettingsApp, kPanelSection, dialog_filter_key(kind),
                        selected.toStdString());
  }
  const auto chosen = std::find(choices.begin(), choices.end(), selected.toStdString());
  return {QDir::toNativeSeparators(path).toStdString(),
          chosen == choices.end() ? 0 : static_cast<std::size_t>(chosen - choices.begin())};
}

bool QtHost::start_program(const std::string& command_line, bool /*minimized*/) {
  // A minimised start is the original platform's habit; desktops here
  // place new windows themselves.
#ifdef _WIN32
  constexpr bool kLookUpOnPath = false;
#else
  constexpr bool kLookUpOnPath = true;
#endif
  const LaunchCommand launch = resolve_launch(
      command_line, [](const std::string& path) { return QFileInfo(q(path)).isFile(); },
      [](const std::string& name) { return QStandardPaths::findExecutable(q(name)).toStdString(); },
      kLookUpOnPath);
  if (launch.program.empty()) return false;
  QStringList arguments;
  for (const std::string& argument : launch.arguments) arguments << q(argument);
  return QProcess::startDetached(q(launch.program), arguments);
}

std::unique_ptr<ToolProcess> QtHost::start_tool(const std::string& command,
                                                const std::string& argument,
                                                const std::string& folder) {
  return QtToolProcess::start(tool_launch(command, argument), folder);
}

bool QtHost::start_detached(const std::string& command, const std::string& argument) {
  return start_detached_program(tool_launch(command, argument));
}

bool QtHost::open_url(const std::string& url) {
  if (url_hook) return url_hook(url);
  return QDesktopServices::openUrl(QUrl(q(url)));
}

std::string QtHost::current_folder() const {
  return QDir::toNativeSeparators(QDir::currentPath()).toStdString();
}

}  // namespace zenta

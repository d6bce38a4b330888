// Files from the desktop: the panel's file argument and one local file
// dropped onto the main window.
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include "panel/ui/main_window.h"

namespace zenta {

namespace {

// The path of the one local file the drop carries; empty for anything else
// (text, links, several files), which the window does not take.
QString dropped_file(const QMimeData* data) {
  if (data == nullptr || !data->hasUrls()) return {};
  const QList<QUrl> urls = data->urls();
  if (urls.size() != 1 || !urls.front().isLocalFile()) return {};
  return urls.front().toLocalFile();
}

}  // namespace

PanelArguments panel_arguments(const QStringList& arguments) {
  PanelArguments result;
  const QStringList files = arguments.mid(1);
  for (const QString& argument : files) {
    if (argument.startsWith('-')) {
      result.error = "unknown option " + argument + " (zenta-panel [FILE])";
      return result;
    }
  }
  if (files.size() > 1) {
    result.error = "one file at a time (zenta-panel [FILE])";
    return result;
  }
  if (files.isEmpty()) return result;
  // A desktop may hand over a file address instead of a path.
  const QUrl url(files.front());
  const QString path = url.isLocalFile() ? url.toLocalFile() : files.front();
  // The HEX file is derived from the target's path; a relative one would
  // change meaning with the current folder.
  result.file = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
  return result;
}

bool MainWindow::open_desktop_file(const QString& path) {
  if (path.isEmpty() || form_.view().busy) return false;
  bool opened = false;
  const std::string file = path.toStdString();
  run([this, file, &opened] { opened = form_.open_file(file); });
  return opened;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  // While an operation runs the file button is disabled; so is the drop.
  if (!form_.view().busy && !dropped_file(event->mimeData()).isEmpty()) {
    event->acceptProposedAction();
  }
}

void MainWindow::dropEvent(QDropEvent* event) {
  const QString path = dropped_file(event->mimeData());
  if (path.isEmpty() || form_.view().busy) return;
  event->acceptProposedAction();
  open_desktop_file(QDir::toNativeSeparators(path));
}

}  // namespace zenta

#pragma once
// The buffer viewers DATAVIEW (program words) and EEVIEW (EEPROM bytes): a
// table over the form's BufferViewModel. The header row and the label
// column are the table's own fixed header and row labels.
#include <QAbstractTableModel>
#include <QWidget>
#include <vector>

#include "image/buffer_view.h"
#include "image/viewer_layout.h"

class QTableView;
class QPushButton;

namespace zenta {

class BufferTableModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  explicit BufferTableModel(const BufferViewModel& view, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // Tells the table what changed since the last refresh: a new build
  // (labels) resets it, changed cells repaint. Comparing the snapshot is a
  // few microseconds, and only runs when the view's revision moved, so it
  // may run at every render of the panel.
  void refresh();

 private:
  void take_snapshot();

  const BufferViewModel& view_;
  std::vector<std::int32_t> shown_;
  int shown_labelled_rows_ = -1;
  std::uint64_t shown_revision_ = 0;
};

class BufferViewer : public QWidget {
  Q_OBJECT
 public:
  // Builds the view's headers and labels (the window's load) with
  // labelled_rows labelled rows.
  BufferViewer(BufferViewModel& view, const ViewerGeometry& geometry, const char* name,
               const char* caption, int labelled_rows, QWidget* parent);

  void refresh() { model_->refresh(); }
  QTableView* grid() const { return grid_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  BufferViewModel& view_;
  const ViewerGeometry& geometry_;
  BufferTableModel* model_;
  QTableView* grid_;
  QPushButton* exit_button_ = nullptr;
  int grid_width_ = 0;
};

}  // namespace zenta

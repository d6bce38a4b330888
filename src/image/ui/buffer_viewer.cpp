#include "image/ui/buffer_viewer.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <algorithm>

#include "platform/widgets.h"

namespace zenta {

BufferTableModel::BufferTableModel(const BufferViewModel& view, QObject* parent)
    : QAbstractTableModel(parent), view_(view) {
  take_snapshot();
}

int BufferTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : view_.rows() - 1;
}

int BufferTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : view_.columns() - 1;
}

QVariant BufferTableModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  return QString::fromStdString(view_.cell(index.row() + 1, index.column() + 1));
}

QVariant BufferTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role == Qt::TextAlignmentRole) {
    return QVariant::fromValue(orientation == Qt::Vertical ? Qt::AlignRight | Qt::AlignVCenter
                                                           : Qt::AlignLeft | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  const std::string text =
      orientation == Qt::Horizontal ? view_.cell(0, section + 1) : view_.cell(section + 1, 0);
  return QString::fromStdString(text);
}

void BufferTableModel::take_snapshot() {
  const int rows = view_.rows() - 1;
  const int columns = view_.columns() - 1;
  shown_.resize(static_cast<std::size_t>(rows * columns));
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      shown_[static_cast<std::size_t>(r * columns + c)] = view_.value(r + 1, c + 1);
    }
  }
  shown_labelled_rows_ = view_.labelled_rows();
  shown_revision_ = view_.revision();
}

void BufferTableModel::refresh() {
  if (view_.revision() == shown_revision_) return;
  if (view_.labelled_rows() != shown_labelled_rows_) {
    beginResetModel();
    take_snapshot();
    endResetModel();
    return;
  }
  const int rows = view_.rows() - 1;
  const int columns = view_.columns() - 1;
  int first = -1;
  int last = -1;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      auto& shown = shown_[static_cast<std::size_t>(r * columns + c)];
      const std::int32_t value = view_.value(r + 1, c + 1);
      if (shown == value) continue;
      shown = value;
      if (first < 0) first = r;
      last = r;
    }
  }
  shown_revision_ = view_.revision();
  if (first >= 0) emit dataChanged(index(first, 0), index(last, columns - 1), {Qt::DisplayRole});
}

BufferViewer::BufferViewer(BufferViewModel& view, const ViewerGeometry& geometry, const char* name,
                           const char* caption, int labelled_rows, QWidget* parent)
    : QWidget(parent, Qt::Window), view_(view), geometry_(geometry) {
  setObjectName(name);
  setWindowTitle(caption);
  view_.build(labelled_rows);

  model_ = new BufferTableModel(view_, this);
  grid_ = new QTableView(this);
  grid_->setObjectName("DataGrid1");
  grid_->setModel(model_);
  grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid_->setWordWrap(false);
  grid_->setTextElideMode(Qt::ElideNone);
  grid_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  grid_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  grid_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);

  // The twips sizes are the least; a font that needs more gets more.
  const QFontMetrics metrics(grid_->font());
  const int row_height = std::max(px(geometry.row_height), metrics.height() + 4);
  // Labels are right-aligned; their blanks need no room either.
  const int label_width =
      std::max(px(geometry.label_column_width),
               metrics.horizontalAdvance(QString(geometry.cell_digits, QChar('D'))) + 10);
  // A cell's text ends in a blank that needs no room either; the table keeps
  // three pixels either side of the digits.
  const QString digits(geometry.cell_digits, QChar('D'));
  const int data_width =
      std::max(px(geometry.data_column_width), metrics.horizontalAdvance(digits) + 7);

  QHeaderView* columns = grid_->horizontalHeader();
  columns->setMinimumSectionSize(1);
  columns->setSectionResizeMode(QHeaderView::Fixed);
  columns->setDefaultSectionSize(data_width);
  columns->setFixedHeight(row_height);
  QHeaderView* rows = grid_->verticalHeader();
  rows->setMinimumSectionSize(1);
  rows->setSectionResizeMode(QHeaderView::Fixed);
  rows->setDefaultSectionSize(row_height);
  rows->setFixedWidth(label_width);

  const int frame = 2 * grid_->frameWidth();
  const int scroll_bar = grid_->verticalScrollBar()->sizeHint().width();
  const int content_width = label_width + 16 * data_width + scroll_bar + frame;
  grid_width_ = std::max(px(geometry.grid_width), content_width);

  // The window width follows the grid; the EEPROM window trims the
  // grid's empty right margin, but never into its cells, and opens no
  // narrower than its client size.
  const ViewerLayout layout = viewer_layout(geometry, twips(grid_width_), 0);
  const int opening_width = geometry.has_exit_button ? 0 : px(geometry.client_width);
  setFixedWidth(std::max({px(layout.window_width), content_width, opening_width}));

  if (geometry.has_exit_button) {
    exit_button_ = make_button(this, "EXITButton", "EXIT", "Exit Program", {0, 0, 70, 28});
    connect(exit_button_, &QPushButton::clicked, this, &QWidget::close);
  }
  // Rows past the client height scroll.
  resize(width(), px(geometry.client_height));
  setMinimumHeight(px(1500));
}

void BufferViewer::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const ViewerLayout layout = viewer_layout(geometry_, twips(width()), twips(height()));
  int grid_height = px(layout.grid_height);
  if (exit_button_) {
    exit_button_->move(px(layout.exit_left), px(layout.exit_top));
    // The grid stops above the EXIT button, so no cell hides behind it.
    grid_height = std::max(0, std::min(grid_height, px(layout.exit_top) - 4));
  }
  // A window trimmed narrower than the grid cuts off only its empty margin.
  grid_->setGeometry(0, 0, std::min(grid_width_, width()), grid_height);
}

void BufferViewer::closeEvent(QCloseEvent* event) {
  view_.unload();
  QWidget::closeEvent(event);
}

}  // namespace zenta

#include "image/buffer_view.h"

#include <algorithm>

#include "common/number_text.h"

namespace zenta {

namespace {
constexpr int kDataColumns = 16;
constexpr int kProgramViewRows = 515;
constexpr int kEepromViewRows = 17;
}  // namespace

BufferViewModel::BufferViewModel(int rows, int label_width, bool words)
    : rows_(rows),
      label_width_(label_width),
      words_(words),
      values_(static_cast<std::size_t>((rows - 1) * kDataColumns), -1) {}

void BufferViewModel::build(int labelled_rows) {
  // A newly loaded window starts with empty cells; only a fill writes them.
  std::fill(values_.begin(), values_.end(), -1);
  labelled_rows_ = std::clamp(labelled_rows, 0, rows_ - 1);
  loaded_ = true;
  ++revision_;
}

std::string BufferViewModel::cell(int row, int column) const {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns()) return {};
  if (row == 0) return column == 0 ? std::string() : "+" + hex_text(column - 1);
  if (column == 0) {
    if (row > labelled_rows_) return {};
    const std::string label = hex_text((row - 1) * kDataColumns);
    return std::string(static_cast<std::size_t>(std::max(0, label_width_ - int(label.size()))),
                       ' ') +
           label;
  }
  const std::int32_t v = value(row, column);
  if (v < 0) return {};
  if (words_) return hex_byte(v >> 8) + hex_byte(v) + " ";
  return hex_byte(v) + " ";
}

void BufferViewModel::set_value(int row, int column, std::int32_t value) {
  if (row < 1 || row >= rows_ || column < 1 || column > kDataColumns) return;
  auto& cell = values_[static_cast<std::size_t>((row - 1) * kDataColumns + column - 1)];
  if (cell == value) return;
  cell = value;
  ++revision_;
}

std::int32_t BufferViewModel::value(int row, int column) const {
  if (row < 1 || row >= rows_ || column < 1 || column > kDataColumns) return -1;
  return values_[static_cast<std::size_t>((row - 1) * kDataColumns + column - 1)];
}

BufferViewModel make_program_view() {
  return BufferViewModel(kProgramViewRows, 5, true);
}

BufferViewModel make_eeprom_view() {
  return BufferViewModel(kEepromViewRows, 3, false);
}

void FILL_PROG_VIEW(BufferViewModel& view, const ProgrammerState& state) {
  const int rows = state.ProgramSize / kDataColumns;
  if (!view.loaded()) view.build(rows);
  // The grid has room for 514 rows and the buffer for 625; the largest
  // device needs 512, so neither bound cuts a catalogue device short.
  const int last_row = std::min({rows, view.rows() - 1, kProgramBufferWords / kDataColumns});
  for (int r = 0; r < last_row; ++r) {
    for (int c = 0; c < kDataColumns; ++c) {
      view.set_value(r + 1, c + 1, state.word(r * kDataColumns + c));
    }
  }
}

void FILL_EE_VIEW(BufferViewModel& view, const ProgrammerState& state) {
  if (!view.loaded()) view.build(kEepromViewRows - 1);
  for (int r = 0; r < kEepromViewRows - 1; ++r) {
    for (int c = 0; c < kDataColumns; ++c) {
      view.set_value(r + 1, c + 1, state.EepromBuffer[static_cast<std::size_t>(r * 16 + c)]);
    }
  }
}

}  // namespace zenta

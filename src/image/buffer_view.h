#pragma once
// Contents of the two buffer viewers, DATAVIEW (program words) and EEVIEW
// (EEPROM bytes). A viewer holds a snapshot taken by its fill procedure, so
// it shows the buffer as it was at the last fill, as the panel always has.
// Row labels are made when the window is built and stay until it is rebuilt.
#include <cstdint>
#include <string>
#include <vector>

#include "image/programmer_state.h"

namespace zenta {

class BufferViewModel {
 public:
  // rows and columns include the header row and the label column.
  BufferViewModel(int rows, int label_width, bool words);

  // Builds headers and labels (the window's load). labelled_rows rows get a
  // label; the others stay unlabelled until the next build.
  void build(int labelled_rows);
  void unload() { loaded_ = false; }
  bool loaded() const { return loaded_; }

  int rows() const { return rows_; }
  int columns() const { return 17; }
  int labelled_rows() const { return labelled_rows_; }
  // Text of a cell; row 0 is the header row and column 0 the label column.
  std::string cell(int row, int column) const;

  // Snapshot value of data cell (row >= 1, column >= 1); -1 when never filled.
  void set_value(int row, int column, std::int32_t value);
  std::int32_t value(int row, int column) const;
  // Counts the changes of labels and cell values, so a window compares its
  // snapshot only when there is something new to show.
  std::uint64_t revision() const { return revision_; }

 private:
  int rows_;
  int label_width_;
  bool words_;
  bool loaded_ = false;
  int labelled_rows_ = 0;
  std::vector<std::int32_t> values_;
  std::uint64_t revision_ = 0;
};

// DATAVIEW: 515 rows, labels right-aligned in five characters.
BufferViewModel make_program_view();
// EEVIEW: 17 rows, labels right-aligned in three characters.
BufferViewModel make_eeprom_view();

// FILL_PROG_VIEW: rows 1..ProgramSize/16 from ProgramBuffer; loads the view
// first when it is not loaded.
void FILL_PROG_VIEW(BufferViewModel& view, const ProgrammerState& state);
// FILL_EE_VIEW: all 16 rows from EepromBuffer.
void FILL_EE_VIEW(BufferViewModel& view, const ProgrammerState& state);

}  // namespace zenta

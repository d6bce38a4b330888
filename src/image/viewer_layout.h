#pragma once
// Sizes of the two buffer viewer windows, in twips, and their resize rules.
// The grids grow rows and columns to fit their font where the twips sizes
// are too small for it; the rules below still place the grid and button.
namespace zenta {

struct ViewerGeometry {
  int grid_width;
  int label_column_width;
  int data_column_width;
  int row_height;
  int client_width;  // initial client size
  int client_height;
  bool has_exit_button;  // DATAVIEW has one; EEVIEW closes by its frame
  int cell_digits;       // hexadecimal digits of a cell: a word or a byte
};

// DATAVIEW: program words.
inline constexpr ViewerGeometry kDataViewGeometry{9850, 600, 550, 200, 9585, 6825, true, 4};
// EEVIEW: EEPROM bytes.
inline constexpr ViewerGeometry kEepromViewGeometry{6500, 400, 350, 200, 6465, 3465, false, 2};

struct ViewerLayout {
  int grid_height;
  int window_width;
  int exit_top;  // meaningful only with an EXIT button
  int exit_left;
};

// The resize rule for a window of outer width and height W and H. A window
// too low for its rule gets a grid of height 0 rather than a negative one.
ViewerLayout viewer_layout(const ViewerGeometry& geometry, int width_twips, int height_twips);

}  // namespace zenta

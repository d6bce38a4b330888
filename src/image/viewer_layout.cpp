#include "image/viewer_layout.h"

#include <algorithm>

namespace zenta {

ViewerLayout viewer_layout(const ViewerGeometry& geometry, int width_twips, int height_twips) {
  ViewerLayout layout{};
  if (geometry.has_exit_button) {
    // DATAVIEW: the window is as wide as the grid and its border.
    layout.grid_height = std::max(0, height_twips - 500);
    layout.window_width = geometry.grid_width + 140;
    layout.exit_top = height_twips - 1000;
    layout.exit_left = width_twips - 1500;
  } else {
    // EEVIEW: the window trims the grid's empty right margin.
    layout.grid_height = std::max(0, height_twips - 400);
    layout.window_width = geometry.grid_width - 400;
  }
  return layout;
}

}  // namespace zenta

// The buffer viewers: which word or byte each edge cell shows, the cells
// outside the grids, the resize rules, and the panel's refills after a read.
#include <gtest/gtest.h>

#include <tuple>

#include "image/buffer_view.h"
#include "image/viewer_layout.h"
#include "panel_rig.h"

namespace zenta::testing {
namespace {

int word_at(int w) {
  return (w * 0x135 + 7) & 0x3FFF;
}
int byte_at(int b) {
  return (b * 29 + 5) & 0xFF;
}
// A value as its cell shows it.
std::string cell(int value, int digits) {
  char text[8];
  std::snprintf(text, sizeof text, "%0*X ", digits, value);
  return text;
}

TEST(BufferViewer, EdgeCellsShowTheirWordOrByte) {
  ProgrammerState state;
  state.ProgramSize = 0x2000;
  for (int w = 0; w < 0x2000; ++w) state.set_word(w, word_at(w));
  for (int b = 0; b < kEepromBufferSize; ++b) {
    state.EepromBuffer[static_cast<std::size_t>(b)] = static_cast<std::uint8_t>(byte_at(b));
  }
  BufferViewModel program = make_program_view();
  BufferViewModel eeprom = make_eeprom_view();
  FILL_PROG_VIEW(program, state);
  FILL_EE_VIEW(eeprom, state);
  EXPECT_EQ(program.rows(), 515);
  EXPECT_EQ(eeprom.rows(), 17);

  // The viewer, the row and column, and the text shown.
  using Cell = std::tuple<const BufferViewModel*, int, int, std::string>;
  const Cell cells[] = {{&program, 0, 1, "+0"},
                        {&program, 0, 16, "+F"},
                        {&program, 1, 0, "    0"},
                        {&program, 512, 0, " 1FF0"},
                        {&program, 1, 1, cell(word_at(0), 4)},
                        {&program, 1, 16, cell(word_at(15), 4)},
                        {&program, 2, 1, cell(word_at(16), 4)},
                        {&program, 512, 1, cell(word_at(0x1FF0), 4)},
                        {&program, 512, 16, cell(word_at(0x1FFF), 4)},
                        {&eeprom, 1, 0, "  0"},
                        {&eeprom, 16, 0, " F0"},
                        {&eeprom, 1, 1, cell(byte_at(0), 2)},
                        {&eeprom, 1, 16, cell(byte_at(15), 2)},
                        {&eeprom, 2, 16, cell(byte_at(0x1F), 2)},
                        {&eeprom, 16, 1, cell(byte_at(0xF0), 2)},
                        {&eeprom, 16, 16, cell(byte_at(0xFF), 2)}};
  for (const auto& [view, row, column, text] : cells) {
    EXPECT_EQ(view->cell(row, column), text) << row << "," << column;
  }
  // The corner, the rows past the image and the cells outside the grids are empty.
  const std::tuple<const BufferViewModel*, int, int> empty[] = {
      {&program, 0, 0},  {&program, 513, 0}, {&program, 513, 1}, {&program, -1, 0},
      {&program, -1, 1}, {&program, 515, 0}, {&program, 515, 1}, {&program, 1, 17},
      {&program, 0, 17}, {&program, 1, -1},  {&eeprom, 17, 0},   {&eeprom, 17, 1},
      {&eeprom, -1, 0},  {&eeprom, 16, 17},
  };
  for (const auto& [view, row, column] : empty) {
    EXPECT_EQ(view->cell(row, column), "") << row << "," << column;
  }
}

// An image larger than the grid fills every row the grid has and no more;
// labels never go past the grid either.
TEST(BufferViewer, TheGridBoundsAnImageLargerThanIt) {
  ProgrammerState state;
  state.ProgramSize = kProgramBufferWords;
  for (int w = 0; w < kProgramBufferWords; ++w) state.set_word(w, word_at(w));
  BufferViewModel view = make_program_view();
  FILL_PROG_VIEW(view, state);
  EXPECT_EQ(view.labelled_rows(), 514);
  EXPECT_EQ(view.cell(514, 0), " 2010");
  EXPECT_EQ(view.cell(514, 16), cell(word_at(514 * 16 - 1), 4));
  EXPECT_EQ(view.cell(515, 16), "");
}

TEST(BufferViewer, ResizeRulesPlaceGridAndButton) {
  // The geometry and window size; grid height, window width, EXIT top and left.
  using Row = std::tuple<const ViewerGeometry*, int, int, int, int, int, int>;
  const Row rows[] = {
      {&kDataViewGeometry, 9800, 6000, 5500, 9990, 5000, 8300},
      {&kDataViewGeometry, 12000, 8000, 7500, 9990, 7000, 10500},
      {&kDataViewGeometry, 3000, 400, 0, 9990, -600, 1500},
      {&kEepromViewGeometry, 6600, 3900, 3500, 6100, 0, 0},
      {&kEepromViewGeometry, 6600, 300, 0, 6100, 0, 0},
  };
  for (const auto& [geometry, width, height, grid_height, window_width, exit_top, exit_left] :
       rows) {
    const ViewerLayout got = viewer_layout(*geometry, width, height);
    EXPECT_EQ(std::tuple(got.grid_height, got.window_width), std::tuple(grid_height, window_width))
        << width << "x" << height;
    if (!geometry->has_exit_button) continue;
    EXPECT_EQ(std::tuple(got.exit_top, got.exit_left), std::tuple(exit_top, exit_left));
  }
}

// A read starts its buffer at word 0 whatever the START box held, and each
// EEPROM read refills the open viewer with what the chip holds now.
TEST(PanelReads, StartBoxAndEepromViewFollowEachRead) {
  PanelRig rig("16F877A", 1);
  rig.form.LastAddrText_Change("10");
  rig.form.StartAddrText_Change("20");
  rig.unit.set_program_word(0, 0x2805);
  EXPECT_TRUE(rig.form.READ_Click().ok());
  EXPECT_EQ(rig.form.view().StartAddrText, "0");
  EXPECT_EQ(rig.state.word(0), 0x2805);

  for (const int value : {0x0A, 0xC3}) {
    SCOPED_TRACE(value);
    rig.unit.set_eeprom_byte(0x1F, value);
    rig.unit.set_eeprom_byte(0xFF, value ^ 0xFF);
    EXPECT_TRUE(rig.form.READ_EEPROM_Click().ok());
    EXPECT_EQ(rig.eeprom_view.cell(2, 16), cell(value, 2));
    EXPECT_EQ(rig.eeprom_view.cell(16, 16), cell(value ^ 0xFF, 2));
  }
}

// WRITE without loaded data says so, is refused, and sends nothing.
TEST(PanelReads, WriteWithoutDataIsRefused) {
  for (const bool exact : {true, false}) {
    PanelRig rig("16F877A", 1, exact);
    EXPECT_TRUE(rig.form.WriteButton_Click().refused) << exact;
    EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"I have no data"});
    EXPECT_TRUE(rig.unit.trace().empty());
  }
}

}  // namespace
}  // namespace zenta::testing

// Reading a chip back: program memory and data EEPROM, and the buffer view
// commands that show what was read.
#include <algorithm>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "panel/main_form.h"
#include "programming/chip_protocol.h"

namespace zenta {

std::optional<std::int16_t> MainForm::read_end_address() {
  // The end address must be a 16-bit number whose words lie in
  // ProgramBuffer; anything else is refused before the first packet.
  const auto end = read_hex16(view_.LastAddrText);
  if (end && highest_read_word(*end) < kProgramBufferWords) return end;
  host_.message_box("Last address out of range", "READ ERROR", MessageIcon::kStop);
  running_.refused = true;
  return std::nullopt;
}

void MainForm::READ_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  const auto end = read_end_address();
  if (!end) return;
  set_led(true);
  set_vcc(true);
  read_prog(*end);
  set_vcc(false);
  set_led(false);
  if (host_.window_visible(WindowId::kDataView)) FILL_PROG_VIEW(program_view_, state_);
  // An image read from a chip is shown but is no loaded data to write.
  state_.DataLoaded = 0;
  view_.FilenameTextbox.clear();
  buffer_view_command();
}

void MainForm::READ_PROG() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  const auto end = read_end_address();
  if (!end) return;
  read_prog(*end);
}

void MainForm::read_prog(std::int16_t end_address) {
  StartAddrText_Change("0");
  set_notes("Now Reading", kLightCyan);
  enter_programming_mode(link_);
  const int total = highest_read_word(end_address) + 1;
  auto& buffer = state_.ProgramBuffer;
  const auto& reply = link_.RxBuffer;
  int a = 0;
  do {
    view_.CurrentAddrText = hex_text(a);
    link_.SENDCMD(ICSP_READ_DATA, 4);
    bool reached_end = false;
    for (int n = 0; n < 4 && !reached_end; ++n) {
      buffer[2 * a] = reply[2 * n + 1];
      buffer[2 * a + 1] = reply[2 * n];
      reached_end = ++a == end_address;
    }
    if (reached_end) break;
    link_.SENDCMD(ICSP_INC_ADDR, 0);
    set_progress(std::min(a, total), total);
    yield_to_events();
  } while (a <= end_address);
  view_.CurrentAddrText = hex_text(a);
  leave_programming_mode(link_, LeaveMode::kAfterRead);
  state_.WaitTicks = 0;
  set_progress(0, 0);
  set_notes("Read Complete", kWhite);
}

void MainForm::READ_EEPROM_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  set_led(true);
  set_vcc(true);
  read_ee();
  set_vcc(false);
  set_led(false);
  host_.show_window(WindowId::kEepromView);
  FILL_EE_VIEW(eeprom_view_, state_);
  state_.WaitTicks = 0;
  changed();
}

void MainForm::READ_EE() {
  CommandScope scope(*this);
  if (scope.started()) read_ee();
}

void MainForm::read_ee() {
  set_notes("Now Reading", kLightCyan);
  const int last = state_.EepromLastAddress;
  enter_programming_mode(link_);
  int e = 0;
  bool stopped = false;
  do {
    // Every catalogue device ends on a group boundary inside EepromBuffer;
    // a larger last address stops the read where the buffer ends.
    if (e + 8 > kEepromBufferSize) {
      stopped = true;
      break;
    }
    view_.CurrentAddrText = hex_text(e);
    link_.SENDCMD(ICSP_READ_EE, 8);
    std::copy(link_.RxBuffer.begin(), link_.RxBuffer.begin() + 8, state_.EepromBuffer.begin() + e);
    e += 8;
    link_.SENDCMD(ICSP_INC_ADDR, 0);
  } while (e < last);
  leave_programming_mode(link_, LeaveMode::kAfterRead);
  state_.WaitTicks = 0;
  if (stopped) {
    host_.message_box("EEPROM read stopped at the end of the buffer (address " + hex_text(e) + ")",
                      "READ ERROR", MessageIcon::kStop);
  }
  set_notes("EE Read Complete", kWhite);
}

void MainForm::Buffer_view_Click() {
  buffer_view_command();
}

void MainForm::BUFVIEWButton_Click() {
  buffer_view_command();
  set_notes("Show Read BUFFER", kLavender);
}

void MainForm::buffer_view_command() {
  host_.show_window(WindowId::kDataView);
  FILL_PROG_VIEW(program_view_, state_);
  state_.WaitTicks = 0;
  changed();
}

}  // namespace zenta

// Writing a chip: the WRITE, VERIFY and ERASE commands and the procedures
// they run. Replies are examined only by the verify and the configuration
// read-back; a failed exchange has been reported by the link, and the
// procedure goes on with its next packet.
#include <algorithm>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "panel/main_form.h"
#include "programming/chip_protocol.h"

namespace zenta {

namespace {
constexpr const char* kAddressRangeText = "Last address out of range";
}  // namespace

bool MainForm::write_range_ok(std::int16_t last_address) {
  // The write and the verify after it must stay inside ProgramBuffer
  // (words 0..9999); the word-by-word modes go one word past the last
  // address, so this also refuses a last address whose successor overflows.
  const int highest = std::max(highest_write_word(state_.WriteMode, last_address),
                               highest_verify_word(last_address));
  if (highest < kProgramBufferWords) return true;
  host_.message_box(kAddressRangeText, "WRITE ERROR", MessageIcon::kStop);
  return false;
}

bool MainForm::verify_range_ok(const char* title) {
  // The verify takes LastAddress as it stands; the loader can leave up to
  // 10000 there, whose words still lie in the buffer. Anything larger is
  // refused before the first packet.
  if (highest_verify_word(state_.LastAddress) < kProgramBufferWords) return true;
  host_.message_box(kAddressRangeText, title, MessageIcon::kStop);
  return false;
}

void MainForm::WriteButton_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (state_.WaitTicks != 0) {
    running_.refused = true;
    return;
  }
  if (state_.DataLoaded == 0) {
    host_.message_box("I have no data", "WRITE ERROR", MessageIcon::kStop);
    running_.refused = true;
    return;
  }
  // The last address is checked before the first packet, so a refused
  // write leaves the unit untouched.
  const auto last = read_hex16(view_.LastAddrText);
  if (!last) host_.message_box(kAddressRangeText, "WRITE ERROR", MessageIcon::kStop);
  if (!last || !write_range_ok(*last)) {
    running_.refused = true;
    return;
  }
  set_led(true);
  set_vcc(true);
  state_.LastAddress = *last;
  // Each step runs to its end whatever the one before reported.
  chip_erase();
  write_prog();
  verify_prog();
  write_config();
  set_vcc(false);
  set_led(false);
  set_notes("Write Complete", kLavender);
  link_.SENDCMD(UNIT_MCLR_LEVEL, kMclr5V);
}

void MainForm::WRITE_PROG() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (!write_range_ok(state_.LastAddress)) {
    running_.refused = true;
    return;
  }
  write_prog();
}

void MainForm::write_prog() {
  set_notes("Write", kWhite);
  enter_programming_mode(link_);
  const std::int16_t last = state_.LastAddress;
  const std::string& mode = state_.WriteMode;
  const auto& buffer = state_.ProgramBuffer;
  if (mode == "0") {
    // Rows of eight words from word 0, programmed with one cycle per row;
    // a row of blank words is stepped over without loads or a cycle. A word
    // whose high byte is not a 14-bit value (0x40 or more) is not blank and
    // is sent as it stands.
    const int rows = (highest_write_word(mode, last) + 1) / 8;
    int a = 0;
    int row = 0;
    do {
      view_.CurrentAddrText = hex_text(a);
      int blanks = 0;
      for (int i = 0; i < 8; ++i, ++a) {
        if (state_.word(a) == kBlankWord) {
          ++blanks;
        } else {
          link_.SENDCMD(ICSP_LOAD_DATA, buffer[2 * a + 1], buffer[2 * a]);
        }
        if (i != 7) link_.SENDCMD(ICSP_INC_ADDR, 1);
      }
      if (blanks != 8) {
        link_.SENDCMD(ICSP_BEGIN_PROG_ONLY);
        link_.SENDCMD(ICSP_END_PROG);
      }
      set_progress(++row, rows);
      yield_to_events();
      link_.SENDCMD(ICSP_INC_ADDR, 1);
    } while (a <= last);
  } else if (mode == "1" || mode == "2") {
    // Word by word up to the word after the last address, each with its own
    // cycle: erase/program for mode "1", program-only for mode "2".
    const std::uint8_t cycle = mode == "1" ? ICSP_BEGIN_ERASE_PROG : ICSP_BEGIN_PROG_ONLY;
    const int end = last + 1;
    for (int a = 0; a <= end; ++a) {
      view_.CurrentAddrText = hex_text(a);
      link_.SENDCMD(ICSP_LOAD_DATA, buffer[2 * a + 1], buffer[2 * a]);
      link_.SENDCMD(cycle);
      link_.SENDCMD(ICSP_INC_ADDR, 1);
      set_progress(a + 1, end + 1);
      yield_to_events();
    }
  }
  leave_programming_mode(link_, LeaveMode::kAfterWrite);
  set_progress(0, 0);
  set_notes("Write Complete", kWhite);
}

void MainForm::VerifyButton_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (!verify_range_ok("VERIFY ERROR")) {
    running_.refused = true;
    return;
  }
  set_led(true);
  set_vcc(true);
  verify_prog();
  set_vcc(false);
  set_led(false);
  changed();
}

void MainForm::VERIFY_PROG() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (!verify_range_ok("VERIFY ERROR")) {
    running_.refused = true;
    return;
  }
  verify_prog();
}

void MainForm::verify_prog() {
  set_notes("Verify", kWhite);
  enter_programming_mode(link_);
  const std::int16_t last = state_.LastAddress;
  const int total = highest_verify_word(last) + 1;
  const auto& buffer = state_.ProgramBuffer;
  const auto& reply = link_.RxBuffer;
  int a = 0;
  for (;;) {
    // Four words per read; after a failed exchange the bytes the failed
    // read left are compared as if they had been read.
    link_.SENDCMD(ICSP_READ_DATA, 4);
    bool reached_last = false;
    for (int n = 0; n < 4 && !reached_last; ++n) {
      const int w = a + n;
      if (buffer[2 * w + 1] != reply[2 * n] || buffer[2 * w] != reply[2 * n + 1]) {
        host_.message_box("Verify Data ERROR", "VERIFY ERROR", MessageIcon::kStop);
        leave_programming_mode(link_, LeaveMode::kAfterWrite);
        state_.WaitTicks = 0;
        running_.verify_error = true;
        set_progress(0, 0);
        set_notes("Verify Error", kRed);
        return;
      }
      reached_last = w + 1 == last;
    }
    if (reached_last) break;
    a += 4;
    link_.SENDCMD(ICSP_INC_ADDR, 1);
    set_progress(std::min(a, total), total);
    yield_to_events();
    if (a >= last) break;
  }
  leave_programming_mode(link_, LeaveMode::kAfterWrite);
  set_progress(0, 0);
  set_notes("Verify Complete", kWhite);
}

void MainForm::WRITE_CONFIG() {
  CommandScope scope(*this);
  if (scope.started()) write_config();
}

void MainForm::write_config() {
  const int high = state_.ConfigHigh;
  const int low = state_.ConfigLow;
  if (high < 0 || high > 0xFF || low < 0 || low > 0xFF) {
    // Each byte travels as one packet byte; a wider value has no packet.
    host_.message_box("Configuration word out of range", "WRITE ERROR", MessageIcon::kStop);
    running_.config_error = true;
    set_notes("Config Write Error", kRed);
    return;
  }
  set_notes("Now Reading", kRed);
  enter_programming_mode(link_);
  link_.SENDCMD(ICSP_LOAD_CONFIG, 0x3F, 0xFF);
  // From 0x2000 seven steps reach the configuration word at 0x2007.
  for (int i = 0; i < 7; ++i) link_.SENDCMD(ICSP_INC_ADDR, 0);
  link_.SENDCMD(ICSP_LOAD_DATA, static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low));
  const std::string& mode = state_.WriteMode;
  if (mode == "0" || mode == "1") {
    link_.SENDCMD(ICSP_BEGIN_ERASE_PROG);
  } else if (mode == "2") {
    link_.SENDCMD(ICSP_BEGIN_PROG_ONLY);
    link_.SENDCMD(UNIT_WAIT, 4);
  }
  link_.SENDCMD(UNIT_WAIT, 10);
  link_.SENDCMD(ICSP_READ_DATA, 1);
  const bool written = link_.RxBuffer[0] == high && link_.RxBuffer[1] == low;
  if (!written) host_.message_box("Can't Write to Config", "WRITE ERROR", MessageIcon::kStop);
  leave_programming_mode(link_, LeaveMode::kAfterConfig);
  if (written) {
    set_notes("Config Write Complete", kWhite);
    return;
  }
  state_.WaitTicks = 0;
  running_.config_error = true;
  set_notes("Config Write Error", kRed);
}

void MainForm::ERASEButton_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  set_vcc(true);
  chip_erase();
  set_vcc(false);
  changed();
}

void MainForm::CHIP_ERASE() {
  CommandScope scope(*this);
  if (scope.started()) chip_erase();
}

void MainForm::chip_erase() {
  enter_programming_mode(link_);
  for (const Packet& packet : erase_packets(state_.EraseMode)) send_packet(link_, packet);
  leave_programming_mode(link_, LeaveMode::kAfterRead);
  set_notes("Chip Erase Complete", kWhite);
}

}  // namespace zenta

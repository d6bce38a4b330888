#include "programming/chip_operations.h"

#include <algorithm>

#include "common/colours.h"
#include "common/number_text.h"
#include "link/command_codes.h"
#include "link/unit_controls.h"
#include "programming/chip_protocol.h"
#include "programming/device_id.h"

namespace zenta {

bool ChipOperations::pause() {
  report_.let_events_run();
  return stop_requested();
}

void ChipOperations::set_supply(bool on) {
  if (on || !checked) {
    set_target_supply(link_, on);
    supply_maybe_on_ = on;
  } else {
    // An unplugged unit powers nothing.
    supply_maybe_on_ = !send_retried({UNIT_VCC, 0}) && link_.loss() != LinkLoss::kUnplugged;
  }
  report_.supply(on);
}

bool ChipOperations::send_retried(const std::array<std::uint8_t, 8>& packet) {
  for (int attempt = 0; attempt < (checked ? kExchangeTries : 1); ++attempt) {
    if (attempt > 0 && link_.lost()) break;
    const std::uint64_t before = link_.failures();
    send_packet(link_, packet);
    if (link_.failures() == before) return true;
  }
  return false;
}

void ChipOperations::leave(LeaveMode mode) {
  for (const Packet& packet : leave_packets(mode)) send_retried(packet);
}

void ChipOperations::set_led(bool on) {
  set_unit_led(link_, on);
  report_.led(on);
}

void ChipOperations::WRITE_PROG(const WriteLimits& limits) {
  const int chip_words = limits.chip_words;
  report_.notes("Write", kWhite);
  enter_programming_mode(link_);
  const std::int16_t last = state_.LastAddress;
  const std::string& mode = state_.WriteMode;
  const auto& buffer = state_.ProgramBuffer;
  if (mode == "0") {
    // Rows of eight words from word 0, programmed with one cycle per row;
    // a row of blank words is stepped over without loads or a cycle. A word
    // whose high byte is not a 14-bit value (0x40 or more) is not blank and
    // is sent as it stands.
    const int rows = (highest_write_word(mode, last) + 1) / kRowWords;
    int a = 0;
    int row = 0;
    do {
      report_.current_address(a);
      int blanks = 0;
      for (int i = 0; i < kRowWords; ++i, ++a) {
        if (state_.word(a) == kBlankWord) {
          ++blanks;
        } else {
          link_.SENDCMD(ICSP_LOAD_DATA, buffer[2 * a + 1], buffer[2 * a]);
        }
        if (i != kRowWords - 1) link_.SENDCMD(ICSP_INC_ADDR, 1);
      }
      if (blanks != kRowWords) {
        if (!may_program()) break;
        link_.SENDCMD(ICSP_BEGIN_PROG_ONLY);
        link_.SENDCMD(ICSP_END_PROG);
      }
      report_.progress(++row, rows);
      if (pause()) break;
      link_.SENDCMD(ICSP_INC_ADDR, 1);
      // The counter wraps past the chip's last row onto row 0.
    } while (a <= last && (chip_words == 0 || a < chip_words));
  } else if (mode == "1" || mode == "2") {
    // Word by word up to the word after the last address, each with its own
    // cycle: erase/program for mode "1", program-only for mode "2".
    const std::uint8_t cycle = mode == "1" ? ICSP_BEGIN_ERASE_PROG : ICSP_BEGIN_PROG_ONLY;
    const int end = chip_words > 0 ? std::min(last + 1, chip_words - 1) : last + 1;
    for (int a = 0; a <= end; ++a) {
      report_.current_address(a);
      if (!limits.step_over_blank_words || state_.word(a) != kBlankWord) {
        link_.SENDCMD(ICSP_LOAD_DATA, buffer[2 * a + 1], buffer[2 * a]);
        if (!may_program()) break;
        link_.SENDCMD(cycle);
      }
      link_.SENDCMD(ICSP_INC_ADDR, 1);
      report_.progress(a + 1, end + 1);
      if (pause()) break;
    }
  }
  leave(LeaveMode::kAfterWrite);
  report_.progress(0, 0);
  if (stop_requested()) return report_.notes(kStoppedText, kRed);
  report_.notes("Write Complete", kWhite);
}

VerifyResult ChipOperations::VERIFY_PROG() {
  report_.notes("Verify", kWhite);
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
        const VerifyMismatch mismatch{w, state_.word(w), reply[2 * n] * 256 + reply[2 * n + 1]};
        report_.stop_box("Verify Data ERROR", "VERIFY ERROR");
        leave(LeaveMode::kAfterWrite);
        report_.progress(0, 0);
        report_.notes("Verify Error", kRed);
        return {mismatch};
      }
      reached_last = w + 1 == last;
    }
    if (reached_last) break;
    a += 4;
    link_.SENDCMD(ICSP_INC_ADDR, 1);
    report_.progress(std::min(a, total), total);
    if (pause() || a >= last) break;
  }
  leave(LeaveMode::kAfterWrite);
  report_.progress(0, 0);
  if (stop_requested()) {
    report_.notes(kStoppedText, kRed);
    return {};
  }
  report_.notes("Verify Complete", kWhite);
  return {};
}

ConfigResult ChipOperations::WRITE_CONFIG() {
  const int high = state_.ConfigHigh();
  const int low = state_.ConfigLow();
  ConfigResult result;
  report_.notes("Now Reading", kRed);
  enter_programming_mode(link_);
  step_into_config_space(kConfigWordAddress);
  link_.SENDCMD(ICSP_LOAD_DATA, static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low));
  const std::string& mode = state_.WriteMode;
  if (!may_program()) {
    // The counter or the latch is not what the cycle would need.
  } else if (mode == "0" || mode == "1") {
    link_.SENDCMD(ICSP_BEGIN_ERASE_PROG);
  } else if (mode == "2") {
    link_.SENDCMD(ICSP_BEGIN_PROG_ONLY);
    link_.SENDCMD(UNIT_WAIT, 4);
  }
  link_.SENDCMD(UNIT_WAIT, 10);
  link_.SENDCMD(ICSP_READ_DATA, 1);
  result.read_back = link_.RxBuffer[0] * 256 + link_.RxBuffer[1];
  result.written = link_.RxBuffer[0] == high && link_.RxBuffer[1] == low;
  if (!result.written) report_.stop_box("Can't Write to Config", "WRITE ERROR");
  leave(LeaveMode::kAfterConfig);
  if (result.written) {
    report_.notes("Config Write Complete", kWhite);
    return result;
  }
  report_.notes("Config Write Error", kRed);
  return result;
}

DeviceIdResult ChipOperations::READ_DEVID() {
  report_.notes("Now Reading", kRed);
  // Taken unchecked: after a failed exchange this is whatever the failed
  // read left in the reply buffer.
  const int word = read_config_space(kDeviceIdAddress);
  state_.DeviceId = word;
  DEVID_NAME();
  report_.notes(
      "Device=" + state_.DeviceIdName + " (" + hex_text(word >> 8) + hex_text(word & 0xFF) + ")",
      kWhite);
  return {state_.DeviceId, state_.DeviceIdName};
}

void ChipOperations::step_into_config_space(int address) {
  link_.SENDCMD(ICSP_LOAD_CONFIG, 0x3F, 0xFF);
  for (int a = kConfigSpaceBase; a < address; ++a) link_.SENDCMD(ICSP_INC_ADDR, 0);
}

int ChipOperations::read_config_space(int address) {
  enter_programming_mode(link_);
  step_into_config_space(address);
  link_.SENDCMD(UNIT_WAIT, 10);
  link_.SENDCMD(ICSP_READ_DATA, 1);
  const int word = link_.RxBuffer[0] * 256 + link_.RxBuffer[1];
  leave(LeaveMode::kAfterWrite);
  return word;
}

void ChipOperations::DEVID_NAME() {
  state_.DeviceIdName = device_id_name(static_cast<std::uint16_t>(state_.DeviceId));
}

ReadResult ChipOperations::READ_PROG(std::int16_t end_address) {
  report_.start_address(0);
  report_.notes("Now Reading", kLightCyan);
  enter_programming_mode(link_);
  const int total = highest_read_word(end_address) + 1;
  auto& buffer = state_.ProgramBuffer;
  const auto& reply = link_.RxBuffer;
  int a = 0;
  do {
    report_.current_address(a);
    link_.SENDCMD(ICSP_READ_DATA, 4);
    bool reached_end = false;
    for (int n = 0; n < 4 && !reached_end; ++n) {
      buffer[2 * a] = reply[2 * n + 1];
      buffer[2 * a + 1] = reply[2 * n];
      reached_end = ++a == end_address;
    }
    if (reached_end) break;
    link_.SENDCMD(ICSP_INC_ADDR, 0);
    report_.progress(std::min(a, total), total);
    if (pause()) break;
  } while (a <= end_address);
  report_.current_address(a);
  leave(LeaveMode::kAfterRead);
  report_.progress(0, 0);
  if (stop_requested()) {
    report_.notes(kStoppedText, kRed);
    return {a, true};
  }
  report_.notes("Read Complete", kWhite);
  return {a, false};
}

ReadResult ChipOperations::READ_EE() {
  report_.notes("Now Reading", kLightCyan);
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
    report_.current_address(e);
    link_.SENDCMD(ICSP_READ_EE, 8);
    std::copy(link_.RxBuffer.begin(), link_.RxBuffer.begin() + 8, state_.EepromBuffer.begin() + e);
    e += 8;
    link_.SENDCMD(ICSP_INC_ADDR, 0);
    // The EEPROM read lets no events run, but an interrupted program
    // still ends it between groups.
    if (stop_requested()) {
      stopped = true;
      break;
    }
  } while (e < last);
  leave(LeaveMode::kAfterRead);
  if (stop_requested()) {
    report_.notes(kStoppedText, kRed);
    return {e, true};
  }
  if (stopped) {
    report_.stop_box("EEPROM read stopped at the end of the buffer (address " + hex_text(e) + ")",
                     "READ ERROR");
  }
  report_.notes("EE Read Complete", kWhite);
  return {e, stopped};
}

void ChipOperations::CHIP_ERASE() {
  erase(erase_packets(state_.EraseMode));
}

void ChipOperations::erase_with(EraseAlgorithm algorithm) {
  erase(erase_packets(algorithm));
}

void ChipOperations::erase(const std::vector<Packet>& packets) {
  enter_programming_mode(link_);
  for (const Packet& packet : packets) {
    if (packet[0] != ICSP_LOAD_DATA && !may_program()) break;
    send_packet(link_, packet);
  }
  leave(LeaveMode::kAfterRead);
  report_.notes("Chip Erase Complete", kWhite);
}

}  // namespace zenta

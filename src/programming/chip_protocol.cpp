#include "programming/chip_protocol.h"

#include <algorithm>

namespace zenta {

void send_packet(UnitLink& link, const Packet& p) {
  link.SENDCMD(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
}

void enter_programming_mode(UnitLink& link) {
  link.SENDCMD(UNIT_MCLR_LEVEL, kMclr0V);
  link.SENDCMD(UNIT_PGM_LINES, 1);
  link.SENDCMD(UNIT_MCLR_LEVEL, kMclrVpp);
}

std::array<Packet, 2> leave_packets(LeaveMode mode) {
  switch (mode) {
    case LeaveMode::kAfterWrite:
      return {{{UNIT_MCLR_LEVEL, kMclr5V}, {UNIT_PGM_LINES, 1}}};
    case LeaveMode::kAfterRead:
      return {{{UNIT_MCLR_LEVEL, kMclr5V}, {UNIT_PGM_LINES, 2}}};
    case LeaveMode::kAfterConfig:
      break;
  }
  return {{{UNIT_MCLR_LEVEL, kMclr0V}, {UNIT_PGM_LINES, 1}}};
}

void leave_programming_mode(UnitLink& link, LeaveMode mode) {
  for (const Packet& packet : leave_packets(mode)) send_packet(link, packet);
}

std::vector<Packet> erase_packets(const std::string& erase_mode) {
  const Packet load_blank = {ICSP_LOAD_DATA, 0x3F, 0xFF};
  if (erase_mode == "0") {
    return {load_blank, {ICSP_BULK_SETUP1}, {ICSP_BEGIN_ERASE_PROG}, {ICSP_BULK_SETUP1}};
  }
  if (erase_mode == "1") return {{ICSP_CHIP_ERASE}};
  if (erase_mode == "2") return {load_blank, {ICSP_BULK_ERASE_PROG}, {ICSP_BEGIN_ERASE_PROG}};
  if (erase_mode == "3") return {load_blank, {ICSP_BULK_ERASE_PROG}};
  return {};
}

int highest_write_word(const std::string& write_mode, std::int16_t last_address) {
  if (write_mode == "0") return last_address < 0 ? 7 : (last_address | 7);
  if (write_mode == "1" || write_mode == "2") return last_address + 1;
  return -1;
}

int highest_verify_word(std::int16_t last_address) {
  return last_address >= 1 ? last_address - 1 : 3;
}

int highest_read_word(std::int16_t end_address) {
  return end_address >= 1 ? end_address - 1 : 3;
}

}  // namespace zenta

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

namespace {

constexpr EraseAlgorithm kEraseCodes[] = {EraseAlgorithm::kBulkSetup, EraseAlgorithm::kChipErase,
                                          EraseAlgorithm::kBulkBegin, EraseAlgorithm::kBulk};
constexpr WriteAlgorithm kWriteCodes[] = {WriteAlgorithm::kRows, WriteAlgorithm::kEraseProgram,
                                          WriteAlgorithm::kProgramOnly};

template <typename Algorithm, std::size_t N>
std::optional<Algorithm> by_code(const std::string& code, const Algorithm (&codes)[N]) {
  if (code.size() != 1 || code[0] < '0' || code[0] >= static_cast<char>('0' + N)) return {};
  return codes[code[0] - '0'];
}

template <typename Algorithm, std::size_t N>
std::string code_of(Algorithm algorithm, const Algorithm (&codes)[N]) {
  for (std::size_t i = 0; i < N; ++i) {
    if (codes[i] == algorithm) return std::string(1, static_cast<char>('0' + i));
  }
  return "";
}

}  // namespace

std::optional<EraseAlgorithm> erase_algorithm(const std::string& erase_mode) {
  return by_code(erase_mode, kEraseCodes);
}

std::optional<WriteAlgorithm> write_algorithm(const std::string& write_mode) {
  return by_code(write_mode, kWriteCodes);
}

std::string erase_code(EraseAlgorithm erase) {
  return code_of(erase, kEraseCodes);
}

std::string write_code(WriteAlgorithm write) {
  return code_of(write, kWriteCodes);
}

std::vector<Packet> erase_packets(EraseAlgorithm erase) {
  const Packet load_blank = {ICSP_LOAD_DATA, 0x3F, 0xFF};
  switch (erase) {
    case EraseAlgorithm::kBulkSetup:
      return {load_blank, {ICSP_BULK_SETUP1}, {ICSP_BEGIN_ERASE_PROG}, {ICSP_BULK_SETUP1}};
    case EraseAlgorithm::kChipErase:
      return {{ICSP_CHIP_ERASE}};
    case EraseAlgorithm::kBulkBegin:
      return {load_blank, {ICSP_BULK_ERASE_PROG}, {ICSP_BEGIN_ERASE_PROG}};
    case EraseAlgorithm::kBulk:
      break;
  }
  return {load_blank, {ICSP_BULK_ERASE_PROG}};
}

std::vector<Packet> erase_packets(const std::string& erase_mode) {
  const auto erase = erase_algorithm(erase_mode);
  return erase ? erase_packets(*erase) : std::vector<Packet>{};
}

int highest_write_word(const std::string& write_mode, std::int16_t last_address) {
  if (write_mode == "0") return last_address < 0 ? kRowWords - 1 : (last_address | (kRowWords - 1));
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

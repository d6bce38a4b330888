#pragma once
// Packet sequences shared by the chip operations: entering and leaving
// programming mode, the erase procedures, and the word ranges the write and
// the verify touch, so that an operation can be checked against the buffer
// before its first packet.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devices/chip_description.h"
#include "link/command_codes.h"
#include "link/unit_link.h"

namespace zenta {

using Packet = std::array<std::uint8_t, 8>;

// One exchange; the reply lands in the link's RxBuffer.
void send_packet(UnitLink& link, const Packet& packet);

// MCLR to 0 V, programming lines to mode 1, MCLR to Vpp.
void enter_programming_mode(UnitLink& link);
// MCLR to 5 V (0 V after a configuration write), then the programming lines
// to the mode the next state of the unit needs.
std::array<Packet, 2> leave_packets(LeaveMode mode);
void leave_programming_mode(UnitLink& link, LeaveMode mode);

// The erase and write procedures of the catalogue's codes ("0" to "3",
// "0" to "2"), and the codes of an algorithm; nullopt for a code no entry has.
std::optional<EraseAlgorithm> erase_algorithm(const std::string& erase_mode);
std::optional<WriteAlgorithm> write_algorithm(const std::string& write_mode);
std::string erase_code(EraseAlgorithm erase);
std::string write_code(WriteAlgorithm write);

// Target commands of an erase procedure; none for a mode that no device has.
std::vector<Packet> erase_packets(EraseAlgorithm erase);
std::vector<Packet> erase_packets(const std::string& erase_mode);

// Highest program word the write procedure of `write_mode` sends for this
// last address: the word after it for the word-by-word modes, the end of
// its row of eight for the row mode, -1 when the mode writes nothing.
// Words the row-programming chips latch before one programming cycle.
inline constexpr int kRowWords = 8;

int highest_write_word(const std::string& write_mode, std::int16_t last_address);
// Highest program word the verify compares: the one before the last
// address, or the first group of four when the last address is 0 or less.
int highest_verify_word(std::int16_t last_address);
// Highest program word the program read stores for an end address.
int highest_read_word(std::int16_t end_address);

}  // namespace zenta

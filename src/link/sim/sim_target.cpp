// The chip's side of the serial programming commands 0x00-0x1F: address
// counter, data latches, programming cycles and erases, as flash does them.
#include <algorithm>

#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

std::uint16_t packet_word(const std::uint8_t* packet) {
  return static_cast<std::uint16_t>(((packet[1] << 8) | packet[2]) & kBlankWord);
}

// The panel asks for 1 or 4 words and 8 bytes; other counts are held to
// what fits the 8-byte reply, and 0 still reads one, so no count can make
// the reply overflow or the address run backwards.
int clamp_count(std::uint8_t requested, int most) {
  return std::clamp(static_cast<int>(requested), 1, most);
}

}  // namespace

// The counter is one 14-bit counter: stepping past 0x1FFF runs on into
// configuration space, and configuration space wraps from 0x3FFF to 0x2000.
// This is the choice under which a write whose last row reaches 0x2000 (the
// panel's last address for every image with a configuration record on an
// 8K device) lands on the user IDs instead of on words 0 to 7.
void SimUnit::Impl::step_address() {
  address = address == 0x3FFF ? kConfigBase : address + 1;
}

// A chip that does not listen (not in programming mode, unpowered, or no
// chip at all) leaves the data line to the unit's pull-up: every bit of a
// read comes back as one, and writes have no effect.
void SimUnit::Impl::answer_not_listening(const std::uint8_t* packet) {
  if (packet[0] == ICSP_READ_DATA) {
    const int words = clamp_count(packet[1], 4);
    for (int k = 0; k < words; ++k) {
      reply[static_cast<std::size_t>(2 * k)] = kBlankWord >> 8;
      reply[static_cast<std::size_t>(2 * k + 1)] = kBlankWord & 0xFF;
    }
  } else if (packet[0] == ICSP_READ_EE) {
    std::fill_n(reply.begin(), clamp_count(packet[1], 8), kBlankByte);
  }
}

void SimUnit::Impl::target_command(const std::uint8_t* packet) {
  if (!programming) {
    answer_not_listening(packet);
    return;
  }
  const std::uint8_t code = packet[0];
  switch (code) {
    case ICSP_LOAD_CONFIG:
      address = kConfigBase;
      latch = packet_word(packet);
      break;
    case ICSP_LOAD_DATA:
      latch = packet_word(packet);
      // The row devices latch each word of an eight-word row in its own slot.
      if (model.row_latches && address < kConfigBase) {
        row_latches[static_cast<std::size_t>(address & 7)] = latch;
      }
      break;
    case ICSP_READ_DATA: {
      const int words = clamp_count(packet[1], 4);
      for (int k = 0; k < words; ++k) {
        if (k > 0) step_address();
        const std::uint16_t word = memory.read_word(address);
        reply[static_cast<std::size_t>(2 * k)] = static_cast<std::uint8_t>(word >> 8);
        reply[static_cast<std::size_t>(2 * k + 1)] = static_cast<std::uint8_t>(word & 0xFF);
      }
      break;
    }
    case ICSP_READ_EE: {
      const int bytes = clamp_count(packet[1], 8);
      for (int k = 0; k < bytes; ++k) {
        if (k > 0) step_address();
        // The data memory decodes only the low bits of the shared counter.
        const int size = memory.eeprom_size();
        reply[static_cast<std::size_t>(k)] = size > 0 ? memory.eeprom(address % size) : kBlankByte;
      }
      break;
    }
    case ICSP_INC_ADDR:
      // b1 is the unit's business (line timing); the chip steps by one either way.
      step_address();
      break;
    case ICSP_BEGIN_ERASE_PROG:
      if (last_target_command == ICSP_BULK_SETUP1) {
        bulk_erase_older();
      } else {
        program_cycle(true);
      }
      break;
    case ICSP_BULK_ERASE_PROG:
      // Self-timed: done by the time the unit answers. Pointing into
      // configuration space widens it to the user IDs and configuration word.
      memory.erase_program();
      if (address >= kConfigBase) {
        memory.erase_user_ids();
        memory.erase_config(false);
      }
      break;
    case ICSP_BEGIN_PROG_ONLY:
      program_cycle(false);
      break;
    case ICSP_CHIP_ERASE:
      memory.erase_program();
      memory.erase_user_ids();
      memory.erase_config(false);
      memory.erase_eeprom();
      break;
    default:
      // ICSP_BULK_SETUP1 only arms the next 0x08; ICSP_END_PROG ends a cycle
      // that the model has already completed; codes no chip of the table
      // knows do nothing.
      break;
  }
  last_target_command = code;
}

// erase_first: an erase/program cycle, which replaces the word; otherwise a
// program-only cycle, which can only clear bits.
void SimUnit::Impl::program_cycle(bool erase_first) {
  auto program = [&](int at, std::uint16_t data) {
    if (!memory.writable(at)) return;
    const std::uint16_t old = memory.read_word(at);
    memory.store_word(at, erase_first ? data : static_cast<std::uint16_t>(old & data));
  };
  if (address >= kConfigBase) {
    // Configuration space takes one word per cycle on every chip.
    program(address, latch);
    return;
  }
  ++cycles;
  if (model.row_latches) {
    const int base = address & ~7;
    for (int i = 0; i < 8; ++i) program(base + i, row_latches[static_cast<std::size_t>(i)]);
    row_latches.fill(kBlankWord);
  } else {
    program(address, latch);
  }
}

// The older devices' bulk erase (load 0x3FFF, 0x01, 0x08, 0x01): everything
// goes, the data EEPROM included. The 12F629/675 keep their band-gap bits,
// as the chip protects them in this sequence.
void SimUnit::Impl::bulk_erase_older() {
  memory.erase_program();
  memory.erase_user_ids();
  memory.erase_config(true);
  memory.erase_eeprom();
}

}  // namespace zenta::sim

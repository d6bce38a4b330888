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

// The counter has 14 bits and no way back down. Once in configuration
// space it stays there, wrapping from 0x3FFF to 0x2000, until the chip
// leaves programming mode. In program memory the families part ways at
// the top: most wrap from 0x1FFF to 0; the 16F62xA wrap at the end of
// their implemented memory; the 16F818/819 run on into configuration space.
void SimUnit::Impl::step_address() {
  if (address >= kConfigSpaceBase) {
    address = address == 0x3FFF ? kConfigSpaceBase : address + 1;
  } else if (model.family == Family::k16F62xA) {
    address = (address + 1) % model.program_words;
  } else if (model.family == Family::k16F81x) {
    address += 1;
  } else {
    address = (address + 1) & 0x1FFF;
  }
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
      address = kConfigSpaceBase;
      latch = packet_word(packet);
      break;
    case ICSP_LOAD_DATA:
      latch = packet_word(packet);
      // The row devices latch each word of an eight-word row in its own slot.
      if (model.family == Family::k16F87xA && address < kConfigSpaceBase) {
        row_latches[static_cast<std::size_t>(address & 7)] = latch;
      }
      break;
    case ICSP_READ_DATA: {
      const int words = clamp_count(packet[1], 4);
      for (int k = 0; k < words; ++k) {
        if (k > 0) step_address();
        const std::uint16_t word = memory.chip_read(address);
        reply[static_cast<std::size_t>(2 * k)] = static_cast<std::uint8_t>(word >> 8);
        reply[static_cast<std::size_t>(2 * k + 1)] = static_cast<std::uint8_t>(word & 0xFF);
      }
      break;
    }
    case ICSP_READ_EE: {
      const int bytes = clamp_count(packet[1], 8);
      for (int k = 0; k < bytes; ++k) {
        if (k > 0) step_address();
        reply[static_cast<std::size_t>(k)] = memory.chip_read_eeprom(address);
      }
      break;
    }
    case ICSP_INC_ADDR:
      // b1 is the unit's business (line timing); the chip steps by one either way.
      step_address();
      break;
    case ICSP_BEGIN_ERASE_PROG:
      if (armed_bulk_erase) {
        bulk_erase_program();
      } else if (last_target_command == ICSP_BULK_SETUP1) {
        bulk_erase_setup_cycle();
      } else {
        program_cycle(true);
      }
      break;
    case ICSP_BULK_ERASE_PROG:
      bulk_erase_program_command();
      break;
    case ICSP_BEGIN_PROG_ONLY:
      program_cycle(false);
      break;
    case ICSP_CHIP_ERASE:
      chip_erase();
      break;
    default:
      // ICSP_BULK_SETUP1 only arms the next 0x08; ICSP_END_PROG ends a cycle
      // that the model has already completed; codes no chip of the table
      // knows do nothing.
      break;
  }
  if (code != ICSP_BULK_ERASE_PROG) armed_bulk_erase = false;
  last_target_command = code;
}

// erase_first: an erase/program cycle, which replaces the word; otherwise a
// program-only cycle, which can only clear bits.
void SimUnit::Impl::program_cycle(bool erase_first) {
  const Family family = model.family;
  // The 16F62xA's 0x08 programs only: their memory must be bulk-erased first.
  if (family == Family::k16F62xA) erase_first = false;
  auto program = [&](int at, std::uint16_t data, bool replace) {
    if (!memory.writable(at)) return;
    const std::uint16_t old = memory.read_word(at);
    memory.store_word(at, replace ? data : static_cast<std::uint16_t>(old & data));
  };
  if (address >= kConfigSpaceBase) {
    // Configuration space takes one word per cycle on every chip; the
    // 16F818/819 set configuration bits back to 1 without an erase.
    program(address, latch, erase_first || family == Family::k16F81x);
    return;
  }
  ++cycles;
  if (family == Family::k16F87xA) {
    const int base = address & ~7;
    for (int i = 0; i < 8; ++i) {
      program(base + i, row_latches[static_cast<std::size_t>(i)], erase_first);
    }
    row_latches.fill(kBlankWord);
  } else {
    program(address, latch, erase_first);
  }
}

// Bulk Erase Setup 1 followed by a cycle (the unit's 0x01 stands for the
// chip's setup pair). From user memory it blanks program memory alone;
// pointed at the configuration word it blanks everything, protection
// included. The 16F627/628 know only the second form; elsewhere 0x01 means
// nothing and the 0x08 is an ordinary cycle.
void SimUnit::Impl::bulk_erase_setup_cycle() {
  const Family family = model.family;
  const bool at_config = address == kConfigWordAddress;
  const bool older =
      family == Family::k16F84 || family == Family::k16F84A || family == Family::k16F87x;
  if (older && !at_config) {
    memory.erase_program();
  } else if ((older || family == Family::k16F62x) && at_config) {
    memory.erase_program();
    memory.erase_user_ids();
    memory.erase_config(false);
    memory.erase_eeprom();
  } else {
    program_cycle(true);
  }
}

// Bulk Erase Program Memory. On the 16F84A, 16F627/628, 16F87xA and
// 16F818/819 it only arms the erase that the next 0x08 carries out; the
// 16F62xA and the 12F629 family erase at once. The 16F84 and 16F87x do not
// know the command.
void SimUnit::Impl::bulk_erase_program_command() {
  switch (model.family) {
    case Family::k16F84:
    case Family::k16F87x:
      break;
    case Family::k16F62xA:
    case Family::k12F629:
      bulk_erase_program();
      break;
    default:
      armed_bulk_erase = true;
      break;
  }
}

// What a bulk erase of program memory clears, family by family.
void SimUnit::Impl::bulk_erase_program() {
  const bool in_config = address >= kConfigSpaceBase;
  switch (model.family) {
    case Family::k16F84A:
      // Never the configuration word, so protection survives it.
      memory.erase_program();
      if (in_config) memory.erase_user_ids();
      break;
    case Family::k16F62x:
    case Family::k16F87xA:
    case Family::k16F81x:
      // Refused while the chip is protected: only the chip erase (or the
      // erase from the configuration word) clears protection.
      if (!memory.code_protected()) memory.erase_program();
      break;
    case Family::k16F62xA:
    case Family::k12F629: {
      // Program memory and the configuration word, protection included;
      // the 12F629 family loses its calibration word and band-gap bits.
      const bool data_too = memory.data_protected();
      memory.erase_program();
      memory.erase_config(false);
      if (in_config) memory.erase_user_ids();
      if (data_too) memory.erase_eeprom();
      break;
    }
    case Family::k16F84:
    case Family::k16F87x:
      break;
  }
}

// Chip Erase, known to the 16F87xA and 16F818/819 only: everything, except
// that the 16F818/819 keep their IDs and data when the counter is in user
// memory.
void SimUnit::Impl::chip_erase() {
  const Family family = model.family;
  if (family != Family::k16F87xA && family != Family::k16F81x) return;
  memory.erase_program();
  memory.erase_config(false);
  if (family == Family::k16F87xA || address >= kConfigSpaceBase) {
    memory.erase_user_ids();
    memory.erase_eeprom();
  }
}

}  // namespace zenta::sim

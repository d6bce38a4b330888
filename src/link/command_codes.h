#pragma once
// The unit's whole vocabulary. 0x00-0x1F are the target chips' serial
// programming commands passed through by the unit; 0x31-0x3F are the unit's
// own commands.
#include <cstdint>

namespace zenta {

enum CommandCode : std::uint8_t {
  ICSP_LOAD_CONFIG = 0x00,
  ICSP_BULK_SETUP1 = 0x01,
  ICSP_LOAD_DATA = 0x02,
  ICSP_READ_DATA = 0x04,
  ICSP_READ_EE = 0x05,
  ICSP_INC_ADDR = 0x06,
  ICSP_BEGIN_ERASE_PROG = 0x08,
  ICSP_BULK_ERASE_PROG = 0x09,
  ICSP_END_PROG = 0x17,
  ICSP_BEGIN_PROG_ONLY = 0x18,
  ICSP_CHIP_ERASE = 0x1F,
  UNIT_PGM_LINES = 0x31,
  UNIT_MCLR_LEVEL = 0x32,
  UNIT_LA_START = 0x36,
  UNIT_LA_READ = 0x37,
  UNIT_WAIT = 0x38,
  UNIT_AD_READ = 0x39,
  UNIT_VCC = 0x3A,
  UNIT_LED = 0x3B,
  UNIT_FREQ = 0x3C,
  UNIT_COUNTER = 0x3D,
  UNIT_VERSION = 0x3F,
};

// Levels of UNIT_MCLR_LEVEL b1.
enum MclrLevel : std::uint8_t { kMclr0V = 0, kMclr5V = 1, kMclrVpp = 2 };

// Actions of UNIT_COUNTER b1.
enum CounterAction : std::uint8_t {
  kCounterClear = 0,
  kCounterRead = 1,
  kCounterStart = 2,
  kCounterStop = 3
};

// How an operation leaves programming mode; the unit needs a different
// line state after each kind of operation.
enum class LeaveMode {
  kAfterWrite,   // program write, verify, identification: MCLR 5 V, lines 1
  kAfterRead,    // program read, EEPROM read, chip erase: MCLR 5 V, lines 2
  kAfterConfig,  // configuration write: MCLR 0 V, lines 1
};

// True for every code the panel ever sends.
constexpr bool is_known_command(std::uint8_t code) {
  switch (code) {
    case ICSP_LOAD_CONFIG:
    case ICSP_BULK_SETUP1:
    case ICSP_LOAD_DATA:
    case ICSP_READ_DATA:
    case ICSP_READ_EE:
    case ICSP_INC_ADDR:
    case ICSP_BEGIN_ERASE_PROG:
    case ICSP_BULK_ERASE_PROG:
    case ICSP_END_PROG:
    case ICSP_BEGIN_PROG_ONLY:
    case ICSP_CHIP_ERASE:
    case UNIT_PGM_LINES:
    case UNIT_MCLR_LEVEL:
    case UNIT_LA_START:
    case UNIT_LA_READ:
    case UNIT_WAIT:
    case UNIT_AD_READ:
    case UNIT_VCC:
    case UNIT_LED:
    case UNIT_FREQ:
    case UNIT_COUNTER:
    case UNIT_VERSION:
      return true;
    default:
      return false;
  }
}

}  // namespace zenta

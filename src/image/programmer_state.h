#pragma once
// The one set of process-wide variables through which the panel's parts
// hand data to each other. Fields keep the names the rest of the system
// uses for them. Integers that the panel treats as signed 16-bit are held as
// std::int16_t so that texts such as FFFF read as -1 everywhere alike.
#include <array>
#include <cstdint>
#include <string>

namespace zenta {

inline constexpr int kProgramBufferSize = 20001;  // byte indexes 0..20000
inline constexpr int kEepromBufferSize = 257;     // indexes 0..256
inline constexpr int kBlankWord = 0x3FFF;
// Words 0..9999 lie wholly inside ProgramBuffer; byte 20000 is the low byte
// of no complete word.
inline constexpr int kProgramBufferWords = 10000;

struct ProgrammerState {
  std::array<std::uint8_t, kProgramBufferSize> ProgramBuffer{};
  std::array<std::uint8_t, kEepromBufferSize> EepromBuffer{};

  std::string DeviceFamily;
  std::int16_t ProgramSize = 0;
  std::int16_t StartAddress = 0;
  std::int16_t LastAddress = 0;
  std::int16_t EepromLastAddress = 0;
  std::string EraseMode;
  std::string WriteMode;

  // The configuration word. The two bytes the configuration write sends
  // derive from it, so the editor and the write can never disagree.
  std::uint16_t ConfigWord = 0;
  int ConfigHigh() const { return ConfigWord >> 8; }
  int ConfigLow() const { return ConfigWord & 0xFF; }

  // High byte x 256 + low byte. Held wider than 16 bits so that a reply
  // byte of 0x80 or more still gives a positive, nameable value.
  std::int32_t DeviceId = 0;
  std::string DeviceIdName;

  std::string TargetFileName;
  std::string HexFileName;

  std::int16_t DataLoaded = 0;
  std::int16_t WaitTicks = 0;

  // Word w of the image: low byte at 2w, high byte at 2w+1. Callers keep w
  // inside 0..9999.
  int word(int w) const { return ProgramBuffer[2 * w] + 256 * ProgramBuffer[2 * w + 1]; }
  void set_word(int w, int value) {
    ProgramBuffer[2 * w] = static_cast<std::uint8_t>(value & 0xFF);
    ProgramBuffer[2 * w + 1] = static_cast<std::uint8_t>((value >> 8) & 0xFF);
  }
};

// The process-wide instance used by the programs. Core objects take a
// reference to a ProgrammerState so that tests can give each case its own.
ProgrammerState& programmer_state();

}  // namespace zenta

#pragma once
// Inside of the simulated unit: the chip's memories and the state the unit
// and the chip keep between exchanges. Only the sim_*.cpp files see this.
#include <array>
#include <cstdint>
#include <set>
#include <vector>

#include "devices/chip_description.h"
#include "link/command_codes.h"
#include "link/sim/sim_unit.h"

namespace zenta::sim {

inline constexpr int kUserIdCount = 4;  // 0x2000-0x2003
inline constexpr std::uint16_t kBlankWord = 0x3FFF;
inline constexpr std::uint8_t kBlankByte = 0xFF;
// The 12F629/675 family: band-gap calibration bits 13:12 of the
// configuration word, and the oscillator calibration word (RETLW 0x80) at
// the top of program memory.
inline constexpr std::uint16_t kBandGapBits = 0x3000;
inline constexpr std::uint16_t kBlankCalibratedConfig = 0x31FF;
inline constexpr std::uint16_t kCalibrationWord = 0x3480;

// The chip's nonvolatile memories, where each address lands, and what code
// protection hides.
class ChipMemory {
 public:
  explicit ChipMemory(const ChipModel& model);

  // What the cell an address reaches holds: 0x3FFF where there is none.
  std::uint16_t read_word(int address) const;
  // What the chip answers in programming mode: protected program memory
  // reads as zeros; IDs, configuration word and device ID as they are.
  std::uint16_t chip_read(int address) const;
  // Stores into the cell an address reaches when it is writable; others are
  // ignored, as the chip ignores programming cycles there.
  void store_word(int address, std::uint16_t word);
  bool writable(int address) const;

  int eeprom_size() const { return static_cast<int>(eeprom_.size()); }
  std::uint8_t eeprom(int index) const { return eeprom_[static_cast<std::size_t>(index)]; }
  // The byte at the counter's low bits, as the chip answers it.
  std::uint8_t chip_read_eeprom(int address) const;
  void set_eeprom(int index, std::uint8_t value) {
    eeprom_[static_cast<std::size_t>(index)] = value;
  }
  int program_size() const { return static_cast<int>(program_.size()); }

  bool code_protected() const;
  bool data_protected() const;

  void erase_program();  // also the calibration word, which lies in program memory
  void erase_user_ids();
  // keep_band_gap: the configuration word goes to 0x3FFF except bits 13:12.
  void erase_config(bool keep_band_gap);
  void erase_eeprom();

 private:
  enum class CellKind { kNone, kProgram, kUserId, kDeviceId, kConfig };
  struct Cell {
    CellKind kind = CellKind::kNone;
    int index = 0;  // in program memory or among the user IDs
  };
  Cell resolve(int address) const;

  Family family_;
  std::uint16_t device_id_word_;
  std::vector<std::uint16_t> program_;
  std::array<std::uint16_t, kUserIdCount> user_ids_;
  std::uint16_t config_;
  std::vector<std::uint8_t> eeprom_;
};

enum class ReadFault { kNone, kFail, kShort };

struct SimUnit::Impl {
  explicit Impl(const ChipModel& chip) : model(chip), memory(chip) {}

  // ---- the exchange ----
  void receive(const std::uint8_t* packet);  // carries one packet out, prepares the reply
  void unit_command(const std::uint8_t* packet);
  void set_mclr(int level);
  void set_vcc(bool on);

  // ---- the chip (sim_target.cpp) ----
  bool chip_present() const { return model.program_words > 0; }
  void target_command(const std::uint8_t* packet);
  void answer_not_listening(const std::uint8_t* packet);
  void step_address();
  void program_cycle(bool erase_first);
  void bulk_erase_setup_cycle();
  void bulk_erase_program_command();
  void bulk_erase_program();
  void chip_erase();

  // ---- instruments (sim_instruments.cpp) ----
  void ad_read(int channel);
  void la_start(int period, bool positive_edge);
  void la_read(int block);
  void measure_frequency(int gate);
  void counter_command(int action);

  ChipModel model;
  ChipMemory memory;

  // The unit.
  bool vcc = true;  // the unit powers the target as soon as it is plugged in
  bool led = false;
  int mclr = kMclr0V;
  int lines = 0;
  bool driver_open = false;
  bool unplugged = false;

  // The chip's programming logic.
  bool programming = false;
  int address = 0;
  std::uint16_t latch = kBlankWord;
  std::array<std::uint16_t, 8> row_latches{};
  int last_target_command = -1;
  bool armed_bulk_erase = false;  // a 0x09 waiting for its 0x08  // the previous target command in
                                  // this programming session
  int cycles = 0;

  // Instruments.
  std::array<std::uint8_t, 64> capture{};
  std::uint32_t input_hz = 12500;
  std::uint64_t counter = 0;
  bool counting = false;

  // Exchanges and faults.
  std::array<std::uint8_t, 8> reply{};
  std::vector<Exchange> trace;
  std::uint64_t writes = 0;  // write calls since the unit was made
  std::set<std::uint64_t> write_faults;
  std::set<std::uint64_t> read_faults;
  std::set<std::uint64_t> short_reads;
  std::uint64_t unplug_at = 0;  // 0: never
  std::uint64_t silent_at = 0;  // 0: never
  bool silent = false;
  ReadFault pending_read_fault = ReadFault::kNone;
};

}  // namespace zenta::sim

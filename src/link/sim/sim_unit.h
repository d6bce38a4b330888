#pragma once
// The simulated unit: a programmer unit with a real chip in its socket, a
// peer of the hardware drivers. It keeps the unit's state (target supply,
// LED, MCLR/Vpp level, programming-line mode), a chip of the ID table with
// its memories, the instruments, and a trace of every exchange. Faults can
// be injected for tests. It is the reference peer of the test suite and the
// default of the README's run command.
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/unit_driver.h"

namespace zenta::sim {

// The chips that share one programming model: address counter, erases,
// programming cycles and code protection.
enum class Family {
  k16F84,
  k16F84A,
  k16F62x,   // 16F627, 16F628
  k16F62xA,  // 16F627A, 16F628A, 16F648A
  k16F87x,   // 16F870 - 16F877
  k16F87xA,  // 16F873A - 16F877A: eight-word rows programmed at once
  k16F81x,   // 16F818, 16F819
  k12F629,   // 12F629/675, 16F630/676: calibration word at the top, band-gap bits
};

// One device of the ID table, with the memory the simulated chip has.
struct ChipModel {
  std::string name;  // "16F877A"; "none" for an empty socket
  Family family;
  std::uint16_t device_id;  // ID word at 0x2006 without revision; 0x3FFF when it has none
  std::uint16_t revision;   // low bits of the ID word
  int program_words;        // implemented program memory
  int eeprom_bytes;         // data EEPROM size
};

// Every described chip whose family the simulated unit models.
std::vector<ChipModel> chip_models();
// nullopt when the name is unknown. Case-insensitive; "none" is the empty socket.
std::optional<ChipModel> find_chip(const std::string& name);

struct Exchange {
  std::array<std::uint8_t, 8> tx{};
  std::array<std::uint8_t, 8> rx{};
  bool ok = true;
};

class SimUnit : public UnitDriver {
 public:
  // "16F877A" and the like, or "none" for an empty socket. Unknown names
  // throw std::invalid_argument, so a typo in ZENTA_UNIT is not silently an
  // empty socket. The unit comes plugged in, with the target supply on.
  explicit SimUnit(const std::string& chip = "16F877A");

  // ---- UnitDriver ----
  std::int32_t open() override;
  void close() override;
  std::int32_t write(const std::uint8_t* buffer, std::int32_t length) override;
  std::int32_t read(std::uint8_t* buffer, std::int32_t length) override;
  // Gone once unplugged; not answering once fallen silent.
  UnitCondition condition() const override;

  // ---- the unit ----
  bool vcc() const;
  bool led() const;
  int mclr_level() const;  // 0 (0 V), 1 (5 V), 2 (Vpp)
  int pgm_lines() const;   // last UNIT_PGM_LINES mode
  bool in_programming_mode() const;
  int address() const;  // the chip's address counter
  bool counter_running() const;
  // The signal on the frequency input; 12500 Hz until set.
  void set_input_frequency(std::uint32_t hz);

  // ---- the chip ----
  const ChipModel& chip() const;
  // What the cell at a 14-bit address holds, code protection aside:
  // 0..0x1FFF program memory (aliased past the implemented words),
  // 0x2000.. configuration space; 0x3FFF where there is no cell.
  int program_word(int address) const;
  // Sets the cell an address reaches, as a programmer would; addresses
  // reaching no writable cell are ignored.
  void set_program_word(int address, int word);
  int config_word() const;  // 0x2007
  void set_config_word(int word);
  int device_id_word() const;          // 0x2006: id | revision
  int eeprom_byte(int address) const;  // -1 outside the chip's data EEPROM
  void set_eeprom_byte(int address, int value);
  // Number of program-memory cycles (erase/program, program-only, row) so far.
  int program_cycles() const;

  // ---- trace ----
  const std::vector<Exchange>& trace() const;
  void clear_trace();

  // ---- faults, counted in exchanges of this unit since it was made (1-based) ----
  void fail_write_at(int exchange);      // that write returns 0 and is not carried out
  void fail_read_at(int exchange);       // that read returns 0
  void short_transfer_at(int exchange);  // that read returns 7 bytes
  void unplug();                         // every later open returns -2, every write and read -1
  void unplug_at(int exchange);          // that exchange and every later one as unplug()
  // From that exchange on every write and read times out (returns 0), as a
  // unit whose firmware hung would.
  void fall_silent_at(int exchange);

  // ---- memories outliving a run ----
  // Written to a temporary file beside `path` and renamed over it, so a
  // failed save leaves the earlier file whole. False when it cannot be written.
  bool save(const std::string& path) const;
  // False when missing, malformed or too large to be a memory file of this
  // chip; `reason` (when given) says which.
  bool load(const std::string& path, std::string* reason = nullptr);
  // The memory file as text, and the chip read back from such text.
  std::string memory_text() const;
  bool load_text(const std::string& text);

 private:
  struct Impl;
  std::shared_ptr<Impl> impl_;
};

}  // namespace zenta::sim

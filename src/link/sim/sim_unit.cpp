// The simulated unit as a driver: packets in, replies out, the unit's own
// commands, the trace and the injected faults.
#include "link/sim/sim_unit.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

// The firmware identification; characters 7 and 8 are the version 1.2.
constexpr char kFirmwareId[8] = {'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'};

// While the event counter runs, every packet the unit receives stands for
// this many pulses on its input: repeatable, and visibly moving.
constexpr std::uint64_t kPulsesPerExchange = 37;

// What an unplugged unit's write and read return: neither 8 nor 0, so a
// failure cannot be mistaken for an injected one.
constexpr std::int32_t kUnpluggedResult = -1;

ChipModel model_or_throw(const std::string& chip) {
  std::optional<ChipModel> model = find_chip(chip);
  if (!model) throw std::invalid_argument("unknown chip '" + chip + "'");
  return *model;
}

}  // namespace

SimUnit::SimUnit(const std::string& chip) : impl_(std::make_shared<Impl>(model_or_throw(chip))) {}

// ---- the exchange ----

void SimUnit::Impl::receive(const std::uint8_t* packet) {
  if (counting) counter += kPulsesPerExchange;
  // Reply bytes a command does not fill are zero; unknown codes get zeros only.
  reply.fill(0);
  if (packet[0] <= ICSP_CHIP_ERASE) {
    target_command(packet);
  } else {
    unit_command(packet);
  }
}

void SimUnit::Impl::unit_command(const std::uint8_t* packet) {
  switch (packet[0]) {
    case UNIT_PGM_LINES:
      lines = packet[1];
      break;
    case UNIT_MCLR_LEVEL:
      set_mclr(packet[1]);
      break;
    case UNIT_LA_START:
      la_start(packet[1], packet[2] != 0);
      break;
    case UNIT_LA_READ:
      la_read(packet[1]);
      break;
    case UNIT_AD_READ:
      ad_read(packet[1]);
      break;
    case UNIT_VCC:
      set_vcc(packet[1] != 0);
      break;
    case UNIT_LED:
      led = packet[1] != 0;
      break;
    case UNIT_FREQ:
      measure_frequency(packet[1]);
      break;
    case UNIT_COUNTER:
      counter_command(packet[1]);
      break;
    case UNIT_VERSION:
      std::copy(std::begin(kFirmwareId), std::end(kFirmwareId), reply.begin());
      break;
    default:
      break;  // UNIT_WAIT: the unit answers when it is ready, which is at once here
  }
}

// Programming mode begins when MCLR rises to Vpp while the unit drives the
// programming lines (mode 1) and the chip is powered and present; the rise
// resets the chip's address counter and latches. Any other level ends it.
// A level byte above 2 is not a level: the unit keeps the one it has.
void SimUnit::Impl::set_mclr(int level) {
  if (level > kMclrVpp) return;
  if (level == kMclrVpp) {
    if (mclr != kMclrVpp && lines == 1 && vcc && chip_present()) {
      programming = true;
      address = 0;
      latch = kBlankWord;
      row_latches.fill(kBlankWord);
      last_target_command = -1;
      armed_bulk_erase = false;
    }
  } else {
    programming = false;
  }
  mclr = level;
}

// A chip that loses its supply loses programming mode; switching the supply
// back on with MCLR already at Vpp does not enter it again (the chip needs
// the rise of MCLR).
void SimUnit::Impl::set_vcc(bool on) {
  vcc = on;
  if (!on) programming = false;
}

// ---- UnitDriver ----

// Opening succeeds as often as it is called, and writes and reads work
// without it: the unit is always ready until it is unplugged.
std::int32_t SimUnit::open() {
  return impl_->unplugged ? kDriverOpenError : kDriverOk;
}

void SimUnit::close() {}

// Every call counts as one exchange for the fault schedule, whatever its
// outcome. Only whole 8-byte packets are carried out; a failed write
// appears in the trace with ok = false and the reply bytes zero.
std::int32_t SimUnit::write(const std::uint8_t* buffer, std::int32_t length) {
  Impl& unit = *impl_;
  const std::uint64_t exchange = ++unit.writes;
  if (unit.unplug_at != 0 && exchange >= unit.unplug_at) unit.unplugged = true;
  if (unit.silent_at != 0 && exchange >= unit.silent_at) unit.silent = true;
  unit.pending_read_fault = unit.read_faults.count(exchange)   ? ReadFault::kFail
                            : unit.short_reads.count(exchange) ? ReadFault::kShort
                                                               : ReadFault::kNone;
  Exchange entry;
  if (buffer != nullptr && length > 0) {
    std::memcpy(entry.tx.data(), buffer, static_cast<std::size_t>(std::min(length, kPacketSize)));
  }
  std::int32_t result = kPacketSize;
  if (unit.unplugged) {
    result = kUnpluggedResult;
  } else if (unit.silent || buffer == nullptr || length != kPacketSize ||
             unit.write_faults.count(exchange)) {
    result = 0;
  }
  // The panel may run on the simulated unit for hours: the trace keeps the
  // latest exchanges only, far more than one whole operation needs.
  constexpr std::size_t kTraceLimit = 1u << 20;
  if (unit.trace.size() >= kTraceLimit) {
    unit.trace.erase(unit.trace.begin(), unit.trace.begin() + kTraceLimit / 2);
  }
  if (result != kPacketSize) {
    entry.ok = false;
    unit.trace.push_back(entry);
    return result;
  }
  unit.receive(buffer);
  entry.rx = unit.reply;
  unit.trace.push_back(entry);
  return kPacketSize;
}

// A read hands out the reply to the packet written last. A read with no
// write before it (RCVUSB) gets that same reply again and adds nothing to
// the trace; so does a read after a write that failed, since the unit never
// saw that packet. An injected read fault marks the exchange's trace entry
// failed; its rx keeps the reply the unit had ready.
std::int32_t SimUnit::read(std::uint8_t* buffer, std::int32_t length) {
  Impl& unit = *impl_;
  if (unit.unplugged) return kUnpluggedResult;
  if (unit.silent) return 0;
  const ReadFault fault = unit.pending_read_fault;
  unit.pending_read_fault = ReadFault::kNone;
  if (fault != ReadFault::kNone && !unit.trace.empty()) unit.trace.back().ok = false;
  if (buffer == nullptr || length <= 0 || fault == ReadFault::kFail) return 0;
  std::int32_t count = std::min(length, kPacketSize);
  if (fault == ReadFault::kShort) count = std::min(count, kPacketSize - 1);
  std::memcpy(buffer, unit.reply.data(), static_cast<std::size_t>(count));
  return count;
}

// ---- the unit ----

bool SimUnit::vcc() const {
  return impl_->vcc;
}
bool SimUnit::led() const {
  return impl_->led;
}
int SimUnit::mclr_level() const {
  return impl_->mclr;
}
int SimUnit::pgm_lines() const {
  return impl_->lines;
}
bool SimUnit::in_programming_mode() const {
  return impl_->programming;
}
int SimUnit::address() const {
  return impl_->address;
}
bool SimUnit::counter_running() const {
  return impl_->counting;
}
void SimUnit::set_input_frequency(std::uint32_t hz) {
  impl_->input_hz = hz;
}

// ---- the chip ----

const ChipModel& SimUnit::chip() const {
  return impl_->model;
}
int SimUnit::program_word(int address) const {
  return impl_->memory.read_word(address);
}
void SimUnit::set_program_word(int address, int word) {
  impl_->memory.store_word(address, static_cast<std::uint16_t>(word));
}
int SimUnit::config_word() const {
  return impl_->memory.read_word(kConfigWordAddress);
}
void SimUnit::set_config_word(int word) {
  impl_->memory.store_word(kConfigWordAddress, static_cast<std::uint16_t>(word));
}
int SimUnit::device_id_word() const {
  return impl_->memory.read_word(kDeviceIdAddress);
}

// Outside the chip's data EEPROM there is no cell: -1.
int SimUnit::eeprom_byte(int address) const {
  const ChipMemory& memory = impl_->memory;
  if (address < 0 || address >= memory.eeprom_size()) return -1;
  return memory.eeprom(address);
}

void SimUnit::set_eeprom_byte(int address, int value) {
  ChipMemory& memory = impl_->memory;
  if (address < 0 || address >= memory.eeprom_size()) return;
  memory.set_eeprom(address, static_cast<std::uint8_t>(value & 0xFF));
}

int SimUnit::program_cycles() const {
  return impl_->cycles;
}

// ---- trace ----

const std::vector<Exchange>& SimUnit::trace() const {
  return impl_->trace;
}
void SimUnit::clear_trace() {
  impl_->trace.clear();
}

// ---- faults ----

void SimUnit::fail_write_at(int exchange) {
  if (exchange > 0) impl_->write_faults.insert(static_cast<std::uint64_t>(exchange));
}
void SimUnit::fail_read_at(int exchange) {
  if (exchange > 0) impl_->read_faults.insert(static_cast<std::uint64_t>(exchange));
}
void SimUnit::short_transfer_at(int exchange) {
  if (exchange > 0) impl_->short_reads.insert(static_cast<std::uint64_t>(exchange));
}
UnitCondition SimUnit::condition() const {
  if (impl_->unplugged) return UnitCondition::kGone;
  return impl_->silent ? UnitCondition::kNotAnswering : UnitCondition::kAnswering;
}

void SimUnit::fall_silent_at(int exchange) {
  if (exchange > 0) impl_->silent_at = static_cast<std::uint64_t>(exchange);
}

void SimUnit::unplug() {
  impl_->unplugged = true;
}
void SimUnit::unplug_at(int exchange) {
  if (exchange > 0) impl_->unplug_at = static_cast<std::uint64_t>(exchange);
}

}  // namespace zenta::sim

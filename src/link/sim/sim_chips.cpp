// The chips the simulated unit can hold, and their memories.
#include <algorithm>
#include <cctype>

#include "devices/device_library.h"
#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

// The silicon model of a description's family; nullopt for a family the
// simulated unit has no model of.
std::optional<Family> family_of(const std::string& name) {
  static const std::pair<const char*, Family> families[] = {
      {"16F84", Family::k16F84},     {"16F84A", Family::k16F84A}, {"16F62x", Family::k16F62x},
      {"16F62xA", Family::k16F62xA}, {"16F87x", Family::k16F87x}, {"16F87xA", Family::k16F87xA},
      {"16F81x", Family::k16F81x},   {"12F629", Family::k12F629},
  };
  for (const auto& [family_name, family] : families) {
    if (name == family_name) return family;
  }
  return std::nullopt;
}

// Plausible silicon revisions, chosen once per family so that an ID read is
// repeatable.
std::uint16_t revision_of(Family family) {
  switch (family) {
    case Family::k16F84:
      return 0;
    case Family::k16F87xA:
      return 7;
    case Family::k12F629:
      return 4;
    case Family::k16F81x:
      return 1;
    default:
      return 2;
  }
}

// Every described chip whose family has a silicon model here; sizes and IDs
// are the descriptions'.
std::vector<ChipModel> make_models() {
  std::vector<ChipModel> models;
  for (const ChipDescription& chip : devices().chips) {
    const std::optional<Family> family = family_of(chip.family);
    if (!family) continue;
    const std::uint16_t id = chip.id ? *chip.id : kBlankWord;
    models.push_back({chip.name, *family, id,
                      chip.id
                          ? static_cast<std::uint16_t>(revision_of(*family) & chip.revision_bits)
                          : std::uint16_t{0},
                      chip.program_words, chip.eeprom_bytes});
  }
  return models;
}

// Configuration bits that protect program memory (any of them at 0) and
// the data EEPROM (the bit at 0). Where a chip protects part of its memory
// by some CP patterns (16F627/628, 16F87x) the model protects all of it:
// the less forgiving reading. The 16F84/84A have no separate data bit;
// their CP hides the data EEPROM too.
struct Protection {
  std::uint16_t program;
  std::uint16_t data;
};
Protection protection_of(Family family) {
  switch (family) {
    case Family::k16F84:
    case Family::k16F84A:
      return {0x3FF0, 0x3FF0};
    case Family::k16F62x:
      return {0x3C00, 0x0100};
    case Family::k16F87x:
      return {0x3030, 0x0100};
    case Family::k12F629:
      return {0x0080, 0x0100};
    case Family::k16F62xA:
    case Family::k16F87xA:
    case Family::k16F81x:
      break;
  }
  return {0x2000, 0x0100};
}

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

}  // namespace

std::vector<ChipModel> chip_models() {
  return make_models();
}

std::optional<ChipModel> find_chip(const std::string& name) {
  const std::string wanted = upper(name);
  // The empty socket: no memory at all, and an ID that reads as all ones.
  if (wanted == "NONE") return ChipModel{"none", Family::k16F84, kBlankWord, 0, 0, 0};
  const std::optional<ChipDescription> chip = chip_by_name(wanted);
  if (!chip) return std::nullopt;
  for (const ChipModel& model : make_models()) {
    if (model.name == chip->name) return model;
  }
  return std::nullopt;
}

ChipMemory::ChipMemory(const ChipModel& model)
    : family_(model.family),
      device_id_word_(static_cast<std::uint16_t>((model.device_id | model.revision) & kBlankWord)),
      program_(static_cast<std::size_t>(model.program_words), kBlankWord),
      user_ids_{kBlankWord, kBlankWord, kBlankWord, kBlankWord},
      config_(kBlankWord),
      eeprom_(static_cast<std::size_t>(model.eeprom_bytes), kBlankByte) {
  // A new 12F629/675 leaves the factory with its calibration in place.
  if (family_ == Family::k12F629 && !program_.empty()) {
    program_.back() = kCalibrationWord;
    config_ = kBlankCalibratedConfig;
  }
}

// Program memory decodes only the address bits its size needs, so every
// address above it reaches a low word (all sizes are powers of two).
// Configuration space past its row reaches program memory too, except on
// the 12F629 family, whose 0x2000-0x201F repeat up to 0x3FFF.
ChipMemory::Cell ChipMemory::resolve(int address) const {
  address &= 0x3FFF;
  Cell cell;
  if (family_ == Family::k12F629 && address >= kConfigSpaceBase) {
    address = kConfigSpaceBase + (address & 0x1F);
    if (address > kConfigWordAddress) return cell;
  }
  if (address < kConfigSpaceBase || address > kConfigWordAddress) {
    if (program_.empty()) return cell;
    return {CellKind::kProgram, address & (program_size() - 1)};
  }
  if (address < kConfigSpaceBase + kUserIdCount)
    return {CellKind::kUserId, address - kConfigSpaceBase};
  if (address == kDeviceIdAddress) cell.kind = CellKind::kDeviceId;
  if (address == kConfigWordAddress) cell.kind = CellKind::kConfig;
  return cell;
}

std::uint16_t ChipMemory::read_word(int address) const {
  const Cell cell = resolve(address);
  switch (cell.kind) {
    case CellKind::kProgram:
      return program_[static_cast<std::size_t>(cell.index)];
    case CellKind::kUserId:
      return user_ids_[static_cast<std::size_t>(cell.index)];
    case CellKind::kDeviceId:
      return device_id_word_;
    case CellKind::kConfig:
      return config_;
    case CellKind::kNone:
      break;
  }
  return kBlankWord;
}

// The 12F629 family leaves its calibration word readable under protection,
// so a programmer can still save it before an erase.
std::uint16_t ChipMemory::chip_read(int address) const {
  const Cell cell = resolve(address);
  if (cell.kind == CellKind::kProgram && code_protected()) {
    const bool calibration = family_ == Family::k12F629 && cell.index == program_size() - 1;
    if (!calibration) return 0;
  }
  return read_word(address);
}

std::uint8_t ChipMemory::chip_read_eeprom(int address) const {
  if (eeprom_.empty()) return kBlankByte;
  // Protected data memory on the 16F627/628 and 16F62xA is not described:
  // modelled as zeros, like the other families.
  if (data_protected()) return 0;
  return eeprom(address % eeprom_size());
}

bool ChipMemory::code_protected() const {
  const std::uint16_t bits = protection_of(family_).program;
  return (config_ & bits) != bits;
}

bool ChipMemory::data_protected() const {
  const std::uint16_t bits = protection_of(family_).data;
  return (config_ & bits) != bits;
}

bool ChipMemory::writable(int address) const {
  const CellKind kind = resolve(address).kind;
  return kind == CellKind::kProgram || kind == CellKind::kUserId || kind == CellKind::kConfig;
}

void ChipMemory::store_word(int address, std::uint16_t word) {
  word &= kBlankWord;
  const Cell cell = resolve(address);
  switch (cell.kind) {
    case CellKind::kProgram:
      program_[static_cast<std::size_t>(cell.index)] = word;
      break;
    case CellKind::kUserId:
      user_ids_[static_cast<std::size_t>(cell.index)] = word;
      break;
    case CellKind::kConfig:
      config_ = word;
      break;
    case CellKind::kDeviceId:
    case CellKind::kNone:
      break;
  }
}

void ChipMemory::erase_program() {
  std::fill(program_.begin(), program_.end(), kBlankWord);
}

void ChipMemory::erase_user_ids() {
  user_ids_.fill(kBlankWord);
}

void ChipMemory::erase_config(bool keep_band_gap) {
  const std::uint16_t kept =
      family_ == Family::k12F629 && keep_band_gap ? (config_ & kBandGapBits) : kBandGapBits;
  config_ = static_cast<std::uint16_t>((kBlankWord & ~kBandGapBits) | kept);
}

void ChipMemory::erase_eeprom() {
  std::fill(eeprom_.begin(), eeprom_.end(), kBlankByte);
}

}  // namespace zenta::sim

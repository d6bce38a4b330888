// The chips the simulated unit can hold, and their memories.
#include <algorithm>
#include <cctype>

#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

// Revisions are plausible silicon revisions, chosen once so that an ID read
// is repeatable; the 16F87xA and 16F818/819 keep theirs in the low 4 bits,
// the others in the low 5. The 16F630/676 share the 12F629/675's
// programming model, calibration word and band-gap bits included.
std::vector<ChipModel> make_models() {
  using F = Family;
  return {
      {"16F84", F::k16F84, 0x3FFF, 0x0000, 0x0400, 64},
      {"16F84A", F::k16F84A, 0x0560, 0x0002, 0x0400, 64},
      {"16F627", F::k16F62x, 0x07A0, 0x0002, 0x0400, 128},
      {"16F628", F::k16F62x, 0x07C0, 0x0002, 0x0800, 128},
      {"16F627A", F::k16F62xA, 0x1040, 0x0002, 0x0400, 128},
      {"16F628A", F::k16F62xA, 0x1060, 0x0002, 0x0800, 128},
      {"16F648A", F::k16F62xA, 0x1100, 0x0002, 0x1000, 256},
      {"16F870", F::k16F87x, 0x0D00, 0x0002, 0x0800, 64},
      {"16F871", F::k16F87x, 0x0D20, 0x0002, 0x0800, 64},
      {"16F872", F::k16F87x, 0x08E0, 0x0002, 0x0800, 64},
      {"16F873", F::k16F87x, 0x0960, 0x0002, 0x1000, 128},
      {"16F874", F::k16F87x, 0x0920, 0x0002, 0x1000, 128},
      {"16F876", F::k16F87x, 0x09E0, 0x0002, 0x2000, 256},
      {"16F877", F::k16F87x, 0x09A0, 0x0003, 0x2000, 256},
      {"16F873A", F::k16F87xA, 0x0E40, 0x0007, 0x1000, 128},
      {"16F874A", F::k16F87xA, 0x0E60, 0x0007, 0x1000, 128},
      {"16F876A", F::k16F87xA, 0x0E00, 0x0007, 0x2000, 256},
      {"16F877A", F::k16F87xA, 0x0E20, 0x0007, 0x2000, 256},
      {"12F629", F::k12F629, 0x0F80, 0x0004, 0x0400, 128},
      {"12F675", F::k12F629, 0x0FC0, 0x0004, 0x0400, 128},
      {"16F630", F::k12F629, 0x10C0, 0x0004, 0x0400, 128},
      {"16F676", F::k12F629, 0x10E0, 0x0004, 0x0400, 128},
      {"16F818", F::k16F81x, 0x04C0, 0x0001, 0x0400, 128},
      {"16F819", F::k16F81x, 0x04E0, 0x0001, 0x0800, 256},
  };
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

const std::vector<ChipModel>& chip_models() {
  static const std::vector<ChipModel> models = make_models();
  return models;
}

std::optional<ChipModel> find_chip(const std::string& name) {
  const std::string wanted = upper(name);
  // The empty socket: no memory at all, and an ID that reads as all ones.
  if (wanted == "NONE") return ChipModel{"none", Family::k16F84, kBlankWord, 0, 0, 0};
  for (const ChipModel& model : chip_models()) {
    if (model.name == wanted) return model;
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
  if (family_ == Family::k12F629 && address >= kConfigBase) {
    address = kConfigBase + (address & 0x1F);
    if (address > kConfigWordAddress) return cell;
  }
  if (address < kConfigBase || address > kConfigWordAddress) {
    if (program_.empty()) return cell;
    return {CellKind::kProgram, address & (program_size() - 1)};
  }
  if (address < kConfigBase + kUserIdCount) return {CellKind::kUserId, address - kConfigBase};
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

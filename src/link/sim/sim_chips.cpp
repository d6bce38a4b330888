// The chips the simulated unit can hold, and their memories.
#include <algorithm>
#include <cctype>

#include "link/sim/sim_internal.h"

namespace zenta::sim {

namespace {

// Revisions are plausible silicon revisions, chosen once so that an ID read
// is repeatable; the 16F87xA keep theirs in the low 4 bits, the others in
// the low 5. The 16F630/676 share the 12F629/675's programming model, so
// they carry the calibration word and the band-gap bits as well.
std::vector<ChipModel> make_models() {
  return {
      {"16F84", 0x3FFF, 0x0000, 0x0400, 64, false, false},
      {"16F84A", 0x0560, 0x0002, 0x0400, 64, false, false},
      {"16F627", 0x07A0, 0x0002, 0x0400, 128, false, false},
      {"16F628", 0x07C0, 0x0002, 0x0800, 128, false, false},
      {"16F627A", 0x1040, 0x0002, 0x0400, 128, false, false},
      {"16F628A", 0x1060, 0x0002, 0x0800, 128, false, false},
      {"16F648A", 0x1100, 0x0002, 0x1000, 256, false, false},
      {"16F870", 0x0D00, 0x0002, 0x0800, 64, false, false},
      {"16F871", 0x0D20, 0x0002, 0x0800, 64, false, false},
      {"16F872", 0x08E0, 0x0002, 0x0800, 64, false, false},
      {"16F873", 0x0960, 0x0002, 0x1000, 128, false, false},
      {"16F874", 0x0920, 0x0002, 0x1000, 128, false, false},
      {"16F876", 0x09E0, 0x0002, 0x2000, 256, false, false},
      {"16F877", 0x09A0, 0x0003, 0x2000, 256, false, false},
      {"16F873A", 0x0E40, 0x0007, 0x1000, 128, true, false},
      {"16F874A", 0x0E60, 0x0007, 0x1000, 128, true, false},
      {"16F876A", 0x0E00, 0x0007, 0x2000, 256, true, false},
      {"16F877A", 0x0E20, 0x0007, 0x2000, 256, true, false},
      {"12F629", 0x0F80, 0x0004, 0x0400, 128, false, true},
      {"12F675", 0x0FC0, 0x0004, 0x0400, 128, false, true},
      {"16F630", 0x10C0, 0x0004, 0x0400, 128, false, true},
      {"16F676", 0x10E0, 0x0004, 0x0400, 128, false, true},
      {"16F818", 0x04C0, 0x0001, 0x0400, 128, false, false},
      {"16F819", 0x04E0, 0x0001, 0x0800, 256, false, false},
  };
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
  if (wanted == "NONE") return ChipModel{"none", kBlankWord, 0, 0, 0, false, false};
  for (const ChipModel& model : chip_models()) {
    if (model.name == wanted) return model;
  }
  return std::nullopt;
}

ChipMemory::ChipMemory(const ChipModel& model)
    : calibration_(model.calibration),
      device_id_word_(static_cast<std::uint16_t>((model.device_id | model.revision) & kBlankWord)),
      program_(static_cast<std::size_t>(model.program_words), kBlankWord),
      user_ids_{kBlankWord, kBlankWord, kBlankWord, kBlankWord},
      config_(kBlankWord),
      eeprom_(static_cast<std::size_t>(model.eeprom_bytes), kBlankByte) {
  // A new 12F629/675 leaves the factory with its calibration in place.
  if (calibration_ && !program_.empty()) {
    program_.back() = kCalibrationWord;
    config_ = kBlankCalibratedConfig;
  }
}

std::uint16_t ChipMemory::read_word(int address) const {
  address &= 0x3FFF;
  if (address < kConfigBase) {
    return address < program_size() ? program_[static_cast<std::size_t>(address)] : kBlankWord;
  }
  if (address < kConfigBase + kUserIdCount) {
    return user_ids_[static_cast<std::size_t>(address - kConfigBase)];
  }
  if (address == kDeviceIdAddress) return device_id_word_;
  if (address == kConfigWordAddress) return config_;
  return kBlankWord;
}

bool ChipMemory::writable(int address) const {
  address &= 0x3FFF;
  if (address < kConfigBase) return address < program_size();
  return address < kConfigBase + kUserIdCount || address == kConfigWordAddress;
}

void ChipMemory::store_word(int address, std::uint16_t word) {
  address &= 0x3FFF;
  word &= kBlankWord;
  if (!writable(address)) return;
  if (address < kConfigBase) {
    program_[static_cast<std::size_t>(address)] = word;
  } else if (address == kConfigWordAddress) {
    config_ = word;
  } else {
    user_ids_[static_cast<std::size_t>(address - kConfigBase)] = word;
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
      calibration_ && keep_band_gap ? (config_ & kBandGapBits) : kBandGapBits;
  config_ = static_cast<std::uint16_t>((kBlankWord & ~kBandGapBits) | kept);
}

void ChipMemory::erase_eeprom() {
  std::fill(eeprom_.begin(), eeprom_.end(), kBlankByte);
}

}  // namespace zenta::sim

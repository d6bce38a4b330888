#pragma once
// The eight device entries the panel knows, fixed in the program. Each stands
// for one chip or one family and carries everything an operation needs: the
// erase and write procedure codes, the address ranges, the default
// configuration word and the bit patterns that map the option controls onto
// configuration bits.
#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace zenta {

// Seventeen mask and value words. For each option the mask clears the
// option's bits, then one of its values is or-ed in. A mask of 0x3FFF with
// both values 0 means the option does nothing on that device.
struct ConfigOptionPatterns {
  std::uint16_t OscMask;
  std::uint16_t OscRC;
  std::uint16_t OscHS;
  std::uint16_t OscXT;
  std::uint16_t OscLP;
  std::uint16_t WdtMask;
  std::uint16_t WdtOn;
  std::uint16_t WdtOff;
  std::uint16_t PutMask;
  std::uint16_t PutOn;
  std::uint16_t PutOff;
  std::uint16_t ProtectMask;
  std::uint16_t ProtectOn;
  std::uint16_t ProtectOff;
  std::uint16_t BorMask;
  std::uint16_t BorOn;
  std::uint16_t BorOff;
};

struct DeviceRecord {
  std::int16_t index;
  const char* caption;
  const char* family;
  const char* erase_code;  // EraseMode "0".."3"
  const char* write_code;  // WriteMode "0".."2"
  std::int16_t program_size;
  std::int16_t start_address;
  std::int16_t last_address;
  const char* last_address_text;
  std::int16_t eeprom_last_address;
  const char* default_config_text;
  std::uint16_t default_config_word;
  ConfigOptionPatterns patterns;
};

inline constexpr int kDeviceCount = 8;

// The catalogue in selector order.
const std::array<DeviceRecord, kDeviceCount>& DeviceCatalogue();
// Catalogue lookup; index must be 0..7.
const DeviceRecord& device_record(int index);
// Index of the entry whose caption is `name` (exactly, or without regard to
// case), or of a decimal index "0".."7"; nullopt for anything else.
std::optional<int> find_device(const std::string& name);

}  // namespace zenta

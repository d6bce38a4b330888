// Device selection and identification of the chip in the socket.
#include "common/number_text.h"
#include "link/command_codes.h"
#include "panel/main_form.h"
#include "programming/chip_protocol.h"
#include "programming/device_id.h"

namespace zenta {

void MainForm::PICsel_Click(int index) {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (index < 0 || index >= kDeviceCount) {
    running_.refused = true;
    return;
  }
  view_.PICsel = index;
  select_device(index);
}

void MainForm::select_device(int index) {
  const DeviceRecord& record = device_record(index);
  state_.DeviceFamily = record.family;
  state_.EraseMode = record.erase_code;
  state_.WriteMode = record.write_code;
  state_.ProgramSize = record.program_size;
  state_.StartAddress = record.start_address;
  state_.LastAddress = record.last_address;
  state_.EepromLastAddress = record.eeprom_last_address;

  StartAddrText_Change("0");
  LastAddrText_Change(record.last_address_text);

  // An image must be loaded again for the new device before a write.
  view_.FilenameTextbox.clear();
  view_.NotesLabel.clear();
  state_.DataLoaded = 0;

  // The option controls go back to their reset states without touching the
  // word: the text and the bit display show the device's default.
  ConfigAddrText_Change(record.default_config_text);
  view_.OSCsel = 0;
  view_.PUTsel = false;
  view_.WDTsel = false;
  view_.PRTsel = false;

  state_.ConfigWord = static_cast<std::int16_t>(record.default_config_word);
  state_.ConfigHigh = static_cast<std::int16_t>(record.default_config_word >> 8);
  state_.ConfigLow = static_cast<std::int16_t>(record.default_config_word & 0xFF);
  patterns_ = record.patterns;

  read_devid();

  // Store the choice only when it differs, so a repeated choice writes
  // nothing. An unreadable store reads as empty text, that is 0.
  const std::string stored = settings_.get(kSettingsApp, kSettingsSection, "DEVICE");
  if (leading_number(stored) != index) {
    settings_.save(kSettingsApp, kSettingsSection, "DEVICE", std::to_string(index));
  }

  Config_bit_DSP();
  changed();
}

void MainForm::READ_DEVID() {
  CommandScope scope(*this);
  if (scope.started()) read_devid();
}

void MainForm::read_devid() {
  set_notes("Now Reading", kRed);
  enter_programming_mode(link_);
  link_.SENDCMD(ICSP_LOAD_CONFIG, 0x3F, 0xFF);
  // From 0x2000 six steps reach the ID word at 0x2006.
  for (int i = 0; i < 6; ++i) link_.SENDCMD(ICSP_INC_ADDR, 0);
  link_.SENDCMD(UNIT_WAIT, 10);
  link_.SENDCMD(ICSP_READ_DATA, 1);
  // Taken from the reply buffer unchecked: after a failed exchange these are
  // whatever the failed read left there.
  const int high = link_.RxBuffer[0];
  const int low = link_.RxBuffer[1];
  leave_programming_mode(link_, LeaveMode::kAfterWrite);

  state_.DeviceId = high * 256 + low;
  DEVID_NAME();
  set_notes("Device=" + state_.DeviceIdName + " (" + hex_text(high) + hex_text(low) + ")", kWhite);
  view_.Text_Device = state_.DeviceIdName + "  (" + hex_text(state_.DeviceId) + ")";
  changed();
}

void MainForm::DEVID_NAME() {
  state_.DeviceIdName = device_id_name(static_cast<std::uint16_t>(state_.DeviceId));
}

}  // namespace zenta

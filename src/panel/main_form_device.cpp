// Device selection and identification of the chip in the socket.
#include "common/number_text.h"
#include "panel/main_form.h"

namespace zenta {

void MainForm::PICsel_Click(int index) {
  Unit::Operation operation(unit_);
  if (!operation || index < 0 || index >= kDeviceCount) return;
  view_.PICsel = index;
  select_device(index);
}

void MainForm::select_device(int index) {
  const DeviceRecord& record = device_record(index);
  select_device_parameters(state_, index);

  StartAddrText_Change("0");
  LastAddrText_Change(record.last_address_text);

  // An image must be loaded again for the new device before a write.
  view_.FilenameTextbox.clear();
  view_.NotesLabel.clear();
  state_.DataLoaded = 0;

  // The option controls go back to their reset states without touching the
  // word: the text and the bit display show the device's default.
  const std::uint16_t word = state_.ConfigWord;
  ConfigAddrText_Change(record.default_config_text);
  state_.ConfigWord = word;
  view_.OSCsel = 0;
  view_.PUTsel = false;
  view_.WDTsel = false;
  view_.PRTsel = false;
  patterns_ = record.patterns;

  read_devid(ops_);

  // Store the choice only when it differs, so a repeated choice writes
  // nothing. An unreadable store reads as empty text, that is 0.
  const std::string stored = settings_.get(kSettingsApp, kSettingsSection, "DEVICE");
  if (leading_number(stored) != index) {
    settings_.save(kSettingsApp, kSettingsSection, "DEVICE", std::to_string(index));
  }

  Config_bit_DSP();
  changed();
}

void MainForm::Command_ID_Click() {
  Unit::Operation operation(unit_);
  if (operation) read_devid(ops_);
}

void MainForm::read_devid(ChipOperations& ops) {
  const DeviceIdResult device = ops.READ_DEVID();
  view_.Text_Device = device.name + "  (" + hex_text(device.id) + ")";
  changed();
}

}  // namespace zenta

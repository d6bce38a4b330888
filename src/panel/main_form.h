#pragma once
// The behaviour of the main window ZENTA_form, without any window: what it
// shows (MainView) and one method per event. The Qt window forwards its
// events here and renders the view; the command-line program drives the
// same methods, so both send the same packets.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "image/buffer_view.h"
#include "image/programmer_state.h"
#include "link/unit_driver.h"
#include "link/unit_link.h"
#include "panel/host.h"
#include "panel/main_view.h"
#include "panel/settings_store.h"
#include "panel/tool_settings.h"

namespace zenta {

class MainForm {
 public:
  MainForm(UnitDriver& driver, Host& host, SettingsStore& settings, ProgrammerState& state);
  ~MainForm();
  MainForm(const MainForm&) = delete;
  MainForm& operator=(const MainForm&) = delete;

  // ---- start-up and shutdown ----
  // The start-up sequence. Returns false when no unit could be opened: the
  // user has been told, and the program must end without showing a window.
  bool Form_Load();
  // EXIT button and closing the window: closes the driver.
  void shutdown();

  // ---- what the window shows and holds ----
  MainView& view() { return view_; }
  const MainView& view() const { return view_; }
  UnitLink& link() { return link_; }
  ProgrammerState& state() { return state_; }
  ToolSettings& tools() { return tools_; }
  SettingsStore& settings() { return settings_; }
  Host& host() { return host_; }
  const std::string& FirmwareVersion() const { return firmware_version_; }
  const std::string& start_folder() const { return start_folder_; }
  std::int16_t ResetState() const { return reset_state_; }
  BufferViewModel& program_view() { return program_view_; }
  BufferViewModel& eeprom_view() { return eeprom_view_; }
  // Called after the view changed; the window repaints when it next can.
  std::function<void()> on_changed;
  void changed() {
    if (on_changed) on_changed();
  }

  // ---- device catalogue and selection ----
  // Runs the whole device selection for the index, as a click on PICsel.
  void PICsel_Click(int index);

  // ---- configuration word editor ----
  void OSCsel_Click(int index);
  void WDTsel_Click(bool checked);
  void PUTsel_Click(bool checked);
  void PRTsel_Click(bool checked);
  void BORsel_Click(bool checked);
  // Text changes, by typing or by the panel itself.
  void ConfigAddrText_Change(const std::string& text);
  void LastAddrText_Change(const std::string& text);
  void StartAddrText_Change(const std::string& text);
  void Config_bit_DSP();
  void kage_Click();
  void Label_KRVname_Click();

  // ---- chip operations ----
  void WriteButton_Click();
  void VerifyButton_Click();
  void ERASEButton_Click();
  void READ_Click();
  void READ_EEPROM_Click();
  void WRITE_PROG();
  void VERIFY_PROG();
  void WRITE_CONFIG();
  void READ_DEVID();
  void DEVID_NAME();
  void READ_PROG();
  void READ_EE();
  void CHIP_ERASE();

  // ---- unit controls ----
  void Command_VCC_Click();
  void Command_LED_Click();
  void Command_Vset_Click(int index);
  void Command_RESET_Click();
  void Command_ID_Click();
  void Timer1_Timer();

  // ---- HEX loading and file choice ----
  void F_OpenButton_Click();
  void HexSet_Button_Click();
  void LOAD_HEX();

  // ---- buffer viewers ----
  void Buffer_view_Click();
  void BUFVIEWButton_Click();

 private:
  void select_device(int index);
  void restore_device();
  void load_tool_settings();

  Host& host_;
  SettingsStore& settings_;
  ProgrammerState& state_;
  UnitLink link_;
  MainView view_;
  ToolSettings tools_;
  std::string firmware_version_;
  std::string start_folder_;
  std::int16_t reset_state_ = 0;
  BufferViewModel program_view_;
  BufferViewModel eeprom_view_;
};

}  // namespace zenta

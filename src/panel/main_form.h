#pragma once
// The behaviour of the main window ZENTA_form, without any window: what it
// shows (MainView) and one method per event. The Qt window forwards its
// events here and renders the view; the command-line program drives the
// same methods, so both send the same packets.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "common/host.h"
#include "common/settings_store.h"
#include "image/buffer_view.h"
#include "image/programmer_state.h"
#include "link/unit_driver.h"
#include "link/unit_link.h"
#include "panel/main_view.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "toolchain/tool_settings.h"
#include "toolchain/toolchain.h"

namespace zenta {

// How the last command went, for callers that cannot read message boxes
// (the command-line program). Reset when a public command starts.
struct CommandOutcome {
  bool refused = false;             // did not start: busy, WaitTicks, "I have no data", bad address
  bool verify_error = false;        // "Verify Data ERROR"
  bool config_error = false;        // "Can't Write to Config"
  bool load_error = false;          // LOAD_HEX failure path
  std::uint64_t link_failures = 0;  // failed exchanges during the command
};

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
  // Of the last public command method run (chip operations, unit controls,
  // device selection, file choice and loading).
  const CommandOutcome& outcome() const { return outcome_; }

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

  // ---- toolchain: tool runs and editors (main_form_tools.cpp) ----
  void ASSMButton_Click();
  void C_Button_Click();
  void EditorButton_Click();
  void New_EditorButton_Click();
  Toolchain& toolchain();

 private:
  // Brackets one public command: refuses it while another runs (a chip
  // operation lets events run, and a second one would interleave its
  // packets), marks the view busy, and hands the outcome over at the end.
  class CommandScope {
   public:
    explicit CommandScope(MainForm& form);
    ~CommandScope();
    CommandScope(const CommandScope&) = delete;
    CommandScope& operator=(const CommandScope&) = delete;
    bool started() const { return started_; }

   private:
    MainForm& form_;
    bool started_;
    std::uint64_t failures_at_start_ = 0;
  };

  void select_device(int index);
  void restore_device();
  void load_tool_settings();

  // Bodies of the procedures; the public names add the command bracket.
  void write_prog();
  void verify_prog();
  void write_config();
  void read_devid();
  void read_prog(std::int16_t end_address);
  void read_ee();
  void chip_erase();
  void load_hex();
  void buffer_view_command();
  void read_ad_channel0();

  // Checks before the first packet; each shows its own message box (the
  // read's check also marks the command refused).
  bool write_range_ok(std::int16_t last_address);
  bool verify_range_ok(const char* title);
  std::optional<std::int16_t> read_end_address();

  // An option handler's new word: bytes, hexadecimal text, bit display.
  void apply_config_word(std::uint16_t word);
  void toggle_option(bool& box, ConfigOption option, bool checked);
  void set_notes(const std::string& text, std::uint32_t color);
  void set_vcc(bool on);
  void set_led(bool on);
  // Repaints and lets pending events run, between the steps of a long loop.
  void yield_to_events();
  void set_progress(int value, int maximum);

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
  // The option patterns of the selected device; all zero masks before the
  // first selection, which clear the word as an unselected device should.
  ConfigOptionPatterns patterns_{};
  CommandOutcome outcome_;
  CommandOutcome running_;

  // ---- toolchain ----
  // Made at first use, on this form's boxes and LOAD_HEX.
  std::unique_ptr<Toolchain> toolchain_;
};

}  // namespace zenta

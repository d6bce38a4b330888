#pragma once
// The behaviour of the main window ZENTA_form, without any window: what it
// shows (MainView) and one method per event. The chip procedures and the
// button sequences live in programming/; this class turns box texts into
// numbers, runs them inside the unit's operation guard and shows their
// reports on its view. The Qt window forwards its events here and renders
// the view.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "common/event_pacer.h"
#include "common/host.h"
#include "common/input_file.h"
#include "common/interrupt.h"
#include "common/settings_store.h"
#include "image/buffer_view.h"
#include "image/programmer_state.h"
#include "link/unit.h"
#include "panel/main_view.h"
#include "panel/windows.h"
#include "programming/commands.h"
#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "programming/operation.h"
#include "toolchain/tool_settings.h"
#include "toolchain/toolchain.h"

namespace zenta {

// What the composition root makes and hands to the panel's parts.
struct PanelParts {
  Unit& unit;
  Host& host;
  Windows& windows;
  SettingsStore& settings;
  ProgrammerState& state;
  ToolSettings& tools;
  BufferViewModel& program_view;
  BufferViewModel& eeprom_view;
};

class MainForm : private OperationReport {
 public:
  explicit MainForm(const PanelParts& parts);
  ~MainForm() override;
  MainForm(const MainForm&) = delete;
  MainForm& operator=(const MainForm&) = delete;

  // ---- start-up and shutdown ----
  // The start-up sequence. Returns false when no unit could be opened: the
  // user has been told, and the program must end without showing a window.
  bool Form_Load();
  // EXIT button and closing the window: closes the driver.
  void shutdown();

  // ---- what the window shows ----
  MainView& view() { return view_; }
  const MainView& view() const { return view_; }
  const std::string& USBMSG() const { return unit_.link().USBMSG(); }
  const std::string& start_folder() const { return start_folder_; }
  std::int16_t ResetState() const { return reset_state_; }
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

  // ---- chip operations: what each did, refused when another runs ----
  CommandResult WriteButton_Click();
  CommandResult VerifyButton_Click();
  CommandResult ERASEButton_Click();
  CommandResult READ_Click();
  CommandResult READ_EEPROM_Click();

  // The "exact" menu item: the documented sequences byte for byte with the
  // safe-programming checks off. Kept in the settings.
  void Exact_Click(bool checked);
  // The window is closing while an operation runs: it ends at its next
  // event pause the way a failure does (programming mode left, supply off).
  // In exact mode the program ends at once, as the documented panel does:
  // the link falls silent and the operation sends nothing more.
  void request_stop() {
    stop_requested_ = true;
    if (view_.exact) unit_.link().end_quietly();
  }

  // ---- unit controls ----
  void Command_VCC_Click();
  void Command_LED_Click();
  void Command_Vset_Click(int index);
  void Command_RESET_Click();
  void Command_ID_Click();
  void Timer1_Timer();

  // ---- HEX loading and file choice; false when the file could not be loaded ----
  bool F_OpenButton_Click();
  // A file handed over from the desktop (the panel's argument, a drop onto
  // the window): what FILE OPEN does with the file the dialog returns.
  bool open_file(const std::string& path);
  bool HexSet_Button_Click();
  bool LOAD_HEX();

  // Runs one named procedure inside the unit's guard, reporting on this
  // view; false when another operation holds the unit.
  bool run_procedure(const std::function<void(ChipOperations&)>& procedure);

  // The home-page links and menu item.
  void HomePage_Click();

  // ---- buffer viewers ----
  void Buffer_view_Click();
  void BUFVIEWButton_Click();

  // ---- toolchain: tool runs and editors (main_form_tools.cpp) ----
  void ASSMButton_Click();
  void C_Button_Click();
  void EditorButton_Click();
  void New_EditorButton_Click();
  // The instrument menu items: a window that would send to the unit does
  // not open while a chip operation holds it, and the status line says so.
  void open_instrument(WindowId id, const std::string& caption);
  Toolchain& toolchain();

 private:
  // OperationReport onto the view.
  void notes(const std::string& text, std::uint32_t colour) override;
  void current_address(int address) override;
  void start_address(int address) override;
  void progress(int value, int maximum) override;
  void supply(bool on) override;
  void led(bool on) override;
  void stop_box(const std::string& text, const std::string& title) override;
  void let_events_run() override;
  // The window closing, or the program asked to end by a signal.
  bool stop_requested() override { return stop_requested_ || interrupted(); }

  CommandResult refused() const;
  // An operation of the selected entry, in the mode the Exact option sets.
  OperationRequest request(OperationKind what) const;
  // What a checked operation could not make safe, in stop boxes: a
  // calibration not written back, a target that may still be powered.
  void warn_after(const CommandResult& result);
  void show_findings(const std::vector<std::string>& findings);
  // Why a command did nothing, on the status line.
  void status(const std::string& text);
  void take_image_facts();
  bool hex_file_ok(const InputFile& file);
  void select_device(int index);
  void restore_device();
  void load_tool_settings();
  void read_devid(ChipOperations& ops);
  bool load_hex();
  bool open_chosen_file(const std::string& path);
  void buffer_view_command();
  void read_ad_channel0();
  // The unit controls take the unit when it is free; while an operation
  // holds it they wait their turn, except in exact mode.
  bool may_send_control(std::optional<Unit::Operation>& operation);

  // An option handler's new word: bytes, hexadecimal text, bit display.
  void apply_config_word(std::uint16_t word);
  void toggle_option(bool& box, ConfigOption option, bool checked);

  Unit& unit_;
  Host& host_;
  Windows& windows_;
  SettingsStore& settings_;
  ProgrammerState& state_;
  ToolSettings& tools_;
  BufferViewModel& program_view_;
  BufferViewModel& eeprom_view_;
  ChipOperations ops_;
  MainView view_;
  std::string start_folder_;
  std::int16_t reset_state_ = 0;
  int busy_listener_ = -1;
  bool stop_requested_ = false;
  // An operation's pauses repaint and let events run at most about sixty
  // times a second.
  EventPacer pauses_;
  // The option patterns of the selected device; all zero masks before the
  // first selection, which clear the word as an unselected device should.
  ConfigOptionPatterns patterns_{};

  // ---- toolchain ----
  // Made at first use, on this form's boxes and LOAD_HEX.
  std::unique_ptr<Toolchain> toolchain_;
};

}  // namespace zenta

// Configuration word editor, address boxes and the test-area toggle.
// Every text change, typed or made by the panel, goes through the box's
// Change method, so the panel's own changes get the same reaction.
#include "common/number_text.h"
#include "panel/main_form.h"
#include "programming/config_word.h"

namespace zenta {

void MainForm::apply_config_word(std::uint16_t word) {
  state_.ConfigWord = static_cast<std::uint16_t>(word);
  ConfigAddrText_Change(config_hex_text(state_.ConfigHigh(), state_.ConfigLow()));
  Config_bit_DSP();
}

void MainForm::OSCsel_Click(int index) {
  if (index >= 0 && index <= 3) view_.OSCsel = index;
  apply_config_word(
      apply_oscillator(static_cast<std::uint16_t>(state_.ConfigWord), patterns_, index));
}

// The four check boxes: the box's new state, then its bits of the word.
void MainForm::toggle_option(bool& box, ConfigOption option, bool checked) {
  box = checked;
  apply_config_word(
      apply_option(static_cast<std::uint16_t>(state_.ConfigWord), patterns_, option, checked));
}

void MainForm::WDTsel_Click(bool checked) {
  toggle_option(view_.WDTsel, ConfigOption::kWdt, checked);
}

void MainForm::PUTsel_Click(bool checked) {
  toggle_option(view_.PUTsel, ConfigOption::kPut, checked);
}

void MainForm::PRTsel_Click(bool checked) {
  toggle_option(view_.PRTsel, ConfigOption::kProtect, checked);
}

void MainForm::BORsel_Click(bool checked) {
  toggle_option(view_.BORsel, ConfigOption::kBor, checked);
}

void MainForm::ConfigAddrText_Change(const std::string& text) {
  // The text stays as typed; only the word follows it.
  view_.ConfigAddrText = text;
  const std::uint16_t word = config_word_from_text(text);
  state_.ConfigWord = static_cast<std::uint16_t>(word);
  Config_bit_DSP();
}

void MainForm::Config_bit_DSP() {
  view_.Text_Configbit = config_binary_text(static_cast<std::uint16_t>(state_.ConfigWord));
  changed();
}

void MainForm::LastAddrText_Change(const std::string& text) {
  view_.LastAddrText = text;
  // A value above the program size is replaced by the size; the change runs
  // this reaction again, which then keeps it. More than eight digits fit no
  // number and are taken as too large. LastAddress is not touched: the
  // write reads the box when it starts.
  const auto value = read_hex(text);
  if (!value || *value > state_.ProgramSize) {
    LastAddrText_Change(hex_text(state_.ProgramSize));
    return;
  }
  changed();
}

void MainForm::StartAddrText_Change(const std::string& text) {
  // The start address comes only from the selection and the loader.
  view_.StartAddrText = text;
  changed();
}

void MainForm::kage_Click() {
  view_.width_twips = kFormWidthTwips;
  if (view_.kage_tag == "0") {
    view_.height_twips = kFormTestAreaHeightTwips;
    view_.kage_tag = "1";
  } else {
    view_.height_twips = kFormHeightTwips;
    view_.kage_tag = "0";
  }
  ++view_.size_request;
  changed();
}

void MainForm::Label_KRVname_Click() {
  view_.width_twips = kFormWidthTwips;
  view_.height_twips = kFormHeightTwips;
  view_.kage_tag = "0";
  ++view_.size_request;
  changed();
}

}  // namespace zenta

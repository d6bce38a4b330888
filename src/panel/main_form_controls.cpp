// The unit controls of the test area and the reset button, and Timer1.
// The controls send their commands at once; like every command that talks
// to the unit they wait their turn while an operation holds the unit, so a
// click in one of its pauses cannot switch the supply off under a write
// (and the window shows them disabled meanwhile).
#include <string>

#include "common/number_text.h"
#include "link/unit_controls.h"
#include "panel/main_form.h"

namespace zenta {

namespace {
constexpr std::int16_t kResetLampTicks = 5;
}  // namespace

void MainForm::Command_VCC_Click() {
  std::optional<Unit::Operation> operation;
  if (!may_send_control(operation)) return;
  // The caption is the only record of the supply's state.
  ops_.set_supply(view_.Command_VCC == "VCC off");
  changed();
}

void MainForm::Command_LED_Click() {
  std::optional<Unit::Operation> operation;
  if (!may_send_control(operation)) return;
  ops_.set_led(view_.Command_LED == "LED off");
  changed();
}

void MainForm::Command_Vset_Click(int index) {
  std::optional<Unit::Operation> operation;
  if (index < kMclr0V || index > kMclrVpp || !may_send_control(operation)) return;
  set_mclr_level(unit_.link(), static_cast<MclrLevel>(index));
  read_ad_channel0();
}

void MainForm::Command_RESET_Click() {
  std::optional<Unit::Operation> operation;
  if (!may_send_control(operation)) return;
  unit_.link().SENDCMD(UNIT_MCLR_LEVEL, kMclr0V);
  view_.RESET_LAMP = kLampYellow;
  reset_state_ = kResetLampTicks;
  unit_.link().SENDCMD(UNIT_MCLR_LEVEL, kMclr5V);
  read_ad_channel0();
}

bool MainForm::may_send_control(std::optional<Unit::Operation>& operation) {
  if (!unit_.busy()) {
    operation.emplace(unit_);
    return true;
  }
  // The documented panel sends at once, also in an operation's pause.
  return view_.exact;
}

void MainForm::read_ad_channel0() {
  // Taken as unsigned 16 bits, so a first byte of 0x80 or more shows a
  // large reading (65535 shows 1311) rather than a negative one.
  const unsigned reading = read_ad_channel(unit_.link(), 0);
  view_.Text_AD = std::to_string(static_cast<long>(round_half_even(reading / 50.0)));
  changed();
}

void MainForm::Timer1_Timer() {
  view_.Text2 = std::to_string(state_.WaitTicks);
  if (state_.WaitTicks != 0) --state_.WaitTicks;
  if (toolchain_) toolchain_->Timer1_Tick();
  if (reset_state_ != 0 && --reset_state_ == 0) view_.RESET_LAMP = kLampGreen;
  changed();
}

}  // namespace zenta

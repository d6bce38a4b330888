// The unit controls of the test area and the reset button, and Timer1.
// The controls send their commands at once; like every command that talks
// to the unit they wait their turn while a chip operation runs, so a click
// in one of its pauses cannot switch the supply off under a write.
#include <string>

#include "common/number_text.h"
#include "link/command_codes.h"
#include "panel/main_form.h"

namespace zenta {

namespace {
constexpr std::int16_t kResetLampTicks = 5;
}  // namespace

void MainForm::Command_VCC_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  // The caption is the only record of the supply's state.
  set_vcc(view_.Command_VCC == "VCC off");
  changed();
}

void MainForm::Command_LED_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  set_led(view_.Command_LED == "LED off");
  changed();
}

void MainForm::Command_Vset_Click(int index) {
  CommandScope scope(*this);
  if (!scope.started()) return;
  if (index < kMclr0V || index > kMclrVpp) {
    running_.refused = true;
    return;
  }
  link_.SENDCMD(UNIT_MCLR_LEVEL, static_cast<std::uint8_t>(index));
  read_ad_channel0();
}

void MainForm::Command_RESET_Click() {
  CommandScope scope(*this);
  if (!scope.started()) return;
  link_.SENDCMD(UNIT_MCLR_LEVEL, kMclr0V);
  view_.RESET_LAMP = kLampYellow;
  reset_state_ = kResetLampTicks;
  link_.SENDCMD(UNIT_MCLR_LEVEL, kMclr5V);
  read_ad_channel0();
}

void MainForm::read_ad_channel0() {
  link_.SENDCMD(UNIT_AD_READ, 0);
  // High byte first. Taken as unsigned 16 bits, so a first byte of 0x80 or
  // more shows a large reading (65535 shows 1311) rather than a negative
  // one. After a failed exchange this is what the failed read left.
  const unsigned reading = link_.RxBuffer[0] * 256u + link_.RxBuffer[1];
  view_.Text_AD = std::to_string(static_cast<long>(round_half_even(reading / 50.0)));
  changed();
}

void MainForm::Command_ID_Click() {
  CommandScope scope(*this);
  if (scope.started()) read_devid();
}

void MainForm::Timer1_Timer() {
  view_.Text2 = std::to_string(state_.WaitTicks);
  if (state_.WaitTicks != 0) --state_.WaitTicks;
  if (toolchain_) toolchain_->Timer1_Tick();
  if (reset_state_ != 0 && --reset_state_ == 0) view_.RESET_LAMP = kLampGreen;
  changed();
}

}  // namespace zenta

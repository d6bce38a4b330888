#include "link/unit_controls.h"

namespace zenta {

std::int16_t set_target_supply(UnitLink& link, bool on) {
  return link.SENDCMD(UNIT_VCC, on ? 1 : 0);
}

std::int16_t set_unit_led(UnitLink& link, bool on) {
  return link.SENDCMD(UNIT_LED, on ? 1 : 0);
}

std::int16_t set_mclr_level(UnitLink& link, MclrLevel level) {
  return link.SENDCMD(UNIT_MCLR_LEVEL, level);
}

void pulse_target_reset(UnitLink& link) {
  link.SENDCMD(UNIT_MCLR_LEVEL, kMclr0V);
  link.SENDCMD(UNIT_MCLR_LEVEL, kMclr5V);
}

std::uint16_t read_ad_channel(UnitLink& link, std::uint8_t channel) {
  link.SENDCMD(UNIT_AD_READ, channel);
  return static_cast<std::uint16_t>(link.RxBuffer[0] * 256u + link.RxBuffer[1]);
}

}  // namespace zenta

#pragma once
// The unit's own controls as the test area's buttons use them: target
// supply, LED, MCLR/Vpp level, reset pulse and the A/D channel 0 reading.
// Callers hold the unit's Operation around them.
#include <cstdint>

#include "link/command_codes.h"
#include "link/unit_link.h"

namespace zenta {

std::int16_t set_target_supply(UnitLink& link, bool on);
std::int16_t set_unit_led(UnitLink& link, bool on);
std::int16_t set_mclr_level(UnitLink& link, MclrLevel level);
// MCLR to 0 V and back to 5 V: resets the target.
void pulse_target_reset(UnitLink& link);
// One A/D reading, high byte first, taken as unsigned 16 bits; after a
// failed exchange, what the failed read left in the reply buffer.
std::uint16_t read_ad_channel(UnitLink& link, std::uint8_t channel);

}  // namespace zenta

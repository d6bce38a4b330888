#pragma once
// Text tables of what a read brought back.
#include <string>

#include "image/programmer_state.h"

namespace zenta::cli {

// Program words 0 to count - 1, eight per line: "0008: 2805 3FFF ...".
std::string program_table(const ProgrammerState& state, int count);
// EEPROM bytes 0 to count - 1, sixteen per line: "10: FF 00 ...".
std::string eeprom_table(const ProgrammerState& state, int count);

}  // namespace zenta::cli

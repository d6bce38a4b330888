#include "image/programmer_state.h"

namespace zenta {

ProgrammerState& programmer_state() {
  static ProgrammerState state;
  return state;
}

}  // namespace zenta

#pragma once
// One door for every chip operation: both front ends build a request, run
// it here on a unit with their report, and show the result. The documented
// sequences run as they stand with `exact`; otherwise the safe checks are
// steps inside: the chip's ID checked, its calibration kept, the image held
// to the chip's memory, reads sized by the chip that answered.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "programming/commands.h"
#include "programming/safe_programming.h"

namespace zenta {

enum class OperationKind { kWrite, kVerify, kErase, kRead, kReadEeprom, kIdentify, kReadConfig };

struct OperationRequest {
  OperationKind what = OperationKind::kIdentify;
  // The catalogue entry selected, and the chip the user named, if any.
  ChipTarget target;
  bool exact = false;
  // The user's last address (the LAST box, --last): the documented sequences
  // take it as it stands (nullopt: no 16-bit number); a checked write takes
  // only a `limit`, a checked read no more than the chip holds.
  std::optional<std::int16_t> last_address;
  std::optional<int> limit;
};

struct OperationResult : CommandResult {
  Preflight preflight;  // the checks' findings; empty in exact mode
  // The last notes text and the last stop box ("TITLE: text") the
  // operation showed: the outcome line, and a refusal's reason.
  std::string notes;
  std::string box;
  std::uint64_t exchanges = 0;
  double seconds = 0;
};

// Runs the request on the operations' unit and state (the image is the
// state's ProgramBuffer); the caller holds the unit's Operation.
OperationResult do_op(ChipOperations& ops, const OperationRequest& request);

// The device parameters of a chip the catalogue does not program as it is
// (its sizes, its algorithms), into the state without a packet.
void select_chip_parameters(ProgrammerState& state, const ChipDescription& chip);

}  // namespace zenta

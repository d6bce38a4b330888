#include "link/unit.h"

#include <vector>

#include "link/command_codes.h"

namespace zenta {

Unit::Unit(UnitDriver& driver, LinkReport& report) : link_(driver, report) {}

bool Unit::read_firmware_version() {
  const bool ok = link_.SENDCMD(UNIT_VERSION) == kLinkOk;
  firmware_version_ = link_.reply_text.head();
  return ok;
}

Unit::Operation::Operation(Unit& unit) : unit_(unit), started_(!unit.busy_) {
  if (!started_) return;
  // A unit lost by an earlier operation gets another chance: it may have
  // been plugged in again, or been busy for a moment.
  unit_.link_.clear_loss();
  unit_.set_busy(true);
}

Unit::Operation::~Operation() {
  if (!started_) return;
  unit_.link_.flush_driver();
  unit_.set_busy(false);
}

int Unit::subscribe(std::function<void(bool)> listener) {
  listeners_[next_listener_] = std::move(listener);
  return next_listener_++;
}

void Unit::unsubscribe(int id) {
  listeners_.erase(id);
}

void Unit::set_busy(bool busy) {
  busy_ = busy;
  // A listener may unsubscribe itself (a window closing), so call a copy.
  std::vector<std::function<void(bool)>> calls;
  for (const auto& [id, listener] : listeners_) calls.push_back(listener);
  for (const auto& call : calls) call(busy);
}

}  // namespace zenta

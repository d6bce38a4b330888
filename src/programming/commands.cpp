#include "programming/commands.h"

#include <algorithm>

#include "common/colours.h"
#include "devices/chip_description.h"
#include "link/command_codes.h"
#include "programming/chip_protocol.h"

namespace zenta {

namespace {

constexpr const char* kAddressRangeText = "Last address out of range";

// Counts the exchanges that failed while it lived.
class FailureCount {
 public:
  explicit FailureCount(ChipOperations& ops)
      : link_(ops.unit().link()), at_start_(link_.failures()) {}
  std::uint64_t failed() const { return link_.failures() - at_start_; }

 private:
  UnitLink& link_;
  std::uint64_t at_start_;
};

CommandResult refused() {
  CommandResult result;
  result.refused = true;
  return result;
}

// The write and the verify after it must stay inside ProgramBuffer (words
// 0..9999); the word-by-word modes go one word past the last address, so
// this also refuses a last address whose successor overflows.
bool write_range_ok(const ProgrammerState& state, std::int16_t last_address) {
  const int highest = std::max(highest_write_word(state.WriteMode, last_address),
                               highest_verify_word(last_address));
  return highest < kProgramBufferWords;
}

}  // namespace

CommandResult run_write(ChipOperations& ops, std::optional<std::int16_t> last_address,
                        const std::function<void(CommandResult&)>& erase_step,
                        const WriteLimits& limits) {
  ProgrammerState& state = ops.state();
  if (state.WaitTicks != 0) return refused();
  if (state.DataLoaded == 0) {
    ops.report().stop_box("I have no data", "WRITE ERROR");
    return refused();
  }
  if (!last_address || !write_range_ok(state, *last_address)) {
    ops.report().stop_box(kAddressRangeText, "WRITE ERROR");
    return refused();
  }
  FailureCount failures(ops);
  CommandResult result;
  ops.set_led(true);
  ops.set_supply(true);
  state.LastAddress = *last_address;
  // An interrupted write skips the rest but still powers the target down;
  // one interrupted before the erase erases nothing.
  if (!ops.stop_requested()) {
    if (erase_step) {
      erase_step(result);
    } else {
      ops.CHIP_ERASE();
    }
    if (!ops.stop_requested()) ops.WRITE_PROG(limits);
  }
  result.stopped = ops.stop_requested();
  if (!result.stopped) result.mismatch = ops.VERIFY_PROG().mismatch;
  result.stopped = ops.stop_requested();
  if (!result.stopped) {
    result.config = ops.WRITE_CONFIG();
    // Safe mode: a configuration write that an exchange failure kept from
    // its cycle is tried again; the word must not be left half done.
    for (int attempt = 1; ops.stop_on_failure && ops.failed_since_mark() &&
                          !ops.unit().link().lost() && attempt < ChipOperations::kExchangeTries;
         ++attempt) {
      ops.fail_mark();
      result.config = ops.WRITE_CONFIG();
    }
  }
  // A failed check ends the toolchain's wait, as a verify's does.
  if (result.mismatch || (result.config && !result.config->written)) state.WaitTicks = 0;
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  ops.set_led(false);
  if (!result.stopped) {
    ops.report().notes("Write Complete", kLavender);
  } else {
    ops.report().notes(kStoppedText, kRed);
  }
  ops.unit().link().SENDCMD(UNIT_MCLR_LEVEL, kMclr5V);
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_verify(ChipOperations& ops) {
  // The verify takes LastAddress as it stands; the loader can leave up to
  // 10000 there, whose words still lie in the buffer. Anything larger is
  // refused before the first packet.
  if (highest_verify_word(ops.state().LastAddress) >= kProgramBufferWords) {
    ops.report().stop_box(kAddressRangeText, "VERIFY ERROR");
    return refused();
  }
  FailureCount failures(ops);
  CommandResult result;
  ops.set_led(true);
  ops.set_supply(true);
  result.mismatch = ops.VERIFY_PROG().mismatch;
  if (result.mismatch) ops.state().WaitTicks = 0;
  result.stopped = ops.stop_requested();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  ops.set_led(false);
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_erase(ChipOperations& ops) {
  FailureCount failures(ops);
  CommandResult result;
  ops.set_supply(true);
  // Asked to stop before the erase: nothing is erased.
  if (!ops.stop_requested()) ops.CHIP_ERASE();
  result.stopped = ops.stop_requested();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_read(ChipOperations& ops, std::optional<std::int16_t> end_address) {
  // The words must lie in ProgramBuffer; anything else is refused before
  // the first packet.
  if (!end_address || highest_read_word(*end_address) >= kProgramBufferWords) {
    ops.report().stop_box(kAddressRangeText, "READ ERROR");
    return refused();
  }
  FailureCount failures(ops);
  CommandResult result;
  ops.set_led(true);
  ops.set_supply(true);
  result.read = ops.READ_PROG(*end_address);
  ops.state().WaitTicks = 0;
  result.stopped = ops.stop_requested();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  ops.set_led(false);
  ops.state().DataLoaded = 0;
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_read_eeprom(ChipOperations& ops) {
  FailureCount failures(ops);
  CommandResult result;
  ops.set_led(true);
  ops.set_supply(true);
  result.read = ops.READ_EE();
  ops.state().WaitTicks = 0;
  result.stopped = ops.stop_requested();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  ops.set_led(false);
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_read_config(ChipOperations& ops) {
  FailureCount failures(ops);
  CommandResult result;
  ops.set_supply(true);
  result.config_read = ops.read_config_space(kConfigWordAddress);
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_verify_all(ChipOperations& ops, int last_word, std::optional<int> config_word,
                             int config_mask) {
  ProgrammerState& state = ops.state();
  if (last_word < -1 || last_word >= kProgramBufferWords) {
    ops.report().stop_box(kAddressRangeText, "VERIFY ERROR");
    return refused();
  }
  FailureCount failures(ops);
  CommandResult result;
  UnitLink& link = ops.unit().link();
  OperationReport& report = ops.report();
  ops.set_led(true);
  ops.set_supply(true);
  report.notes("Verify", kWhite);
  enter_programming_mode(link);
  const int total = last_word + 1;
  for (int a = 0; a < total && !result.mismatch && !result.stopped; a += 4) {
    if (a != 0) link.SENDCMD(ICSP_INC_ADDR, 1);
    link.SENDCMD(ICSP_READ_DATA, 4);
    for (int n = 0; n < 4 && a + n < total; ++n) {
      const int chip = link.RxBuffer[2 * n] * 256 + link.RxBuffer[2 * n + 1];
      if (chip != state.word(a + n)) {
        result.mismatch = VerifyMismatch{a + n, state.word(a + n), chip};
        break;
      }
    }
    report.progress(std::min(a + 4, total), total);
    report.let_events_run();
    result.stopped = ops.stop_requested();
  }
  ops.leave(LeaveMode::kAfterWrite);
  report.progress(0, 0);
  if (!result.mismatch && !result.stopped && config_word) {
    const int chip = ops.read_config_space(kConfigWordAddress);
    if ((chip & config_mask) != (*config_word & config_mask)) {
      result.mismatch = VerifyMismatch{kConfigWordAddress, *config_word, chip};
    }
  }
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  ops.set_led(false);
  if (result.mismatch) {
    report.stop_box("Verify Data ERROR", "VERIFY ERROR");
    report.notes("Verify Error", kRed);
  } else if (result.stopped) {
    report.notes(kStoppedText, kRed);
  } else {
    report.notes("Verify Complete", kWhite);
  }
  result.failed_exchanges = failures.failed();
  return result;
}

CommandResult run_identify(ChipOperations& ops) {
  FailureCount failures(ops);
  CommandResult result;
  ops.set_supply(true);
  result.device = ops.READ_DEVID();
  ops.set_supply(false);
  result.target_powered = ops.target_may_be_powered();
  result.failed_exchanges = failures.failed();
  return result;
}

}  // namespace zenta

#include "programming/device_catalogue.h"

namespace zenta {

void select_device_parameters(ProgrammerState& state, int index) {
  const DeviceRecord& record = device_record(index);
  state.DeviceFamily = record.family;
  state.EraseMode = record.erase_code;
  state.WriteMode = record.write_code;
  state.ProgramSize = record.program_size;
  state.StartAddress = record.start_address;
  state.LastAddress = record.last_address;
  state.EepromLastAddress = record.eeprom_last_address;
  state.ConfigWord = static_cast<std::uint16_t>(record.default_config_word);
}

}  // namespace zenta

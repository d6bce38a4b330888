#include "programming/operation.h"

#include <algorithm>
#include <chrono>

#include "programming/chip_protocol.h"

namespace zenta {

namespace {

// Passes everything on to the front end's report and keeps the texts the
// result carries.
class RecordingReport : public OperationReport {
 public:
  explicit RecordingReport(OperationReport& inner) : inner_(inner) {}
  void notes(const std::string& text, std::uint32_t colour) override {
    notes_ = text;
    inner_.notes(text, colour);
  }
  void current_address(int address) override { inner_.current_address(address); }
  void start_address(int address) override { inner_.start_address(address); }
  void progress(int value, int maximum) override { inner_.progress(value, maximum); }
  void supply(bool on) override { inner_.supply(on); }
  void led(bool on) override { inner_.led(on); }
  void stop_box(const std::string& text, const std::string& title) override {
    box_ = title + ": " + text;
    inner_.stop_box(text, title);
  }
  void let_events_run() override { inner_.let_events_run(); }
  bool stop_requested() override { return inner_.stop_requested(); }

  std::string notes_;
  std::string box_;

 private:
  OperationReport& inner_;
};

CommandResult refused(const Preflight& preflight, const ChipOperations& ops) {
  CommandResult result;
  result.refused = true;
  result.stopped = preflight.interrupted;
  result.target_powered = ops.target_may_be_powered();
  return result;
}

// A checked read reads the memories of the chip that answered: an entry's
// sizes can be larger than its chip's, whose words would be read again
// from address 0.
bool take_chip_sizes(ChipOperations& ops, const OperationRequest& request, Preflight& preflight) {
  preflight = check_chip(ops, request.target);
  if (preflight.refused) return false;
  ProgrammerState& state = ops.state();
  state.ProgramSize = static_cast<std::int16_t>(preflight.program_words);
  if (preflight.chip) {
    state.EepromLastAddress = static_cast<std::int16_t>(preflight.chip->eeprom_bytes - 1);
  }
  return true;
}

CommandResult run_exact(ChipOperations& ops, const OperationRequest& request) {
  switch (request.what) {
    case OperationKind::kWrite:
      return run_write(ops, request.last_address);
    case OperationKind::kVerify:
      if (request.last_address) ops.state().LastAddress = *request.last_address;
      return run_verify(ops);
    case OperationKind::kErase:
      return run_erase(ops);
    case OperationKind::kRead:
      return run_read(ops, request.last_address);
    case OperationKind::kReadEeprom:
      return run_read_eeprom(ops);
    case OperationKind::kIdentify:
      return run_identify(ops);
    case OperationKind::kReadConfig:
      break;
  }
  return run_read_config(ops);
}

CommandResult run_checked(ChipOperations& ops, const OperationRequest& request,
                          Preflight& preflight) {
  ProgrammerState& state = ops.state();
  switch (request.what) {
    case OperationKind::kWrite:
      // Nothing loaded or a tool still running: refused as the write itself
      // refuses, before the pre-flight touches the chip.
      if (state.WaitTicks != 0 || state.DataLoaded == 0) {
        return run_write(ops, request.last_address);
      }
      return run_checked_write(ops, request.target, request.limit, preflight);
    case OperationKind::kVerify: {
      // Every word of the image through its last program word (or through
      // the limit), then its configuration word when it holds one; a
      // calibrated chip keeps its own band-gap bits whatever the file says.
      const int last = request.limit ? std::min<int>(*request.limit, state.ProgramSize - 1)
                                     : last_image_word(state, state.ProgramSize);
      const std::optional<std::uint16_t> config = image_config_word(state);
      const auto chip = request.target.chip;
      std::uint16_t mask = chip ? chip->config_mask() : 0x3FFF;
      for (const ChipDescription& entry_chip : entry_chips(request.target.entry)) {
        if (!chip) mask &= entry_chip.config_mask();
      }
      return run_verify_all(ops, last, config ? std::optional<int>(*config) : std::nullopt, mask);
    }
    case OperationKind::kErase:
      return run_checked_erase(ops, request.target, preflight);
    case OperationKind::kRead: {
      if (!take_chip_sizes(ops, request, preflight)) return refused(preflight, ops);
      const int end = std::min<int>(request.limit.value_or(state.ProgramSize), state.ProgramSize);
      return run_read(ops, static_cast<std::int16_t>(end));
    }
    case OperationKind::kReadEeprom:
      if (!take_chip_sizes(ops, request, preflight)) return refused(preflight, ops);
      return run_read_eeprom(ops);
    case OperationKind::kIdentify:
    case OperationKind::kReadConfig:
      break;
  }
  return run_exact(ops, request);
}

}  // namespace

OperationResult do_op(ChipOperations& ops, const OperationRequest& request) {
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t exchanges_before = ops.unit().link().exchanges();
  RecordingReport report(ops.report());
  ChipOperations recorded(ops.unit(), ops.state(), report);
  recorded.checked = !request.exact;
  OperationResult result;
  static_cast<CommandResult&>(result) = request.exact
                                            ? run_exact(recorded, request)
                                            : run_checked(recorded, request, result.preflight);
  if (result.preflight.refused) {
    result.refused = true;
    result.stopped = result.stopped || result.preflight.interrupted;
  }
  result.target_powered = result.target_powered || recorded.target_may_be_powered();
  result.notes = report.notes_;
  result.box = report.box_;
  result.exchanges = ops.unit().link().exchanges() - exchanges_before;
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return result;
}

void select_chip_parameters(ProgrammerState& state, const ChipDescription& chip) {
  state.DeviceFamily = chip.family;
  state.EraseMode = erase_code(chip.erase);
  state.WriteMode = write_code(chip.write);
  state.ProgramSize = static_cast<std::int16_t>(chip.program_words);
  state.StartAddress = 0;
  state.LastAddress = static_cast<std::int16_t>(chip.program_words - 1);
  state.EepromLastAddress = static_cast<std::int16_t>(chip.eeprom_bytes - 1);
  const int word = chip.config.empty() ? 0x3FFF : chip.config.front().default_word;
  state.ConfigWord = static_cast<std::uint16_t>(word);
}

}  // namespace zenta

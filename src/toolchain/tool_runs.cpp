// The assembler and C compiler runs. A run is driven by Timer1: it starts
// the tool, waits its ticks and then for the tool to end, and only then
// looks at the files the tool wrote.
#include <chrono>
#include <filesystem>
#include <system_error>

#include "common/file_names.h"
#include "toolchain/text_views.h"
#include "toolchain/toolchain.h"

namespace zenta {

namespace {
// WaitTicks while a run waits: set to the first, done below the second.
constexpr std::int16_t kWaitFrom = 50;
constexpr std::int16_t kWaitUntil = 40;
// File times of some file systems are coarse; an error file this much
// older than the run's start was left by an earlier run.
constexpr auto kFileTimeSlack = std::chrono::seconds(2);

std::string run_label(ToolKind kind) {
  return kind == ToolKind::kAssembler ? "Assembler" : "Compile";
}
}  // namespace

struct Toolchain::Run {
  ToolKind kind;
  ToolNames names;
  std::string command_line;
  std::unique_ptr<ToolProcess> process;
  std::filesystem::file_time_type started;
  int ticks = 0;
};

Toolchain::Toolchain(const ToolSettings& tools, ProgrammerState& state, Host& host, ToolPanel panel)
    : tools_(tools), state_(state), host_(host), panel_(std::move(panel)) {}

Toolchain::~Toolchain() = default;

void Toolchain::notes(const std::string& text, std::uint32_t color) {
  if (panel_.notes) panel_.notes(text, color);
}

void Toolchain::test_box(const std::string& text) {
  if (panel_.test_box) panel_.test_box(text);
}

void Toolchain::ASSMButton_Click() {
  start_run(ToolKind::kAssembler);
}

void Toolchain::C_Button_Click() {
  start_run(ToolKind::kCompiler);
}

void Toolchain::start_run(ToolKind kind) {
  const std::string path = panel_.file_name ? panel_.file_name() : std::string();
  // One run at a time: a second would overwrite the first one's files.
  if (path.empty() || run_) {
    host_.beep();
    if (run_ && panel_.status) {
      panel_.status(std::string(kind == ToolKind::kAssembler ? "Assembler" : "C compiler") +
                    " not started: the " +
                    (run_->kind == ToolKind::kAssembler ? "assembler" : "C compiler") +
                    " run before it has not ended");
    }
    return;
  }
  // Checked, a tool runs in its source's folder, so that what it writes
  // beside itself (the compiler's cerr.txt, listings) lands there and not in
  // whatever folder the panel was started from.
  namespace fs = std::filesystem;
  std::string folder_of_run;
  std::string argument = path;
  if (!exact()) {
    const fs::path absolute = fs::path(host_.current_folder()) / fs::path(path);
    folder_of_run = absolute.parent_path().string();
    argument = absolute.string();
  }
  const std::optional<ToolNames> names =
      tool_names(kind, path, folder_of_run.empty() ? host_.current_folder() : folder_of_run);
  if (!names) return;
  const bool assembler = kind == ToolKind::kAssembler;
  notes(run_label(kind), kWhite);
  state_.TargetFileName = path;
  if (assembler) {
    tool_error_file_ = names->error_file;
    test_box(tool_error_file_);
  }
  const std::string& folder = assembler ? tools_.AsmFolder : tools_.CFolder;
  const std::string& command = assembler ? tools_.AsmCommand : tools_.CCommand;
  auto run = std::make_unique<Run>();
  run->kind = kind;
  run->names = *names;
  run->command_line = tool_command_line(folder, command, path);
  test_box(run->command_line);
  run->started = std::filesystem::file_time_type::clock::now();
  run->process = host_.start_tool(tool_command(folder, command), argument, folder_of_run);
  if (!run->process) {
    host_.message_box("File not found", "OPEN ERROR", MessageIcon::kStop);
    return;
  }
  tool_output_.clear();
  run_ = std::move(run);
  state_.WaitTicks = kWaitFrom;
}

void Toolchain::Timer1_Tick() {
  if (!run_) return;
  Run& run = *run_;
  ++run.ticks;
  // Past the wait, WaitTicks stays at 0 or 1 (below), so this passes.
  if (state_.WaitTicks >= kWaitUntil) return;
  if (!run.process->finished()) {
    if (run.ticks >= kLimitTicks) {
      run.process->kill();
      fail_run("The tool did not end within " + std::to_string(kLimitTicks / 10) +
                   " seconds and was stopped; its files were not read.",
               "TOOL ERROR");
      return;
    }
    // Half-written files are never read, and WRITE stays idle meanwhile,
    // so it cannot write the image of the run before.
    state_.WaitTicks = 1;
    return;
  }
  state_.WaitTicks = 0;
  // A chip operation that lets events run would have its buffer replaced
  // under it; the image loads when it has ended.
  if (panel_.busy && panel_.busy()) return;
  finish_run();
}

void Toolchain::fail_run(const std::string& text, const std::string& title) {
  const ToolKind kind = run_->kind;
  run_.reset();
  state_.WaitTicks = 0;
  notes(run_label(kind) + " ERROR", kRed);
  host_.message_box(text, title, MessageIcon::kStop);
}

void Toolchain::finish_run() {
  namespace fs = std::filesystem;
  const std::unique_ptr<Run> run = std::move(run_);
  const std::string label = run_label(run->kind);
  // The tools write the derived names in their own case (blink.err).
  tool_error_file_ = resolve_case_insensitive(run->names.error_file);
  std::error_code error;
  bool exists = fs::is_regular_file(tool_error_file_, error);
  if (exists) {
    const auto written = fs::last_write_time(tool_error_file_, error);
    if (!error && written + kFileTimeSlack < run->started) exists = false;
  }
  const std::uintmax_t length = exists ? fs::file_size(tool_error_file_, error) : 0;
  const int status = run->process->exit_status();
  if (status != 0 && length == 0) {
    // The tool failed without a message of its own (a bad option, a source
    // it cannot open): what it printed is all the user has to go on.
    const std::string ended =
        status < 0 ? "ended abnormally" : "ended with status " + std::to_string(status);
    tool_output_ = with_crlf(run->command_line + "\n" + ended + ", writing nothing to " +
                             tool_error_file_ + ". It printed:\n" + run->process->output());
    notes(label + " ERROR", kRed);
    if (panel_.show_errors) panel_.show_errors();
    return;
  }
  // A compiler that writes its message file only when it has messages has
  // none to give when the file is missing: the HEX file decides, and the
  // loader reports it when that is missing too.
  if (!exists && run->kind == ToolKind::kAssembler) {
    test_box(tool_error_file_);
    host_.message_box("File not found", "OPEN ERROR", MessageIcon::kStop);
    return;
  }
  if (length != 0) {
    notes(label + " ERROR", kRed);
    if (panel_.show_errors) panel_.show_errors();
    return;
  }
  notes(label + " complete", kWhite);
  state_.HexFileName = run->names.hex_file;
  test_box(state_.HexFileName);
  if (panel_.load_hex) panel_.load_hex();
}

std::string Toolchain::error_view_text() const {
  return read_lines_crlf(tool_error_file_) + tool_output_;
}

}  // namespace zenta

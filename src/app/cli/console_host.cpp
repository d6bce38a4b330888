#include "cli/console_host.h"

#include <algorithm>
#include <filesystem>

namespace zenta::cli {

namespace {
constexpr int kBarWidth = 40;
}

void ConsoleHost::message_box(const std::string& text, const std::string& title, MessageIcon) {
  ++message_count_;
  std::string line = title + ": " + text;
  // An unplugged unit fails every exchange of a long write; one line with
  // a count says the same as thousands.
  if (line == last_message_) {
    ++repeats_;
    return;
  }
  clear_bar();
  flush_repeats();
  err_ << line << '\n';
  err_.flush();
  last_message_ = std::move(line);
}

void ConsoleHost::process_events() {
  if (!terminal_ || view_ == nullptr) return;
  const Progress& progress = view_->progress;
  if (progress.maximum <= 0) {
    clear_bar();
    return;
  }
  const int value = std::clamp(progress.value, 0, progress.maximum);
  const int percent = static_cast<int>(static_cast<long long>(value) * 100 / progress.maximum);
  if (percent == shown_percent_) return;
  const int filled = percent * kBarWidth / 100;
  err_ << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
       << std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') << "] " << percent << "%";
  err_.flush();
  shown_percent_ = percent;
}

void ConsoleHost::finish() {
  clear_bar();
  flush_repeats();
  last_message_.clear();
}

std::string ConsoleHost::current_folder() const {
  std::error_code error;
  const auto folder = std::filesystem::current_path(error);
  return error ? std::string() : folder.string();
}

void ConsoleHost::clear_bar() {
  if (shown_percent_ < 0) return;
  err_ << '\r' << std::string(kBarWidth + 8, ' ') << '\r';
  err_.flush();
  shown_percent_ = -1;
}

void ConsoleHost::flush_repeats() {
  if (repeats_ == 0) return;
  err_ << "  (" << repeats_ << " more time" << (repeats_ == 1 ? "" : "s") << ")\n";
  err_.flush();
  repeats_ = 0;
}

}  // namespace zenta::cli

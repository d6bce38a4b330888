#include "cli/console.h"

#include <algorithm>
#include <filesystem>

#include "common/interrupt.h"

namespace zenta::cli {

namespace {
constexpr int kBarWidth = 40;
}

void Console::message_box(const std::string& text, const std::string& title, MessageIcon) {
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

void Console::notes(const std::string& text, std::uint32_t) {
  if (verbose_ && text != notes_) {
    clear_bar();
    err_ << "  " << text << '\n';
  }
  notes_ = text;
}

bool Console::stop_requested() {
  return interrupted();
}

void Console::progress(int value, int maximum) {
  if (!terminal_) return;
  if (maximum <= 0) {
    clear_bar();
    return;
  }
  value = std::clamp(value, 0, maximum);
  const int percent = static_cast<int>(static_cast<long long>(value) * 100 / maximum);
  if (percent == shown_percent_) return;
  const int filled = percent * kBarWidth / 100;
  err_ << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
       << std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') << "] " << percent << "%";
  err_.flush();
  shown_percent_ = percent;
}

void Console::finish() {
  clear_bar();
  flush_repeats();
  last_message_.clear();
}

std::string Console::current_folder() const {
  std::error_code error;
  const auto folder = std::filesystem::current_path(error);
  return error ? std::string() : folder.string();
}

void Console::clear_bar() {
  if (shown_percent_ < 0) return;
  err_ << '\r' << std::string(kBarWidth + 8, ' ') << '\r';
  err_.flush();
  shown_percent_ = -1;
}

void Console::flush_repeats() {
  if (repeats_ == 0) return;
  err_ << "  (" << repeats_ << " more time" << (repeats_ == 1 ? "" : "s") << ")\n";
  err_.flush();
  repeats_ = 0;
}

}  // namespace zenta::cli

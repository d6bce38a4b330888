#include "toolchain/text_views.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace zenta {

std::string read_lines_crlf(const std::string& path, bool* ok) {
  std::string text;
  std::error_code error;
  std::ifstream file;
  // A folder opens on some systems but cannot be read.
  if (!path.empty() && !std::filesystem::is_directory(path, error)) {
    file.open(path, std::ios::binary);
  }
  if (!file.is_open()) {
    if (ok) *ok = false;
    return text;
  }
  std::string line;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    text += line;
    text += "\r\n";
  }
  if (ok) *ok = !file.bad();
  return text;
}

std::string with_crlf(const std::string& text) {
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) out += '\r';
    out += text[i];
  }
  return out;
}

std::string read_whole_text(const std::string& path) {
  std::error_code error;
  if (path.empty() || std::filesystem::is_directory(path, error)) return {};
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open()) text << file.rdbuf();
  return text.str();
}

bool crlf_line_ends(const std::string& text) {
  const std::size_t end = text.find('\n');
  if (end == std::string::npos) {
#ifdef _WIN32
    return true;
#else
    return false;
#endif
  }
  return end > 0 && text[end - 1] == '\r';
}

std::optional<SourceLocation> message_location(const std::string& line,
                                               const std::string& source_folder) {
  // gpasm and the classic assembler: kind[number], blanks, file, line, " : ".
  static const std::regex bracket_form(
      R"(^\s*(?:Error|Warning|Message)\[\d+\]\s+(.*\S)\s+(\d+)\s*:)");
  // gpasm's own: file:line:kind[number].
  static const std::regex colon_form(R"(^\s*(.*\S):(\d+):\s*(?:Error|Warning|Message)\[\d+\])");
  std::smatch match;
  std::string text = line;
  while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
  if (!std::regex_search(text, match, bracket_form) &&
      !std::regex_search(text, match, colon_form)) {
    return std::nullopt;
  }
  SourceLocation location;
  location.file = match[1].str();
  try {
    location.line = std::stoi(match[2].str());
  } catch (const std::out_of_range&) {
    return std::nullopt;
  }
  if (location.line < 1) return std::nullopt;
  const std::filesystem::path file(location.file);
  if (file.is_relative() && !source_folder.empty()) {
    location.file = (std::filesystem::path(source_folder) / file).string();
  }
  return location;
}

ErrorViewLayout error_view_layout(int width, int height) {
  ErrorViewLayout layout;
  layout.text = {0, 0, std::max(0, width - 140), std::max(0, height - 500)};
  layout.exit_left = std::max(0, width - 1500);
  layout.exit_top = std::max(0, height - 1000);
  return layout;
}

std::optional<EditorLayout> editor_layout(int width, int height) {
  if (height < 500) return std::nullopt;
  EditorLayout layout;
  layout.text = {0, 0, std::max(0, width - 140), height - 500};
  layout.save_left = std::max(0, width - 2500);
  layout.save_top = std::max(0, height - 1200);
  layout.exit_left = std::max(0, width - 1500);
  layout.exit_top = std::max(0, height - 1200);
  return layout;
}

}  // namespace zenta

#include "common/file_names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <vector>

namespace zenta {

namespace {
std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}
}  // namespace

std::string join_folder(const std::string& folder, const std::string& name) {
#ifdef _WIN32
  return folder + "\\" + name;
#else
  return folder + "/" + name;
#endif
}

std::string resolve_case_insensitive(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path wanted(path);
  if (path.empty() || fs::exists(wanted, error)) return path;
  const fs::path folder = wanted.has_parent_path() ? wanted.parent_path() : fs::path(".");
  const std::string name = lower(wanted.filename().string());
  std::vector<fs::path> matches;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    if (lower(it->path().filename().string()) == name) matches.push_back(it->path());
  }
  if (matches.empty()) return path;
  std::sort(matches.begin(), matches.end());
  // Keep the folder part as the caller wrote it.
  return (wanted.has_parent_path() ? wanted.parent_path() / matches.front().filename()
                                   : matches.front().filename())
      .string();
}

std::string file_extension(const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  const auto dot = name.rfind('.');
  // A leading dot names a hidden file, not an extension.
  if (dot == std::string::npos || dot == 0) return "";
  return lower(name.substr(dot));
}

std::string with_chosen_extension(const std::string& path, const std::string& filter,
                                  std::size_t choice) {
  if (path.empty() || !file_extension(path).empty()) return path;
  // "Caption|patterns|Caption|patterns|": the choice's patterns are field 2 x choice + 1.
  std::size_t start = 0;
  for (std::size_t field = 0; field < 2 * choice + 1; ++field) {
    start = filter.find('|', start);
    if (start == std::string::npos) return path;
    ++start;
  }
  const std::string patterns = filter.substr(start, filter.find_first_of("|;", start) - start);
  const auto dot = patterns.rfind('.');
  if (dot == std::string::npos || patterns.find('*', dot) != std::string::npos) return path;
  return path + patterns.substr(dot);
}

}  // namespace zenta

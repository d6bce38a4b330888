#include "platform/host_rules.h"

#include <algorithm>
#include <cctype>

namespace zenta {

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string part;
  for (char c : text) {
    if (c == separator) {
      parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  parts.push_back(part);
  return parts;
}

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

std::string join(const std::vector<std::string>& words, std::size_t count) {
  std::string joined;
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) joined += ' ';
    joined += words[i];
  }
  return joined;
}

std::string base_name(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::vector<DialogFilter> parse_dialog_filter(const std::string& filter,
                                              bool case_sensitive_names) {
  std::vector<std::string> parts = split(filter, '|');
  // The trailing "|" leaves an empty last part.
  if (!parts.empty() && parts.back().empty()) parts.pop_back();
  std::vector<DialogFilter> filters;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    DialogFilter choice{parts[i], {}};
    for (const std::string& pattern : split(parts[i + 1], ';')) {
      if (pattern.empty()) continue;
      if (case_sensitive_names && pattern == "*.*") {
        choice.patterns.push_back("*");
        continue;
      }
      choice.patterns.push_back(pattern);
      const std::string twin = upper(pattern);
      if (case_sensitive_names && twin != pattern) choice.patterns.push_back(twin);
    }
    filters.push_back(std::move(choice));
  }
  return filters;
}

std::string name_filter_text(const DialogFilter& filter) {
  return filter.caption + " (" + join(filter.patterns, filter.patterns.size()) + ")";
}

std::vector<std::string> split_command_line(const std::string& command_line) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  bool quoted = false;
  for (char c : command_line) {
    if (c == '"') {
      quoted = !quoted;
      in_word = true;
    } else if (!quoted && (c == ' ' || c == '\t')) {
      if (in_word) words.push_back(word);
      word.clear();
      in_word = false;
    } else {
      word += c;
      in_word = true;
    }
  }
  if (in_word) words.push_back(word);
  return words;
}

LaunchCommand resolve_launch(const std::string& command_line,
                             const std::function<bool(const std::string&)>& file_exists,
                             const std::function<std::string(const std::string&)>& find_on_path,
                             bool look_up_on_path) {
  const std::vector<std::string> words = split_command_line(command_line);
  LaunchCommand launch;
  if (words.empty()) return launch;
  std::size_t program_words = 0;
  for (std::size_t count = 1; count <= words.size(); ++count) {
    if (file_exists(join(words, count))) {
      program_words = count;
      break;
    }
  }
  if (program_words != 0) {
    launch.program = join(words, program_words);
  } else {
    program_words = 1;
    launch.program = words[0];
    if (look_up_on_path) {
      const std::string found = find_on_path(base_name(words[0]));
      if (!found.empty()) launch.program = found;
    }
  }
  launch.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(program_words), words.end());
  return launch;
}

DialogStart dialog_start(const std::string& remembered_folder, const std::string& remembered_filter,
                         const std::vector<std::string>& name_filters,
                         const std::string& current_folder,
                         const std::function<bool(const std::string&)>& folder_exists) {
  DialogStart start;
  const bool folder_there = !remembered_folder.empty() && folder_exists(remembered_folder);
  start.folder = folder_there ? remembered_folder : current_folder;
  for (const std::string& filter : name_filters) {
    if (filter == remembered_filter) start.filter = filter;
  }
  return start;
}

std::string dialog_folder_key(const std::string& kind) {
  return kind + "_FOLDER";
}

std::string dialog_filter_key(const std::string& kind) {
  return kind + "_FILTER";
}

}  // namespace zenta

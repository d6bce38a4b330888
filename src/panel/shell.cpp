#include "panel/shell.h"

#include <fstream>

namespace zenta {

std::string help_file_path(const std::string& asm_folder) {
  return join_folder(asm_folder, kHelpFileName);
}

void HelpForm::Form_Load(Host& host, const std::string& path) {
  text1_.clear();
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    host.message_box("File not found", "FILE ERROR", MessageIcon::kStop);
    return;
  }
  std::string line;
  while (std::getline(file, line)) {
    // A line ends at LF; the CR of a CR LF file belongs to the line end.
    if (!line.empty() && line.back() == '\r') line.pop_back();
    text1_ += line;
    text1_ += "\r\n";
  }
  if (file.bad()) {
    host.message_box("File not found", "FILE ERROR", MessageIcon::kStop);
  }
}

HelpLayout help_layout(int width_twips, int height_twips) {
  HelpLayout layout;
  layout.text = {0, 0, width_twips - 140, height_twips - 500};
  layout.exit_top = height_twips - 1100;
  layout.exit_left = width_twips - 1500;
  return layout;
}

std::string panel_version_text() {
  return "Version " + std::to_string(ZENTA_VERSION_MAJOR) + "." +
         std::to_string(ZENTA_VERSION_MINOR);
}

std::string firmware_version_text(const std::string& firmware_version) {
  auto character = [&](std::size_t position) {
    return firmware_version.size() >= position ? firmware_version.substr(position - 1, 1)
                                               : std::string();
  };
  return "Firmware version " + character(7) + "." + character(8);
}

std::string installed_homepage_url() {
  std::string path = ZENTA_DATA_DIR "/zenta.html";
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  // A Windows path starts with its drive letter and needs a third slash.
  return (path.starts_with('/') ? "file://" : "file:///") + path;
}

std::string homepage_url(SettingsStore& settings) {
  std::string url = settings.get(kSettingsApp, kPanelSection, kHomePageKey);
  return url.empty() ? installed_homepage_url() : url;
}

void open_homepage(Host& host, const std::string& url) {
  if (!host.open_url(url)) host.beep();
}

const std::vector<std::string>& calculator_candidates() {
#ifdef _WIN32
  static const std::vector<std::string> candidates = {"calc.exe"};
#else
  static const std::vector<std::string> candidates = {"gnome-calculator", "kcalc", "galculator",
                                                      "xcalc", "qalculate-gtk"};
#endif
  return candidates;
}

bool start_calculator(Host& host) {
  for (const std::string& program : calculator_candidates()) {
    if (host.start_program(program, true)) return true;
  }
  host.message_box("No calculator could be started", "Calculator", MessageIcon::kExclamation);
  return false;
}

}  // namespace zenta

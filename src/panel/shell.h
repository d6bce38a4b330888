#pragma once
// The shell's small functions around the main window: the help window's
// text, the version window's labels, the home page and the calculator.
// The windows only show what these return.
#include <string>
#include <vector>

#include "common/file_names.h"
#include "common/host.h"
#include "common/settings_store.h"

namespace zenta {

// The maker's home page as the version window and the main window's link
// label show it. That address does not resolve, so the links open
// homepage_url() instead.
inline constexpr const char* kHomePageUrl = "https://korvan.example/zenta/";
// The panel's section key that names another page for the links.
inline constexpr const char* kHomePageKey = "HOMEPAGE";
// The documentation page installed with the panel, as a file address.
std::string installed_homepage_url();
// The version window's notice line.
inline constexpr const char* kNoticeLine = "Free to use and share. No warranty of any kind.";
inline constexpr const char* kHelpFileName = "ZENTA.TXT";

// Folder and file name joined with the platform's separator ("\" on
// Windows, "/" elsewhere), exactly as the settings hold the folder: an
// empty folder gives a name in the root, as the panel always has.
std::string join_folder(const std::string& folder, const std::string& name);
// The help file lives in the assembler folder.
std::string help_file_path(const std::string& asm_folder);

// The help window's Text1 and its load.
class HelpForm {
 public:
  // Clears Text1 and fills it line by line from the file at `path`, each
  // line followed by CR LF. A file that cannot be opened or read shows
  // "File not found" / "FILE ERROR" and leaves what was read so far.
  void Form_Load(Host& host, const std::string& path);
  const std::string& Text1() const { return text1_; }

 private:
  std::string text1_;
};

// Geometry of a window's controls in twips, from its outer size.
struct TwipsRect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};
struct HelpLayout {
  TwipsRect text;  // left, top 0
  int exit_left = 0;
  int exit_top = 0;
};
HelpLayout help_layout(int width_twips, int height_twips);

// Version window labels.
std::string panel_version_text();  // "Version 1.1"
// "Firmware version " + character 7 + "." + character 8; missing
// characters count as empty.
std::string firmware_version_text(const std::string& firmware_version);

// The page the home-page links open: the settings' HOMEPAGE when given,
// else the installed documentation page.
std::string homepage_url(SettingsStore& settings);

// Opens the page in the default browser. A browser that cannot be started
// is only a beep: the panel goes on.
void open_homepage(Host& host, const std::string& url);

// The desktop calculators tried in order; the first that starts wins.
const std::vector<std::string>& calculator_candidates();
// Starts the first calculator that can be started, minimised as the panel
// always asked for. When none starts, the user is told and the panel goes
// on. Returns whether one started.
bool start_calculator(Host& host);

}  // namespace zenta

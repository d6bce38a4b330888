#pragma once
// What the main window ZENTA_form shows: texts, captions, colours, checked
// options, lamp and size. The core writes it; the Qt window only renders it.
#include <cstdint>
#include <string>

#include "common/colours.h"

namespace zenta {

inline constexpr int kFormWidthTwips = 9000;
inline constexpr int kFormHeightTwips = 5400;
inline constexpr int kFormTestAreaHeightTwips = 6900;

// Long operations report how far they are, for a progress bar under the
// notes line.
struct Progress {
  int value = 0;
  int maximum = 0;  // 0: no operation running, the bar is hidden
};

struct MainView {
  std::string NotesLabel;
  std::uint32_t NotesColor = kWhite;
  // What the safe-programming checks found, below the notes line: "16F628A
  // rev 3 - calibration 3480 kept". Empty in exact mode.
  std::string StatusLine;
  // The "exact" setting: the documented sequences byte for byte, no checks.
  bool exact = false;

  std::string FilenameTextbox = "File name";
  std::string StartAddrText;
  std::string LastAddrText;
  std::string CurrentAddrText;

  std::string Text_Device;
  std::string Text_AD;
  std::string Text2;
  std::string Text_ADMON;
  std::string TEST;
  std::string Label7;
  std::string Label9;

  std::string ConfigAddrText;
  std::string Text_Configbit;

  int PICsel = -1;  // checked device option, -1 before the first selection
  int OSCsel = 0;
  bool WDTsel = false;
  bool PUTsel = false;
  bool PRTsel = false;
  bool BORsel = false;

  std::string Command_VCC = "VCC off";
  std::string Command_LED = "LED off";
  std::uint32_t RESET_LAMP = kLampGreen;

  // Tag of the picture box kage: empty at start, "0" collapsed, "1" open.
  std::string kage_tag;
  // Outer size of the window, frame included. size_request counts the
  // panel's requests for it, so asking for the size the view already holds
  // still sizes a window the user has resized since.
  int width_twips = kFormWidthTwips;
  int height_twips = kFormHeightTwips;
  int size_request = 0;

  Progress progress;
  // True while a chip operation runs; the commands that would start another
  // are refused and shown disabled.
  bool busy = false;
};

}  // namespace zenta

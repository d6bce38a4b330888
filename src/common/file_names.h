#pragma once
// File names the panel derives itself (blink.HEX, blink.ERR) were matched
// without regard to case on the system the panel comes from; the tools on
// other systems write them in their own case (gputils writes blink.hex).
#include <cstddef>
#include <string>

namespace zenta {

// Folder and file name joined with the platform's separator ("\\" on
// Windows, "/" elsewhere), exactly as the settings hold the folder: an
// empty folder gives a name in the root, as the panel always has.
std::string join_folder(const std::string& folder, const std::string& name);

// `path` itself when it exists; otherwise the entry of its folder whose name
// equals its last component without regard to case (the first in name order
// when several do); otherwise `path` unchanged.
std::string resolve_case_insensitive(const std::string& path);

// The extension of a path's file name, dot included, in lower case; empty
// when the name has none.
std::string file_extension(const std::string& path);

// `path` with the extension of the dialog filter's choice ("VCD file|*.vcd|
// CSV file|*.csv|", choice 1: ".csv") added when its file name has none.
std::string with_chosen_extension(const std::string& path, const std::string& filter,
                                  std::size_t choice);

}  // namespace zenta

#pragma once
// Files the programs write (HEX exports, captures) go to a temporary file
// beside the target and are renamed over it, so a crash or a full disk
// never leaves half a file where a whole one was expected.
#include <string>

namespace zenta {

// Writes `text` to `path` through a temporary file in the same folder. On
// failure the target is left as it was, the temporary file is removed and
// `reason` (when given) says why, as the system puts it.
bool write_file_atomically(const std::string& path, const std::string& text,
                           std::string* reason = nullptr);

}  // namespace zenta

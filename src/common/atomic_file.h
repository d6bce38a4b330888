#pragma once
// Files the panel writes go to a temporary file beside the target, which
// is then renamed over it: a crash or a full disk leaves either the old
// file or the new one, never half of one.
#include <string>

namespace zenta {

// Writes `contents` to `path`. An existing file keeps its permissions; a
// symbolic link is written through to the file it names. False when
// anything failed; the target is then as it was.
bool write_file_atomically(const std::string& path, const std::string& contents);

}  // namespace zenta

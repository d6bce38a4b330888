#pragma once
// Input files are read once and whole, so a check and the load after it see
// the same bytes, and any kind of file a shell hands over works: a regular
// file, a pipe (`<(cat x.hex)`), a FIFO, /dev/stdin. A limit keeps an
// endless input (/dev/zero) from filling memory.
#include <cstddef>
#include <string>

namespace zenta {

struct InputFile {
  bool ok = false;
  std::string text;
  // Why the file could not be read, in words: "no such file", "it is a
  // folder", the system's reason, or that it is larger than the limit.
  std::string reason;
};

InputFile read_input_file(const std::string& path, std::size_t limit);

}  // namespace zenta

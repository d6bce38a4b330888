#include "common/input_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zenta {

InputFile read_input_file(const std::string& path, std::size_t limit) {
  InputFile file;
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) {
    file.reason = "no such file";
    return file;
  }
  if (std::filesystem::is_directory(status)) {
    file.reason = "it is a folder";
    return file;
  }
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    file.reason = errno != 0 ? std::strerror(errno) : "it cannot be opened";
    return file;
  }
  char chunk[65536];
  while (in) {
    in.read(chunk, sizeof chunk);
    const auto got = static_cast<std::size_t>(in.gcount());
    if (file.text.size() + got > limit) {
      file.text.clear();
      file.reason = "it is larger than " + std::to_string(limit / (1024 * 1024)) +
                    " MiB, more than any file of this kind";
      return file;
    }
    file.text.append(chunk, got);
  }
  if (in.bad()) {
    file.text.clear();
    file.reason = "a read error";
    return file;
  }
  file.ok = true;
  return file;
}

}  // namespace zenta

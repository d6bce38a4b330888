#include "common/atomic_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace zenta {

namespace {

// Several units may export at once; each temporary name is its own.
std::string temporary_name(const std::string& path) {
  static std::atomic<unsigned> counter{0};
  return path + ".tmp" + std::to_string(++counter);
}

bool fail(std::string* reason, const std::string& text) {
  if (reason != nullptr) *reason = text;
  return false;
}

}  // namespace

bool write_file_atomically(const std::string& path, const std::string& text, std::string* reason) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return fail(reason, "it is a folder");
  const std::string temporary = temporary_name(path);
  {
    errno = 0;
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    if (!file) return fail(reason, errno != 0 ? std::strerror(errno) : "cannot be created");
    file << text;
    file.close();
    if (!file) {
      const std::string why = errno != 0 ? std::strerror(errno) : "write error";
      std::filesystem::remove(temporary, error);
      return fail(reason, why);
    }
  }
  std::filesystem::rename(temporary, path, error);
  if (!error) return true;
  const std::string why = error.message();
  std::filesystem::remove(temporary, error);
  return fail(reason, why);
}

}  // namespace zenta

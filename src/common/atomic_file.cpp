#include "common/atomic_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace zenta {

namespace {

// Several units may export at once; each temporary name is its own.
std::string temporary_suffix() {
  static std::atomic<unsigned> counter{0};
#ifndef _WIN32
  const long process = static_cast<long>(::getpid());
#else
  const long process = 0;
#endif
  return ".zenta-" + std::to_string(process) + "-" + std::to_string(++counter) + ".tmp";
}

bool fail(std::string* reason, const std::string& text) {
  if (reason != nullptr) *reason = text;
  return false;
}

}  // namespace

bool write_file_atomically(const std::string& path, const std::string& text, std::string* reason) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (path.empty()) return fail(reason, "no file name");
  fs::path target(path);
  // Through a link, the file it points to is replaced and the link stays.
  if (fs::is_symlink(target, error)) {
    target = fs::weakly_canonical(target, error);
    if (error) return fail(reason, error.message());
  }
  const fs::file_status existing = fs::status(target, error);
  const bool exists = fs::exists(existing);
  if (exists && fs::is_directory(existing)) return fail(reason, "it is a folder");
  if (exists && !fs::is_regular_file(existing)) return fail(reason, "it is not a plain file");

  fs::path temporary = target;
  temporary += temporary_suffix();
  {
    errno = 0;
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    if (!file) return fail(reason, errno != 0 ? std::strerror(errno) : "cannot be created");
    file << text;
    file.close();
    if (!file) {
      const std::string why = errno != 0 ? std::strerror(errno) : "write error";
      fs::remove(temporary, error);
      return fail(reason, why);
    }
  }
  // The new file keeps the permissions the old one had.
  if (exists) fs::permissions(temporary, existing.permissions(), error);
  fs::rename(temporary, target, error);
  if (!error) return true;
  const std::string why = error.message();
  fs::remove(temporary, error);
  return fail(reason, why);
}

}  // namespace zenta

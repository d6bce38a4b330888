#include "common/atomic_file.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

namespace zenta {

bool write_file_atomically(const std::string& path, const std::string& contents) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path target(path);
  if (path.empty()) return false;
  if (fs::is_symlink(target, error)) {
    target = fs::weakly_canonical(target, error);
    if (error) return false;
  }
  const fs::file_status existing = fs::status(target, error);
  const bool exists = fs::exists(existing);
  if (exists && !fs::is_regular_file(existing)) return false;

  std::random_device random;
  fs::path temporary = target;
  temporary += ".zenta-" + std::to_string(random() % 1000000) + ".tmp";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    out.flush();
    if (!out) {
      out.close();
      fs::remove(temporary, error);
      return false;
    }
  }
  if (exists) fs::permissions(temporary, existing.permissions(), error);
  fs::rename(temporary, target, error);
  if (error) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    return false;
  }
  return true;
}

}  // namespace zenta

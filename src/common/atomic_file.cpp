#include "common/atomic_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <vector>

#ifndef _WIN32
#include <signal.h>
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

// True for the suffix of a temporary file ".zenta-PID-N.tmp" whose process
// has ended; a living process may still be writing its own.
bool abandoned_temporary(const std::string& suffix) {
#ifndef _WIN32
  const std::string head = ".zenta-";
  const std::string tail = ".tmp";
  if (suffix.size() <= head.size() + tail.size() || suffix.compare(0, head.size(), head) != 0 ||
      suffix.compare(suffix.size() - tail.size(), tail.size(), tail) != 0) {
    return false;
  }
  const std::string middle = suffix.substr(head.size(), suffix.size() - head.size() - tail.size());
  const std::size_t dash = middle.find('-');
  if (dash == 0 || dash == std::string::npos || dash + 1 == middle.size() || dash > 9) return false;
  for (std::size_t i = 0; i < middle.size(); ++i) {
    if (i != dash && (middle[i] < '0' || middle[i] > '9')) return false;
  }
  const long process = std::stol(middle.substr(0, dash));
  if (process <= 0 || process == static_cast<long>(::getpid())) return false;
  return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH;
#else
  (void)suffix;
  return false;
#endif
}

// A run killed between writing and renaming leaves its temporary file
// beside the target: "X.part" (the simulated chip's save of old) or
// "X.zenta-PID-N.tmp". The next write of X removes those of ended runs.
void remove_abandoned_temporaries(const std::filesystem::path& target) {
  namespace fs = std::filesystem;
  const std::string name = target.filename().string();
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::error_code error;
  std::vector<fs::path> abandoned;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    const std::string entry = it->path().filename().string();
    if (entry.size() <= name.size() || entry.compare(0, name.size(), name) != 0) continue;
    const std::string suffix = entry.substr(name.size());
    std::error_code kind_error;
    if ((suffix == ".part" || abandoned_temporary(suffix)) && it->is_regular_file(kind_error)) {
      abandoned.push_back(it->path());
    }
  }
  for (const fs::path& path : abandoned) fs::remove(path, error);
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

  remove_abandoned_temporaries(target);
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

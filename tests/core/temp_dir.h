#pragma once
// A fresh folder under the system's temporary folder, removed with its
// contents when the test ends, and small helpers for the files in it and
// for the external tools the tests run.
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include <sys/wait.h>

namespace zenta::testing {

class TempDir {
 public:
  TempDir() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("zenta-test-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

struct ProcessResult {
  int status = -1;  // exit status, -1 when the command could not run
  std::string out;  // standard output
};

// Runs a shell command line and collects its standard output.
inline ProcessResult run_command(const std::string& command_line) {
  ProcessResult result;
  FILE* pipe = popen(command_line.c_str(), "r");
  if (pipe == nullptr) return result;
  std::array<char, 4096> buffer;
  std::size_t count;
  while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
    result.out.append(buffer.data(), count);
  }
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

inline bool tool_available(const std::string& name) {
  return run_command("command -v " + name + " >/dev/null 2>&1").status == 0;
}

}  // namespace zenta::testing

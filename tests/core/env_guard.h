#pragma once
// Sets or clears an environment variable for one test and puts the old
// value back afterwards.
#include <cstdlib>
#include <optional>
#include <string>

namespace zenta::testing {

class EnvGuard {
 public:
  EnvGuard(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    set(name, value);
  }
  ~EnvGuard() { set(name_.c_str(), old_ ? old_->c_str() : nullptr); }
  EnvGuard(const EnvGuard&) = delete;
  EnvGuard& operator=(const EnvGuard&) = delete;

 private:
  static void set(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
  }
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace zenta::testing

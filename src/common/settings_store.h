#pragma once
// The per-user settings store: texts addressed by application, section and
// key. An absent key reads as empty text.
#include <map>
#include <string>
#include <tuple>

namespace zenta {

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  virtual std::string get(const std::string& application, const std::string& section,
                          const std::string& key) = 0;
  virtual void save(const std::string& application, const std::string& section,
                    const std::string& key, const std::string& value) = 0;
};

// Kept in memory only: tests, and the command-line program, which never
// changes the panel's stored settings.
class MemorySettingsStore : public SettingsStore {
 public:
  std::string get(const std::string& application, const std::string& section,
                  const std::string& key) override {
    auto it = values_.find({application, section, key});
    return it == values_.end() ? std::string() : it->second;
  }
  void save(const std::string& application, const std::string& section, const std::string& key,
            const std::string& value) override {
    values_[{application, section, key}] = value;
    ++saves_;
  }
  bool contains(const std::string& key) const { return values_.count({"ZENTA", "DATA", key}) != 0; }
  int saves() const { return saves_; }

 private:
  std::map<std::tuple<std::string, std::string, std::string>, std::string> values_;
  int saves_ = 0;
};

inline constexpr const char* kSettingsApp = "ZENTA";
inline constexpr const char* kSettingsSection = "DATA";
// The panel's own additions stand in a section of their own.
inline constexpr const char* kPanelSection = "PANEL";
inline constexpr const char* kExactKey = "EXACT";

}  // namespace zenta

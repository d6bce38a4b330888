#pragma once
// The per-user settings store on QSettings: organisation "ZENTA", the
// core's application name as the application, its section as the group,
// text values. Where QSettings keeps them is the platform's way (the
// registry on Windows, an INI file under the user's config folder elsewhere).
#include <QString>

#include "common/settings_store.h"

namespace zenta {

class QtSettingsStore : public SettingsStore {
 public:
  QtSettingsStore() = default;
  // Keeps everything in one INI file instead: for tests and trials that
  // must not touch the user's settings.
  explicit QtSettingsStore(const QString& ini_file) : ini_file_(ini_file) {}

  std::string get(const std::string& application, const std::string& section,
                  const std::string& key) override;
  void save(const std::string& application, const std::string& section, const std::string& key,
            const std::string& value) override;

 private:
  QString path(const std::string& application, const std::string& section,
               const std::string& key) const;

  QString ini_file_;
};

}  // namespace zenta

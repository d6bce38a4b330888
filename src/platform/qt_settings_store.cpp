#include "platform/qt_settings_store.h"

#include <QSettings>

namespace zenta {

namespace {
constexpr const char* kOrganisation = "ZENTA";
}

QString QtSettingsStore::path(const std::string& application, const std::string& section,
                              const std::string& key) const {
  // One INI file holds every application; each gets its own group.
  const QString group = QString::fromStdString(section) + "/" + QString::fromStdString(key);
  return ini_file_.isEmpty() ? group : QString::fromStdString(application) + "/" + group;
}

std::string QtSettingsStore::get(const std::string& application, const std::string& section,
                                 const std::string& key) {
  const QString name = path(application, section, key);
  if (!ini_file_.isEmpty()) {
    return QSettings(ini_file_, QSettings::IniFormat).value(name).toString().toStdString();
  }
  QSettings settings(kOrganisation, QString::fromStdString(application));
  return settings.value(name).toString().toStdString();
}

void QtSettingsStore::save(const std::string& application, const std::string& section,
                           const std::string& key, const std::string& value) {
  const QString name = path(application, section, key);
  const QString text = QString::fromStdString(value);
  if (!ini_file_.isEmpty()) {
    QSettings(ini_file_, QSettings::IniFormat).setValue(name, text);
    return;
  }
  QSettings(kOrganisation, QString::fromStdString(application)).setValue(name, text);
}

}  // namespace zenta

#pragma once
// The version window ZENTA_VERFORM: the panel's and the unit's versions and
// the maker's home page. Modal: the main window waits until it closes.
#include <QWidget>
#include <string>

#include "common/host.h"

namespace zenta {

class VersionWindow : public QWidget {
  Q_OBJECT
 public:
  // `homepage`: the address the maker's link opens (homepage_url()).
  VersionWindow(Host& host, const std::string& firmware_version, const std::string& homepage,
                QWidget* parent);
};

}  // namespace zenta

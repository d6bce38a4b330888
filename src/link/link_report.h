#pragma once
// Whoever opened a unit hears here of each exchange that failed: the panel
// shows it in a box, the command line prints it. The link itself shows
// nothing.
#include <string>

namespace zenta {

class LinkReport {
 public:
  virtual ~LinkReport() = default;
  // `text` is the failure ("USB Write Error", "USB Read Error", "Read
  // Error") or, once the unit counts as lost, why it was given up.
  virtual void exchange_failed(const std::string& text) = 0;
};

}  // namespace zenta

#pragma once
// The panel's answer to a failed exchange: a stop box titled "USB ERROR".
#include "common/host.h"
#include "link/link_report.h"

namespace zenta {

class LinkBoxes : public LinkReport {
 public:
  explicit LinkBoxes(Host& host) : host_(host) {}
  void exchange_failed(const std::string& text) override {
    host_.message_box(text, "USB ERROR", MessageIcon::kStop);
  }

 private:
  Host& host_;
};

}  // namespace zenta

#pragma once
// One opened unit: its driver, the link over it, the firmware it reported,
// and the operation guard. Every sender (chip operations, unit controls,
// instruments) sends inside an Operation, so two of them can never
// interleave their packets, even when one lets window events run between
// its packets. Several plugged units are several Units.
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "link/unit_driver.h"
#include "link/unit_link.h"

namespace zenta {

class Unit {
 public:
  Unit(UnitDriver& driver, LinkReport& report);
  Unit(const Unit&) = delete;
  Unit& operator=(const Unit&) = delete;

  UnitLink& link() { return link_; }
  const UnitLink& link() const { return link_; }

  // Opens the driver; the driver's result (0 when the unit is there).
  std::int32_t open() { return link_.open_driver(); }
  void close() { link_.close_driver(); }

  // Asks the unit for its 8-character firmware identification and keeps
  // it. Must be the link's first exchange: the identification is the head
  // of the reply text, which only the first replies fill.
  bool read_firmware_version();
  const std::string& FirmwareVersion() const { return firmware_version_; }

  // The guard. An Operation that started holds the unit until it ends; one
  // made while another holds it does not start and must send nothing.
  class Operation {
   public:
    explicit Operation(Unit& unit);
    ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    bool started() const { return started_; }
    explicit operator bool() const { return started_; }

   private:
    Unit& unit_;
    bool started_;
  };
  bool busy() const { return busy_; }

  // Windows listen, so they can show the senders the guard would refuse as
  // disabled while an operation runs. Returns an id for unsubscribe.
  int subscribe(std::function<void(bool busy)> listener);
  void unsubscribe(int id);

 private:
  void set_busy(bool busy);

  UnitLink link_;
  std::string firmware_version_;
  bool busy_ = false;
  int next_listener_ = 0;
  std::map<int, std::function<void(bool)>> listeners_;
};

}  // namespace zenta

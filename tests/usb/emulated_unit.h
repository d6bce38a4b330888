#pragma once
// A unit on an emulated USB bus: umockdev presents a device with the unit's
// ids in /sys and /dev, and answers the usbfs requests that libusb makes
// (claim, submit, reap, discard, clear halt) from a simulated unit. So the
// libusb driver runs unchanged, through real libusb, without hardware.
//
// The emulation keeps what a real unit keeps between transfers: an IN
// buffer of replies not yet fetched, and a halted endpoint until the host
// clears it. Faults are set per exchange (1-based count of packets the unit
// received). The program must run under umockdev's preload library
// (umockdev-wrapper); available() says whether it does.
#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "link/sim/sim_unit.h"

namespace zenta::testing {

using Reply = std::array<std::uint8_t, 8>;

enum class EndpointKind { kInterrupt, kBulk };

class EmulatedUnit {
 public:
  // The device with these ids, one interface, an OUT endpoint 0x01 and an
  // IN endpoint 0x81 of the given kind, 64-byte packets, and the serial
  // number string (none when empty). Units alive at once share one bus,
  // each at its own address.
  EmulatedUnit(sim::SimUnit& unit, std::uint16_t vendor, std::uint16_t product,
               EndpointKind kind = EndpointKind::kInterrupt, const std::string& serial = "");
  ~EmulatedUnit();
  EmulatedUnit(const EmulatedUnit&) = delete;
  EmulatedUnit& operator=(const EmulatedUnit&) = delete;

  // True when running under umockdev; false (with the reason) otherwise.
  static bool available(std::string& why_not);

  // ---- faults ----
  // The reply to exchange n arrives only after the host gave up waiting
  // for it: it then waits in the IN buffer for the next read.
  void late_reply_at(int exchange);
  // From exchange n on the unit takes packets but sends nothing back.
  void stop_answering_at(int exchange);
  // From exchange n on the unit does not even take packets (NAKs them).
  void stop_accepting_at(int exchange);
  // The transfer of exchange n on this endpoint (0x01 or 0x81) stalls, and
  // the endpoint stays halted until the host clears it.
  void stall_at(int exchange, std::uint8_t endpoint);
  // The unit vanishes when exchange n's packet is sent.
  void unplug_at(int exchange);
  // A reply left in the IN buffer from before the host opened the unit.
  void leave_stale_reply(const Reply& reply);
  // Claiming the interface fails: another program holds it.
  void hold_by_another_program();
  // Makes the device node unreadable to the current user; when running as
  // root, as_nobody() below drops to a user the node does not admit.
  void forbid_access();

  // ---- what happened ----
  int exchanges() const;  // packets the unit received
  int halts_cleared() const;
  std::size_t replies_waiting() const;
  // When the unit received its first and its last packet.
  std::chrono::steady_clock::time_point first_packet() const;
  std::chrono::steady_clock::time_point last_packet() const;
  int bus_address() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Runs fn with the effective user "nobody" when the process is root, so
// that file permissions apply; plainly otherwise.
template <typename Fn>
auto as_unprivileged(Fn fn) -> decltype(fn());
bool drop_to_nobody();
void restore_root();

template <typename Fn>
auto as_unprivileged(Fn fn) -> decltype(fn()) {
  const bool dropped = drop_to_nobody();
  struct Restore {
    bool dropped;
    ~Restore() {
      if (dropped) restore_root();
    }
  } restore{dropped};
  return fn();
}

}  // namespace zenta::testing

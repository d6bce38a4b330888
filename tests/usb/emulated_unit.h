#pragma once
// A unit on an emulated USB bus: umockdev presents a device with the unit's
// ids in /sys and /dev, and answers the usbfs requests that libusb makes
// (claim, submit, reap, discard, clear halt) from a simulated unit. So the
// libusb driver runs unchanged, through real libusb, without hardware.
//
// The emulation keeps what a real unit keeps between transfers: an IN
// buffer of replies not yet fetched, and a halted endpoint until the host
// clears it. The program must run under umockdev's preload library
// (umockdev-wrapper); available() says whether it does.
#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "link/sim/sim_unit.h"

namespace zenta::testing {

using Reply = std::array<std::uint8_t, 8>;

enum class EndpointKind { kInterrupt, kBulk };

constexpr int kNever = 1 << 30;

// Faults of the unit, by exchange: the 1-based count of packets it received.
struct Faults {
  // The reply arrives only after the host gave up waiting for it; it then
  // waits in the IN buffer for the next read.
  int late_reply_at = kNever;
  int silent_from = kNever;  // takes packets but sends nothing back
  int deaf_from = kNever;    // does not even take packets (NAKs them)
  // The transfer on that endpoint stalls; the endpoint stays halted until
  // the host clears it.
  int out_stall_at = kNever;
  int in_stall_at = kNever;
  int unplug_at = kNever;    // the unit vanishes when this packet is sent
  bool stale_reply = false;  // a reply left in the IN buffer from before the host opened it
  bool held = false;         // another program has claimed the interface
  // The device node is unreadable to the current user; when running as
  // root, as_unprivileged() below drops to a user the node does not admit.
  bool forbidden = false;
};

// What the emulation saw of the host.
struct Seen {
  int halts_cleared = 0;
  std::size_t replies_waiting = 0;
  // When the unit received its first packet since its trace was cleared, and its last.
  std::chrono::steady_clock::time_point first_packet, last_packet;
};

class EmulatedUnit {
 public:
  // The device with these ids, one interface, an OUT endpoint 0x01 and an
  // IN endpoint 0x81 of the given kind, 64-byte packets, and the serial
  // number string (none when empty). Units alive at once share one bus,
  // each at its own address. The packets it takes reach `unit`, whose
  // trace tells what it received.
  EmulatedUnit(sim::SimUnit& unit, std::uint16_t vendor, std::uint16_t product,
               EndpointKind kind = EndpointKind::kInterrupt, const std::string& serial = "",
               const Faults& faults = {});
  ~EmulatedUnit();
  EmulatedUnit(const EmulatedUnit&) = delete;
  EmulatedUnit& operator=(const EmulatedUnit&) = delete;

  // True when running under umockdev; false (with the reason) otherwise.
  static bool available(std::string& why_not);

  void set(const Faults& faults);
  Seen seen() const;
  int bus_address() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

#define REQUIRE_UMOCKDEV()                                  \
  do {                                                      \
    std::string why;                                        \
    if (!EmulatedUnit::available(why)) GTEST_SKIP() << why; \
  } while (false)

constexpr int kTimeoutMs = 150;

// Runs fn with the effective user "nobody" when the process is root, so
// that file permissions apply; plainly otherwise.
bool as_unprivileged(const std::function<bool()>& fn);

}  // namespace zenta::testing

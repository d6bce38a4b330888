#pragma once
// The only path between the panel and the unit: one 8-byte packet out, one
// 8-byte reply back, the verdict in the link status box and, on failure, a
// report. No retry, no timeout of its own, no resynchronisation.
#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "link/link_report.h"
#include "link/unit_driver.h"

namespace zenta {

// Every successful reply is appended to this text, eight characters at a
// time, and nothing ever reads past its first eight characters. So only
// those are kept, with the count of characters appended: memory stays
// constant however long the panel runs.
class ReplyText {
 public:
  void append(const std::uint8_t* bytes, std::size_t count);
  // The first characters of the text, at most eight.
  const std::string& head() const { return head_; }
  std::uint64_t length() const { return length_; }

 private:
  std::string head_;
  std::uint64_t length_ = 0;
};

// Texts of the driver's open results 0..-7, indexed by the negated result.
const std::array<std::string, 8>& driver_result_texts();
// Text for any open result; a code outside 0..-7 reads as the open error
// with its number, so the user still sees why the unit was not found.
std::string driver_result_text(std::int32_t result);
// The same result in English, for messages beside the driver's own text:
// "the driver could not be opened".
std::string driver_result_reason(std::int32_t result);

enum LinkStatus : std::int16_t { kLinkOk = 0, kLinkFailed = 1 };

// Why the link gave up on the unit during an operation.
enum class LinkLoss {
  kNone,
  kStoppedAnswering,  // kLossFailures exchanges in a row failed
  kUnplugged,         // the driver says the unit is gone
  kClosed,            // the program is ending: nothing more is sent, nothing said
};

// Consecutive failed exchanges after which the unit counts as lost. One
// failure is a glitch worth its message box; a run of them, each waiting
// for the driver's timeout, is a unit that is not coming back.
inline constexpr int kLossFailures = 3;

// The one message box that tells the user the unit was lost.
std::string link_loss_text(LinkLoss loss);

class UnitLink {
 public:
  UnitLink(UnitDriver& driver, LinkReport& report);

  // Eight packet bytes in order; b0 is the command code.
  std::int16_t SENDCMD(std::uint8_t b0, std::uint8_t b1 = 0, std::uint8_t b2 = 0,
                       std::uint8_t b3 = 0, std::uint8_t b4 = 0, std::uint8_t b5 = 0,
                       std::uint8_t b6 = 0, std::uint8_t b7 = 0);
  // Reads one reply without sending anything.
  std::int16_t RCVUSB();

  // Opens the driver; shows "Driver Open:" and the result text in the
  // status box and returns the driver's result.
  std::int32_t open_driver();
  void close_driver();
  // An operation has ended: what the driver keeps goes out.
  void flush_driver() { driver_.flush(); }
  // Why the last open_driver() failed and what to do, when the driver
  // knows more than its result code; empty otherwise.
  std::string open_failure_hint() const { return driver_.open_failure_hint(); }
  // What the driver's last transfer says about the unit: an operation asks
  // after a failed exchange whether going on makes sense.
  UnitCondition condition() const { return driver_.condition(); }

  std::array<std::uint8_t, 8> TxBuffer{};
  // Indexes 8 and 9 exist but are never written.
  std::array<std::uint8_t, 10> RxBuffer{};
  // Copy of the last successfully read reply.
  std::array<std::uint8_t, 8> RxPacket{};
  ReplyText reply_text;

  // The link status box USBMSG of the main window.
  const std::string& USBMSG() const { return usbmsg_; }
  void set_USBMSG(std::string text);
  // Called whenever the status box changes, so a window can repaint it.
  std::function<void()> on_status_changed;

  // Once the unit is lost the link sends nothing more and shows no more
  // boxes: every exchange fails at once, so a long operation ends at its
  // next pause instead of waiting out a timeout per packet. The first
  // failure of a run still shows its box; a unit found unplugged shows the
  // loss message instead, so the user sees one box.
  LinkLoss loss() const { return loss_; }
  // Whether a run of failures ends the operation. Off, every exchange is
  // tried and each failure reported as the documented panel does.
  bool stop_on_loss = true;
  // The program ends while an operation runs: the link falls silent at once.
  void end_quietly() { loss_ = LinkLoss::kClosed; }
  bool lost() const { return loss_ != LinkLoss::kNone; }
  // A new operation tries the unit again.
  void clear_loss() {
    loss_ = LinkLoss::kNone;
    consecutive_failures_ = 0;
  }

  std::uint64_t exchanges() const { return exchanges_; }
  // Failed exchanges since the link was made; callers that must know whether
  // a whole operation went through compare it before and after.
  std::uint64_t failures() const { return failures_; }

 private:
  std::int16_t read_reply(const char* failure_text);
  // Counts a failed exchange, decides whether the unit is lost and shows
  // the box the failure calls for.
  std::int16_t fail(const char* status, const char* box_text);

  UnitDriver& driver_;
  LinkReport& report_;
  std::string usbmsg_ = "USB message";
  std::uint64_t exchanges_ = 0;
  std::uint64_t failures_ = 0;
  int consecutive_failures_ = 0;
  LinkLoss loss_ = LinkLoss::kNone;
};

}  // namespace zenta

#include "link/unit_link.h"

#include <algorithm>

namespace zenta {

void ReplyText::append(const std::uint8_t* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count && head_.size() < 8; ++i) {
    head_.push_back(static_cast<char>(bytes[i]));
  }
  length_ += count;
}

const std::array<std::string, 8>& driver_result_texts() {
  static const std::array<std::string, 8> texts = {
      "OK!",
      "NG(ドライバを既にオープンしている)",
      "NG(ドライバオープンエラー)",
      "NG(ドライバをオープンしていない)",
      "NG(書込みエラー)",
      "NG(読込みエラー)",
      "NG(テストエラー)",
      "",
  };
  return texts;
}

std::string driver_result_text(std::int32_t result) {
  if (result <= 0 && result >= -7) return driver_result_texts()[static_cast<std::size_t>(-result)];
  return "NG(" + std::to_string(result) + ")";
}

std::string driver_result_reason(std::int32_t result) {
  switch (result) {
    case 0:
      return "success";
    case -1:
      return "the driver is already open";
    case -2:
      return "the driver could not be opened";
    case -3:
      return "the driver is not open";
    case -4:
      return "a write error";
    case -5:
      return "a read error";
    case -6:
      return "a test error";
    default:
      return "open error " + std::to_string(result);
  }
}

std::string link_loss_text(LinkLoss loss) {
  switch (loss) {
    case LinkLoss::kUnplugged:
      return "The unit was unplugged. The operation has ended; plug the unit in and start "
             "again.";
    case LinkLoss::kStoppedAnswering:
      return "The unit stopped answering. The operation has ended; unplug the unit, plug it in "
             "again and start again.";
    case LinkLoss::kNone:
    case LinkLoss::kClosed:
      break;
  }
  return "";
}

UnitLink::UnitLink(UnitDriver& driver, LinkReport& report) : driver_(driver), report_(report) {}

void UnitLink::set_USBMSG(std::string text) {
  usbmsg_ = std::move(text);
  if (on_status_changed) on_status_changed();
}

std::int16_t UnitLink::SENDCMD(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3,
                               std::uint8_t b4, std::uint8_t b5, std::uint8_t b6, std::uint8_t b7) {
  ++exchanges_;
  TxBuffer.fill(0);
  TxBuffer = {b0, b1, b2, b3, b4, b5, b6, b7};
  if (lost() || driver_.write(TxBuffer.data(), kPacketSize) != kPacketSize) {
    return fail("Write NG!:", "USB Write Error");
  }
  set_USBMSG("Write OK!:");
  return read_reply("USB Read Error");
}

std::int16_t UnitLink::RCVUSB() {
  return read_reply("Read Error");
}

std::int16_t UnitLink::read_reply(const char* failure_text) {
  std::fill(RxBuffer.begin(), RxBuffer.begin() + 8, std::uint8_t{0});
  if (lost() || driver_.read(RxBuffer.data(), kPacketSize) != kPacketSize) {
    return fail("Read NG!:", failure_text);
  }
  consecutive_failures_ = 0;
  set_USBMSG("Read OK!:");
  reply_text.append(RxBuffer.data(), 8);
  std::copy(RxBuffer.begin(), RxBuffer.begin() + 8, RxPacket.begin());
  return kLinkOk;
}

std::int16_t UnitLink::fail(const char* status, const char* box_text) {
  ++failures_;
  if (lost()) return kLinkFailed;
  set_USBMSG(status);
  ++consecutive_failures_;
  if (!stop_on_loss) {
    report_.exchange_failed(box_text);
    return kLinkFailed;
  }
  if (driver_.condition() == UnitCondition::kGone) {
    loss_ = LinkLoss::kUnplugged;
  } else if (consecutive_failures_ >= kLossFailures) {
    loss_ = LinkLoss::kStoppedAnswering;
  }
  if (lost()) {
    report_.exchange_failed(link_loss_text(loss_));
  } else if (consecutive_failures_ == 1) {
    report_.exchange_failed(box_text);
  }
  return kLinkFailed;
}

std::int32_t UnitLink::open_driver() {
  const std::int32_t result = driver_.open();
  set_USBMSG("Driver Open:" + driver_result_text(result));
  return result;
}

void UnitLink::close_driver() {
  driver_.close();
}

}  // namespace zenta

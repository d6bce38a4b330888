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

UnitLink::UnitLink(UnitDriver& driver, Host& host) : driver_(driver), host_(host) {}

void UnitLink::set_USBMSG(std::string text) {
  usbmsg_ = std::move(text);
  if (on_status_changed) on_status_changed();
}

std::int16_t UnitLink::SENDCMD(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3,
                               std::uint8_t b4, std::uint8_t b5, std::uint8_t b6, std::uint8_t b7) {
  ++exchanges_;
  TxBuffer.fill(0);
  TxBuffer = {b0, b1, b2, b3, b4, b5, b6, b7};
  if (driver_.write(TxBuffer.data(), kPacketSize) != kPacketSize) {
    ++failures_;
    set_USBMSG("Write NG!:");
    host_.message_box("USB Write Error", "USB ERROR", MessageIcon::kStop);
    return kLinkFailed;
  }
  set_USBMSG("Write OK!:");
  return read_reply("USB Read Error");
}

std::int16_t UnitLink::RCVUSB() {
  return read_reply("Read Error");
}

std::int16_t UnitLink::read_reply(const char* failure_text) {
  std::fill(RxBuffer.begin(), RxBuffer.begin() + 8, std::uint8_t{0});
  if (driver_.read(RxBuffer.data(), kPacketSize) != kPacketSize) {
    ++failures_;
    set_USBMSG("Read NG!:");
    host_.message_box(failure_text, "USB ERROR", MessageIcon::kStop);
    return kLinkFailed;
  }
  set_USBMSG("Read OK!:");
  reply_text.append(RxBuffer.data(), 8);
  std::copy(RxBuffer.begin(), RxBuffer.begin() + 8, RxPacket.begin());
  return kLinkOk;
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

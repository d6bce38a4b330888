#include "link/unit_link.h"

#include <gtest/gtest.h>

#include "fakes.h"
#include "scripted_driver.h"

namespace zenta {
namespace {

using testing::FakeHost;
using testing::ScriptedDriver;
using Packet = std::array<std::uint8_t, 8>;

struct LinkFixture : ::testing::Test {
  ScriptedDriver driver;
  FakeHost host;
  UnitLink link{driver, host};
};

TEST_F(LinkFixture, SuccessfulExchangeFillsBothReplyStoresAndTheReplyText) {
  driver.replies.push_back({0x12, 0x34, 0x00, 0x7F, 1, 2, 3, 4});
  EXPECT_EQ(link.SENDCMD(0x04, 0x04), kLinkOk);
  ASSERT_EQ(driver.written.size(), 1u);
  EXPECT_EQ(driver.written[0], (Packet{0x04, 0x04, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(link.USBMSG(), "Read OK!:");
  EXPECT_EQ(link.RxPacket, (Packet{0x12, 0x34, 0x00, 0x7F, 1, 2, 3, 4}));
  EXPECT_TRUE(std::equal(link.RxPacket.begin(), link.RxPacket.end(), link.RxBuffer.begin()));
  EXPECT_EQ(link.reply_text.length(), 8u);
  EXPECT_TRUE(host.boxes.empty());
}

// The three failure rows of the link: what the status box says, which box
// opens, whether a read is made and what the reply stores keep.
TEST_F(LinkFixture, FailureRows) {
  struct Case {
    const char* name;
    std::int32_t write_result;
    std::int32_t read_result;
    bool use_rcvusb;
    const char* status;
    const char* box;
    int reads;
  };
  const Case cases[] = {
      {"write returns 7", 7, 8, false, "Write NG!:", "USB Write Error", 0},
      {"write returns -4", -4, 8, false, "Write NG!:", "USB Write Error", 0},
      {"read returns 0", 8, 0, false, "Read NG!:", "USB Read Error", 1},
      {"read returns 9", 8, 9, false, "Read NG!:", "USB Read Error", 1},
      {"RCVUSB read returns 0", 8, 0, true, "Read NG!:", "Read Error", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedDriver d;
    FakeHost h;
    UnitLink l{d, h};
    d.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
    ASSERT_EQ(l.SENDCMD(0x3F), kLinkOk);  // an earlier good reply to keep
    const Packet before = l.RxPacket;
    d.reads = 0;
    d.write_results.push_back(c.write_result);
    d.read_results.push_back(c.read_result);
    d.failed_read_bytes = {9, 9, 9, 9, 9, 9, 9, 9};
    const std::int16_t status = c.use_rcvusb ? l.RCVUSB() : l.SENDCMD(0x3B, 0x01);
    EXPECT_EQ(status, kLinkFailed);
    EXPECT_EQ(l.USBMSG(), c.status);
    ASSERT_EQ(h.boxes.size(), 1u);
    EXPECT_EQ(h.boxes[0].text, c.box);
    EXPECT_EQ(h.boxes[0].title, "USB ERROR");
    EXPECT_EQ(h.boxes[0].icon, MessageIcon::kStop);
    EXPECT_EQ(d.reads, c.reads);
    EXPECT_EQ(l.RxPacket, before);
    EXPECT_EQ(l.reply_text.length(), 8u);
    EXPECT_EQ(l.reply_text.head(), "ZENTA 12");
    EXPECT_EQ(l.failures(), 1u);
    if (c.reads == 1) {
      // The reply buffer holds what the failed read left there.
      EXPECT_EQ(l.RxBuffer[0], 9);
    }
  }
}

TEST_F(LinkFixture, ReplyBufferIndexesEightAndNineAreNeverWritten) {
  link.RxBuffer[8] = 0xA5;
  link.RxBuffer[9] = 0x5A;
  driver.replies.push_back({1, 2, 3, 4, 5, 6, 7, 8});
  link.SENDCMD(0x39);
  driver.read_results.push_back(0);
  link.SENDCMD(0x39);
  link.RCVUSB();
  EXPECT_EQ(link.RxBuffer[8], 0xA5);
  EXPECT_EQ(link.RxBuffer[9], 0x5A);
}

TEST_F(LinkFixture, ReplyTextKeepsTheFirstReplyAndCountsTheRestWithoutGrowing) {
  driver.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
  link.SENDCMD(0x3F);
  for (int i = 0; i < 10000; ++i) {
    driver.replies.push_back({'x', 'y', 'z', 0, 0, 0, 0, 0});
    link.SENDCMD(0x3B, 0);
  }
  EXPECT_EQ(link.reply_text.head(), "ZENTA 12");
  EXPECT_EQ(link.reply_text.length(), 8u * 10001u);
  EXPECT_LE(link.reply_text.head().capacity(), 32u);
}

TEST(DriverResultText, TableAndCodesOutsideIt) {
  EXPECT_EQ(driver_result_text(0), "OK!");
  EXPECT_EQ(driver_result_text(-2), "NG(ドライバオープンエラー)");
  EXPECT_EQ(driver_result_text(-5), "NG(読込みエラー)");
  EXPECT_EQ(driver_result_text(-7), "");
  // Outside the table: still a failure text, never an index past the table.
  EXPECT_EQ(driver_result_text(-9), "NG(-9)");
  EXPECT_EQ(driver_result_text(3), "NG(3)");
  // Beside each Japanese text, its English reason.
  const std::pair<int, const char*> reasons[] = {
      {0, "success"},
      {-1, "the driver is already open"},
      {-2, "the driver could not be opened"},
      {-3, "the driver is not open"},
      {-4, "a write error"},
      {-5, "a read error"},
      {-6, "a test error"},
      {-7, "open error -7"},
      {3, "open error 3"},
  };
  for (const auto& [result, reason] : reasons) EXPECT_EQ(driver_result_reason(result), reason);
}

TEST_F(LinkFixture, OpenShowsTheDriverVerdict) {
  EXPECT_EQ(link.open_driver(), 0);
  EXPECT_EQ(link.USBMSG(), "Driver Open:OK!");
  driver.open_result = -2;
  EXPECT_EQ(link.open_driver(), -2);
  EXPECT_EQ(link.USBMSG(), "Driver Open:NG(ドライバオープンエラー)");
}

}  // namespace
}  // namespace zenta

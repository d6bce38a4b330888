// The simulated unit as a driver: its trace, its unit commands and the
// faults a test can inject, seen through the link as the panel sees them.
#include <gtest/gtest.h>

#include "sim_rig.h"

namespace zenta::testing {
namespace {

TEST(SimExchange, TraceHoldsEveryPacketAndItsReplyInOrder) {
  SimRig rig;
  const std::vector<Packet> packets = {
      {UNIT_VERSION},    {UNIT_VCC, 7},   {UNIT_LED, 1},        {0x20, 1, 2, 3, 4, 5, 6, 7},
      {UNIT_AD_READ, 3}, {UNIT_WAIT, 10}, {UNIT_MCLR_LEVEL, 1}, {UNIT_MCLR_LEVEL, 3}};
  rig.send_all(packets);
  const std::vector<Packet> replies = {{'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'},
                                       {},
                                       {},
                                       {},  // an unknown code is answered with zeros
                                       {0x0B, 0x53},
                                       {},
                                       {},
                                       {}};
  const auto& trace = rig.unit.trace();
  ASSERT_EQ(trace.size(), packets.size());
  for (std::size_t i = 0; i < packets.size(); ++i) {
    EXPECT_EQ(trace[i].tx, packets[i]) << i;
    EXPECT_EQ(trace[i].rx, replies[i]) << i;
    EXPECT_TRUE(trace[i].ok) << i;
  }
  EXPECT_TRUE(rig.unit.vcc());
  EXPECT_TRUE(rig.unit.led());
  EXPECT_EQ(rig.unit.mclr_level(), 1) << "a level byte that is no level changes nothing";
  EXPECT_EQ(rig.link.reply_text.head(), "ZENTA 12");
  rig.unit.clear_trace();
  EXPECT_TRUE(rig.unit.trace().empty());
}

TEST(SimExchange, ABareReadGetsTheLastReplyAgain) {
  SimRig rig;
  rig.send({UNIT_AD_READ, 3});
  rig.send({UNIT_VERSION});
  rig.link.RxPacket = {};
  EXPECT_EQ(rig.link.RCVUSB(), kLinkOk);
  EXPECT_EQ(rig.link.RxPacket, (Packet{'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'}));
  EXPECT_EQ(rig.unit.trace().size(), 2u);
}

enum class Fault { kWrite, kRead, kShort };

TEST(SimFaults, AnInjectedFaultTakesTheLinksFailurePathAtExactlyThatExchange) {
  struct Case {
    Fault fault;
    int at;
    std::string box;
    bool carried_out;  // the LED command of exchange 3
  };
  const std::vector<Case> cases = {
      {Fault::kWrite, 3, "USB Write Error", false},
      {Fault::kRead, 3, "USB Read Error", true},
      {Fault::kShort, 3, "USB Read Error", true},
      {Fault::kWrite, 1, "USB Write Error", true},  // an earlier fault leaves 3 alone
      {Fault::kRead, 5, "USB Read Error", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("fault at " + std::to_string(c.at));
    SimRig rig;
    switch (c.fault) {
      case Fault::kWrite:
        rig.unit.fail_write_at(c.at);
        break;
      case Fault::kRead:
        rig.unit.fail_read_at(c.at);
        break;
      case Fault::kShort:
        rig.unit.short_transfer_at(c.at);
        break;
    }
    const std::vector<Packet> packets = {
        {UNIT_VERSION}, {UNIT_AD_READ, 3}, {UNIT_LED, 1}, {UNIT_AD_READ, 1}, {UNIT_AD_READ, 3}};
    for (int n = 1; n <= static_cast<int>(packets.size()); ++n) {
      const Packet before = rig.link.RxPacket;
      const std::size_t boxes = rig.host.boxes.size();
      const std::int16_t status = rig.send(packets[static_cast<std::size_t>(n - 1)]);
      if (n == c.at) {
        EXPECT_EQ(status, kLinkFailed) << n;
        EXPECT_EQ(rig.link.RxPacket, before) << n;
        ASSERT_EQ(rig.host.boxes.size(), boxes + 1) << n;
        EXPECT_EQ(rig.host.boxes.back().text, c.box);
        EXPECT_EQ(rig.host.boxes.back().title, "USB ERROR");
      } else {
        EXPECT_EQ(status, kLinkOk) << n;
        EXPECT_EQ(rig.host.boxes.size(), boxes) << n;
      }
    }
    EXPECT_EQ(rig.unit.led(), c.carried_out);
    const auto& trace = rig.unit.trace();
    ASSERT_EQ(trace.size(), packets.size());
    for (std::size_t i = 0; i < trace.size(); ++i) {
      EXPECT_EQ(trace[i].ok, static_cast<int>(i) + 1 != c.at) << i;
      EXPECT_EQ(trace[i].tx, packets[i]) << i;
    }
    EXPECT_EQ(rig.link.failures(), 1u);
  }
}

TEST(SimFaults, ReadFaultsLeaveTheCallersBufferOrCutTheTransfer) {
  sim::SimUnit unit;
  unit.fail_read_at(1);
  unit.short_transfer_at(2);
  const Packet version{UNIT_VERSION};
  Packet buffer;
  buffer.fill(0xAA);
  ASSERT_EQ(unit.write(version.data(), 8), 8);
  EXPECT_EQ(unit.read(buffer.data(), 8), 0);
  EXPECT_EQ(buffer, (Packet{0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA}));
  ASSERT_EQ(unit.write(version.data(), 8), 8);
  EXPECT_EQ(unit.read(buffer.data(), 8), 7);
  EXPECT_EQ(buffer, (Packet{'Z', 'E', 'N', 'T', 'A', ' ', '1', 0xAA}));
  // The fault belongs to that exchange only.
  ASSERT_EQ(unit.write(version.data(), 8), 8);
  EXPECT_EQ(unit.read(buffer.data(), 8), 8);
  // A packet of another length is not carried out.
  EXPECT_EQ(unit.write(version.data(), 7), 0);
  EXPECT_FALSE(unit.trace().back().ok);
}

TEST(SimFaults, AnUnpluggedUnitFailsEveryOpenWriteAndRead) {
  SimRig rig;
  EXPECT_EQ(rig.link.open_driver(), kDriverOk);
  rig.unit.unplug();
  EXPECT_EQ(rig.link.open_driver(), kDriverOpenError);
  EXPECT_EQ(rig.link.USBMSG(), "Driver Open:NG(ドライバオープンエラー)");
  EXPECT_EQ(rig.send({UNIT_VCC, 1}), kLinkFailed);
  EXPECT_EQ(rig.host.boxes.back().text, "USB Write Error");
  EXPECT_FALSE(rig.unit.vcc());
  EXPECT_EQ(rig.link.RCVUSB(), kLinkFailed);
  EXPECT_EQ(rig.host.boxes.back().text, "Read Error");
  ASSERT_EQ(rig.unit.trace().size(), 1u);
  EXPECT_FALSE(rig.unit.trace()[0].ok);
}

}  // namespace
}  // namespace zenta::testing

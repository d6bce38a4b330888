// The libusb driver through real libusb, against a simulated unit on an
// emulated USB bus. The reference is the same simulated chip driven
// directly: whatever the bus does, the unit must receive the same packets
// and the panel must get the same replies.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <tuple>
#include <vector>

#include "core/fakes.h"
#include "core/panel_rig.h"
#include "emulated_unit.h"
#include "link/command_codes.h"
#include "panel/main_form.h"
#include "platform/usb_driver.h"

namespace zenta::testing {
namespace {

// A chip with 1K words keeps the whole read short; the reference and the
// emulated bus read the same chip.
constexpr const char* kChip = "16F84A";
constexpr int kDevice = 3;  // 16F84A

// A chip with a pattern in program memory that no shifted read matches.
void fill_program(sim::SimUnit& unit) {
  for (int address = 0; address < 0x400; address += 7) {
    unit.set_program_word(address, (address * 7 + 0x155) & 0x3FFF);
  }
}

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Start-up, the chip's device entry, then READ: the panel's whole program read.
struct Session : FormParts<UnitDriver&> {
  explicit Session(UnitDriver& driver) : FormParts(driver) {}
  bool start() {
    store.save(kSettingsApp, kPanelSection, kExactKey, "1");  // the documented sequences
    if (!form.Form_Load()) return false;
    form.PICsel_Click(kDevice);
    return true;
  }
  std::vector<std::string> boxes() const {
    std::vector<std::string> texts;
    for (const auto& box : host.boxes) texts.push_back(box.text);
    return texts;
  }
};

void expect_same_trace(const std::vector<sim::Exchange>& got,
                       const std::vector<sim::Exchange>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    ASSERT_EQ(got[i].tx, want[i].tx) << "packet " << i + 1;
    ASSERT_EQ(got[i].rx, want[i].rx) << "reply " << i + 1;
  }
}

// Faults of the bus that the driver must absorb or report without losing
// step: after each, the unit has received exactly the packets the panel
// sent directly, and the READ holds the chip's memory word for word.
TEST(UsbDriverEmulated, ReadStaysInStepWithTheUnit) {
  REQUIRE_UMOCKDEV();
  sim::SimUnit direct(kChip);
  fill_program(direct);
  Session reference(direct);
  ASSERT_TRUE(reference.start());
  reference.form.READ_Click();
  ASSERT_NE(reference.state.DeviceId, 0);
  struct Case {
    const char* name;
    EndpointKind kind;
    Faults fault;
    std::size_t read_error_boxes;  // the link reports the exchange that timed out
    int drained;                   // stale replies the driver threw away
    int halts_cleared;
  };
  constexpr EndpointKind kInterrupt = EndpointKind::kInterrupt, kBulk = EndpointKind::kBulk;
  const Case cases[] = {
      {"interrupt endpoints", kInterrupt, {}, 0, 0, 0},
      {"bulk endpoints", kBulk, {}, 0, 0, 0},
      // Exchange 3 is the device ID read of the device selection.
      {"late reply", kInterrupt, {.late_reply_at = 3}, 1, 1, 0},
      {"late reply, bulk", kBulk, {.late_reply_at = 40}, 1, 1, 0},
      {"reply left from an earlier run", kInterrupt, {.stale_reply = true}, 0, 1, 0},
      {"stalled OUT endpoint", kInterrupt, {.out_stall_at = 5}, 0, 0, 1},
      {"stalled IN endpoint", kBulk, {.in_stall_at = 5}, 0, 0, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    sim::SimUnit unit(kChip);
    fill_program(unit);
    EmulatedUnit bus(unit, kUnitUsbId.vendor, kUnitUsbId.product, c.kind, "", c.fault);
    UsbDriver driver(kUnitUsbId, kTimeoutMs);
    Session session(driver);
    ASSERT_TRUE(session.start());
    session.form.READ_Click();

    EXPECT_EQ(session.boxes(), std::vector<std::string>(c.read_error_boxes, "USB Read Error"));
    EXPECT_EQ(driver.replies_drained(), c.drained);
    EXPECT_EQ(bus.seen().halts_cleared, c.halts_cleared);
    EXPECT_EQ(bus.seen().replies_waiting, 0u);
    expect_same_trace(unit.trace(), direct.trace());
    EXPECT_TRUE(session.state.ProgramBuffer == reference.state.ProgramBuffer);
    EXPECT_EQ(session.state.DeviceId, reference.state.DeviceId);
    EXPECT_EQ(driver.condition(), UnitCondition::kAnswering);
  }
}

// A unit that stops answering or goes away: the exchange fails after at
// most one timeout per transfer, never hangs, and the driver says which.
TEST(UsbDriverEmulated, SilentOrUnpluggedUnitFailsWithoutHanging) {
  REQUIRE_UMOCKDEV();
  using enum UnitCondition;
  constexpr double kTimeout = kTimeoutMs / 1000.0;
  // The fault; the failing exchange's write result and the condition after
  // it; the most seconds the next exchange may take; the packets the unit
  // took of the three exchanges. Unplugged, nothing waits any more.
  using Case = std::tuple<Faults, std::int32_t, UnitCondition, double, std::size_t>;
  const Case cases[] = {
      {{.silent_from = 2}, 8, kNotAnswering, 3 * kTimeout, 3},
      {{.deaf_from = 2}, kDriverWriteError, kNotAnswering, 3 * kTimeout, 1},
      {{.unplug_at = 2}, kDriverWriteError, kGone, 0.02, 1},
  };
  int index = 0;
  for (const auto& [fault, write_result, condition, max_seconds_after, packets_taken] : cases) {
    SCOPED_TRACE(index++);
    sim::SimUnit unit("16F877A");
    EmulatedUnit bus(unit, kUnitUsbId.vendor, kUnitUsbId.product, EndpointKind::kInterrupt, "",
                     fault);
    UsbDriver driver(kUnitUsbId, kTimeoutMs);
    ASSERT_EQ(driver.open(), kDriverOk);
    std::uint8_t packet[8] = {UNIT_VERSION};
    std::uint8_t reply[8] = {};
    ASSERT_EQ(driver.write(packet, 8), 8);
    ASSERT_EQ(driver.read(reply, 8), 8);
    EXPECT_EQ(driver.condition(), kAnswering);

    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(driver.write(packet, 8), write_result);
    EXPECT_EQ(driver.read(reply, 8), kDriverReadError);
    EXPECT_LT(seconds_since(start), 3 * kTimeout + 0.5);
    EXPECT_EQ(driver.condition(), condition);

    start = std::chrono::steady_clock::now();
    EXPECT_FALSE(driver.write(packet, 8) == 8 && driver.read(reply, 8) == 8);
    EXPECT_LT(seconds_since(start), max_seconds_after + 0.5 * kTimeout);
    EXPECT_EQ(driver.condition(), condition);
    EXPECT_EQ(unit.trace().size(), packets_taken);
  }
}

// Pulled out in the middle of a write: the rest of the write fails at once
// instead of waiting for every one of its packets.
TEST(UsbDriverEmulated, UnitUnpluggedDuringWriteEndsQuickly) {
  REQUIRE_UMOCKDEV();
  sim::SimUnit unit("16F877A");
  EmulatedUnit bus(unit, kUnitUsbId.vendor, kUnitUsbId.product);
  UsbDriver driver(kUnitUsbId, 1000);
  Session session(driver);
  ASSERT_TRUE(session.start());
  // The checked panel: a lost unit ends the operation (the documented one
  // would try, and report, every packet left).
  session.form.PICsel_Click(1);
  session.form.Exact_Click(false);
  for (int address = 0; address < 0x800; ++address) session.state.set_word(address, 0x2800);
  session.state.DataLoaded = 1;
  const int unplug_at = static_cast<int>(unit.trace().size()) + 60;
  bus.set({.unplug_at = unplug_at});
  session.host.boxes.clear();

  const auto start = std::chrono::steady_clock::now();
  session.form.WriteButton_Click();
  EXPECT_LT(seconds_since(start), 5.0);
  EXPECT_EQ(unit.trace().size(), unplug_at - 1u);
  EXPECT_EQ(session.unit.link().condition(), UnitCondition::kGone);
  // One box says what happened, not one per packet.
  EXPECT_EQ(session.boxes(), std::vector<std::string>{link_loss_text(LinkLoss::kUnplugged)});
}

// The panel's "Unit not Found" box says which of the three it is.
TEST(UsbDriverEmulated, UnitNotFoundTellsWhy) {
  REQUIRE_UMOCKDEV();
  // The product id on the bus, its fault, and what the box must say: absent,
  // busy, not permitted.
  using Case = std::tuple<std::uint16_t, Faults, std::vector<std::string>>;
  const Case cases[] = {
      {0x0001, {}, {"No unit", "1209:5a4e", "ZENTA_USB_ID"}},
      {kUnitUsbId.product, {.held = true}, {"1209:5a4e", "in use by another program"}},
      {kUnitUsbId.product,
       {.forbidden = true},
       {"1209:5a4e", "may not use it", "udev rule", "zenta udev-rule", "plug it in again"}},
  };
  for (const auto& [product, fault, hint_has] : cases) {
    SCOPED_TRACE(hint_has.back());
    sim::SimUnit unit("16F877A");
    EmulatedUnit bus(unit, kUnitUsbId.vendor, product, EndpointKind::kInterrupt, "", fault);
    UsbDriver driver(kUnitUsbId, kTimeoutMs);
    Session session(driver);
    EXPECT_FALSE(as_unprivileged([&] { return session.start(); }));
    ASSERT_EQ(session.host.boxes.size(), 1u);
    const std::string& text = session.host.boxes[0].text;
    EXPECT_TRUE(text.starts_with("Unit not Found\n\n")) << text;
    for (const std::string& part : hint_has) {
      EXPECT_NE(text.find(part), std::string::npos) << part << " in: " << text;
    }
    EXPECT_EQ(session.unit.link().USBMSG(), "Driver Open:" + driver_result_texts()[2]);
    EXPECT_TRUE(unit.trace().empty());
  }
}

}  // namespace
}  // namespace zenta::testing

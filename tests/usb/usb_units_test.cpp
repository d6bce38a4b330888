// Several units on one emulated bus, told apart by their serial numbers:
// the driver opens the one asked for, `zenta units` lists each with its
// firmware, and a command given several units runs on each of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "cli/cli.h"
#include "core/cli_rig.h"
#include "core/fakes.h"
#include "core/temp_dir.h"
#include "emulated_unit.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "link/unit.h"
#include "platform/usb_driver.h"

namespace zenta::testing {
namespace {

using cli::testing::Outcome;
using cli::testing::run_args;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// What a unit of this chip answers to UNIT_VERSION, asked directly.
std::string firmware_of(const std::string& chip) {
  sim::SimUnit unit(chip);
  FakeHost host;
  Unit opened(unit, host);
  EXPECT_EQ(opened.open(), kDriverOk);
  EXPECT_TRUE(opened.read_firmware_version());
  return opened.FirmwareVersion();
}

// The packets a unit received are those a lone unit received.
void expect_same_packets(const sim::SimUnit& unit, const sim::SimUnit& lone) {
  ASSERT_EQ(unit.trace().size(), lone.trace().size());
  for (std::size_t i = 0; i < unit.trace().size(); ++i) {
    ASSERT_EQ(unit.trace()[i].tx, lone.trace()[i].tx) << "packet " << i + 1;
  }
}

// Two units plugged in, "A1" holding a 16F84A and "B2" a 16F628A.
struct TwoUnits {
  explicit TwoUnits(const Faults& a_faults = {}, const char* a_chip = "16F84A",
                    const char* b_chip = "16F628A")
      : a(a_chip), b(b_chip) {
    bus_a.set(a_faults);
  }
  sim::SimUnit a, b;
  EmulatedUnit bus_a{a, kUnitUsbId.vendor, kUnitUsbId.product, EndpointKind::kInterrupt, "A1"};
  EmulatedUnit bus_b{b, kUnitUsbId.vendor, kUnitUsbId.product, EndpointKind::kBulk, "B2"};
};

TEST(UsbUnitsEmulated, SerialOpensThatUnitOnly) {
  REQUIRE_UMOCKDEV();
  struct Case {
    const char* name;
    std::string serial;
    bool a_forbidden;
    std::size_t packets_a, packets_b;  // the one exchange lands on the unit opened
    std::vector<std::string> hint_has;
  };
  const Case cases[] = {
      {"first", "A1", false, 1, 0, {}},
      {"second", "B2", false, 0, 1, {}},
      {"unknown", "C3", false, 0, 0, {"No unit", "'C3'", "zenta units"}},
      // A unit whose serial cannot be read is not taken for the one asked for.
      {"other one forbidden", "B2", true, 0, 1, {}},
      {"asked one forbidden", "A1", true, 0, 0, {"may not use it", "udev rule"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TwoUnits units({.forbidden = c.a_forbidden});
    UsbDriver driver(kUnitUsbId, c.serial, kTimeoutMs);
    const bool exchanged = as_unprivileged([&] {
      if (driver.open() != kDriverOk) return false;
      std::uint8_t packet[8] = {UNIT_VERSION};
      std::uint8_t reply[8] = {};
      return driver.write(packet, 8) == 8 && driver.read(reply, 8) == 8;
    });
    EXPECT_EQ(exchanged, c.hint_has.empty()) << driver.open_failure_hint();
    for (const std::string& part : c.hint_has) {
      EXPECT_NE(driver.open_failure_hint().find(part), std::string::npos)
          << part << " in: " << driver.open_failure_hint();
    }
    driver.close();
    EXPECT_EQ(units.a.trace().size(), c.packets_a);
    EXPECT_EQ(units.b.trace().size(), c.packets_b);
  }
}

TEST(UsbUnitsEmulated, UnitsListsEachSerialWithItsFirmware) {
  REQUIRE_UMOCKDEV();
  TwoUnits units;
  const Outcome listed = run_args({"units"});
  ASSERT_EQ(listed.status, cli::kExitOk) << listed.err;
  const auto line = [](const std::string& serial, const std::string& chip, int address) {
    return "usb:" + serial + "  firmware " + firmware_of(chip) + "  (bus 1, address " +
           std::to_string(address) + ")";
  };
  std::vector<std::string> lines = lines_of(listed.out);
  std::sort(lines.begin(), lines.end());
  EXPECT_EQ(lines, (std::vector<std::string>{line("A1", "16F84A", units.bus_a.bus_address()),
                                             line("B2", "16F628A", units.bus_b.bus_address())}));
  // Each unit heard exactly the firmware question.
  EXPECT_EQ(units.a.trace().size(), 1u);
  EXPECT_EQ(units.b.trace().size(), 1u);
  EXPECT_EQ(units.a.trace().at(0).tx.at(0), UNIT_VERSION);

  const Outcome json = run_args({"--json", "units"});
  ASSERT_EQ(json.status, cli::kExitOk) << json.err;
  EXPECT_NE(json.out.find("{\"unit\":\"usb:B2\",\"firmware\":\"" + firmware_of("16F628A") + "\""),
            std::string::npos)
      << json.out;
}

// Both units written at once through the command line: each receives the
// packets a lone unit receives for the same write, the two runs overlap in
// time, and each result line names its unit.
TEST(UsbUnitsEmulated, SeveralUnitsWriteInParallel) {
  REQUIRE_UMOCKDEV();
  TempDir dir;
  std::vector<HexWord> image;
  for (int address = 0; address < 0x60; ++address) {
    image.push_back({static_cast<std::uint32_t>(address),
                     static_cast<std::uint16_t>((address * 0x135 + 7) & 0x3FFF)});
  }
  const std::string hex = dir.file("p.hex");
  write_text(hex, format_inhx8m(image));

  cli::testing::SimRun lone("16F628A");
  const Outcome alone = lone({"--device", "16F628A", "write", hex});
  ASSERT_EQ(alone.status, cli::kExitOk) << alone.err;

  TwoUnits units({}, "16F628A", "16F628A");
  const Outcome both =
      run_args({"--unit", "usb:A1", "--unit", "usb:B2", "--device", "16F628A", "write", hex});
  EXPECT_EQ(both.status, cli::kExitOk) << both.err;
  std::vector<std::string> expected;
  for (const char* name : {"usb:A1: ", "usb:B2: "}) {
    for (const std::string& line : lines_of(alone.out)) expected.push_back(name + line);
  }
  EXPECT_EQ(lines_of(both.out), expected);
  for (const sim::SimUnit* unit : {&units.a, &units.b}) {
    expect_same_packets(*unit, *lone.unit);
    for (const HexWord& word : image) {
      ASSERT_EQ(unit->program_word(static_cast<int>(word.address)), word.value) << word.address;
    }
  }
  const Seen a = units.bus_a.seen(), b = units.bus_b.seen();
  EXPECT_LT(a.first_packet, b.last_packet);
  EXPECT_LT(b.first_packet, a.last_packet);
}

// The command line reaches the unit its serial names, and the other one
// hears nothing (its serial is read, no packet sent); with one of several units missing, the run
// names it on its own line and fails, and the other's line still comes out.
TEST(UsbUnitsEmulated, CommandsReachTheUnitNamedBySerial) {
  REQUIRE_UMOCKDEV();
  TwoUnits units;
  cli::testing::SimRun lone("16F628A");
  const Outcome alone = lone({"--device", "16F628A", "id"});
  ASSERT_EQ(alone.status, cli::kExitOk) << alone.err;

  const Outcome b = run_args({"--unit", "usb:B2", "--device", "16F628A", "id"});
  EXPECT_EQ(b.status, cli::kExitOk) << b.err;
  EXPECT_EQ(b.out, alone.out);
  EXPECT_EQ(units.a.trace().size(), 0u);
  expect_same_packets(units.b, *lone.unit);

  const Outcome one_missing =
      run_args({"--unit", "usb:A1", "--unit", "usb:ZZ", "--device", "16F84A", "erase"});
  EXPECT_EQ(one_missing.status, cli::kExitFailed);
  EXPECT_EQ(lines_of(one_missing.out), (std::vector<std::string>{"usb:A1: Chip Erase Complete"}));
  EXPECT_NE(one_missing.err.find("usb:ZZ: zenta: Unit not Found"), std::string::npos)
      << one_missing.err;
  EXPECT_NE(one_missing.err.find("'ZZ'"), std::string::npos) << one_missing.err;
  EXPECT_GT(units.a.trace().size(), 0u);
}

}  // namespace
}  // namespace zenta::testing

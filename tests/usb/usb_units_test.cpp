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

// The packets a unit received are those a lone unit received.
void expect_same_packets(const sim::SimUnit& unit, const sim::SimUnit& lone) {
  ASSERT_EQ(unit.trace().size(), lone.trace().size());
  for (std::size_t i = 0; i < unit.trace().size(); ++i) {
    ASSERT_EQ(unit.trace()[i].tx, lone.trace()[i].tx) << "packet " << i + 1;
  }
}

// Two units plugged in, "A1" on interrupt and "B2" on bulk endpoints.
struct TwoUnits {
  explicit TwoUnits(const char* chip, const Faults& a_faults = {}) : a(chip), b(chip) {
    bus_a.set(a_faults);
  }
  sim::SimUnit a, b;
  EmulatedUnit bus_a{a, kUnitUsbId.vendor, kUnitUsbId.product, EndpointKind::kInterrupt, "A1"};
  EmulatedUnit bus_b{b, kUnitUsbId.vendor, kUnitUsbId.product, EndpointKind::kBulk, "B2"};
};

TEST(UsbUnitsEmulated, SerialOpensThatUnitOnly) {
  REQUIRE_UMOCKDEV();
  struct Case {
    std::string serial;
    bool a_forbidden;
    std::size_t packets_a, packets_b;  // the one exchange lands on the unit opened
    std::vector<std::string> hint_has;
  };
  const Case cases[] = {
      {"A1", false, 1, 0, {}},
      {"B2", false, 0, 1, {}},
      {"C3", false, 0, 0, {"No unit", "'C3'", "zenta units"}},
      // A unit whose serial cannot be read is not taken for the one asked for.
      {"B2", true, 0, 1, {}},
      {"A1", true, 0, 0, {"may not use it", "udev rule"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.serial + (c.a_forbidden ? ", A1 forbidden" : ""));
    TwoUnits units("16F84A", {.forbidden = c.a_forbidden});
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

// The command line: `units` asks each unit for its firmware and nothing
// else; a serial reaches that unit only (the other's serial is read, no
// packet sent); several units are written at once, each receiving what a
// lone unit receives, the runs overlapping in time and each result line
// naming its unit; a unit of several that is missing is named on its own
// line and fails the run, and the other's line still comes out.
TEST(UsbUnitsEmulated, CommandLineRunsOnEachUnitItNames) {
  REQUIRE_UMOCKDEV();
  TwoUnits units("16F628A");
  sim::SimUnit direct("16F628A");  // asked for its firmware directly
  FakeHost host;
  Unit opened(direct, host);
  ASSERT_TRUE(opened.open() == kDriverOk && opened.read_firmware_version());
  const std::string firmware = opened.FirmwareVersion();
  const Outcome listed = run_args({"units"});
  ASSERT_EQ(listed.status, cli::kExitOk) << listed.err;
  std::vector<std::string> lines = lines_of(listed.out);
  std::sort(lines.begin(), lines.end());
  const auto line = [&](const std::string& serial, const EmulatedUnit& bus) {
    return "usb:" + serial + "  firmware " + firmware + "  (bus 1, address " +
           std::to_string(bus.bus_address()) + ")";
  };
  EXPECT_EQ(lines, (std::vector{line("A1", units.bus_a), line("B2", units.bus_b)}));
  const Outcome json = run_args({"--json", "units"});
  EXPECT_NE(json.out.find("{\"unit\":\"usb:B2\",\"firmware\":\"" + firmware + "\""),
            std::string::npos)
      << json.out;
  for (sim::SimUnit* unit : {&units.a, &units.b}) {
    ASSERT_EQ(unit->trace().size(), 2u);
    EXPECT_EQ(unit->trace()[0].tx[0], UNIT_VERSION);
    EXPECT_EQ(unit->trace()[1].tx[0], UNIT_VERSION);
    unit->clear_trace();
  }

  cli::testing::SimRun lone("16F628A");
  const Outcome alone = lone({"--device", "16F628A", "id"});
  ASSERT_EQ(alone.status, cli::kExitOk) << alone.err;
  const Outcome b = run_args({"--unit", "usb:B2", "--device", "16F628A", "id"});
  EXPECT_EQ(b.status, cli::kExitOk) << b.err;
  EXPECT_EQ(b.out, alone.out);
  EXPECT_TRUE(units.a.trace().empty());
  expect_same_packets(units.b, *lone.unit);

  TempDir dir;
  std::vector<HexWord> image;
  for (std::uint32_t address = 0; address < 0x60; ++address) {
    image.push_back({address, static_cast<std::uint16_t>((address * 0x135 + 7) & 0x3FFF)});
  }
  const std::string hex = dir.file("p.hex");
  write_text(hex, format_inhx8m(image));
  cli::testing::SimRun lone_write("16F628A");
  const Outcome written = lone_write({"--device", "16F628A", "write", hex});
  ASSERT_EQ(written.status, cli::kExitOk) << written.err;
  units.b.clear_trace();
  const Outcome both =
      run_args({"--unit", "usb:A1", "--unit", "usb:B2", "--device", "16F628A", "write", hex});
  EXPECT_EQ(both.status, cli::kExitOk) << both.err;
  std::vector<std::string> expected;
  for (const char* name : {"usb:A1: ", "usb:B2: "}) {
    for (const std::string& out : lines_of(written.out)) expected.push_back(name + out);
  }
  EXPECT_EQ(lines_of(both.out), expected);
  for (const sim::SimUnit* unit : {&units.a, &units.b}) {
    expect_same_packets(*unit, *lone_write.unit);
    for (const HexWord& word : image) {
      ASSERT_EQ(unit->program_word(static_cast<int>(word.address)), word.value) << word.address;
    }
  }
  const Seen a = units.bus_a.seen(), b_seen = units.bus_b.seen();
  EXPECT_LT(a.first_packet, b_seen.last_packet);
  EXPECT_LT(b_seen.first_packet, a.last_packet);

  const Outcome one_missing =
      run_args({"--unit", "usb:A1", "--unit", "usb:ZZ", "--device", "16F628A", "erase"});
  EXPECT_EQ(one_missing.status, cli::kExitFailed);
  EXPECT_EQ(lines_of(one_missing.out), (std::vector<std::string>{"usb:A1: Chip Erase Complete"}));
  EXPECT_NE(one_missing.err.find("usb:ZZ: zenta: Unit not Found"), std::string::npos)
      << one_missing.err;
  EXPECT_NE(one_missing.err.find("'ZZ'"), std::string::npos) << one_missing.err;
}

}  // namespace
}  // namespace zenta::testing

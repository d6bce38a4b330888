// The simulated unit as the panel's peer: faults injected into its
// exchanges, its instruments, and its chip saved to and loaded from a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "sim_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

// A packet whose reply is lost reached the unit, which carried it out; one
// whose write failed did not.
TEST(SimFaults, OnlyAPacketThatWasWrittenIsCarriedOut) {
  for (const auto& [inject, led] : {std::pair{&sim::SimUnit::fail_write_at, false},
                                    {&sim::SimUnit::fail_read_at, true},
                                    {&sim::SimUnit::short_transfer_at, true}}) {
    SimRig rig;
    (rig.unit.*inject)(1);
    EXPECT_EQ(rig.send({UNIT_LED, 1}), kLinkFailed);
    EXPECT_EQ(rig.unit.led(), led);
  }
}

TEST(SimFaults, AnUnpluggedUnitFailsEveryOpenWriteAndRead) {
  SimRig rig;
  EXPECT_EQ(rig.link.open_driver(), kDriverOk);
  rig.unit.unplug();
  EXPECT_EQ(rig.link.open_driver(), kDriverOpenError);
  EXPECT_EQ(rig.send({UNIT_VCC, 0}), kLinkFailed);
  EXPECT_EQ(rig.unit.condition(), UnitCondition::kGone);
  EXPECT_TRUE(rig.unit.vcc()) << "the supply stays as it was when the unit went";
}

TEST(SimInstruments, AdChannelsReadTheirInputsAndChannel0FollowsMclr) {
  SimRig rig;
  for (const auto [mclr, channel, reading] :
       std::vector<std::array<int, 3>>{{0, 0, 0}, {1, 0, 2899}, {2, 0, 7537}, {2, 1, 1449}}) {
    rig.send({UNIT_MCLR_LEVEL, static_cast<std::uint8_t>(mclr)});
    rig.send({UNIT_AD_READ, static_cast<std::uint8_t>(channel)});
    EXPECT_EQ(rig.word_of_reply(0), reading) << "MCLR " << mclr << " channel " << channel;
  }
}

TEST(SimFile, SavedChipLoadsBackAndAWrongOrMalformedFileIsRefused) {
  TempDir dir;
  sim::SimUnit unit("12F675");
  unit.set_program_word(0x3FF, 0x3444);
  unit.set_program_word(0x2002, 0x0123);
  unit.set_config_word(0x11D4);
  unit.set_eeprom_byte(127, 0x5A);
  ASSERT_TRUE(unit.save(dir.file("chip.txt")));
  EXPECT_FALSE(unit.save(dir.file("missing/chip.txt")));
  sim::SimUnit other("12f675");
  ASSERT_TRUE(other.load(dir.file("chip.txt")));
  for (int a : {0x3FF, 0x2002, 0x2007}) EXPECT_EQ(other.program_word(a), unit.program_word(a));
  EXPECT_EQ(other.eeprom_byte(127), 0x5A);
  other.set_program_word(0x3FF, 0x1111);

  const std::string good = read_text(dir.file("chip.txt"));
  const auto replace = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    return text.replace(text.find(from), from.size(), to);  // throws when `from` is missing
  };
  const std::size_t row1 = good.find("p 0008");
  for (const std::string& bad : {replace("chip 12F675", "chip 12F629"), replace("3444", "4444"),
                                 replace(good.substr(row1, good.find("p 0010") - row1), "")}) {
    write_text(dir.file("bad.txt"), bad);
    EXPECT_FALSE(other.load(dir.file("bad.txt")));
    EXPECT_EQ(other.program_word(0x3FF), 0x1111) << "kept";
  }
}

}  // namespace
}  // namespace zenta::testing

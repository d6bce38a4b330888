#include <gtest/gtest.h>

#include "fakes.h"
#include "link/sim/sim_unit.h"
#include "panel_rig.h"
#include "scripted_driver.h"

namespace zenta {
namespace {

using testing::FakeHost;
using testing::ScriptedDriver;
using Packet = std::array<std::uint8_t, 8>;

// Counts reads as well as writes, to show that a failed start touches nothing.
class CountingStore : public MemorySettingsStore {
 public:
  int gets = 0;
  std::string get(const std::string& a, const std::string& s, const std::string& k) override {
    ++gets;
    return MemorySettingsStore::get(a, s, k);
  }
};

struct Panel : testing::FormParts<ScriptedDriver, FakeHost, CountingStore> {
  std::string setting(const char* key) { return store.get(kSettingsApp, kSettingsSection, key); }
  void store_setting(const char* key, const std::string& value) {
    store.save(kSettingsApp, kSettingsSection, key, value);
  }
};

TEST(Startup, NoUnitEndsBeforeAnythingElseWhateverTheCode) {
  for (const std::int32_t code : {-2, -12, 4}) {
    SCOPED_TRACE(code);
    Panel p;
    p.driver.open_result = code;
    EXPECT_FALSE(p.form.Form_Load());
    ASSERT_EQ(p.host.boxes.size(), 1u);
    EXPECT_EQ(p.host.boxes[0].text, "Unit not Found");
    EXPECT_EQ(p.host.boxes[0].title, "USB ERROR");
    EXPECT_TRUE(p.driver.written.empty());
    EXPECT_EQ(p.driver.closes, 0);
    EXPECT_EQ(p.store.gets + p.store.saves(), 0);
  }
}

// The unit powers the target when it is plugged in, so the identification
// that the start-up runs already sees the chip in the socket.
TEST(Startup, NamesTheChipInTheSocket) {
  const std::pair<const char*, const char*> cases[] = {{"16F628A", "Device=16F628A (1062)"},
                                                       {"12F675", "Device=12F675 (FC4)"},
                                                       {"16F877", "Device=16F877 (9A2)"},
                                                       {"none", "Device=16F84 (3FFF)"}};
  for (const auto& [chip, notes] : cases) {
    testing::FormParts<sim::SimUnit> panel(chip);
    ASSERT_TRUE(panel.form.Form_Load());
    EXPECT_EQ(panel.form.view().NotesLabel, notes);
  }
}

TEST(Startup, PacketOrderAndStateOnACleanStore) {
  Panel p;
  p.driver.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
  ASSERT_TRUE(p.form.Form_Load());
  const auto& sent = p.driver.written;
  ASSERT_GE(sent.size(), 3u);
  EXPECT_EQ(sent.front(), (Packet{0x3F, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sent[sent.size() - 2], (Packet{0x3A, 0x01, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sent.back(), (Packet{0x3B, 0, 0, 0, 0, 0, 0, 0}));
  // In between, the restored device's selection reads the chip's ID:
  // programming mode, configuration space, six steps, wait, read, leave.
  const std::vector<Packet> id_read = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}, {0x00, 0x3F, 0xFF},
                                       {0x06},       {0x06},       {0x06},       {0x06},
                                       {0x06},       {0x06},       {0x38, 0x0A}, {0x04, 0x01},
                                       {0x32, 0x01}, {0x31, 0x01}};
  EXPECT_EQ(std::vector<Packet>(sent.begin() + 1, sent.end() - 2), id_read);

  EXPECT_EQ(p.unit.FirmwareVersion(), "ZENTA 12");
  EXPECT_EQ(p.form.view().Command_VCC, "VCC on");
  EXPECT_EQ(p.form.view().Command_LED, "LED off");
  EXPECT_EQ(p.form.view().PICsel, 1);
  EXPECT_EQ(p.form.view().Label7, "TopDIR = /home/user/work");
  EXPECT_EQ(p.form.view().height_twips, 5400);
  // First run: the six tool defaults are stored and used at once.
  const auto defaults = tool_values(startup_tool_defaults());
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    EXPECT_EQ(p.setting(kToolKeys[i]), defaults[i]) << kToolKeys[i];
  }
  EXPECT_TRUE(p.store.contains("F_EDIT"));
  EXPECT_EQ(p.tools.AsmFolder, startup_tool_defaults().AsmFolder);
  EXPECT_EQ(p.setting("DEVICE"), "1");
  EXPECT_TRUE(p.host.boxes.empty());
}

// A stored but empty assembler folder counts as a first run: all six
// defaults are written again; otherwise the six keys are read unchanged.
TEST(Startup, ToolSettingsAreReadOrDefaulted) {
  for (const std::string first : {"", "/opt/asm"}) {
    SCOPED_TRACE(first);
    Panel p;
    for (const char* key : kToolKeys) p.store_setting(key, "mine");
    p.store_setting("F_ASM", first);
    ASSERT_TRUE(p.form.Form_Load());
    const bool first_run = first.empty();
    EXPECT_EQ(p.setting("CMD_ASM"), first_run ? startup_tool_defaults().AsmCommand : "mine");
    EXPECT_EQ(p.setting("F_EDIT"), first_run ? "" : "mine");
    EXPECT_EQ(p.tools.AsmCommand, first_run ? startup_tool_defaults().AsmCommand : "mine");
    EXPECT_EQ(p.tools.AsmFolder, first_run ? startup_tool_defaults().AsmFolder : "/opt/asm");
  }
}

TEST(Startup, StoredDeviceValues) {
  struct Case {
    const char* stored;
    int choice;
    const char* family;
    const char* stored_after;
  };
  const Case cases[] = {
      {"6", 6, "12F629", "6"},   {"7", 7, "16F819", "7"},     {"9", 1, "16F87xA", "1"},
      {"-1", 1, "16F87xA", "1"}, {"abc", 0, "16F87x", "abc"}, {"2.5", 2, "16F84", "2"},
      {" 3", 3, "16F84", " 3"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.stored);
    Panel p;
    p.store_setting("DEVICE", c.stored);
    ASSERT_TRUE(p.form.Form_Load());
    EXPECT_EQ(p.form.view().PICsel, c.choice);
    EXPECT_EQ(p.state.DeviceFamily, c.family);
    EXPECT_EQ(p.setting("DEVICE"), c.stored_after);
  }
}

TEST(Startup, FailedIdentificationLeavesTheFirmwareVersionEmptyAndGoesOn) {
  Panel p;
  p.driver.read_results.push_back(0);
  ASSERT_TRUE(p.form.Form_Load());
  EXPECT_EQ(p.unit.FirmwareVersion(), "");
  ASSERT_FALSE(p.host.boxes.empty());
  EXPECT_EQ(p.host.boxes[0].text, "USB Read Error");
  EXPECT_EQ(p.driver.written.back(), (Packet{0x3B, 0, 0, 0, 0, 0, 0, 0}));
  p.form.shutdown();
  EXPECT_EQ(p.driver.closes, 1);
}

// In exact mode the start-up is the documented one from its first packet: a
// unit that stops answering gets one box per failed exchange, and every
// step's packet is still tried, down to the supply on and the LED off.
TEST(Startup, ExactModeTriesEveryStepOfAUnitThatStopsAnswering) {
  for (const int at : {2, 3, 4}) {
    SCOPED_TRACE(at);
    testing::FormParts<sim::SimUnit> panel("16F628A");
    panel.store.save(kSettingsApp, kPanelSection, kExactKey, "1");
    panel.driver.fall_silent_at(at);
    ASSERT_TRUE(panel.form.Form_Load());
    const auto& trace = panel.driver.trace();
    ASSERT_GE(trace.size(), 17u);
    EXPECT_EQ(trace[trace.size() - 2].tx, (Packet{UNIT_VCC, 1}));
    EXPECT_EQ(trace.back().tx, (Packet{UNIT_LED, 0}));
    EXPECT_EQ(panel.host.boxes.size(), trace.size() - static_cast<std::size_t>(at) + 1);
    for (const auto& box : panel.host.boxes) EXPECT_EQ(box.text, "USB Write Error");
    EXPECT_EQ(panel.form.USBMSG(), "Write NG!:");
  }
}

}  // namespace
}  // namespace zenta

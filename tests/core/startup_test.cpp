#include <gtest/gtest.h>

#include "panel/main_form.h"
#include "recording_host.h"
#include "scripted_driver.h"

namespace zenta {
namespace {

using testing::RecordingHost;
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

std::string setting(SettingsStore& store, const char* key) {
  return store.get(kSettingsApp, kSettingsSection, key);
}

struct StartupFixture : ::testing::Test {
  ScriptedDriver driver;
  RecordingHost host;
  CountingStore store;
  ProgrammerState state;
  MainForm form{driver, host, store, state};
};

TEST_F(StartupFixture, NoUnitEndsBeforeAnythingElse) {
  driver.open_result = -2;
  EXPECT_FALSE(form.Form_Load());
  EXPECT_EQ(form.link().USBMSG(), "Driver Open:NG(ドライバオープンエラー)");
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].text, "Unit not Found");
  EXPECT_EQ(host.boxes[0].title, "USB ERROR");
  EXPECT_TRUE(driver.written.empty());
  EXPECT_EQ(driver.closes, 0);
  EXPECT_EQ(store.gets, 0);
  EXPECT_EQ(store.saves(), 0);
}

TEST_F(StartupFixture, ResultCodeOutsideTheTableIsAFailureToo) {
  driver.open_result = -12;
  EXPECT_FALSE(form.Form_Load());
  EXPECT_TRUE(driver.written.empty());
}

TEST_F(StartupFixture, PacketOrderOnACleanStore) {
  driver.replies.push_back({'Z', 'E', 'N', 'T', 'A', ' ', '1', '2'});
  ASSERT_TRUE(form.Form_Load());
  const auto& sent = driver.written;
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

  EXPECT_EQ(form.FirmwareVersion(), "ZENTA 12");
  EXPECT_EQ(form.view().Command_VCC, "VCC on");
  EXPECT_EQ(form.view().Command_LED, "LED off");
  EXPECT_EQ(form.view().PICsel, 1);
  EXPECT_EQ(state.DeviceFamily, "16F87xA");
  EXPECT_EQ(form.view().Label7, "TopDIR = /home/user/work");
  EXPECT_EQ(form.view().Label9, "Current DIR = /home/user/work");
  EXPECT_EQ(form.view().width_twips, 9000);
  EXPECT_EQ(form.view().height_twips, 5400);

  // First run: the six tool defaults are stored, the memory copies stay empty.
  const ToolSettings defaults = startup_tool_defaults();
  EXPECT_EQ(setting(store, "F_ASM"), defaults.AsmFolder);
  EXPECT_EQ(setting(store, "CMD_ASM"), defaults.AsmCommand);
  EXPECT_EQ(setting(store, "CMD_C"), "picl -16F877 -Ecerr.txt");
  EXPECT_TRUE(store.contains("F_EDIT"));
  EXPECT_EQ(setting(store, "F_EDIT"), "");
  EXPECT_EQ(form.tools().AsmFolder, "");
  EXPECT_EQ(setting(store, "DEVICE"), "1");
  EXPECT_TRUE(host.boxes.empty());
}

TEST_F(StartupFixture, EmptyAssemblerFolderRewritesAllSixDefaults) {
  for (const char* key : kToolKeys) store.save(kSettingsApp, kSettingsSection, key, "mine");
  store.save(kSettingsApp, kSettingsSection, "F_ASM", "");
  ASSERT_TRUE(form.Form_Load());
  EXPECT_EQ(setting(store, "CMD_ASM"), startup_tool_defaults().AsmCommand);
  EXPECT_EQ(setting(store, "F_EDIT"), "");
  EXPECT_EQ(form.tools().AsmCommand, "");
}

TEST_F(StartupFixture, StoredToolSettingsAreReadIntoMemoryUnchanged) {
  const char* values[] = {"/opt/asm", "gpasm x", "/opt/c", "cc y", "/usr/bin", "vi"};
  for (std::size_t i = 0; i < kToolKeys.size(); ++i) {
    store.save(kSettingsApp, kSettingsSection, kToolKeys[i], values[i]);
  }
  const int saves = store.saves();
  ASSERT_TRUE(form.Form_Load());
  const auto loaded = tool_values(form.tools());
  for (std::size_t i = 0; i < loaded.size(); ++i) EXPECT_EQ(loaded[i], values[i]);
  // Only the restored device choice is stored; no tool key is written.
  EXPECT_EQ(store.saves(), saves + 1);
  EXPECT_EQ(setting(store, "DEVICE"), "1");
}

TEST(StartupDevice, StoredDeviceValues) {
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
    ScriptedDriver driver;
    RecordingHost host;
    MemorySettingsStore store;
    ProgrammerState state;
    store.save(kSettingsApp, kSettingsSection, "DEVICE", c.stored);
    MainForm form(driver, host, store, state);
    ASSERT_TRUE(form.Form_Load());
    EXPECT_EQ(form.view().PICsel, c.choice);
    EXPECT_EQ(state.DeviceFamily, c.family);
    EXPECT_EQ(setting(store, "DEVICE"), c.stored_after);
  }
}

TEST_F(StartupFixture, FailedIdentificationLeavesTheFirmwareVersionEmptyAndGoesOn) {
  driver.read_results.push_back(0);
  ASSERT_TRUE(form.Form_Load());
  EXPECT_EQ(form.FirmwareVersion(), "");
  ASSERT_FALSE(host.boxes.empty());
  EXPECT_EQ(host.boxes[0].text, "USB Read Error");
  EXPECT_EQ(driver.written.back(), (Packet{0x3B, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(StartupFixture, ShutdownClosesTheDriver) {
  ASSERT_TRUE(form.Form_Load());
  form.shutdown();
  EXPECT_EQ(driver.closes, 1);
}

}  // namespace
}  // namespace zenta

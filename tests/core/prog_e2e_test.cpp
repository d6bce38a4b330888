// End to end: real programs assembled by gpasm, loaded, written, verified
// and read back on the simulated unit with the matching chip; and the ways
// a write can go wrong.
#include <gtest/gtest.h>

#include <tuple>

#include "common/number_text.h"
#include "image/hex_loader.h"
#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

// Each program is assembled from tests/data/blink.asm for its processor,
// loaded through the file dialog as a user does, and written with the
// configuration word of its image.
TEST(EndToEnd, GpasmProgramOnEveryCatalogueEntry) {
  ASSERT_TRUE(tool_available("gpasm")) << "gputils' gpasm is needed for this test";
  // Chip, catalogue entry, the word __CONFIG in the source gives.
  const std::tuple<const char*, int, int> cases[] = {
      {"16F876", 0, 0x3F32}, {"16F877A", 1, 0x3F32}, {"16F84", 2, 0x3FF1},  {"16F84A", 3, 0x3FF1},
      {"16F628", 4, 0x3F70}, {"16F628A", 5, 0x3F70}, {"12F675", 6, 0x3FE4}, {"16F819", 7, 0x3F70}};
  for (const auto& [chip, device, config] : cases) {
    SCOPED_TRACE(chip);
    TempDir dir;
    std::string processor = chip;
    for (char& ch : processor) ch = static_cast<char>(std::tolower(ch));
    const std::string hex = dir.file("blink.hex");
    const ProcessResult assembled = run_command("gpasm -w2 -p " + processor + " -o '" + hex +
                                                "' '" + ZENTA_TEST_DATA + "/blink.asm' 2>&1");
    ASSERT_EQ(assembled.status, 0) << assembled.out;
    PanelRig rig(chip, device);
    rig.host.open_answers = {hex};
    rig.form.F_OpenButton_Click();
    ASSERT_EQ(rig.state.DataLoaded, 1);
    rig.form.ConfigAddrText_Change(hex_text(rig.state.word(0x2007)));
    ProgrammerState image = rig.state;
    // The program's own last address, as the user types it; the entry's
    // size, where the loader leaves it, is the next test's.
    int program_end = 0x1FFF;
    while (program_end > 0 && image.word(program_end) == 0x3FFF) --program_end;
    rig.form.LastAddrText_Change(hex_text(program_end + 1));

    rig.form.WriteButton_Click();
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
    for (int w = 0; w < rig.unit.chip().program_words; ++w) {
      ASSERT_EQ(rig.unit.program_word(w), image.word(w)) << "word " << w;
    }
    EXPECT_EQ(rig.unit.config_word(), config);

    rig.form.VerifyButton_Click();
    EXPECT_EQ(rig.form.view().NotesLabel, "Verify Complete");

    blank_program_image(rig.state);
    rig.form.READ_Click();
    const int end = rig.state.LastAddress;
    for (int w = 0; w < end; ++w) ASSERT_EQ(rig.state.word(w), image.word(w)) << "word " << w;
    EXPECT_TRUE(rig.host.boxes.empty());  // no verify, configuration or link error on the way
  }
}

// The documented write, unchecked, with the last address the loader leaves
// for an image with a configuration record: the device entry's program
// size. The words past the chip's memory alias onto its lowest words, so
// the write destroys the program's first words and the verify says so.
TEST(EndToEnd, WriteWithTheEntrysSizeAsLastAddressOverwritesTheLowestWords) {
  struct Case {
    const char* chip;
    int device;
    const char* last;
    // Which low words end up other than the image, and as what.
    std::vector<std::pair<int, int>> (*damage)(const ProgrammerState& image);
  };
  const Case cases[] = {
      // 1K words, one erase/program cycle a word up to LAST + 1: the blank
      // words 0x400 and 0x401 of the buffer land on words 0 and 1.
      {"16F84A", 3, "400",
       [](const ProgrammerState&) {
         return std::vector<std::pair<int, int>>{{0, 0x3FFF}, {1, 0x3FFF}};
       }},
      // The 12F629/675 entry says 4K words: the buffer's blank words from
      // 0x400 on pass over the 1K chip three more times; the program is gone.
      {"12F675", 6, "1000",
       [](const ProgrammerState&) {
         std::vector<std::pair<int, int>> all;
         for (int w = 0; w < 16; ++w) all.push_back({w, 0x3FFF});
         return all;
       }},
      // Rows of eight: the row of 0x2000 is row 0 again, and its one loaded
      // word (the configuration word at 0x2007) is programmed over word 7.
      {"16F877A", 1, "2000",
       [](const ProgrammerState& image) {
         return std::vector<std::pair<int, int>>{{7, image.word(7) & image.word(0x2007)}};
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    std::string processor = c.chip;
    for (char& ch : processor) ch = static_cast<char>(std::tolower(ch));
    const std::string hex = dir.file("blink.hex");
    ASSERT_EQ(run_command("gpasm -w2 -p " + processor + " -o '" + hex + "' '" + ZENTA_TEST_DATA +
                          "/blink.asm' 2>&1")
                  .status,
              0);
    PanelRig rig(c.chip, c.device);
    rig.host.open_answers = {hex};
    rig.form.F_OpenButton_Click();
    EXPECT_EQ(rig.form.view().LastAddrText, c.last) << "where the loader leaves it";
    const ProgrammerState image = rig.state;
    rig.form.WriteButton_Click();
    EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Verify Data ERROR"});
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
    const auto damage = c.damage(image);
    for (int w = 0; w < 16; ++w) {
      int expected = image.word(w);
      for (const auto& [word, value] : damage) {
        if (word == w) expected = value;
      }
      EXPECT_EQ(rig.unit.program_word(w), expected) << "word " << w;
    }
    ASSERT_NE(image.word(0), 0x3FFF) << "the program must start at word 0 to show the damage";
  }
}

// A small image on a 16F876 (program-only cycles, which cannot set a bit
// that the chip has cleared), written with the last address 0x10.
struct FaultRig : PanelRig {
  FaultRig() : PanelRig("16F876", 0) {
    blank_program_image(state);
    for (int w = 0; w < 0x10; ++w) state.set_word(w, 0x3000 + w);
    state.DataLoaded = 1;
    form.LastAddrText_Change("10");
  }
};

TEST(WriteFailures, VerifyAndConfigurationErrorsStillCompleteTheWrite) {
  FaultRig rig;
  rig.host.during_events = [&] {
    rig.unit.set_program_word(9, 0x3009 & ~0x1000);  // a bit the program-only cycle cannot set
    rig.state.WaitTicks = 7;
  };
  const CommandResult written = rig.form.WriteButton_Click();
  ASSERT_EQ(rig.box_texts(), std::vector<std::string>{"Verify Data ERROR"});
  EXPECT_EQ(rig.host.boxes[0].title, "VERIFY ERROR");
  EXPECT_EQ(rig.state.WaitTicks, 0);
  EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
  ASSERT_TRUE(written.mismatch);
  EXPECT_EQ(written.mismatch->address, 9);
  EXPECT_EQ(written.mismatch->expected, 0x3009);
  EXPECT_EQ(written.mismatch->read, 0x2009);
  EXPECT_FALSE(written.ok());
  EXPECT_EQ(rig.unit.config_word(), 0x3F3B);  // the configuration write still ran

  rig.form.VerifyButton_Click();
  EXPECT_EQ(rig.form.view().NotesLabel, "Verify Error");
  EXPECT_EQ(rig.form.view().NotesColor, kRed);

  // The next write erases first; now the configuration read-back differs.
  rig.host.boxes.clear();
  // Bits a program-only cycle cannot set again; the protection bits stay
  // off, so the program still reads back.
  rig.host.during_events = [&] { rig.unit.set_config_word(0x3F30); };
  const CommandResult rewritten = rig.form.WriteButton_Click();
  EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Can't Write to Config"});
  ASSERT_TRUE(rewritten.config);
  EXPECT_FALSE(rewritten.config->written);
  EXPECT_NE(rewritten.config->read_back, 0x3F3B);
  EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
}

TEST(WriteFailures, ALinkFailureMidWriteLeavesThePanelUsable) {
  FaultRig rig;
  rig.unit.fail_write_at(static_cast<int>(rig.opened.link().exchanges()) + 30);
  EXPECT_EQ(rig.form.WriteButton_Click().failed_exchanges, 1u);
  EXPECT_EQ(rig.host.boxes.front().text, "USB Write Error");
  EXPECT_FALSE(rig.form.view().busy);

  rig.host.boxes.clear();
  rig.state.WaitTicks = 0;
  rig.form.WriteButton_Click();
  EXPECT_TRUE(rig.host.boxes.empty());
  for (int w = 0; w < 0x10; ++w) EXPECT_EQ(rig.unit.program_word(w), 0x3000 + w);
}

TEST(OneOperationAtATime, CommandsInAPauseAreRefused) {
  // With the checks on, nothing sends in a write's pause; the documented
  // panel lets the unit controls send there (the supply, LED, level and
  // reset buttons), and only those.
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    FaultRig rig;
    rig.form.Exact_Click(exact);
    Progress seen;
    std::size_t packets_before = 0;
    std::vector<Packet> controls;
    rig.host.during_events = [&] {
      EXPECT_TRUE(rig.form.view().busy);
      seen = rig.form.view().progress;
      packets_before = rig.unit.trace().size();
      EXPECT_TRUE(rig.form.VerifyButton_Click().refused);
      EXPECT_TRUE(rig.form.READ_Click().refused);
      EXPECT_TRUE(rig.form.READ_EEPROM_Click().refused);
      EXPECT_TRUE(rig.form.ERASEButton_Click().refused);
      rig.form.Command_ID_Click();
      rig.form.PICsel_Click(3);
      EXPECT_FALSE(rig.form.LOAD_HEX());
      EXPECT_TRUE(rig.form.WriteButton_Click().refused);
      EXPECT_EQ(rig.unit.trace().size(), packets_before);
      rig.form.Command_LED_Click();
      rig.form.Command_Vset_Click(2);
      for (std::size_t i = packets_before; i < rig.unit.trace().size(); ++i) {
        controls.push_back(rig.unit.trace()[i].tx);
      }
    };
    rig.form.WriteButton_Click();
    EXPECT_GT(seen.maximum, 0);
    EXPECT_EQ(rig.form.view().PICsel, 0);
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
    const std::vector<Packet> documented = {{0x3B, 0x00}, {0x32, 0x02}, {0x39, 0x00}};
    EXPECT_EQ(controls, exact ? documented : std::vector<Packet>{});
  }
}

}  // namespace
}  // namespace zenta::testing

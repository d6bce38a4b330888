// End to end: real programs assembled by gpasm, loaded, written, verified
// and read back on the simulated unit with the matching chip; and the ways
// a write can go wrong.
#include <gtest/gtest.h>

#include "common/number_text.h"
#include "image/hex_loader.h"
#include "packets.h"
#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

// Each program is assembled from tests/data/blink.asm for its processor and
// loaded through the file dialog as a user does. The loader leaves the LAST
// box at the entry's size, past the chip's memory on some: the documented
// write with it lets the words past the chip alias onto its lowest words,
// and the verify says so. With the program's own last address typed in and
// the configuration word of its image, the write, the verify and the read
// all go through.
TEST(EndToEnd, GpasmProgramOnEveryCatalogueEntry) {
  ASSERT_TRUE(tool_available("gpasm")) << "gputils' gpasm is needed for this test";
  const struct {
    const char* chip;
    int device;
    int config;          // the word __CONFIG in the source gives
    const char* loaded;  // the LAST box after loading
    // The documented write with that LAST: the lowest words it leaves
    // blank, or (rows of eight) the word that the row of 0x2000 programs
    // again with the configuration word; 0 and -1 where it is not run.
    int blanked, anded;
  } cases[] = {
      {"16F876", 0, 0x3F32, "2000", 0, -1},  {"16F877A", 1, 0x3F32, "2000", 0, 7},
      {"16F84", 2, 0x3FF1, "400", 0, -1},    {"16F84A", 3, 0x3FF1, "400", 2, -1},
      {"16F628", 4, 0x3F70, "1000", 0, -1},  {"16F628A", 5, 0x3F70, "1000", 0, -1},
      {"12F675", 6, 0x3FE4, "1000", 16, -1}, {"16F819", 7, 0x3F70, "1000", 0, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    std::string processor = c.chip;
    for (char& ch : processor) ch = static_cast<char>(std::tolower(ch));
    const std::string hex = dir.file("blink.hex");
    const ProcessResult assembled = run_command("gpasm -w2 -p " + processor + " -o '" + hex +
                                                "' '" + ZENTA_TEST_DATA + "/blink.asm' 2>&1");
    ASSERT_EQ(assembled.status, 0) << assembled.out;
    PanelRig rig(c.chip, c.device);
    rig.host.open_answers = {hex};
    rig.form.F_OpenButton_Click();
    ASSERT_EQ(rig.state.DataLoaded, 1);
    EXPECT_EQ(rig.form.view().LastAddrText, c.loaded);
    const ProgrammerState image = rig.state;
    ASSERT_NE(image.word(0), 0x3FFF) << "the program must start at word 0 to show the damage";
    if (c.blanked > 0 || c.anded >= 0) {
      rig.form.WriteButton_Click();
      EXPECT_EQ(rig.box_texts(), std::vector<std::string>{"Verify Data ERROR"});
      EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
      for (int w = 0; w < 16; ++w) {
        const int damaged = w == c.anded ? image.word(w) & image.word(0x2007) : 0x3FFF;
        EXPECT_EQ(rig.unit.program_word(w), w < c.blanked || w == c.anded ? damaged : image.word(w))
            << "word " << w;
      }
      rig.host.boxes.clear();
    }

    rig.form.ConfigAddrText_Change(hex_text(image.word(0x2007)));
    int program_end = 0x1FFF;
    while (program_end > 0 && image.word(program_end) == 0x3FFF) --program_end;
    rig.form.LastAddrText_Change(hex_text(program_end + 1));
    rig.form.WriteButton_Click();
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
    for (int w = 0; w < rig.unit.chip().program_words; ++w) {
      ASSERT_EQ(rig.unit.program_word(w), image.word(w)) << "word " << w;
    }
    EXPECT_EQ(rig.unit.config_word(), c.config);
    rig.form.VerifyButton_Click();
    EXPECT_EQ(rig.form.view().NotesLabel, "Verify Complete");
    blank_program_image(rig.state);
    rig.form.READ_Click();
    for (int w = 0; w < rig.state.LastAddress; ++w) {
      ASSERT_EQ(rig.state.word(w), image.word(w)) << "word " << w;
    }
    EXPECT_TRUE(rig.host.boxes.empty());  // no verify, configuration or link error on the way
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
  EXPECT_EQ(std::make_tuple(written.mismatch->address, written.mismatch->expected,
                            written.mismatch->read),
            std::make_tuple(9, 0x3009, 0x2009));
  EXPECT_FALSE(written.ok());
  EXPECT_EQ(rig.unit.config_word(), 0x3F3B);  // the configuration write still ran

  rig.form.VerifyButton_Click();
  EXPECT_EQ(rig.form.view().NotesLabel, "Verify Error");
  EXPECT_EQ(rig.form.view().NotesColor, kRed);

  // The next write erases first; now the configuration read-back differs:
  // bits a program-only cycle cannot set again. The protection bits stay
  // off, so the program still reads back.
  rig.host.boxes.clear();
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

// With the checks on, nothing sends in a write's pause; the documented
// panel lets the unit controls send there (the supply, LED, level and
// reset buttons), and only those.
TEST(OneOperationAtATime, CommandsInAPauseAreRefused) {
  for (const bool exact : {false, true}) {
    SCOPED_TRACE(exact ? "exact" : "checked");
    FaultRig rig;
    rig.form.Exact_Click(exact);
    Progress seen;
    Packets controls;
    rig.host.during_events = [&] {
      EXPECT_TRUE(rig.form.view().busy);
      seen = rig.form.view().progress;
      const std::size_t before = rig.unit.trace().size();
      for (const CommandResult& refused :
           {rig.form.VerifyButton_Click(), rig.form.READ_Click(), rig.form.READ_EEPROM_Click(),
            rig.form.ERASEButton_Click()}) {
        EXPECT_TRUE(refused.refused);
      }
      rig.form.Command_ID_Click();
      rig.form.PICsel_Click(3);
      EXPECT_FALSE(rig.form.LOAD_HEX());
      EXPECT_TRUE(rig.form.WriteButton_Click().refused);
      EXPECT_EQ(rig.unit.trace().size(), before);
      rig.form.Command_LED_Click();
      rig.form.Command_Vset_Click(2);
      const Packets all = rig.sent();
      controls.assign(all.begin() + static_cast<long>(before), all.end());
    };
    rig.form.WriteButton_Click();
    EXPECT_GT(seen.maximum, 0);
    EXPECT_EQ(rig.form.view().PICsel, 0);
    EXPECT_EQ(rig.form.view().NotesLabel, "Write Complete");
    EXPECT_EQ(controls, exact ? seq(kLedOff, Packet{0x32, 0x02}, Packet{0x39, 0x00}) : Packets());
  }
}

}  // namespace
}  // namespace zenta::testing

// The safe-programming checks through the panel's form: what a new user
// meets with the documented sequences, and what the checks make of it.
#include <gtest/gtest.h>

#include <algorithm>

#include "common/number_text.h"
#include "image/hex_writer.h"
#include "link/command_codes.h"
#include "panel_rig.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

// A small program as gpasm writes it: sixteen words and a __CONFIG word.
std::string sixteen_word_image(TempDir& dir, int config, std::vector<HexWord> extra = {}) {
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w)
    words.push_back({w, static_cast<std::uint16_t>(0x2800 + w)});
  words.push_back({0x2007, static_cast<std::uint16_t>(config)});
  words.insert(words.end(), extra.begin(), extra.end());
  const std::string path = dir.file("program.hex");
  EXPECT_TRUE(write_inhx8m_file(path, words));
  return path;
}

bool touches_memory(const sim::SimUnit& unit) {
  return std::any_of(unit.trace().begin(), unit.trace().end(), [](const auto& exchange) {
    const std::uint8_t code = exchange.tx[0];
    return code == ICSP_LOAD_DATA || code == ICSP_BEGIN_ERASE_PROG ||
           code == ICSP_BULK_ERASE_PROG || code == ICSP_BEGIN_PROG_ONLY ||
           code == ICSP_CHIP_ERASE || code == ICSP_BULK_SETUP1;
  });
}

TEST(SafeWrite, TheWrongChipOrNoChipIsRefusedBeforeTheChipIsTouched) {
  const struct {
    const char* chip;
    int device;
    const char* says;
  } cases[] = {
      {"16F628A", 1, "A 16F628A is in the socket; the selected device is 16F87xA. Select 16F62xA."},
      {"16F877A", 5, "A 16F877A is in the socket; the selected device is 16F62xA. Select 16F87xA."},
      {"16F84A", 2, "A 16F84A is in the socket; the selected device is 16F84. Select 16F84A."},
      {"none", 1, "No chip answered (ID 3FFF): check the chip in the socket and the target supply"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    PanelRig rig(c.chip, c.device, false);
    if (std::string(c.chip) != "none") rig.unit.set_program_word(0, 0x1234);
    rig.host.open_answers = {sixteen_word_image(dir, 0x3F32)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.unit.clear_trace();
    rig.host.boxes.clear();
    EXPECT_TRUE(rig.form.WriteButton_Click().refused);
    ASSERT_EQ(rig.box_texts(), std::vector<std::string>{c.says});
    EXPECT_FALSE(touches_memory(rig.unit));
    if (std::string(c.chip) != "none") {
      EXPECT_EQ(rig.unit.program_word(0), 0x1234);
    }
    EXPECT_EQ(rig.form.view().NotesLabel, "Write refused");
  }
}

TEST(SafeWrite, TheChipEndsUpHoldingTheImageWithTheFilesConfigurationWord) {
  // Chip, entry, a configuration word its entry's box would not give, and
  // the option controls that show it: oscillator (-1 none of the four: an
  // internal one), WDT, PUT, BOR.
  const struct {
    const char* chip;
    int device;
    int config;
    int osc;
    bool wdt, put, bor;
  } cases[] = {
      {"16F877A", 1, 0x3F32, 2, false, true, false}, {"16F84A", 3, 0x3FF5, 1, true, true, false},
      {"16F628A", 5, 0x3F70, -1, false, true, true}, {"16F876", 0, 0x3F3E, 2, true, false, false},
      {"16F819", 7, 0x3F70, -1, false, true, true},  {"16F628", 4, 0x3F70, -1, false, true, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    PanelRig rig(c.chip, c.device, false);
    for (int w = 0; w < 0x40; ++w) rig.unit.set_program_word(w, 0x0055);
    rig.host.open_answers = {sixteen_word_image(dir, c.config)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    // Loading shows what the write will do: the file's word, the image's range.
    EXPECT_EQ(rig.form.view().ConfigAddrText, hex_text(c.config >> 8) + hex_text(c.config & 0xFF));
    EXPECT_EQ(rig.form.view().LastAddrText, "10");
    EXPECT_NE(rig.form.view().StatusLine.find("from the file"), std::string::npos);
    EXPECT_EQ(rig.form.view().OSCsel, c.osc);
    EXPECT_EQ(rig.form.view().WDTsel, c.wdt);
    EXPECT_EQ(rig.form.view().PUTsel, c.put);
    EXPECT_FALSE(rig.form.view().PRTsel);
    EXPECT_EQ(rig.form.view().BORsel, c.bor);

    const CommandResult result = rig.form.WriteButton_Click();
    EXPECT_TRUE(result.ok());
    EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.front().text;
    for (int w = 0; w < rig.unit.chip().program_words; ++w) {
      ASSERT_EQ(rig.unit.program_word(w), w < 16 ? 0x2800 + w : 0x3FFF) << "word " << w;
    }
    EXPECT_EQ(rig.unit.config_word(), c.config);
    EXPECT_NE(rig.form.view().StatusLine.find(c.chip), std::string::npos);

    // Loading the same file again, the verify covers the image, not 0x2000 on.
    rig.host.open_answers = {dir.file("program.hex")};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    EXPECT_TRUE(rig.form.VerifyButton_Click().ok());
    EXPECT_EQ(rig.form.view().NotesLabel, "Verify Complete");
  }
}

TEST(SafeWrite, CalibratedChipsKeepTheirCalibrationWordAndBandGapBits) {
  const struct {
    const char* name;
    bool exact;
    int chip_word;   // at 0x3FF before the write
    int image_word;  // the file's word at 0x3FF, 0x3FFF for none
    int calibration_after;
    int config_after;
    const char* finding;
  } cases[] = {
      {"kept", false, 0x3480, 0x3FFF, 0x3480, 0x21C4, "calibration 3480 kept"},
      {"the file's own", false, 0x3480, 0x3470, 0x3470, 0x21C4, "calibration 3470 from the file"},
      {"already lost", false, 0x3FFF, 0x3FFF, 0x3FFF, 0x21C4, "is no RETLW: already lost"},
      {"exact loses it", true, 0x3480, 0x3FFF, 0x3FFF, 0x31C4, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    PanelRig rig("12F675", 6, c.exact);
    rig.unit.set_program_word(0x3FF, c.chip_word);
    rig.unit.set_config_word(0x21FF);  // band-gap bits 10
    std::vector<HexWord> extra;
    if (c.image_word != 0x3FFF) extra.push_back({0x3FF, static_cast<std::uint16_t>(c.image_word)});
    rig.host.open_answers = {sixteen_word_image(dir, 0x31C4, extra)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    if (c.exact) {
      // A careful user types the image's range; the calibration is lost all the same.
      rig.form.ConfigAddrText_Change("31C4");
      rig.form.LastAddrText_Change("10");
    }
    rig.form.WriteButton_Click();
    EXPECT_EQ(rig.unit.program_word(0x3FF), c.calibration_after);
    EXPECT_EQ(rig.unit.config_word(), c.config_after);
    for (int w = 0; w < 16; ++w) ASSERT_EQ(rig.unit.program_word(w), 0x2800 + w);
    if (c.finding) {
      EXPECT_NE(rig.form.view().StatusLine.find(c.finding), std::string::npos)
          << rig.form.view().StatusLine;
    }
  }
}

TEST(SafeWrite, EepromDataInTheFileIsNamedAsNotWritten) {
  TempDir dir;
  PanelRig rig("16F877A", 1, false);
  rig.host.open_answers = {sixteen_word_image(dir, 0x3F32, {{0x2100, 0x12}, {0x2107, 0x34}})};
  ASSERT_TRUE(rig.form.F_OpenButton_Click());
  EXPECT_NE(rig.form.view().StatusLine.find("EEPROM data at 2100\u20132107 not written"),
            std::string::npos)
      << rig.form.view().StatusLine;
}

TEST(SafeWrite, ExactIsKeptInTheSettingsAndClearsTheStatusLine) {
  TempDir dir;
  PanelRig rig("16F628A", 5, false);
  rig.host.open_answers = {sixteen_word_image(dir, 0x3F32)};
  rig.form.F_OpenButton_Click();
  EXPECT_FALSE(rig.form.view().StatusLine.empty());
  rig.form.Exact_Click(true);
  EXPECT_TRUE(rig.form.view().exact);
  EXPECT_TRUE(rig.form.view().StatusLine.empty());
  EXPECT_EQ(rig.store.get(kSettingsApp, kPanelSection, kExactKey), "1");
  // With exact on, loading leaves the boxes as the documented loader does.
  rig.form.ConfigAddrText_Change("3F3B");
  rig.host.open_answers = {dir.file("program.hex")};
  rig.form.F_OpenButton_Click();
  EXPECT_EQ(rig.form.view().ConfigAddrText, "3F3B");
  EXPECT_EQ(rig.form.view().LastAddrText, "1000");  // past the image, up to the entry's size
  // A checked write before leaves nothing behind: the exact write then
  // sends what it sends on a panel that never was checked.
  rig.form.Exact_Click(false);
  rig.form.WriteButton_Click();
  rig.form.Exact_Click(true);
  rig.host.open_answers = {dir.file("program.hex")};
  rig.form.F_OpenButton_Click();
  rig.form.ConfigAddrText_Change("3F3B");
  rig.unit.clear_trace();
  rig.form.WriteButton_Click();
  PanelRig fresh("16F628A", 5, true);
  fresh.host.open_answers = {dir.file("program.hex")};
  fresh.form.F_OpenButton_Click();
  fresh.form.ConfigAddrText_Change("3F3B");
  fresh.unit.clear_trace();
  fresh.form.WriteButton_Click();
  EXPECT_EQ(rig.sent(), fresh.sent());
}

}  // namespace
}  // namespace zenta::testing

namespace zenta::testing {
namespace {

TEST(SafeLoad, ADamagedFileIsRefusedNamingItsLineAndKeepsTheImageLoadedBefore) {
  const struct {
    const char* name;
    const char* text;
    const char* says;  // in the box, after "FILE.hex line N: "
  } cases[] = {
      {"cut after :101", ":101", "line 1: "},
      {"a flipped bit", ":020000000138D5\n:00000001FF\n", "line 1: checksum D5 is wrong"},
      {"no data", ":00000001FF\n", "line 2: no data record"},
      {"past the chip", ":020A00000028CC\n:00000001FF\n", "line 1: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    PanelRig rig("16F84A", 3, false);
    rig.host.open_answers = {sixteen_word_image(dir, 0x3FF1)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    const ProgrammerState before = rig.state;
    write_text(dir.file("bad.hex"), c.text);
    rig.host.open_answers = {dir.file("bad.hex")};
    rig.host.boxes.clear();
    EXPECT_FALSE(rig.form.F_OpenButton_Click());
    ASSERT_EQ(rig.host.boxes.size(), 1u);
    EXPECT_EQ(rig.host.boxes[0].title, "FILE ERROR");
    EXPECT_NE(rig.host.boxes[0].text.find(dir.file("bad.hex") + " " + c.says), std::string::npos)
        << rig.host.boxes[0].text;
    EXPECT_EQ(rig.state.ProgramBuffer, before.ProgramBuffer);
    EXPECT_EQ(rig.state.DataLoaded, 1);
  }
}

TEST(SafeWrite, AnImageLargerThanTheChipIsRefused) {
  // The 16F62xA entry holds 4K words; a 16F628A has 2K.
  TempDir dir;
  PanelRig rig("16F628A", 5, false);
  rig.unit.set_program_word(0, 0x1234);
  const std::string hex = sixteen_word_image(dir, 0x3F70, {{0x900, 0x2000}});
  rig.host.open_answers = {hex};
  ASSERT_TRUE(rig.form.F_OpenButton_Click());
  rig.host.boxes.clear();
  EXPECT_TRUE(rig.form.WriteButton_Click().refused);
  EXPECT_EQ(rig.box_texts(),
            std::vector<std::string>{"The image has program words up to 0900; the 16F628A has 2048 "
                                     "(0000-07FF)"});
  EXPECT_EQ(rig.unit.program_word(0), 0x1234);
}

}  // namespace
}  // namespace zenta::testing

namespace zenta::testing {
namespace {

// The pre-flight's own packets, up to the documented write's first (LED on):
// the ID read with the target powered and, on calibrated chips, the reads of
// the calibration word (four words a read up to 0x3FF) and of the
// configuration word.
TEST(SafeWrite, PreflightPacketsBeforeTheDocumentedWrite) {
  using Packets = std::vector<Packet>;
  const Packets enter = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}};
  auto seq = [](std::initializer_list<Packets> parts) {
    Packets all;
    for (const Packets& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  const Packets id_read = seq({enter,
                               {{0x00, 0x3F, 0xFF}},
                               Packets(6, {0x06, 0x00}),
                               {{0x38, 0x0A}, {0x04, 0x01}, {0x32, 0x01}, {0x31, 0x01}}});
  Packets calibration_read = enter;
  for (int group = 0; group < 0x3FC; group += 4) {
    calibration_read.insert(calibration_read.end(), {{0x04, 0x04}, {0x06, 0x00}});
  }
  calibration_read.insert(calibration_read.end(), {{0x04, 0x04}, {0x32, 0x01}, {0x31, 0x02}});
  const Packets config_read = seq({enter,
                                   {{0x00, 0x3F, 0xFF}},
                                   Packets(7, {0x06, 0x00}),
                                   {{0x04, 0x01}, {0x32, 0x01}, {0x31, 0x02}}});
  const Packets on = {{0x3A, 0x01}}, off = {{0x3A, 0x00}};
  const struct {
    const char* chip;
    int device;
    Packets preflight;
  } cases[] = {
      {"16F877A", 1, seq({on, id_read, off})},
      {"12F675", 6, seq({on, id_read, off, on, calibration_read, config_read, off})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    PanelRig rig(c.chip, c.device, false);
    rig.host.open_answers = {sixteen_word_image(dir, 0x3F32)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.unit.clear_trace();
    rig.form.WriteButton_Click();
    Packets sent = rig.sent();
    const auto led_on = std::find(sent.begin(), sent.end(), Packet{0x3B, 0x01});
    ASSERT_NE(led_on, sent.end());
    EXPECT_EQ(Packets(sent.begin(), led_on), c.preflight);
  }
}

}  // namespace
}  // namespace zenta::testing

namespace zenta::testing {
namespace {

// The checked ERASE keeps what the factory put in a calibrated chip and
// refuses the wrong chip; the documented one clears both.
TEST(SafeErase, CalibratedChipsKeepTheirCalibrationAndTheWrongChipIsRefused) {
  const struct {
    const char* chip;
    int device;
    bool exact;
    int calibration_after;
    int config_after;
    bool refused;
  } cases[] = {
      {"12F675", 6, false, 0x3480, 0x2FFF, false},
      {"12F675", 6, true, 0x3FFF, 0x3FFF, false},
      {"16F628A", 6, false, 0x1234, 0x21FF, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.chip) + (c.exact ? " exact" : " checked"));
    PanelRig rig(c.chip, c.device, c.exact);
    rig.unit.set_program_word(0x3FF, std::string(c.chip) == "12F675" ? 0x3480 : 0x1234);
    rig.unit.set_program_word(0, 0x2805);
    rig.unit.set_config_word(0x21FF);  // band-gap bits 10
    rig.unit.clear_trace();
    const CommandResult result = rig.form.ERASEButton_Click();
    EXPECT_EQ(result.refused, c.refused);
    if (!c.exact && !c.refused) {
      // Supply and programming-mode packets in order: the chip check, the
      // calibration reads, then with the supply on throughout the erase,
      // the calibration word and the configuration word written back, each
      // bracketed.
      const std::vector<Packet> on = {{0x3A, 0x01}}, off = {{0x3A, 0x00}};
      const std::vector<Packet> enter = {{0x32, 0x00}, {0x31, 0x01}, {0x32, 0x02}};
      const std::vector<Packet> leave_write = {{0x32, 0x01}, {0x31, 0x01}};
      const std::vector<Packet> leave_read = {{0x32, 0x01}, {0x31, 0x02}};
      const std::vector<Packet> leave_config = {{0x32, 0x00}, {0x31, 0x01}};
      std::vector<Packet> expected;
      for (const auto* part :
           {&on, &enter, &leave_write, &off, &on, &enter, &leave_read, &enter, &leave_read, &off,
            &on, &enter, &leave_read, &enter, &leave_write, &enter, &leave_config, &off}) {
        expected.insert(expected.end(), part->begin(), part->end());
      }
      std::vector<Packet> brackets;
      for (const Packet& p : rig.sent()) {
        if (p[0] == 0x3A || p[0] == 0x31 || p[0] == 0x32) brackets.push_back(p);
        // The written-back words get the identification's settling pause
        // before their read-back.
        if (p[0] == 0x38) {
          EXPECT_EQ(p, (Packet{0x38, 0x0A}));
        }
      }
      EXPECT_EQ(brackets, expected);
    }
    EXPECT_EQ(rig.unit.program_word(0x3FF), c.calibration_after);
    EXPECT_EQ(rig.unit.program_word(0), c.refused ? 0x2805 : 0x3FFF);
    EXPECT_EQ(rig.unit.config_word(), c.config_after);
    if (c.refused) {
      EXPECT_EQ(rig.box_texts(),
                std::vector<std::string>{"A 16F628A is in the socket; the selected device is "
                                         "12F629/675. Select 16F62xA."});
    } else {
      EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.front().text;
      EXPECT_EQ(rig.form.view().NotesLabel, "Chip Erase Complete");
      EXPECT_EQ(rig.form.view().StatusLine,
                c.exact
                    ? ""
                    : "12F675 rev 4 \u2013 calibration 3480 kept \u2013 band-gap bits 2000 kept");
    }
  }
}

}  // namespace
}  // namespace zenta::testing

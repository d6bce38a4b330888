// Safe mode: the checks that guard the user's chip beyond the documented
// sequences, through the panel's form and the command line, and at their
// edges: one failed exchange or an interrupt at any point of a checked
// write or erase, and the calibration words a chip may hold. The chip must
// never lose its calibration or hold anything but what the user meant
// while the program says it does.
#include <gtest/gtest.h>

#include <algorithm>

#include "cli_rig.h"
#include "common/interrupt.h"
#include "common/number_text.h"
#include "devices/device_library.h"
#include "image/hex_writer.h"
#include "ops_rig.h"
#include "panel_rig.h"
#include "programming/safe_programming.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

constexpr int kCalibration = 0x3480;
constexpr int kChipConfig = 0x1184;  // band-gap bits 01
constexpr int kOldWord = 0x2ABC;

// A small program as gpasm writes it: sixteen words and a __CONFIG word.
std::string sixteen_word_image(TempDir& dir, int config, std::vector<HexWord> extra = {}) {
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w) {
    words.push_back({w, static_cast<std::uint16_t>(0x2800 + w)});
  }
  words.push_back({0x2007, static_cast<std::uint16_t>(config)});
  words.insert(words.end(), extra.begin(), extra.end());
  const std::string path = dir.file("program.hex");
  EXPECT_TRUE(write_inhx8m_file(path, words));
  return path;
}

// The option controls as the panel shows them.
std::string controls(const MainView& v) {
  return "osc " + std::to_string(v.OSCsel) + (v.WDTsel ? " wdt" : "") + (v.PUTsel ? " put" : "") +
         (v.PRTsel ? " protect" : "") + (v.BORsel ? " bor" : "");
}

// Loading shows what the write will do: the file's configuration word (one
// the entry's box would not give) in the box and the controls, the image's
// range, the EEPROM data the write leaves out. The write then leaves the
// chip holding the image and nothing else, and the verify after loading
// the file again covers the image, not 0x2000 on.
TEST(SafeWrite, TheChipEndsUpHoldingTheImageWithTheFilesConfigurationWord) {
  const struct {
    const char* chip;
    int device;
    int config;
    const char* controls;  // -1: none of the four oscillators (an internal one)
  } cases[] = {
      {"16F877A", 1, 0x3F32, "osc 2 put"},      {"16F84A", 3, 0x3FF5, "osc 1 wdt put"},
      {"16F628A", 5, 0x3F70, "osc -1 put bor"}, {"16F876", 0, 0x3F3E, "osc 2 wdt"},
      {"16F819", 7, 0x3F70, "osc -1 put bor"},  {"16F628", 4, 0x3F70, "osc -1 put bor"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip);
    TempDir dir;
    PanelRig rig(c.chip, c.device, false);
    for (int w = 0; w < 0x40; ++w) rig.unit.set_program_word(w, 0x0055);
    // The EEPROM data run to the 16F877A's last byte.
    const std::uint16_t ee_last = c.device == 1 ? 0x21FF : 0x2107;
    rig.host.open_answers = {sixteen_word_image(dir, c.config, {{0x2100, 0x12}, {ee_last, 0x34}})};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    const MainView& v = rig.form.view();
    EXPECT_EQ(v.ConfigAddrText, hex_text(c.config >> 8) + hex_text(c.config & 0xFF));
    EXPECT_EQ(v.LastAddrText, "10");
    EXPECT_EQ(controls(v), c.controls);
    EXPECT_NE(v.StatusLine.find("from the file"), std::string::npos) << v.StatusLine;
    EXPECT_NE(v.StatusLine.find("EEPROM data at 2100\u2013" + hex_text(ee_last) + " not written"),
              std::string::npos);

    EXPECT_TRUE(rig.form.WriteButton_Click().ok());
    EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.front().text;
    for (int w = 0; w < rig.unit.chip().program_words; ++w) {
      ASSERT_EQ(rig.unit.program_word(w), w < 16 ? 0x2800 + w : 0x3FFF) << "word " << w;
    }
    EXPECT_EQ(rig.unit.config_word(), c.config);
    EXPECT_NE(v.StatusLine.find(c.chip), std::string::npos);

    rig.host.open_answers = {dir.file("program.hex")};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    EXPECT_TRUE(rig.form.VerifyButton_Click().ok());
    EXPECT_EQ(v.NotesLabel, "Verify Complete");
  }
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
  PanelRig fresh("16F628A", 5, true);
  for (PanelRig* panel : {&rig, &fresh}) {
    panel->host.open_answers = {dir.file("program.hex")};
    panel->form.F_OpenButton_Click();
    panel->form.ConfigAddrText_Change("3F3B");
    panel->unit.clear_trace();
    panel->form.WriteButton_Click();
  }
  EXPECT_EQ(rig.sent(), fresh.sent());
}

TEST(SafeLoad, ADamagedFileIsRefusedNamingItsLineAndKeepsTheImageLoadedBefore) {
  const std::pair<const char*, const char*> cases[] = {
      // The text, and what the box says after "FILE.hex ".
      {":101", "line 1: "},
      {":020000000138D5\n:00000001FF\n", "line 1: checksum D5 is wrong"},
      {":00000001FF\n", "line 2: no data record"},
      {":020A00000028CC\n:00000001FF\n", "line 1: "},  // past the chip
  };
  for (const auto& [text, says] : cases) {
    SCOPED_TRACE(says);
    TempDir dir;
    PanelRig rig("16F84A", 3, false);
    rig.host.open_answers = {sixteen_word_image(dir, 0x3FF1)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    const ProgrammerState before = rig.state;
    write_text(dir.file("bad.hex"), text);
    rig.host.open_answers = {dir.file("bad.hex")};
    rig.host.boxes.clear();
    EXPECT_FALSE(rig.form.F_OpenButton_Click());
    ASSERT_EQ(rig.host.boxes.size(), 1u);
    EXPECT_EQ(rig.host.boxes[0].title, "FILE ERROR");
    EXPECT_NE(rig.host.boxes[0].text.find(dir.file("bad.hex") + " " + says), std::string::npos)
        << rig.host.boxes[0].text;
    EXPECT_EQ(rig.state.ProgramBuffer, before.ProgramBuffer);
    EXPECT_EQ(rig.state.DataLoaded, 1);
  }
}

// The pre-flight's own packets, up to the documented write's first (LED on):
// the ID read with the target powered and, on calibrated chips, the reads of
// the calibration word (four words a read up to 0x3FF) and of the
// configuration word. The checked ERASE of a calibrated chip makes the same
// reads, then with the supply on throughout erases the chip and writes the
// calibration word and the configuration word with the chip's band-gap
// bits back, each read back after the identification's settling pause.
TEST(SafeWrite, PreflightAndCheckedErasePackets) {
  const Packets walk = seq(kEnter, times(0x3FC / 4, {{0x04, 0x04}, kStay}), Packet{0x04, 0x04});
  const Packets keep = seq(kSupplyOn, walk, kLeaveRead, config_space_read(7), kSupplyOff);
  const Packets check = seq(kSupplyOn, config_space_read(6), kSupplyOff);
  for (const char* chip : {"16F877A", "12F675"}) {
    TempDir dir;
    PanelRig rig(chip, std::string(chip) == "12F675" ? 6 : 1, false);
    rig.host.open_answers = {sixteen_word_image(dir, 0x3F32)};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.unit.clear_trace();
    rig.form.WriteButton_Click();
    const Packets all = rig.sent();
    EXPECT_EQ(Packets(all.begin(), std::find(all.begin(), all.end(), kLedOn)),
              std::string(chip) == "12F675" ? seq(check, keep) : check);
  }
  PanelRig rig("12F675", 6, false);
  rig.unit.set_program_word(0x3FF, kCalibration);
  rig.unit.set_program_word(0, 0x2805);
  rig.unit.set_config_word(0x21FF);  // band-gap bits 10
  rig.unit.clear_trace();
  EXPECT_TRUE(rig.form.ERASEButton_Click().ok());
  EXPECT_EQ(
      rig.sent(),
      seq(check, keep, kSupplyOn, kEnter, load(0x3FFF), Packet{0x09}, kLeaveRead,  // erase
          walk, load(kCalibration), Packet{0x08}, kReadWord, kLeaveWrite, kEnter, kLoadConfig,
          Packets(7, kStay), load(0x2FFF), Packet{0x08}, kReadWord, kLeaveConfig, kSupplyOff));
  EXPECT_EQ(rig.unit.program_word(0x3FF), kCalibration);
  EXPECT_EQ(rig.unit.program_word(0), 0x3FFF);
  EXPECT_EQ(rig.unit.config_word(), 0x2FFF);
  EXPECT_TRUE(rig.host.boxes.empty()) << rig.host.boxes.front().text;
  EXPECT_EQ(rig.form.view().NotesLabel, "Chip Erase Complete");
  EXPECT_EQ(rig.form.view().StatusLine,
            "12F675 rev 4 \u2013 calibration 3480 kept \u2013 band-gap bits 2000 kept");
}

// A signal during a write's pre-flight erases nothing, one in its pauses
// ends it with the target off.
TEST(SafeEdges, APanelWriteUnderSignals) {
  TempDir dir;
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 0x200; ++w) words.push_back({w, 0x2000});
  EXPECT_TRUE(write_inhx8m_file(dir.file("big.hex"), words));
  for (const std::size_t at : {std::size_t{10}, std::size_t{600}, std::size_t{1300}}) {
    SCOPED_TRACE(at);
    PanelRig rig("12F675", 6, false);
    rig.unit.set_program_word(0x3FF, kCalibration);
    rig.unit.set_program_word(0, 0x2ABC);
    rig.host.open_answers = {dir.file("big.hex")};
    ASSERT_TRUE(rig.form.F_OpenButton_Click());
    rig.unit.clear_trace();
    // A signal raises the flag between two exchanges; the form asks it.
    rig.opened.link().on_status_changed = [&rig, at] {
      if (rig.unit.trace().size() >= at) request_interrupt();
    };
    const CommandResult result = rig.form.WriteButton_Click();
    clear_interrupt();
    EXPECT_FALSE(result.ok());
    EXPECT_FALSE(rig.unit.vcc());
    EXPECT_FALSE(rig.unit.in_programming_mode());
    EXPECT_EQ(rig.unit.program_word(0x3FF), kCalibration);
    // Before the erase (the pre-flight's 550 or so exchanges) nothing changes.
    EXPECT_EQ(rig.unit.program_word(0), at < 500 ? 0x2ABC : (at < 1100 ? 0x3FFF : 0x2000));
    EXPECT_EQ(rig.form.view().NotesLabel, kStoppedText);
  }
}

enum class Fault { kNone, kFailWrite, kFailRead, kShortRead, kUnplug, kInterrupt };

struct Outcome {
  CommandResult result;
  Preflight preflight;
  std::size_t exchanges = 0;
  // 1-based index of the pre-flight's last exchange: its supply-off before
  // the first erase command.
  std::size_t preflight_end = 0;
  std::string lost;  // what the chip had to keep, or the promise broken; empty when none
};

// A checked write of a small program with __CONFIG (or a checked erase) on
// a chip that holds an old program and, when calibrated, its factory
// calibration, with `fault` at exchange `at`.
Outcome run_checked(const ChipDescription& chip, bool write, Fault fault, int at) {
  OpsRig rig(chip.name, *chip.entry);
  sim::SimUnit& unit = rig.unit;
  unit.set_program_word(0, kOldWord);
  if (chip.calibrated()) {
    unit.set_program_word(0x3FF, kCalibration);
    unit.set_config_word(kChipConfig);
  }
  if (fault == Fault::kFailWrite) unit.fail_write_at(at);
  if (fault == Fault::kFailRead) unit.fail_read_at(at);
  if (fault == Fault::kShortRead) unit.short_transfer_at(at);
  if (fault == Fault::kUnplug) unit.unplug_at(at);
  if (fault == Fault::kInterrupt) {
    rig.report.stop_when = [&unit, at] { return unit.trace().size() >= std::size_t(at); };
  }
  rig.ops.checked = true;
  Outcome run;
  const int config = 0x3FC4;
  std::map<int, int> image;
  for (int w = 0; w < 16; ++w) image[w] = 0x2800 + w;
  rig.image(image, config);
  run.result =
      write ? run_checked_write(rig.ops, {*chip.entry, std::nullopt}, std::nullopt, run.preflight)
            : run_checked_erase(rig.ops, {*chip.entry, std::nullopt}, run.preflight);
  run.exchanges = unit.trace().size();
  for (std::size_t i = 0; i < unit.trace().size(); ++i) {
    const auto& tx = unit.trace()[i].tx;
    if (tx[0] == ICSP_BULK_ERASE_PROG || tx[0] == ICSP_CHIP_ERASE || tx[0] == ICSP_BULK_SETUP1)
      break;
    if (tx == kSupplyOff) run.preflight_end = i + 1;
  }
  const auto broken = [&run](const std::string& why) { run.lost += why + "; "; };
  if (chip.calibrated() && !run.result.calibration_at_risk) {
    if (unit.program_word(0x3FF) != kCalibration) broken("calibration word");
    if ((unit.config_word() & 0x3000) != (kChipConfig & 0x3000)) broken("band-gap bits");
  }
  // Unplugged after the erase, the chip cannot get it back: the user is told.
  if (run.result.calibration_at_risk && fault != Fault::kUnplug) broken("calibration at risk");
  if (run.preflight.refused && unit.program_word(0) != kOldWord) broken("touched after refusal");
  // An unplugged unit powers nothing, whatever state it was left in.
  if (fault != Fault::kUnplug && unit.vcc() && !run.result.target_powered) broken("left powered");
  if (fault != Fault::kUnplug && unit.in_programming_mode()) broken("left in programming mode");
  if (run.result.ok() && write) {
    for (int w = 0; w < chip.program_words; ++w) {
      const int meant =
          w < 16 ? 0x2800 + w : (chip.calibrated() && w == 0x3FF ? kCalibration : 0x3FFF);
      if (unit.program_word(w) != meant) {
        broken("word " + std::to_string(w) + " differs after a write said complete");
        break;
      }
    }
    const int band_gap = chip.calibrated() ? (kChipConfig & 0x3000) : (config & 0x3000);
    if (unit.config_word() != ((config & ~0x3000) | band_gap)) broken("configuration word");
  }
  if (run.result.ok() && !write && unit.program_word(0) != 0x3FFF) broken("erase said complete");
  return run;
}

// One fault of each kind at every exchange of the checked write and erase,
// and an interrupt before every exchange: nothing is ever lost, the target
// always ends switched off and out of programming mode (or the user is told
// it may not be), and a write that says it is complete left the chip
// holding exactly the image.
TEST(SafeEdges, OneFaultOrInterruptAnywhereNeverCostsTheChip) {
  for (const char* name : {"12F675", "16F630", "16F877A", "16F628A", "16F84A", "16F819"}) {
    const ChipDescription chip = *chip_by_name(name);
    for (const bool write : {true, false}) {
      SCOPED_TRACE(std::string(name) + (write ? " write" : " erase"));
      const Outcome clean = run_checked(chip, write, Fault::kNone, 0);
      ASSERT_TRUE(clean.result.ok()) << clean.preflight.refusal << clean.lost;
      ASSERT_EQ(clean.lost, "");
      for (const Fault fault : {Fault::kFailWrite, Fault::kFailRead, Fault::kShortRead,
                                Fault::kUnplug, Fault::kInterrupt}) {
        for (int at = 1; at <= static_cast<int>(clean.exchanges); ++at) {
          const Outcome run = run_checked(chip, write, fault, at);
          const std::string where =
              std::to_string(static_cast<int>(fault)) + " at " + std::to_string(at);
          EXPECT_EQ(run.lost, "") << where;
          // Anything in the pre-flight refuses the operation: what the chip
          // must keep is not known, or the user asked to stop.
          if (at <= static_cast<int>(clean.preflight_end)) {
            EXPECT_TRUE(run.preflight.refused) << where;
          }
          // Every fault is told.
          if (fault != Fault::kInterrupt) {
            EXPECT_FALSE(run.result.ok() && !run.preflight.refused) << where;
          }
        }
      }
    }
  }
}

// The word at 0x3FF of a calibrated chip is kept when it is a RETLW
// (0x34kk), whatever its constant, and the chip's band-gap bits with it;
// any other word was lost before and is said to be; the file's own word
// there wins. The documented write and erase lose both.
TEST(SafeEdges, CalibrationWordsAreKeptWhenTheyAreRetlw) {
  TempDir dir;
  std::vector<HexWord> words;
  for (std::uint16_t w = 0; w < 16; ++w) words.push_back({w, std::uint16_t(0x2800 + w)});
  words.push_back({0x2007, 0x31C4});
  ASSERT_TRUE(write_inhx8m_file(dir.file("c.hex"), words));
  words.push_back({0x3FF, 0x3470});
  ASSERT_TRUE(write_inhx8m_file(dir.file("own.hex"), words));
  words.pop_back();
  words.back() = {0x2007, 0x21C4};  // the chip's own band-gap bits
  ASSERT_TRUE(write_inhx8m_file(dir.file("gap.hex"), words));
  const std::string id = "zenta: 12F675 rev 4\n", gap = "zenta: band-gap bits 2000 kept\n";
  const struct {
    const char* line;
    int chip_word;     // at 0x3FF before
    std::string says;  // all of standard error
    int calibration;   // at 0x3FF after
    int config;        // after
  } cases[] = {
      {"write @/c.hex", 0x3480, id + "zenta: calibration 3480 kept\n" + gap, 0x3480, 0x21C4},
      {"write @/c.hex", 0x34FF, id + "zenta: calibration 34FF kept\n" + gap, 0x34FF, 0x21C4},
      {"write @/c.hex", 0x3400, id + "zenta: calibration 3400 kept\n" + gap, 0x3400, 0x21C4},
      {"write @/gap.hex", 0x3480, id + "zenta: calibration 3480 kept\n", 0x3480, 0x21C4},
      {"write @/own.hex", 0x3480,
       id + "zenta: calibration 3470 from the file written (chip's 3480)\n" + gap, 0x3470, 0x21C4},
      {"write @/c.hex", 0x3380,
       id + "zenta: calibration word 3380 is no RETLW: already lost\n" + gap, 0x3FFF, 0x21C4},
      {"write @/c.hex", 0x2480,
       id + "zenta: calibration word 2480 is no RETLW: already lost\n" + gap, 0x3FFF, 0x21C4},
      {"write @/c.hex", 0x3FFF,
       id + "zenta: calibration word 3FFF is no RETLW: already lost\n" + gap, 0x3FFF, 0x21C4},
      {"erase", 0x3480, id + "zenta: calibration 3480 kept\n" + gap, 0x3480, 0x2FFF},
      {"erase", 0x3580, id + "zenta: calibration word 3580 is no RETLW: already lost\n" + gap,
       0x3FFF, 0x2FFF},
      // A careful user gives the image's range; the calibration is lost all the same.
      {"--exact write @/c.hex --last 10", 0x3480, "", 0x3FFF, 0x31C4},
      {"--exact erase", 0x3480, "", 0x3FFF, 0x3FFF},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.line) + " on " + hex_text(c.chip_word));
    cli::testing::SimRun run("12F675");
    run.unit->set_program_word(0x3FF, c.chip_word);
    run.unit->set_config_word(0x2FFF);  // band-gap bits 10
    const auto result =
        run(cli::testing::words("--device 12F675 " + std::string(c.line), dir.path()));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, c.says);
    EXPECT_EQ(run.unit->program_word(0x3FF), c.calibration);
    EXPECT_EQ(run.unit->config_word(), c.config);
    for (int w = 0; w < 16; ++w) {
      EXPECT_EQ(run.unit->program_word(w),
                std::string(c.line).ends_with("erase") ? 0x3FFF : 0x2800 + w)
          << w;
    }
  }
}

}  // namespace
}  // namespace zenta::testing

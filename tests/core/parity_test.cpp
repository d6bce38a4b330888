// The panel's form and the command line run the same programming core:
// each on its own simulated unit with the same chip and image, they send
// the same packets, from each command's first packet to its last, in the
// documented mode and with the checks.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "common/number_text.h"
#include "image/hex_writer.h"
#include "panel_rig.h"
#include "programming/device_catalogue.h"
#include "temp_dir.h"

namespace zenta::testing {
namespace {

std::vector<std::string> with(std::vector<std::string> args, const std::vector<std::string>& more) {
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

std::vector<Packet> packets_of(const sim::SimUnit& unit) {
  std::vector<Packet> packets;
  for (const auto& exchange : unit.trace()) packets.push_back(exchange.tx);
  return packets;
}

// The command line on its own simulated unit, one command per run.
struct CommandLine {
  CommandLine(const std::string& chip, bool exact) : unit(new sim::SimUnit(chip)), exact(exact) {
    choice.driver.reset(unit);
    choice.simulated = true;
  }
  std::vector<Packet> run(const std::vector<std::string>& args) {
    unit->clear_trace();
    std::vector<std::string> line = args;
    if (exact) line.insert(line.begin(), "--exact");
    const cli::ParseResult parsed = cli::parse_arguments(line);
    EXPECT_TRUE(parsed.ok()) << parsed.error;
    std::ostringstream out, err;
    status = cli::run_with_driver(parsed.options, choice, out, err, false);
    return packets_of(*unit);
  }
  sim::SimUnit* unit;
  bool exact;
  DriverChoice choice;
  int status = -1;
};

TEST(FrontEndParity, PanelAndCommandLineSendTheSamePacketsOnEveryEntryInBothModes) {
  // One chip of each family, each on its entry.
  const char* chips[] = {"16F877", "16F877A", "16F84",  "16F84A",
                         "16F628", "16F628A", "12F675", "16F819"};
  for (int run = 0; run < 2 * kDeviceCount; ++run) {
    const int device = run % kDeviceCount;
    const bool exact = run < kDeviceCount;
    SCOPED_TRACE(std::string(chips[device]) + (exact ? ", exact" : ", checked"));
    TempDir dir;
    // Twenty-one words, so rows, groups of four and the word-by-word
    // modes all end inside a partial step.
    std::vector<HexWord> words;
    for (std::uint16_t w = 0; w < 21; ++w) {
      words.push_back({static_cast<std::uint16_t>(2 * w), static_cast<std::uint16_t>(0x2800 + w)});
    }
    const std::string hex = dir.file("image.hex");
    ASSERT_TRUE(write_inhx8m_file(hex, words));
    // The entry's own default word: no code protection, so the chip reads back.
    const std::string config = device_record(device).default_config_text;
    const std::string last = "15";

    PanelRig panel(chips[device], device, exact);
    panel.host.open_answers = {hex};
    ASSERT_TRUE(panel.form.F_OpenButton_Click());
    panel.form.LastAddrText_Change(last);
    panel.form.ConfigAddrText_Change(config);
    CommandLine line(chips[device], exact);
    const std::string index = std::to_string(device);
    // A checked write and verify take the image's own range, as the panel's
    // do; a checked read stops at the LAST box there too.
    const std::vector<std::string> range =
        exact ? std::vector<std::string>{"--last", last} : std::vector<std::string>{};

    struct Step {
      const char* name;
      std::function<void()> on_panel;
      std::vector<std::string> args;
    } steps[] = {
        {"write", [&] { panel.form.WriteButton_Click(); },
         with({"--device", index, "write", hex, "--config", config}, range)},
        {"verify", [&] { panel.form.VerifyButton_Click(); },
         with({"--device", index, "verify", hex}, range)},
        // A checked write leaves the image's last address in the LAST box:
        // the read is given the same range on both.
        {"read",
         [&] {
           panel.form.LastAddrText_Change(last);
           panel.form.READ_Click();
         },
         {"--device", index, "read", "--last", last}},
        {"read-eeprom",
         [&] { panel.form.READ_EEPROM_Click(); },
         {"--device", index, "read-eeprom"}},
        {"erase", [&] { panel.form.ERASEButton_Click(); }, {"--device", index, "erase"}},
    };
    for (const Step& step : steps) {
      SCOPED_TRACE(step.name);
      panel.unit.clear_trace();
      step.on_panel();
      const std::vector<Packet> from_panel = packets_of(panel.unit);
      const std::vector<Packet> from_line = line.run(step.args);
      EXPECT_EQ(line.status, cli::kExitOk);
      ASSERT_FALSE(from_panel.empty());
      EXPECT_EQ(from_line, from_panel);
    }
    EXPECT_TRUE(panel.host.boxes.empty()) << panel.host.boxes.front().text;
  }
}

}  // namespace
}  // namespace zenta::testing

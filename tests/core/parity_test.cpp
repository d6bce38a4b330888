// The panel's form and the command line run the same programming core:
// each on its own simulated unit with the same chip and image, they send
// the same packets, from each command's first packet to its last.
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

std::vector<Packet> packets_of(const sim::SimUnit& unit) {
  std::vector<Packet> packets;
  for (const auto& exchange : unit.trace()) packets.push_back(exchange.tx);
  return packets;
}

// The command line on its own simulated unit, one command per run.
struct CommandLine {
  explicit CommandLine(const std::string& chip) : unit(new sim::SimUnit(chip)) {
    choice.driver.reset(unit);
    choice.simulated = true;
  }
  std::vector<Packet> run(const std::vector<std::string>& args) {
    unit->clear_trace();
    // The panel's rig runs the documented sequences: so does the command.
    std::vector<std::string> exact = args;
    exact.insert(exact.begin(), "--exact");
    const cli::ParseResult parsed = cli::parse_arguments(exact);
    EXPECT_TRUE(parsed.ok()) << parsed.error;
    std::ostringstream out, err;
    status = cli::run_with_driver(parsed.options, choice, out, err, false);
    return packets_of(*unit);
  }
  sim::SimUnit* unit;
  DriverChoice choice;
  int status = -1;
};

TEST(FrontEndParity, PanelAndCommandLineSendTheSamePacketsOnEveryEntry) {
  const char* chips[] = {"16F877", "16F877A", "16F84",  "16F84A",
                         "16F628", "16F628A", "12F675", "16F819"};
  for (int device = 0; device < kDeviceCount; ++device) {
    SCOPED_TRACE(chips[device]);
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

    PanelRig panel(chips[device], device);
    panel.host.open_answers = {hex};
    ASSERT_TRUE(panel.form.F_OpenButton_Click());
    panel.form.LastAddrText_Change(last);
    panel.form.ConfigAddrText_Change(config);
    CommandLine line(chips[device]);
    const std::string index = std::to_string(device);

    struct Step {
      const char* name;
      std::function<void()> on_panel;
      std::vector<std::string> args;
    } steps[] = {
        {"write",
         [&] { panel.form.WriteButton_Click(); },
         {"--device", index, "write", hex, "--config", config, "--last", last}},
        {"verify",
         [&] { panel.form.VerifyButton_Click(); },
         {"--device", index, "verify", hex, "--last", last}},
        {"read", [&] { panel.form.READ_Click(); }, {"--device", index, "read", "--last", last}},
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

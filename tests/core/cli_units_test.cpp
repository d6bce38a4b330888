// Several units at once, JSON for scripts, and the instruments, through
// the program as a script runs it.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/record.h"
#include "cli_rig.h"
#include "env_guard.h"
#include "fakes.h"
#include "image/hex_writer.h"
#include "instruments/logic_view.h"
#include "platform/driver_factory.h"
#include "programming/device_catalogue.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using testing::Outcome;
using testing::parse_json_object;
using testing::run_args;
using zenta::testing::read_text;
using zenta::testing::TempDir;
using zenta::testing::write_text;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(CliUnitsTest, EachUnitGetsItsOwnLinesFilesAndStatus) {
  TempDir dir;
  const std::string trace = dir.file("t.trace");
  const Outcome both = run_args({"--unit", "sim:16F628A", "--unit", "sim:16F628A", "--device",
                                 "16F628A", "--trace", trace, "erase"});
  EXPECT_EQ(both.status, kExitOk) << both.err;
  EXPECT_EQ(both.out, "sim:16F628A: Chip Erase Complete\nsim:16F628A#2: Chip Erase Complete\n");
  for (const char* file : {"t.sim-16F628A.trace", "t.sim-16F628A-2.trace"}) {
    // The chip check (supply on, the fourteen exchanges of the ID read, supply off),
    // then supply on, the seven exchanges of the erase, supply off.
    EXPECT_EQ(lines_of(read_text(dir.file(file))).size(), 16u + 9u) << file;
  }

  // One unit failing fails the run; the other's answer still comes out.
  const Outcome mixed =
      run_args({"--json", "--unit", "sim:12F675", "--unit", "sim:none", "--device", "auto", "id"});
  EXPECT_EQ(mixed.status, kExitFailed);
  const auto lines = lines_of(mixed.out);
  ASSERT_EQ(lines.size(), 2u) << mixed.out;
  const auto good = parse_json_object(lines[0]);
  const auto bad = parse_json_object(lines[1]);
  ASSERT_TRUE(good && bad) << mixed.out;
  EXPECT_EQ(good->at("unit"), "sim:12F675");
  EXPECT_EQ(good->at("chip"), "12F675");
  EXPECT_EQ(good->at("device"), "12F629/675");
  EXPECT_EQ(good->at("outcome"), "ok");
  EXPECT_EQ(bad->at("unit"), "sim:none");
  EXPECT_EQ(bad->at("outcome"), "failed");
  EXPECT_EQ(bad->at("chip"), "null");
  EXPECT_EQ(bad->at("message").rfind("no chip answered (ID word 3FFF)", 0), 0u);
}

TEST(CliUnitsTest, JsonCarriesTheOutcomeAndTheFirstMismatch) {
  TempDir dir;
  write_text(dir.file("p.hex"), format_inhx8m({{0, 0x2805}, {3, 0x0123}, {0x2007, 0x3F70}}));
  const std::string memory = dir.file("m.txt");
  const std::vector<std::string> chip = {"--json", "--unit",   "sim:16F628A", "--sim-memory",
                                         memory,   "--device", "pic16f628a"};
  auto with = [&](std::vector<std::string> args) {
    args.insert(args.begin(), chip.begin(), chip.end());
    return run_args(args);
  };
  const Outcome written = with({"write", dir.file("p.hex")});
  ASSERT_EQ(written.status, kExitOk) << written.err;
  const auto write = parse_json_object(lines_of(written.out).at(0));
  ASSERT_TRUE(write) << written.out;
  EXPECT_EQ(lines_of(written.out).size(), 1u);  // nothing but the object
  EXPECT_EQ(write->at("command"), "write");
  EXPECT_EQ(write->at("unit"), "sim:16F628A");
  EXPECT_EQ(write->at("device"), "16F62xA");
  EXPECT_EQ(write->at("outcome"), "ok");
  EXPECT_EQ(write->at("message"), "Write Complete");
  EXPECT_EQ(write->at("first_mismatch"), "null");
  EXPECT_GT(std::stoi(write->at("exchanges")), 40);
  EXPECT_GE(std::stod(write->at("seconds")), 0.0);

  write_text(dir.file("q.hex"), format_inhx8m({{0, 0x2805}, {3, 0x0124}}));
  const Outcome verified = with({"verify", dir.file("q.hex")});
  EXPECT_EQ(verified.status, kExitFailed);
  const auto verify = parse_json_object(lines_of(verified.out).at(0));
  ASSERT_TRUE(verify) << verified.out;
  EXPECT_EQ(verify->at("outcome"), "failed");
  EXPECT_EQ(verify->at("exit_status"), "1");
  EXPECT_EQ(verify->at("first_mismatch"), R"({"address":"0003","file":"0124","chip":"0123"})");
}

// Every command's --json object is one line a JSON parser reads back with
// the same members in the same order; names that need escaping (quotes,
// backslashes, control characters) and non-ASCII text come back as given,
// and bytes that are not UTF-8 (a unit's firmware reply) become U+FFFD.
TEST(CliUnitsTest, EveryCommandsJsonReadsBackWhateverTheNames) {
  using Json = nlohmann::ordered_json;
  TempDir dir;
  const std::string odd = "q\"b\\s\x01\t\n Gr\u00FC\u00DFe \u2713";
  const std::string hex = dir.file(odd + ".hex");
  write_text(hex, format_inhx8m({{0, 0x2805}, {0x2007, 0x3F70}}));
  const struct {
    std::vector<std::string> args;
    bool names_file;  // the message names the file
  } cases[] = {
      {{"version"}, false},
      {{"id"}, false},
      {{"erase"}, false},
      {{"write", hex}, false},
      {{"verify", dir.file(odd + "-gone.hex")}, true},
      {{"read", "-o", dir.file(odd + "-back.hex")}, false},
      {{"read-eeprom"}, false},
      {{"capture", "-o", dir.file(odd + ".vcd")}, false},
      {{"volts"}, false},
      {{"freq"}, false},
      {{"count", "read"}, false},
  };
  const std::vector<std::string> first = {"command", "unit",          "device",      "chip",
                                          "outcome", "message",       "exit_status", "exchanges",
                                          "seconds", "first_mismatch"};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args[0]);
    testing::SimRun run("16F628A");
    std::vector<std::string> args = {"--json", "--device", "16F628A", "--unit", odd};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const Outcome result = run(args);
    ASSERT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1) << result.out;
    const Json object = Json::parse(result.out);
    std::vector<std::string> names;
    for (const auto& member : object.items()) names.push_back(member.key());
    names.resize(std::min(names.size(), first.size()));
    EXPECT_EQ(names, first);
    EXPECT_EQ(object["command"], c.args[0]);
    EXPECT_EQ(object["unit"], odd);
    EXPECT_EQ(object["exit_status"], result.status);
    EXPECT_EQ(object["outcome"] == "ok", !c.names_file) << object["message"];
    if (c.names_file) {
      EXPECT_NE(object["message"].get<std::string>().find(odd), std::string::npos);
    }
  }
  const std::vector<PluggedUnit> plugged = {{odd,
                                             "ZENTA \xFF"
                                             "1",
                                             1, 7},
                                            {"", "", 2, 3}};
  const Json expected = {
      {"command", "units"},
      {"units",
       {{{"unit", "usb:" + odd}, {"firmware", "ZENTA \uFFFD1"}, {"bus", 1}, {"address", 7}},
        {{"unit", "usb:"}, {"firmware", ""}, {"bus", 2}, {"address", 3}}}}};
  EXPECT_EQ(Json::parse(json_text(plugged)), expected);
  EXPECT_EQ(Json::parse(json_text(std::vector<PluggedUnit>{})),
            (Json{{"command", "units"}, {"units", Json::array()}}));
}

TEST(CliUnitsTest, InstrumentsAnswerFromTheSimulatedUnit) {
  const struct {
    std::vector<std::string> args;
    std::string out;
  } cases[] = {
      {{"--unit", "sim:16F877A,freq=5000", "freq", "--gate", "1s"}, "5000 Hz\n"},
      {{"--unit", "sim:16F877A,freq=5000", "freq"}, "5.000 KHz\n"},
      {{"--unit", "sim", "count", "read"}, "0\n"},
      {{"--unit", "sim", "-q", "count", "clear"}, ""},
      {{"--unit", "sim", "count", "start"}, "Counter start\n"},
  };
  for (const auto& c : cases) {
    const Outcome result = run_args(c.args);
    EXPECT_EQ(result.status, kExitOk) << result.err;
    EXPECT_EQ(result.out, c.out) << c.args.back();
  }
  // The volt meter's channel 0 follows the MCLR/Vpp level, at 0 V when idle.
  const Outcome volts = run_args({"--unit", "sim", "volts", "--channel", "vpp"});
  EXPECT_EQ(volts.out, "Vpp 0.0 V\n");
}

// Without --att the reading takes the panel's stored attenuation, as its
// volt meter does, and leaves the settings file as it was.
TEST(CliUnitsTest, VoltsTakesThePanelsStoredAttenuationUnlessGiven) {
  const struct {
    const char* stored;  // the file's [DATA] lines; nullptr: no file
    std::vector<std::string> att;
    const char* out;
    const char* xdg = "";  // XDG_CONFIG_HOME under the home folder; nullptr: unset
  } cases[] = {
      {nullptr, {}, "Vin 5.0 V\n"},
      {"VOLTATT=1\n", {}, "Vin 1.1 V\n"},
      {"DEVICE=1\nVOLTATT = \"5\"\n", {}, "Vin 5.7 V\n"},
      {"VOLTATT=1\n", {"--att", "2"}, "Vin 2.3 V\n"},
      {"VOLTATT=\n", {}, "Vin 5.0 V\n"},
      {"VOLTATT=\"2,5\"\n", {}, "Vin 2.3 V\n"},  // read as the meter reads it
      {"VOLTATT=1\n", {}, "Vin 1.1 V\n", nullptr},
      {"VOLTATT=1\n", {}, "Vin 1.1 V\n", "relative"},  // not absolute: ignored
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stored ? c.stored : "no file");
    TempDir dir;
    const std::string config = c.xdg && *c.xdg ? c.xdg : ".config";
    zenta::testing::EnvGuard home("HOME", dir.path().c_str());
    zenta::testing::EnvGuard xdg("XDG_CONFIG_HOME", !c.xdg   ? nullptr
                                                    : *c.xdg ? c.xdg
                                                             : dir.file(config).c_str());
    const std::string file = dir.file(".config/ZENTA/ZENTA.conf");
    const std::string text =
        std::string("[PANEL]\nVOLTATT=9\n[DATA]\n") + (c.stored ? c.stored : "");
    if (c.stored) {
      std::filesystem::create_directories(dir.file(".config/ZENTA"));
      write_text(file, text);
    }
    std::vector<std::string> args = {"--unit", "sim", "volts"};
    args.insert(args.end(), c.att.begin(), c.att.end());
    const Outcome result = run_args(args);
    EXPECT_EQ(result.status, kExitOk) << result.err;
    EXPECT_EQ(result.out, c.out);
    EXPECT_EQ(std::filesystem::exists(file), c.stored != nullptr);
    if (c.stored) {
      EXPECT_EQ(read_text(file), text) << "the settings are the panel's";
    }
  }
}

// The capture written as VCD reads back in sigrok with the same samples as
// the simulated unit's capture.
TEST(CliUnitsTest, CaptureFileReadsBackInSigrok) {
  if (!zenta::testing::tool_available("sigrok-cli")) GTEST_SKIP() << "sigrok-cli is not installed";
  TempDir dir;
  const Outcome result = run_args(
      {"--unit", "sim", "capture", "--period", "3", "--edge", "neg", "-o", dir.file("x.vcd")});
  ASSERT_EQ(result.status, kExitOk) << result.err;

  sim::SimUnit simulated;
  zenta::testing::FakeHost host;
  Unit unit(simulated, host);
  ASSERT_EQ(unit.open(), kDriverOk);
  const LaCapture expected = capture(unit, 3, false);
  ASSERT_EQ(expected.result, ExchangeResult::kDone);
  std::string levels;
  // One time step is 0.1 ms: each sample of period 3 stands for three.
  for (const bool high : capture_samples(expected.bytes)) levels += high ? "111" : "000";

  const auto sigrok = zenta::testing::run_command("sigrok-cli -i '" + dir.file("x.vcd") +
                                                  "' -O bits:width=0 2>/dev/null");
  ASSERT_EQ(sigrok.status, 0);
  std::string read_back;
  for (const std::string& line : lines_of(sigrok.out)) {
    if (line.rfind("LA:", 0) != 0) continue;
    for (const char c : line.substr(3)) {
      if (c == '0' || c == '1') read_back += c;
    }
  }
  EXPECT_EQ(read_back, levels);
}

}  // namespace
}  // namespace zenta::cli

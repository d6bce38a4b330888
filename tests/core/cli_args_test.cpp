// The zenta program's command lines, and the manual page and README beside
// its help.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "cli/args.h"
#include "cli/record.h"
#include "cli_rig.h"
#include "env_guard.h"
#include "fakes.h"
#include "image/hex_check.h"
#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "instruments/capture_export.h"
#include "instruments/logic_view.h"
#include "link/command_codes.h"
#include "packets.h"
#include "platform/udev_rule.h"
#include "scripted_driver.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

using namespace zenta::testing;  // packets and files
using testing::Outcome;
using testing::run_args;
using testing::SimRun;
using testing::words;
using Json = nlohmann::ordered_json;
using Memory = std::map<int, int>;  // address -> word; 0x2007 the configuration word

// Every field of the options as name=value.
std::vector<std::string> fields(const Options& o) {
  const auto text = [](const auto& value) {
    std::ostringstream s;
    s << std::uppercase << std::hex << value;
    return s.str();
  };
  std::string units;
  for (const std::string& unit : o.units) units += (units.empty() ? "" : ",") + unit;
  return {"unit=" + units,
          "device=" + o.device,
          "trace=" + o.trace_file,
          "mem=" + o.sim_memory,
          "hex=" + o.hex_file,
          "out=" + o.output_file,
          "config=" + text(o.config.value_or(0xFFFF)),
          "last=" + text(o.last.value_or(0xFFFF)),
          "exact=" + text(o.exact),
          "json=" + text(o.json),
          "verbosity=" + text(static_cast<int>(o.verbosity)),
          "period=" + text(o.period),
          "pos=" + text(o.positive_edge),
          "channel=" + text(o.channel),
          "att=" + text(o.att.value_or(-1)),
          "slow=" + text(o.slow_gate),
          "action=" + o.counter_action};
}

// The command, then every field of the options that is not at its default,
// or the error.
std::string parsed(const std::vector<std::string>& args) {
  const ParseResult result = parse_arguments(args);
  if (!result.ok()) return "error: " + result.error;
  std::string line = command_name(result.options.command);
  const std::vector<std::string> given = fields(result.options), defaults = fields(Options());
  for (std::size_t i = 0; i < given.size(); ++i) {
    if (given[i] != defaults[i]) line += " " + given[i];
  }
  return line;
}

TEST(CliArgsTest, CommandLinesParseOrSayWhy) {
  const std::pair<const char*, std::string> cases[] = {
      // The command line, and its options or how its error starts. Global
      // options go before and after the command, also as --option=value;
      // a command's own options also before it, between global ones.
      {"--unit sim:16F84A id --device=16F84A --trace t.txt --sim-memory=m.txt",
       "id unit=sim:16F84A device=16F84A trace=t.txt mem=m.txt"},
      {"write --last=0x7ff prog.hex --config 0X3F3A", "write hex=prog.hex config=3F3A last=7FF"},
      {"read -o back.hex --last 10", "read out=back.hex last=10"},
      {"-o x.hex --unit sim --last=7 read --device 3", "read unit=sim device=3 out=x.hex last=7"},
      // --unit once per unit.
      {"--exact -q --unit sim capture --edge neg --period=0 --json --unit sim",
       "capture unit=sim,sim exact=1 json=1 verbosity=0 period=0 pos=0"},
      {"volts --channel sab --att 2.5 -v", "volts verbosity=2 channel=1 att=2.5"},
      {"freq --gate 1s", "freq slow=1"},
      {"count stop", "count action=stop"},
      // Help wins over whatever is wrong with the rest.
      {"--help --bogus", "help"},
      {"--version flash", ""},
      {"--period 2 freq", "error: option '--period' does not go with 'freq'"},
      {"--unit sim --unit=sim:16F628A units",
       "error: 'units' lists every unit; it takes no --unit"},
      {"--unit sim udev-rule", "error: 'udev-rule' takes no --unit"},
      {"count", "error: 'count' needs clear, start, stop or read"},
      {"count reset", "error: 'count' takes clear, start, stop or read, not 'reset'"},
      {"capture --period 101", "error: --period takes a sample period of 0 to 100"},
      {"capture -o x.txt", "error: capture -o writes FILE.vcd or FILE.csv"},
      {"volts --channel vcc", "error: --channel takes vpp, sab or vin"},
      {"volts --att -1", "error: --att takes a positive number"},
      {"volts --att inf", "error: --att takes a positive number up to 1000, not 'inf'"},
      {"volts --att 1e39", "error: --att takes a positive number"},
      {"volts --att 1000.5", "error: --att takes a positive number"},
      {"volts --att nan", "error: --att takes a positive number"},
      {"freq --gate 10ms", "error: --gate takes 100ms or 1s"},
      {"-q -v id", "error: -q and -v do not go together"},
      {"--exact=1 id", "error: option '--exact' takes no value"},
      {"", "error: no command given"},
      {"flash", "error: unknown command 'flash'"},
      {"write", "error: 'write' needs a HEX file"},
      {"write a.hex b.hex", "error: unexpected argument 'b.hex'"},
      {"version --bogus", "error: unknown option '--bogus'"},
      {"--unit= version", "error: option '--unit' needs a value"},
      {"write p.hex -o x.hex", "error: option '-o' does not go with 'write'"},
      {"write p.hex --config 4000",
       "error: the configuration word has 14 bits (0 to 3FFF), not '4000'"},
      {"read --last 0x", "error: option '--last' takes 1 to 4 hexadecimal digits, not '0x'"},
      {"read --last 0x12345", "error: option '--last' takes 1 to 4 hexadecimal digits"},
  };
  for (const auto& [line, expected] : cases) {
    const std::string got = parsed(words(line));
    // Errors by their start; options whole.
    EXPECT_EQ(expected.starts_with("error") ? got.substr(0, expected.size()) : got, expected);
  }
}

// The options a help text lists ("-o", "--sim-memory").
std::set<std::string> options_in(const std::string& help) {
  static const std::regex option(R"((?:^|[\s,\[|])(--?[a-z][a-z-]*))");
  std::set<std::string> found;
  for (auto it = std::sregex_iterator(help.begin(), help.end(), option);
       it != std::sregex_iterator(); ++it) {
    found.insert((*it)[1]);
  }
  return found;
}

// `word` in `text` on its own: "--unit" is not in "--units", "-o" not in "read-only".
bool has_word(const std::string& text, const std::string& word) {
  return std::regex_search(text, std::regex("(^|[^[:alnum:]-])" + word + "($|[^[:alnum:]-])"));
}

// The help comes from the declarations; the manual page and README are
// written by hand and must not fall behind: every command and every option
// of any help stands in both, and the program's help lists them all.
TEST(CliArgsTest, ManualPageAndReadmeNameEverythingTheHelpLists) {
  std::string man = read_text(ZENTA_TEST_DATA "/../../packaging/zenta.1");
  // Without roff's font changes and the backslashes of its "\\-".
  man = std::regex_replace(man, std::regex(R"(\\f[BIR]|\\(?=-))"), "");
  const std::string readme = read_text(ZENTA_TEST_DATA "/../../README.md");
  const std::string program_help = help_text();
  const std::set<std::string> listed = options_in(program_help);
  std::set<std::string> words = listed;
  for (int c = static_cast<int>(Command::kVersion); c <= static_cast<int>(Command::kDevices); ++c) {
    const auto command = static_cast<Command>(c);
    const std::string help = help_text(command);
    const std::string name = command_name(command);
    EXPECT_NE(help.find("Usage: zenta " + name + " "), std::string::npos) << help;
    EXPECT_TRUE(has_word(program_help, name)) << name;
    words.insert(name);
    for (const std::string& option : options_in(help)) {
      EXPECT_TRUE(listed.contains(option)) << option << " of " << name;
      words.insert(option);
    }
  }
  // 14 commands and 22 spellings of options: the reading above found them.
  EXPECT_EQ(words.size(), 36u);
  for (const std::string& word : words) {
    EXPECT_TRUE(has_word(man, word)) << word << " is not in the manual page";
    EXPECT_TRUE(has_word(readme, word)) << word << " is not in README";
  }
}

}  // namespace
}  // namespace zenta::cli

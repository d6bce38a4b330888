#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "cli/args.h"
#include "temp_dir.h"

namespace zenta::cli {
namespace {

// Every field of the parsed options on one line, or the error.
std::string parsed(const std::vector<std::string>& args) {
  const ParseResult result = parse_arguments(args);
  if (!result.ok()) return "error: " + result.error;
  const Options& o = result.options;
  std::ostringstream s;
  s << command_name(o.command) << " unit=" << (o.units.empty() ? "" : o.units.back())
    << " device=" << o.device << " trace=" << o.trace_file << " mem=" << o.sim_memory
    << " hex=" << o.hex_file << " out=" << o.output_file << std::uppercase << std::hex
    << " config=" << o.config.value_or(0) << " last=" << o.last.value_or(0);
  return s.str();
}

TEST(CliArgsTest, CommandLinesParseOrSayWhy) {
  const struct {
    std::vector<std::string> args;
    std::string expected;  // all the options, or how the error starts
  } cases[] = {
      // Global options before and after the command, also in the --option=value form.
      {{"--unit", "sim:16F84A", "id", "--device=16F84A", "--trace", "t.txt", "--sim-memory=m.txt"},
       "id unit=sim:16F84A device=16F84A trace=t.txt mem=m.txt hex= out= config=0 last=0"},
      {{"write", "--last=0x7ff", "prog.hex", "--config", "0X3F3A"},
       "write unit= device= trace= mem= hex=prog.hex out= config=3F3A last=7FF"},
      {{"read", "-o", "back.hex", "--last", "10"},
       "read unit= device= trace= mem= hex= out=back.hex config=0 last=10"},
      // A command's options also before the command, between global ones.
      {{"-o", "x.hex", "--unit", "sim", "--last=7", "read", "--device", "3"},
       "read unit=sim device=3 trace= mem= hex= out=x.hex config=0 last=7"},
      {{"--period", "2", "freq"}, "error: option '--period' does not go with 'freq'"},
      // Help wins over whatever is wrong with the rest.
      {{"--help", "--bogus"}, "help unit= device= trace= mem= hex= out= config=0 last=0"},
      {{"--version", "flash"}, " unit= device= trace= mem= hex= out= config=0 last=0"},
      // --unit once per unit; the last shown here.
      {{"--unit", "sim", "--unit=sim:16F628A", "units"},
       "error: 'units' lists every unit; it takes no --unit"},
      {{"count"}, "error: 'count' needs clear, start, stop or read"},
      {{"count", "reset"}, "error: 'count' takes clear, start, stop or read, not 'reset'"},
      {{"capture", "--period", "101"}, "error: --period takes a sample period of 0 to 100"},
      {{"capture", "-o", "x.txt"}, "error: capture -o writes FILE.vcd or FILE.csv"},
      {{"volts", "--channel", "vcc"}, "error: --channel takes vpp, sab or vin"},
      {{"volts", "--att", "-1"}, "error: --att takes a positive number"},
      {{"volts", "--att", "inf"}, "error: --att takes a positive number up to 1000, not 'inf'"},
      {{"volts", "--att", "1e39"}, "error: --att takes a positive number"},
      {{"volts", "--att", "1000.5"}, "error: --att takes a positive number"},
      {{"volts", "--att", "nan"}, "error: --att takes a positive number"},
      {{"freq", "--gate", "10ms"}, "error: --gate takes 100ms or 1s"},
      {{"freq", "--period", "2"}, "error: option '--period' does not go with 'freq'"},
      {{"-q", "-v", "id"}, "error: -q and -v do not go together"},
      {{"--exact=1", "id"}, "error: option '--exact' takes no value"},
      {{}, "error: no command given"},
      {{"flash"}, "error: unknown command 'flash'"},
      {{"write"}, "error: 'write' needs a HEX file"},
      {{"write", "a.hex", "b.hex"}, "error: unexpected argument 'b.hex'"},
      {{"version", "--bogus"}, "error: unknown option '--bogus'"},
      {{"--unit=", "version"}, "error: option '--unit' needs a value"},
      {{"write", "p.hex", "-o", "x.hex"}, "error: option '-o' does not go with 'write'"},
      {{"write", "p.hex", "--config", "4000"},
       "error: the configuration word has 14 bits (0 to 3FFF), not '4000'"},
      {{"read", "--last", "0x"},
       "error: option '--last' takes 1 to 4 hexadecimal digits, not '0x'"},
      {{"read", "--last", "0x12345"}, "error: option '--last' takes 1 to 4 hexadecimal digits"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(parsed(c.args).substr(0, c.expected.size()), c.expected);
  }
}

// The options that are not in the one-line summary above.
TEST(CliArgsTest, FlagsAndInstrumentOptionsReachTheOptions) {
  const ParseResult a = parse_arguments({"--exact", "-q", "--unit", "sim", "capture", "--edge",
                                         "neg", "--period=0", "--json", "--unit", "sim"});
  ASSERT_TRUE(a.ok()) << a.error;
  EXPECT_TRUE(a.options.exact);
  EXPECT_TRUE(a.options.json);
  EXPECT_EQ(a.options.verbosity, Verbosity::kQuiet);
  EXPECT_EQ(a.options.units, (std::vector<std::string>{"sim", "sim"}));
  EXPECT_FALSE(a.options.positive_edge);
  EXPECT_EQ(a.options.period, 0);
  const ParseResult b = parse_arguments({"volts", "--channel", "sab", "--att", "2.5", "-v"});
  ASSERT_TRUE(b.ok()) << b.error;
  EXPECT_FALSE(b.options.exact);
  EXPECT_EQ(b.options.verbosity, Verbosity::kVerbose);
  EXPECT_EQ(b.options.channel, 1);
  EXPECT_EQ(b.options.att, 2.5f);
  const ParseResult c = parse_arguments({"freq", "--gate", "1s"});
  EXPECT_TRUE(c.ok() && c.options.slow_gate);
  const ParseResult d = parse_arguments({"count", "stop"});
  EXPECT_EQ(d.options.counter_action, "stop");
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
  const auto part = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '-'; };
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if ((at == 0 || !part(text[at - 1])) && (end == text.size() || !part(text[end]))) return true;
  }
  return false;
}

// The help comes from the declarations; the manual page and README are
// written by hand and must not fall behind: every command and every option
// of any help stands in both, and the program's help lists them all.
TEST(CliArgsTest, ManualPageAndReadmeNameEverythingTheHelpLists) {
  std::string man = zenta::testing::read_text(ZENTA_TEST_DATA "/../../packaging/zenta.1");
  // Without roff's font changes and the backslashes of its "\\-".
  man = std::regex_replace(man, std::regex(R"(\\f[BIR]|\\(?=-))"), "");
  const std::string readme = zenta::testing::read_text(ZENTA_TEST_DATA "/../../README.md");
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

#include <gtest/gtest.h>

#include <sstream>

#include "cli/args.h"

namespace zenta::cli {
namespace {

// Every field of the parsed options on one line, or the error.
std::string parsed(const std::vector<std::string>& args) {
  const ParseResult result = parse_arguments(args);
  if (!result.ok()) return "error: " + result.error;
  const Options& o = result.options;
  const char* commands[] = {"none",  "help",   "version", "id",         "erase",
                            "write", "verify", "read",    "read-eeprom"};
  std::ostringstream s;
  s << commands[static_cast<int>(o.command)] << " unit=" << o.unit << " device=" << o.device
    << " trace=" << o.trace_file << " mem=" << o.sim_memory << " hex=" << o.hex_file
    << " out=" << o.output_file << std::uppercase << std::hex << " config=" << o.config.value_or(0)
    << " last=" << o.last.value_or(0);
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
      // Help wins over whatever is wrong with the rest.
      {{"--help", "--bogus"}, "help unit= device= trace= mem= hex= out= config=0 last=0"},
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
  };
  for (const auto& c : cases) {
    EXPECT_EQ(parsed(c.args).substr(0, c.expected.size()), c.expected);
  }
}

}  // namespace
}  // namespace zenta::cli

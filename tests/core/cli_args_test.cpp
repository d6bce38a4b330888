#include <gtest/gtest.h>

#include "cli/args.h"

namespace zenta::cli {
namespace {

TEST(CliArgsTest, GoodCommandLines) {
  struct Case {
    std::vector<std::string> args;
    Options expected;
  };
  auto options = [](Command command) {
    Options o;
    o.command = command;
    return o;
  };
  std::vector<Case> cases;
  cases.push_back({{"version"}, options(Command::kVersion)});
  {
    Options o = options(Command::kId);
    o.unit = "sim:16F84A";
    o.device = "16F84A";
    o.trace_file = "t.txt";
    o.sim_memory = "m.txt";
    cases.push_back({{"--unit", "sim:16F84A", "--device", "16F84A", "--trace", "t.txt",
                      "--sim-memory", "m.txt", "id"},
                     o});
    // Global options also after the command, and in the --option=value form.
    cases.push_back(
        {{"id", "--unit=sim:16F84A", "--device=16F84A", "--trace", "t.txt", "--sim-memory=m.txt"},
         o});
  }
  {
    Options o = options(Command::kWrite);
    o.hex_file = "prog.hex";
    o.config = 0x3F3A;
    o.last = 0x7FF;
    cases.push_back({{"write", "prog.hex", "--config", "3f3a", "--last", "0x7FF"}, o});
    cases.push_back({{"write", "--last=7ff", "--config=0X3F3A", "prog.hex"}, o});
  }
  {
    Options o = options(Command::kVerify);
    o.hex_file = "p.hex";
    o.last = 0xFFFF;  // the LAST box's own rules give it its meaning
    cases.push_back({{"verify", "p.hex", "--last", "FFFF"}, o});
  }
  {
    Options o = options(Command::kRead);
    o.output_file = "back.hex";
    o.last = 0x10;
    cases.push_back({{"read", "-o", "back.hex", "--last", "10"}, o});
  }
  {
    Options o = options(Command::kReadEeprom);
    o.output_file = "ee.hex";
    cases.push_back({{"read-eeprom", "-o", "ee.hex"}, o});
  }
  cases.push_back({{"erase", "--help"}, options(Command::kHelp)});
  cases.push_back({{"-h"}, options(Command::kHelp)});
  cases.push_back({{"help"}, options(Command::kHelp)});
  // The help wins over whatever is wrong after it.
  cases.push_back({{"--help", "--bogus"}, options(Command::kHelp)});

  for (const Case& c : cases) {
    std::string joined;
    for (const auto& a : c.args) joined += a + " ";
    SCOPED_TRACE(joined);
    const ParseResult result = parse_arguments(c.args);
    ASSERT_TRUE(result.ok()) << result.error;
    const Options& got = result.options;
    EXPECT_EQ(got.command, c.expected.command);
    EXPECT_EQ(got.unit, c.expected.unit);
    EXPECT_EQ(got.device, c.expected.device);
    EXPECT_EQ(got.trace_file, c.expected.trace_file);
    EXPECT_EQ(got.sim_memory, c.expected.sim_memory);
    EXPECT_EQ(got.hex_file, c.expected.hex_file);
    EXPECT_EQ(got.output_file, c.expected.output_file);
    EXPECT_EQ(got.config, c.expected.config);
    EXPECT_EQ(got.last, c.expected.last);
  }
}

TEST(CliArgsTest, BadCommandLinesSayWhy) {
  struct Case {
    std::vector<std::string> args;
    const char* says;
  };
  const Case cases[] = {
      {{}, "no command"},
      {{"flash"}, "unknown command 'flash'"},
      {{"write"}, "needs a HEX file"},
      {{"read", "extra"}, "unexpected argument 'extra'"},
      {{"write", "a.hex", "b.hex"}, "unexpected argument 'b.hex'"},
      {{"version", "--bogus"}, "unknown option '--bogus'"},
      {{"--unit"}, "'--unit' needs a value"},
      {{"--unit=", "version"}, "'--unit' needs a value"},
      {{"erase", "--config", "3F3A"}, "'--config' does not go with 'erase'"},
      {{"read-eeprom", "--last", "10"}, "'--last' does not go with 'read-eeprom'"},
      {{"write", "p.hex", "-o", "x.hex"}, "'-o' does not go with 'write'"},
      {{"write", "p.hex", "--config", "4000"}, "14 bits"},
      {{"write", "p.hex", "--config", "12345"}, "1 to 4 hexadecimal digits"},
      {{"read", "--last", "0x"}, "1 to 4 hexadecimal digits"},
  };
  for (const Case& c : cases) {
    std::string joined;
    for (const auto& a : c.args) joined += a + " ";
    SCOPED_TRACE(joined);
    const ParseResult result = parse_arguments(c.args);
    EXPECT_FALSE(result.ok());
    EXPECT_NE(result.error.find(c.says), std::string::npos) << result.error;
  }
}

}  // namespace
}  // namespace zenta::cli

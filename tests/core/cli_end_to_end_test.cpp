// The built zenta program run as a script would run it.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/sim/sim_unit.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::read_text;
using testing::TempDir;

struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs zenta with the arguments (already quoted for the shell), standard
// error into a file of `dir`.
Result zenta(const TempDir& dir, const std::string& args, const std::string& env = "") {
  const std::string err_file = dir.file("stderr.txt");
  const auto run =
      testing::run_command(env + " '" + ZENTA_CLI_PATH + "' " + args + " 2>'" + err_file + "'");
  return {run.status, run.out, read_text(err_file)};
}

std::string quoted(const std::string& path) {
  return "'" + path + "'";
}

// The program words of an INHX8M file, blank-filled, read by the panel's loader.
ProgrammerState image_of(const std::string& path) {
  ProgrammerState state;
  blank_program_image(state);
  std::istringstream text(read_text(path));
  EXPECT_TRUE(load_hex_records(text, state).ok) << path;
  return state;
}

// Assembles one of the test programs into the temporary folder.
std::string assemble(const TempDir& dir, const std::string& name, const std::string& processor) {
  const std::string hex = dir.file(name + ".hex");
  const auto run = testing::run_command(
      "gpasm -p " + processor + " -a inhx8m -o " + quoted(hex) + " " +
      quoted(std::string(ZENTA_TEST_DATA) + "/blink/" + name + ".asm") + " 2>&1");
  EXPECT_EQ(run.status, 0) << run.out;
  return hex;
}

TEST(CliEndToEndTest, VersionTracesExactlyOneExchange) {
  TempDir dir;
  const Result result = zenta(dir, "--unit sim --trace " + quoted(dir.file("t.txt")) + " version");
  EXPECT_EQ(result.status, 0) << result.err;
  std::smatch ident;
  ASSERT_TRUE(
      std::regex_match(result.out, ident, std::regex("Firmware version 1\\.2 \\((.{8})\\)\n")))
      << result.out;
  std::string rx;
  for (char c : ident[1].str()) {
    char cell[4];
    std::snprintf(cell, sizeof cell, " %02X", static_cast<unsigned char>(c));
    rx += cell;
  }
  EXPECT_EQ(read_text(dir.file("t.txt")), "TX 3F 00 00 00 00 00 00 00 RX" + rx + "\n");
}

#ifdef ZENTA_HAVE_LIBUSB
TEST(CliEndToEndTest, NoUnitExitsThreeAndSaysWhatToDo) {
  TempDir dir;
  // An id no device has, so that a unit on the test machine does not count.
  const Result result = zenta(dir, "version", "ZENTA_UNIT=usb ZENTA_USB_ID=0000:0000");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "");
  for (const char* part : {"Unit not Found", "Plug the unit in", "udev", "--unit sim"}) {
    EXPECT_NE(result.err.find(part), std::string::npos) << part << "\n" << result.err;
  }
}
#endif

TEST(CliEndToEndTest, ChipKeepsWhatWasWrittenAcrossRuns) {
  if (!testing::tool_available("gpasm")) GTEST_SKIP() << "gputils' gpasm is not installed";
  TempDir dir;
  const std::string prog = assemble(dir, "blink_16f877a", "p16f877a");
  const std::string chip = "--unit sim:16F877A --sim-memory " + quoted(dir.file("m.txt"));

  const Result written = zenta(dir, chip + " write " + quoted(prog));
  EXPECT_EQ(written.status, 0) << written.err;
  const ProgrammerState image = image_of(prog);
  char config_line[64];
  std::snprintf(config_line, sizeof config_line, "Configuration word %04X (from the file)\n",
                image.word(0x2007));
  EXPECT_EQ(written.out, std::string(config_line) + "Write Complete\n");

  const Result read = zenta(dir, chip + " read -o " + quoted(dir.file("back.hex")));
  EXPECT_EQ(read.status, 0) << read.err;
  EXPECT_EQ(read.out, "Read Complete\n");
  const ProgrammerState back = image_of(dir.file("back.hex"));
  for (int w = 0; w < 0x2000; ++w) ASSERT_EQ(back.word(w), image.word(w)) << "word " << w;

  // The configuration word is on the chip that the memory file keeps.
  sim::SimUnit unit("16F877A");
  ASSERT_TRUE(unit.load(dir.file("m.txt")));
  EXPECT_EQ(unit.config_word(), image.word(0x2007));

  const Result verified = zenta(dir, chip + " verify " + quoted(prog));
  EXPECT_EQ(verified.status, 0) << verified.err;
  EXPECT_EQ(verified.out, "Verify Complete\n");

  // One word different from what the chip holds.
  ProgrammerState changed = image;
  changed.set_word(0x81, image.word(0x81) ^ 0x0100);
  std::vector<HexWord> words = program_hex_words(changed, 0x2000);
  ASSERT_TRUE(write_inhx8m_file(dir.file("changed.hex"), words));
  const Result mismatch = zenta(dir, chip + " verify " + quoted(dir.file("changed.hex")));
  EXPECT_EQ(mismatch.status, 1);
  EXPECT_EQ(mismatch.out, "Verify Error\n");
  EXPECT_NE(mismatch.err.find("VERIFY ERROR: Verify Data ERROR"), std::string::npos)
      << mismatch.err;
}

TEST(CliEndToEndTest, BadUsageExitsTwoBeforeTouchingAUnit) {
  TempDir dir;
  const struct {
    const char* args;
    const char* says;
  } cases[] = {
      {"flash", "unknown command 'flash'"},
      {"--unit sim:16F999 id", "unknown chip '16F999'"},
      {"--unit sim --device 9 id", "unknown device '9'"},
  };
  for (const auto& c : cases) {
    const Result result = zenta(dir, c.args);
    EXPECT_EQ(result.status, 2) << c.args;
    EXPECT_NE(result.err.find(c.says), std::string::npos) << c.args << "\n" << result.err;
    EXPECT_NE(result.err.find("zenta --help"), std::string::npos) << result.err;
  }
}

}  // namespace
}  // namespace zenta

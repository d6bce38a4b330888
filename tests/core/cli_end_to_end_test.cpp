// The built zenta program run as a script would run it.
#include <gtest/gtest.h>

#include <sstream>

#include "image/hex_loader.h"
#include "image/hex_writer.h"
#include "link/sim/sim_unit.h"
#include "temp_dir.h"

namespace zenta {
namespace {

using testing::read_text;
using testing::run_command;
using testing::TempDir;

struct Result : testing::ProcessResult {
  std::string err;
};

std::string quoted(const std::string& path) {
  return "'" + path + "'";
}

// Runs zenta with the arguments (already quoted for the shell).
Result zenta(const TempDir& dir, const std::string& args, const std::string& env = "") {
  const std::string err_file = dir.file("stderr.txt");
  // Braced initializers run in order: the command first, then its error file is read.
  return {run_command(env + " " + quoted(ZENTA_CLI_PATH) + " " + args + " 2>" + quoted(err_file)),
          read_text(err_file)};
}

// The program words of an INHX8M file, blank-filled, read by the panel's loader.
ProgrammerState image_of(const std::string& path) {
  ProgrammerState state;
  blank_program_image(state);
  std::istringstream text(read_text(path));
  EXPECT_TRUE(load_hex_records(text, state).ok) << path;
  return state;
}

TEST(CliEndToEndTest, VersionTracesExactlyOneExchange) {
  TempDir dir;
  const Result result = zenta(dir, "--unit sim --trace " + quoted(dir.file("t.txt")) + " version");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "Firmware version 1.2 (ZENTA 12)\n");
  EXPECT_EQ(read_text(dir.file("t.txt")),
            "TX 3F 00 00 00 00 00 00 00 RX 5A 45 4E 54 41 20 31 32\n");
}

#ifdef ZENTA_HAVE_LIBUSB
TEST(CliEndToEndTest, NoUnitExitsThreeAndSaysWhatToDo) {
  TempDir dir;
  // An id no device has, so that a unit on the test machine does not count.
  const Result result = zenta(dir, "version", "ZENTA_UNIT=usb ZENTA_USB_ID=0000:0000");
  EXPECT_EQ(result.status, 3);
  for (const char* part :
       {"Unit not Found", "No unit with the USB id 0000:0000 is plugged in", "--unit sim"}) {
    EXPECT_NE(result.err.find(part), std::string::npos) << part << "\n" << result.err;
  }
}
#endif

TEST(CliEndToEndTest, ChipKeepsWhatWasWrittenAcrossRuns) {
  if (!testing::tool_available("gpasm")) GTEST_SKIP() << "gputils' gpasm is not installed";
  TempDir dir;
  const std::string prog = dir.file("blink.hex");
  const std::string source = ZENTA_TEST_DATA "/blink.asm";
  ASSERT_EQ(
      run_command("gpasm -p p16f876 -a inhx8m -o " + quoted(prog) + " " + quoted(source)).status,
      0);
  // A 16F876, whose word-by-word program-only write lets the two blank words
  // past the configuration record's last address pass over words 0 and 1
  // without changing them.
  const std::string chip =
      "--unit sim:16F876 --device 16F87x --sim-memory " + quoted(dir.file("m.txt"));

  const Result written = zenta(dir, chip + " write " + quoted(prog));
  EXPECT_TRUE(written.out.ends_with("Write Complete\n")) << written.out << written.err;
  EXPECT_EQ(zenta(dir, chip + " read -o " + quoted(dir.file("back.hex"))).status, 0);
  const ProgrammerState image = image_of(prog);
  const ProgrammerState back = image_of(dir.file("back.hex"));
  for (int w = 0; w < 0x2000; ++w) ASSERT_EQ(back.word(w), image.word(w)) << "word " << w;
  sim::SimUnit unit("16F876");  // the chip that the memory file keeps
  ASSERT_TRUE(unit.load(dir.file("m.txt")));
  EXPECT_EQ(unit.config_word(), image.word(0x2007));
  EXPECT_EQ(zenta(dir, chip + " verify " + quoted(prog)).out, "Verify Complete\n");

  // One word different from what the chip holds.
  ProgrammerState changed = image;
  changed.set_word(0x81, image.word(0x81) ^ 0x0100);
  ASSERT_TRUE(write_inhx8m_file(dir.file("changed.hex"), program_hex_words(changed, 0x2000)));
  const Result mismatch = zenta(dir, chip + " verify " + quoted(dir.file("changed.hex")));
  EXPECT_EQ(mismatch.status, 1);
  EXPECT_NE(mismatch.err.find("VERIFY ERROR: Verify Data ERROR"), std::string::npos)
      << mismatch.err;
}

// Output that does not arrive is a failure that says so, wherever it goes.
TEST(CliEndToEndTest, LostOutputFailsTheRun) {
  TempDir dir;
  const std::string zenta = quoted(ZENTA_CLI_PATH) + " --unit sim ";
  const std::string err = " 2>" + quoted(dir.file("stderr.txt"));
  const std::string status = quoted(dir.file("status.txt"));
  const struct {
    const char* name;
    std::string command;
    std::string says;
  } cases[] = {
      {"full disk on standard output", zenta + "read-eeprom >/dev/full" + err,
       "zenta: cannot write the standard output: No space left on device\n"},
      {"full disk on the trace", zenta + "--trace /dev/full id" + err,
       "zenta: cannot write the trace file '/dev/full': No space left on device\n"},
      {"-o onto a device", zenta + "read-eeprom -o /dev/full" + err, "cannot write '/dev/full'"},
      // The reader has gone before the program writes.
      {"closed pipe", "(sleep 0.5; " + zenta + "read" + err + "; echo $? >" + status + ") | true",
       "zenta: cannot write the standard output: Broken pipe\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    testing::ProcessResult result = run_command(c.command);
    if (c.command.find(status) != std::string::npos) {
      result.status = std::stoi("0" + read_text(dir.file("status.txt")));
    }
    const std::string said = read_text(dir.file("stderr.txt"));
    EXPECT_EQ(result.status, 1) << said;
    EXPECT_NE(said.find(c.says), std::string::npos) << said;
  }
}

TEST(CliEndToEndTest, BadUsageExitsTwoAndPointsToTheHelp) {
  TempDir dir;
  for (const char* args : {"flash", "--unit sim:16F999 id", "--unit sim --device 9 id"}) {
    const Result result = zenta(dir, args);
    EXPECT_EQ(result.status, 2) << args;
    EXPECT_NE(result.err.find("zenta --help"), std::string::npos) << result.err;
  }
}

}  // namespace
}  // namespace zenta

// The chips' descriptions: their facts against a second source, the
// loader's refusals, a chip added by a user's file, and a chip added by
// data alone programmed end to end.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

#include "cli_rig.h"
#include "devices/device_library.h"
#include "programming/device_id.h"
#include "sim_rig.h"
#include "temp_dir.h"

namespace zenta {
namespace {

// Transcribed from the chips' programming documents (DS30262E, DS30034D,
// DS41196G, DS39025F, DS39589B, DS39603C, DS41191D): ID word without its
// revision (0: none), program words, EEPROM bytes.
struct Fact {
  const char* name;
  int id;
  int words;
  int eeprom;
};
constexpr Fact kFacts[] = {
    {"16F83", 0, 512, 64},          {"16F84", 0, 1024, 64},         {"16F84A", 0x0560, 1024, 64},
    {"16F627", 0x07A0, 1024, 128},  {"16F628", 0x07C0, 2048, 128},  {"16F627A", 0x1040, 1024, 128},
    {"16F628A", 0x1060, 2048, 128}, {"16F648A", 0x1100, 4096, 256}, {"16F870", 0x0D00, 2048, 64},
    {"16F871", 0x0D20, 2048, 64},   {"16F872", 0x08E0, 2048, 64},   {"16F873", 0x0960, 4096, 128},
    {"16F874", 0x0920, 4096, 128},  {"16F876", 0x09E0, 8192, 256},  {"16F877", 0x09A0, 8192, 256},
    {"16F873A", 0x0E40, 4096, 128}, {"16F874A", 0x0E60, 4096, 128}, {"16F876A", 0x0E00, 8192, 256},
    {"16F877A", 0x0E20, 8192, 256}, {"12F629", 0x0F80, 1024, 128},  {"12F675", 0x0FC0, 1024, 128},
    {"16F630", 0x10C0, 1024, 128},  {"16F676", 0x10E0, 1024, 128},  {"16F818", 0x04C0, 1024, 128},
    {"16F819", 0x04E0, 2048, 256},
};

// gputils' linker script of a chip: program words (code pages below
// configuration space) and EEPROM bytes.
struct Script {
  int words = 0, eeprom = 0;
};
std::optional<Script> linker_script(std::string name) {
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::ifstream in("/usr/share/gputils/lkr/" + name + "_g.lkr");
  if (!in) return std::nullopt;
  const std::regex page(
      R"(^CODEPAGE\s+NAME=(\S+)\s+START=0x([0-9A-Fa-f]+)\s+END=0x([0-9A-Fa-f]+))");
  Script script;
  std::smatch m;
  for (std::string line; std::getline(in, line);) {
    if (!std::regex_search(line, m, page)) continue;
    const int start = std::stoi(m[2], nullptr, 16), end = std::stoi(m[3], nullptr, 16);
    if (end < 0x2000) script.words += end - start + 1;
    if (m[1] == "eedata") script.eeprom = end - start + 1;
  }
  return script;
}

TEST(DeviceFacts, EachDescriptionHoldsItsDocumentsFactsAndTheSimulatedChipFollowsIt) {
  ASSERT_TRUE(devices().errors.empty()) << devices().errors.front().text();
  EXPECT_EQ(devices().chips.size(), std::size(kFacts));
  int scripts = 0;
  for (const Fact& fact : kFacts) {
    SCOPED_TRACE(fact.name);
    const auto chip = chip_by_name(fact.name);
    ASSERT_TRUE(chip);
    EXPECT_EQ(chip->id.value_or(0), fact.id);
    EXPECT_EQ(chip->program_words, fact.words);
    EXPECT_EQ(chip->eeprom_bytes, fact.eeprom);
    EXPECT_FALSE(chip->document.empty());
    if (const auto script = linker_script(fact.name)) {
      ++scripts;
      EXPECT_EQ(script->words, fact.words);
      EXPECT_EQ(script->eeprom, fact.eeprom);
    }
    // The simulated chip answers with the ID the description gives, plus
    // a revision in the revision bits only; the panel names it.
    testing::SimRig rig(fact.name);
    EXPECT_EQ(rig.unit.chip().program_words, fact.words);
    rig.power_and_enter();
    rig.send({ICSP_LOAD_CONFIG, 0x3F, 0xFF});
    for (int a = kConfigSpaceBase; a < kDeviceIdAddress; ++a) rig.send({ICSP_INC_ADDR, 0});
    const int id = rig.read_word();
    EXPECT_EQ(id & ~chip->revision_bits, fact.id == 0 ? 0x3FFF : fact.id);
    if (fact.id != 0) {
      EXPECT_EQ(device_id_name(static_cast<std::uint16_t>(id)), fact.name);
    }
  }
  // gputils comes with the build's packages: the second source was there.
  EXPECT_EQ(scripts, static_cast<int>(std::size(kFacts)));
}

TEST(DeviceFiles, ABadFileIsRefusedWholeNamingLineKeyAndReason) {
  const std::string family =
      "[family]\nfamily = \"16F62xA\"\ndocument = \"DS41196G\"\nerase = \"bulk\"\n"
      "write = \"erase-program\"\nread = \"words\"\neeprom_bytes = 128\n"
      "config = [{ address = 0x2007, implemented = 0x21FF }]\n";
  const std::string chip = "[[chip]]\nname = \"16F627B\"\nid = 0x1080\nprogram_words = 1024\n";
  struct Case {
    const char* what;
    std::string text;
    const char* error;  // "" for a good file
  };
  const Case cases[] = {
      {"a chip stating only what differs", family + chip, ""},
      {"a typo in a key", family + chip + "eeprom_byte = 64\n",
       "f.toml:13: eeprom_byte: unknown key"},
      {"a size out of range",
       family + "[[chip]]\nname = \"X1\"\nid = 0x1080\nprogram_words = 9000\n",
       "f.toml:12: program_words: out of range"},
      {"an unknown algorithm", family + chip + "erase = \"bulk-erase\"\n",
       "f.toml:13: erase: unknown algorithm 'bulk-erase'"},
      {"a missing ID", family + "[[chip]]\nname = \"X1\"\nprogram_words = 64\n",
       "f.toml:9: id: missing"},
      {"a bit the word lacks",
       family + chip + "config = [{ implemented = 0x00FF, fields = { CP = 0x2000 } }]\n",
       "f.toml:13: config.fields.CP: bits the word does not implement"},
      {"a chip twice", family + chip + chip, "f.toml:13: name: 16F627B is described twice"},
      {"no chips", family, "f.toml:1: chip: no [[chip]]"},
      {"a syntax error", family + "[[chip]\n", "f.toml:9: "},
      {"a bad voltage range", family + chip + "vpp = [13.5, 10]\n", "f.toml:13: vpp: not 0 < min"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const DeviceLibrary library = parse_device_file(c.text, "f.toml");
    if (*c.error == '\0') {
      ASSERT_TRUE(library.errors.empty()) << library.errors.front().text();
      ASSERT_EQ(library.chips.size(), 1u);
      EXPECT_EQ(library.chips[0].family, "16F62xA");
      EXPECT_EQ(library.chips[0].eeprom_bytes, 128);
      EXPECT_EQ(library.chips[0].config.at(0).implemented, 0x21FF);
      continue;
    }
    ASSERT_FALSE(library.errors.empty());
    EXPECT_EQ(library.errors.front().text().rfind(c.error, 0), 0u) << library.errors.front().text();
    EXPECT_TRUE(library.chips.empty());
  }
}

// A user's folder adds a chip with nothing built; a broken file there is
// named by `zenta devices` and leaves the other chips usable.
TEST(DeviceFiles, AChipFromTheUsersFolderIsWrittenByTheProgram) {
  testing::TempDir dir;
  const std::string folder = dir.file("config/zenta/devices");
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "/mine.toml")
      << "[family]\nfamily = \"16F62xA\"\ndocument = \"DS41196G\"\nerase = \"bulk\"\n"
         "write = \"erase-program\"\nread = \"words\"\neeprom_bytes = 128\n"
         "config = [{ address = 0x2007, implemented = 0x21FF }]\n"
         "[[chip]]\nname = \"16F627B\"\nid = 0x1080\nprogram_words = 1024\n";
  std::ofstream(folder + "/broken.toml") << "[family]\nfamliy = 1\n";
  std::ofstream(dir.file("blink.hex")) << ":04000000083001289B\n:00000001FF\n";
  const std::string env = "XDG_CONFIG_HOME='" + dir.file("config") + "' ";
  const std::string cli = env + "'" ZENTA_CLI_PATH "' ";
  const std::string out = dir.file("out.txt");
  ASSERT_EQ(std::system((cli + "devices >'" + out + "' 2>&1").c_str()), 256);  // exit 1
  const std::string listing = testing::read_text(out);
  EXPECT_NE(listing.find("broken.toml:2: famliy: unknown key"), std::string::npos) << listing;
  EXPECT_NE(listing.find("16F627B   16F62xA   1024 words"), std::string::npos) << listing;
  const std::string memory = dir.file("chip.sim");
  ASSERT_EQ(
      std::system((cli + "--unit sim:16F627B --sim-memory '" + memory +
                   "' --device 16F627B write '" + dir.file("blink.hex") + "' >'" + out + "' 2>&1")
                      .c_str()),
      0)
      << testing::read_text(out);
  EXPECT_NE(testing::read_text(memory).find("chip 16F627B"), std::string::npos);
  ASSERT_EQ(std::system(
                (cli + "devices --check '" + folder + "/broken.toml' >'" + out + "' 2>&1").c_str()),
            256);
}

// The 16F83 is data only: its family's algorithms and silicon do the rest.
TEST(DeviceFiles, The16F83IsWrittenVerifiedReadAndErasedFromItsDescriptionAlone) {
  testing::TempDir dir;
  std::ofstream(dir.file("a.hex")) << ":04000000083001289B\n:00000001FF\n";
  cli::testing::SimRun run("16F83");
  const std::string hex = dir.file("a.hex");
  ASSERT_EQ(run({"--device", "16F83", "write", hex}).status, 0);
  EXPECT_EQ(run.unit->program_word(0), 0x3008);
  EXPECT_EQ(run.unit->program_word(1), 0x2801);
  EXPECT_EQ(run({"--device", "16F83", "verify", hex}).status, 0);
  const cli::testing::Outcome read = run({"--device", "16F83", "read", "-o", dir.file("r.hex")});
  ASSERT_EQ(read.status, 0) << read.err;
  EXPECT_NE(testing::read_text(dir.file("r.hex")).find(":04000000083001289B"), std::string::npos);
  // 512 words: a word past them would land on word 0, so it is refused.
  std::ofstream(dir.file("big.hex")) << ":02040000FF0FEC\n:00000001FF\n";
  EXPECT_EQ(run({"--device", "16F83", "write", dir.file("big.hex")}).status, 1);
  EXPECT_EQ(run.unit->program_word(0), 0x3008);
  ASSERT_EQ(run({"--device", "16F83", "erase"}).status, 0);
  EXPECT_EQ(run.unit->program_word(0), 0x3FFF);
}

}  // namespace
}  // namespace zenta

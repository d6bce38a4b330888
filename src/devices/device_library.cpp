#include "devices/device_library.h"

#include <toml++/toml.h>
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>

#include "common/input_file.h"
#include "devices/shipped_devices.h"

namespace zenta {

namespace {

constexpr std::size_t kLargestDeviceFile = 1 << 20;

struct Names {
  const char* name;
  int value;
};
constexpr Names kEraseNames[] = {
    {"bulk-setup", static_cast<int>(EraseAlgorithm::kBulkSetup)},
    {"chip-erase", static_cast<int>(EraseAlgorithm::kChipErase)},
    {"bulk-begin", static_cast<int>(EraseAlgorithm::kBulkBegin)},
    {"bulk", static_cast<int>(EraseAlgorithm::kBulk)},
};
constexpr Names kWriteNames[] = {
    {"rows", static_cast<int>(WriteAlgorithm::kRows)},
    {"erase-program", static_cast<int>(WriteAlgorithm::kEraseProgram)},
    {"program-only", static_cast<int>(WriteAlgorithm::kProgramOnly)},
};

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// Reads the keys of one [family] or [[chip]] table into a description,
// collecting what is wrong with the place it stands.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {}

  std::vector<DeviceFileError>& errors() { return errors_; }

  void error(const toml::node& node, const std::string& key, const std::string& reason) {
    errors_.push_back({path_, static_cast<int>(node.source().begin.line), key, reason});
  }

  // Keys the description must end up with, from the chip or its family.
  struct Given {
    bool name = false, family = false, document = false, id = false, program_words = false,
         config = false, erase = false, write = false, read = false;
  };

  void apply(const toml::table& table, ChipDescription& chip, Given& given, bool is_chip) {
    for (auto&& [key_name, node] : table) {
      const std::string key(key_name.str());
      if (key == "name" && is_chip) {
        given.name = text(node, key, chip.name);
      } else if (key == "family") {
        given.family = text(node, key, chip.family);
      } else if (key == "document") {
        given.document = text(node, key, chip.document);
      } else if (key == "id") {
        given.id = id(node, chip);
      } else if (key == "revision_bits") {
        chip.revision_bits = static_cast<std::uint16_t>(number(node, key, 0, 0x3FFF, 0x1F));
      } else if (key == "program_words") {
        chip.program_words = number(node, key, 1, 0x2000, 0);
        given.program_words = true;
      } else if (key == "eeprom_bytes") {
        chip.eeprom_bytes = number(node, key, 0, 256, 0);
      } else if (key == "config") {
        given.config = config(node, chip);
      } else if (key == "calibration") {
        calibration(node, chip);
      } else if (key == "erase") {
        given.erase = named(node, key, kEraseNames, chip.erase);
      } else if (key == "write") {
        given.write = named(node, key, kWriteNames, chip.write);
      } else if (key == "read") {
        std::string read;
        given.read = text(node, key, read);
        if (given.read && read != "words") {
          error(node, key, "unknown read algorithm '" + read + "' (words)");
          given.read = false;
        }
      } else if (key == "latch") {
        chip.latch_words = number(node, key, 1, 8, 1);
      } else if (key == "vpp") {
        vpp(node, chip);
      } else if (key == "entry") {
        chip.entry = number(node, key, 0, 7, 0);
      } else {
        error(node, key, key == "name" ? "a chip's name, not its family's" : "unknown key");
      }
    }
  }

  void check_complete(const toml::node& node, const ChipDescription& chip, const Given& given) {
    const std::pair<bool, const char*> required[] = {
        {given.name, "name"},
        {given.family, "family"},
        {given.document, "document"},
        {given.id, "id"},
        {given.program_words, "program_words"},
        {given.config, "config"},
        {given.erase, "erase"},
        {given.write, "write"},
        {given.read, "read"},
    };
    for (const auto& [present, key] : required) {
      if (!present) error(node, key, "missing, in the chip and in its family");
    }
    if (chip.calibration && chip.calibration->address >= chip.program_words) {
      error(node, "calibration", "address past the chip's program memory");
    }
    if (chip.write == WriteAlgorithm::kRows && chip.latch_words < 2) {
      error(node, "latch", "a row write needs a latch of 2 or more words");
    }
  }

 private:
  bool text(const toml::node& node, const std::string& key, std::string& out) {
    const auto* value = node.as_string();
    if (value == nullptr || value->get().empty()) {
      error(node, key, "not a text");
      return false;
    }
    out = value->get();
    return true;
  }

  int number(const toml::node& node, const std::string& key, int low, int high, int otherwise) {
    const auto* value = node.as_integer();
    if (value == nullptr) {
      error(node, key, "not a whole number");
      return otherwise;
    }
    const std::int64_t n = value->get();
    if (n < low || n > high) {
      error(node, key,
            "out of range (" + std::to_string(low) + " to " + std::to_string(high) + ")");
      return otherwise;
    }
    return static_cast<int>(n);
  }

  template <typename Enum, std::size_t N>
  bool named(const toml::node& node, const std::string& key, const Names (&names)[N], Enum& out) {
    std::string name;
    if (!text(node, key, name)) return false;
    std::string known;
    for (const Names& entry : names) {
      if (name == entry.name) {
        out = static_cast<Enum>(entry.value);
        return true;
      }
      known += (known.empty() ? "" : ", ") + std::string(entry.name);
    }
    error(node, key, "unknown algorithm '" + name + "' (" + known + ")");
    return false;
  }

  bool id(const toml::node& node, ChipDescription& chip) {
    if (const auto* none = node.as_string(); none != nullptr && none->get() == "none") {
      chip.id.reset();
      return true;
    }
    if (node.as_integer() == nullptr) {
      error(node, "id", "neither an ID word nor \"none\"");
      return false;
    }
    chip.id = static_cast<std::uint16_t>(number(node, "id", 1, 0x3FFE, 0));
    return *chip.id != 0;
  }

  bool config(const toml::node& node, ChipDescription& chip) {
    const auto* words = node.as_array();
    if (words == nullptr || words->empty()) {
      error(node, "config", "not a list of configuration words");
      return false;
    }
    chip.config.clear();
    for (const toml::node& element : *words) {
      const auto* table = element.as_table();
      if (table == nullptr) {
        error(element, "config", "not a table");
        return false;
      }
      ConfigWordFacts word;
      const toml::node* field_table = nullptr;
      for (auto&& [key_name, value] : *table) {
        const std::string key = "config." + std::string(key_name.str());
        if (key_name.str() == "address") {
          word.address =
              number(value, key, kConfigWordAddress, kConfigSpaceBase + 0xFF, kConfigWordAddress);
        } else if (key_name.str() == "implemented") {
          word.implemented = static_cast<std::uint16_t>(number(value, key, 1, 0x3FFF, 0x3FFF));
        } else if (key_name.str() == "default") {
          word.default_word = static_cast<std::uint16_t>(number(value, key, 0, 0x3FFF, 0x3FFF));
        } else if (key_name.str() == "fields") {
          field_table = &value;  // checked against the implemented bits, whatever their order
        } else {
          error(value, key, "unknown key");
        }
      }
      if (field_table != nullptr) fields(*field_table, word);
      chip.config.push_back(word);
    }
    return true;
  }

  void fields(const toml::node& node, ConfigWordFacts& word) {
    const auto* table = node.as_table();
    if (table == nullptr) return error(node, "config.fields", "not a table of names and bits");
    for (auto&& [name, bits] : *table) {
      const std::string key = "config.fields." + std::string(name.str());
      const int value = number(bits, key, 1, 0x3FFF, 0);
      if (value != 0 && (value & ~word.implemented) != 0) {
        error(bits, key, "bits the word does not implement");
      }
      word.fields.push_back({std::string(name.str()), static_cast<std::uint16_t>(value)});
    }
  }

  void calibration(const toml::node& node, ChipDescription& chip) {
    const auto* table = node.as_table();
    if (table == nullptr) return error(node, "calibration", "not a table");
    CalibrationFacts facts;
    bool has_address = false;
    for (auto&& [key_name, value] : *table) {
      const std::string key = "calibration." + std::string(key_name.str());
      if (key_name.str() == "address") {
        facts.address = number(value, key, 0, 0x1FFF, 0);
        has_address = true;
      } else if (key_name.str() == "band_gap") {
        facts.band_gap = static_cast<std::uint16_t>(number(value, key, 0, 0x3FFF, 0));
      } else {
        error(value, key, "unknown key");
      }
    }
    if (!has_address) return error(node, "calibration.address", "missing");
    chip.calibration = facts;
  }

  void vpp(const toml::node& node, ChipDescription& chip) {
    const auto* range = node.as_array();
    if (range == nullptr || range->size() != 2) return error(node, "vpp", "not [min, max]");
    double volts[2] = {0, 0};
    for (std::size_t i = 0; i < 2; ++i) {
      const std::optional<double> value = (*range)[i].value<double>();
      if (!value) return error(node, "vpp", "not a number of volts");
      volts[i] = *value;
    }
    if (!(volts[0] > 0 && volts[0] < volts[1] && volts[1] <= 14.0)) {
      return error(node, "vpp", "not 0 < min < max <= 14 volts");
    }
    chip.vpp = std::pair{volts[0], volts[1]};
  }

  std::string path_;
  std::vector<DeviceFileError> errors_;
};

}  // namespace

std::string DeviceFileError::text() const {
  return path + ":" + std::to_string(line) + ": " + (key.empty() ? "" : key + ": ") + reason;
}

DeviceLibrary parse_device_file(std::string_view text, const std::string& path) {
  DeviceLibrary library;
  library.files.push_back(path);
  toml::table document;
  try {
    document = toml::parse(text, path);
  } catch (const toml::parse_error& failure) {
    library.errors.push_back({path, static_cast<int>(failure.source().begin.line), "",
                              std::string(failure.description())});
    return library;
  }
  Reader reader(path);
  ChipDescription family;
  family.source = path;
  Reader::Given family_given;
  for (auto&& [key, node] : document) {
    if (key.str() != "family" && key.str() != "chip") {
      reader.error(node, std::string(key.str()), "unknown table (family, chip)");
    }
  }
  if (const auto* table = document["family"].as_table()) {
    reader.apply(*table, family, family_given, false);
  }
  const auto* chips = document["chip"].as_array();
  if (chips == nullptr || chips->empty()) {
    reader.errors().push_back({path, 1, "chip", "no [[chip]] in the file"});
  } else {
    for (const toml::node& element : *chips) {
      const auto* table = element.as_table();
      if (table == nullptr) {
        reader.error(element, "chip", "not a table");
        continue;
      }
      ChipDescription chip = family;
      Reader::Given given = family_given;
      reader.apply(*table, chip, given, true);
      reader.check_complete(element, chip, given);
      chip.name = upper(chip.name);
      const bool repeated = std::any_of(library.chips.begin(), library.chips.end(),
                                        [&](const auto& other) { return other.name == chip.name; });
      if (repeated) reader.error(element, "name", chip.name + " is described twice");
      library.chips.push_back(std::move(chip));
    }
  }
  library.errors = std::move(reader.errors());
  if (!library.errors.empty()) library.chips.clear();
  return library;
}

namespace {

// A chip of a later file replaces the one of the same name; one whose ID
// another chip already answers to is refused, as an answer could not tell
// them apart.
void add_file(DeviceLibrary& library, DeviceLibrary file) {
  library.files.insert(library.files.end(), file.files.begin(), file.files.end());
  library.errors.insert(library.errors.end(), file.errors.begin(), file.errors.end());
  for (ChipDescription& chip : file.chips) {
    auto same = std::find_if(library.chips.begin(), library.chips.end(),
                             [&](const auto& other) { return other.name == chip.name; });
    if (same != library.chips.end()) library.chips.erase(same);
    const auto clash =
        std::find_if(library.chips.begin(), library.chips.end(), [&](const auto& other) {
          return chip.id && other.id && (other.answers(*chip.id) || chip.answers(*other.id));
        });
    if (clash != library.chips.end()) {
      library.errors.push_back(
          {chip.source, 0, "id", chip.name + " answers with the ID of " + clash->name});
      continue;
    }
    library.chips.push_back(std::move(chip));
  }
}

}  // namespace

DeviceLibrary load_device_library(const std::string& user_folder) {
  DeviceLibrary library;
  for (const ShippedDeviceFile& file : shipped_device_files()) {
    add_file(library, parse_device_file(file.text, "shipped/" + std::string(file.name)));
  }
  namespace fs = std::filesystem;
  std::error_code error;
  if (user_folder.empty() || !fs::is_directory(user_folder, error)) return library;
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(user_folder, error)) {
    if (entry.path().extension() == ".toml") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  for (const fs::path& path : paths) {
    const InputFile file = read_input_file(path.string(), kLargestDeviceFile);
    if (!file.ok) {
      library.errors.push_back({path.string(), 0, "", file.reason});
      continue;
    }
    add_file(library, parse_device_file(file.text, path.string()));
  }
  return library;
}

std::string user_device_folder() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && *config != '\0') return std::string(config) + "/zenta/devices";
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return std::string(home) + "/.config/zenta/devices";
  return "";
}

namespace {

std::mutex library_mutex;
std::shared_ptr<const DeviceLibrary>& library_slot() {
  static std::shared_ptr<const DeviceLibrary> slot;
  return slot;
}

}  // namespace

const DeviceLibrary& devices() {
  const std::lock_guard lock(library_mutex);
  auto& slot = library_slot();
  if (!slot) slot = std::make_shared<DeviceLibrary>(load_device_library(user_device_folder()));
  return *slot;
}

void use_device_library(DeviceLibrary library) {
  const std::lock_guard lock(library_mutex);
  library_slot() = std::make_shared<DeviceLibrary>(std::move(library));
}

std::optional<ChipDescription> chip_by_name(const std::string& name) {
  std::string wanted = upper(name);
  if (wanted.rfind("PIC", 0) == 0) wanted.erase(0, 3);
  for (const ChipDescription& chip : devices().chips) {
    if (chip.name == wanted) return chip;
  }
  return std::nullopt;
}

bool no_chip_answer(std::uint16_t id) {
  return id == 0x3FFF || id == 0x0000;
}

std::optional<ChipDescription> chip_by_id(std::uint16_t id) {
  if (no_chip_answer(id)) return std::nullopt;
  for (const ChipDescription& chip : devices().chips) {
    if (chip.answers(id)) return chip;
  }
  return std::nullopt;
}

std::vector<ChipDescription> entry_chips(int entry) {
  std::vector<ChipDescription> chips;
  for (const ChipDescription& chip : devices().chips) {
    if (chip.entry == entry) chips.push_back(chip);
  }
  return chips;
}

std::string entry_chip_names(int entry) {
  std::string names;
  for (const ChipDescription& chip : entry_chips(entry)) {
    names += (names.empty() ? "" : ", ") + chip.name;
  }
  return names;
}

}  // namespace zenta

// The simulated chip's memory file: any text is either refused or gives a
// chip whose file, written again, reads back to the same text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "link/sim/sim_unit.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  // The chip is named in the file; try the one it names when there is one.
  std::string chip = "16F84A";
  if (const auto at = text.find("chip "); at != std::string::npos) {
    const auto end = text.find_first_of("\r\n", at);
    const auto name = zenta::sim::find_chip(
        text.substr(at + 5, end == std::string::npos ? std::string::npos : end - at - 5));
    if (name && name->name != "none") chip = name->name;
  }
  zenta::sim::SimUnit unit(chip);
  const std::string before = unit.memory_text();
  if (!unit.load_text(text)) {
    if (unit.memory_text() != before) std::abort();  // a refused file changes nothing
    return 0;
  }
  const std::string saved = unit.memory_text();
  zenta::sim::SimUnit again(chip);
  if (!again.load_text(saved) || again.memory_text() != saved) std::abort();
  return 0;
}

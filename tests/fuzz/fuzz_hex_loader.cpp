// The panel's lenient HEX loader and the strict check, on any bytes: neither
// may touch memory outside the program image, and the check must agree with
// itself about what it found.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "image/hex_check.h"
#include "image/hex_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  {
    zenta::ProgrammerState state;
    std::istringstream in(text);
    const zenta::HexLoadReport report = zenta::load_hex_records(in, state);
    if (state.LastAddress < 0 || state.LastAddress > zenta::kProgramBufferWords) std::abort();
    if (report.ok && report.first_address < -1) std::abort();
  }
  const zenta::HexCheck check = zenta::check_hex_text(text, {0x800, 128, ""});
  // A file the check passes holds only cells of that chip, and the checked
  // loader, which applies address records, keeps inside the image with it.
  if (check.ok()) {
    zenta::ProgrammerState state;
    const zenta::HexLoadReport report =
        zenta::load_hex_text(text, state, {.extended_addresses = true});
    if (!report.ok || state.LastAddress < 0 || state.LastAddress > zenta::kProgramBufferWords) {
      std::abort();
    }
    for (const auto& [address, word] : check.program) {
      if (address < 0 || address >= 0x800 || word > 0x3FFF) std::abort();
    }
    for (const auto& [address, byte] : check.eeprom) {
      if (address < 0 || address >= 128) std::abort();
      (void)byte;
    }
  }
  return 0;
}

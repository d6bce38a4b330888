// The number readers of the text boxes, against their own rules: a value
// read back from the text written for it is that value.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/number_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto value = zenta::read_hex(text);
  const auto value16 = zenta::read_hex16(text);
  if (value16 && (!value || *value != *value16)) std::abort();
  if (value && *value >= 0) {
    const auto again = zenta::read_hex(zenta::hex_text(*value));
    if (!again || *again != *value) {
      // Four digits with the top bit set read back negative: only below 0x8000
      // or from five digits on is the text its own value.
      if (*value <= 0x7FFF || *value > 0xFFFF) std::abort();
    }
  }
  (void)zenta::leading_number(text);
  for (char c : text) (void)zenta::hex_digit(c);
  return 0;
}

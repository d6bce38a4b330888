// The command line: arguments are the input split at NUL bytes. Whatever
// they are, the parser answers with options or a reason, never both.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/args.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> args(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      args.emplace_back();
    } else {
      args.back().push_back(static_cast<char>(data[i]));
    }
  }
  const zenta::cli::ParseResult result = zenta::cli::parse_arguments(args);
  if (result.ok() && result.options.config && *result.options.config > 0x3FFF) std::abort();
  for (const std::string& arg : args) (void)zenta::cli::parse_hex_word(arg);
  return 0;
}

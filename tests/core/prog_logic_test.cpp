// Pure logic of programming: the catalogue's option patterns and device
// names.
#include <gtest/gtest.h>

#include "programming/config_word.h"
#include "programming/device_catalogue.h"
#include "programming/device_id.h"

namespace zenta {
namespace {

// Every option's value may set only bits its own mask clears, and no two
// options may clear the same bit; otherwise one option would undo another.
TEST(DeviceCatalogue, OptionPatternsAreDisjointAndInsideTheirMasks) {
  for (const DeviceRecord& r : DeviceCatalogue()) {
    SCOPED_TRACE(r.caption);
    const auto& p = r.patterns;
    const std::vector<std::vector<std::uint16_t>> options = {
        {p.OscMask, p.OscRC, p.OscHS, p.OscXT, p.OscLP},
        {p.WdtMask, p.WdtOn, p.WdtOff},
        {p.PutMask, p.PutOn, p.PutOff},
        {p.ProtectMask, p.ProtectOn, p.ProtectOff},
        {p.BorMask, p.BorOn, p.BorOff}};
    std::uint16_t cleared_so_far = 0;
    for (const auto& o : options) {  // the mask first, then the values
      const std::uint16_t cleared = ~o[0] & kConfigBits;
      EXPECT_EQ(cleared & cleared_so_far, 0);
      cleared_so_far |= cleared;
      for (std::size_t i = 1; i < o.size(); ++i) EXPECT_EQ(o[i] & ~cleared, 0) << std::hex << o[i];
    }
    EXPECT_EQ(config_word_from_text(r.default_config_text), r.default_config_word);
    EXPECT_LE(r.last_address + 1, r.program_size);
  }
}

TEST(DeviceId, NamesIgnoreTheRevision) {
  const std::pair<std::uint16_t, const char*> cases[] = {
      {0x09A3, "16F877"}, {0x0E27, "16F877A"}, {0x0E0F, "16F876A"}, {0x1100, "16F648A"},
      {0x0E35, "16F84"},  {0x89A3, "16F84"},   {0x3FFF, "16F84"}};
  for (auto [id, name] : cases) EXPECT_EQ(device_id_name(id), name) << std::hex << id;
}

}  // namespace
}  // namespace zenta

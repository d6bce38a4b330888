#pragma once
// File names the panel derives itself (blink.HEX, blink.ERR) were matched
// without regard to case on the system the panel comes from; the tools on
// other systems write them in their own case (gputils writes blink.hex).
#include <string>

namespace zenta {

// `path` itself when it exists; otherwise the entry of its folder whose name
// equals its last component without regard to case (the first in name order
// when several do); otherwise `path` unchanged.
std::string resolve_case_insensitive(const std::string& path);

}  // namespace zenta

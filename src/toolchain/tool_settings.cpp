#include "toolchain/tool_settings.h"

namespace zenta {

namespace {
#ifdef _WIN32
constexpr const char* kAsmFolder = "C:\\Program Files\\KRV_TOOLs\\ZENTA";
constexpr const char* kAsmCommand = "mpasmwin.exe /q /w2 /rdec /aINHX8M";
constexpr const char* kStartupCFolder = "C:PICCLITE";
constexpr const char* kSetupCFolder = "C:\\Program Files\\HI-TECH Software\\PICC-Lite\\9.50\\bin";
#else
// -k writes the error file; -q must not be given, or gpasm leaves the error
// file empty even when the source has errors.
constexpr const char* kAsmFolder = ZENTA_DATA_DIR;
constexpr const char* kAsmCommand = "gpasm -k -w2 -r dec -a inhx8m";
// No compiler folder: the compiler is looked up on the PATH.
constexpr const char* kStartupCFolder = "";
constexpr const char* kSetupCFolder = "";
#endif
constexpr const char* kCCommand = "picl -16F877 -Ecerr.txt";
}  // namespace

ToolSettings startup_tool_defaults() {
  return {kAsmFolder, kAsmCommand, kStartupCFolder, kCCommand, "", ""};
}

ToolSettings setup_tool_defaults() {
  return {kAsmFolder, kAsmCommand, kSetupCFolder, kCCommand, "", ""};
}

std::array<std::string, 6> tool_values(const ToolSettings& t) {
  return {t.AsmFolder, t.AsmCommand, t.CFolder, t.CCommand, t.EditorFolder, t.EditorCommand};
}

ToolSettings tools_from_values(const std::array<std::string, 6>& v) {
  return {v[0], v[1], v[2], v[3], v[4], v[5]};
}

}  // namespace zenta

# Writes OUT, a C++ source that holds each *.toml of DIR (the device
# descriptions) as text, so the programs need no data folder to know their
# chips.
#   cmake -DOUT=<file.cpp> -DDIR=<data/devices> -P embed_devices.cmake
file(GLOB FILES "${DIR}/*.toml")
list(SORT FILES)
set(body "// Made by cmake/embed_devices.cmake from data/devices; not edited by hand.\n")
string(APPEND body "#include \"devices/shipped_devices.h\"\n\nnamespace zenta {\n\n")
string(APPEND body "const std::vector<ShippedDeviceFile>& shipped_device_files() {\n")
string(APPEND body "  static const std::vector<ShippedDeviceFile> files = {\n")
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  file(READ "${file}" text)
  string(APPEND body "      {\"${name}\", R\"zenta_toml(${text})zenta_toml\"},\n")
endforeach()
string(APPEND body "  };\n  return files;\n}\n\n}  // namespace zenta\n")
file(WRITE "${OUT}.new" "${body}")
file(COPY_FILE "${OUT}.new" "${OUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUT}.new")

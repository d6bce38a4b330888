#!/usr/bin/env bash
# Installs what the build and the tests need on Debian, when it is missing.
set -euo pipefail
packages=(build-essential cmake ninja-build pkg-config qt6-base-dev libgl-dev
  libusb-1.0-0-dev libcli11-dev nlohmann-json3-dev libtomlplusplus-dev gputils libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth clang-format clang libclang-rt-14-dev
  umockdev libumockdev-dev sigrok-cli dpkg-dev desktop-file-utils locales)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  echo "Installing: ${missing[*]}"
  $sudo apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

#!/usr/bin/env bash
# Configures and builds everything in ./build, and stages an install in
# ./build/stage so the panel finds its help file without a system install.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" \
  -DCMAKE_INSTALL_PREFIX="$PWD/build/stage"
cmake --build build -j"$(nproc)"
cmake --install build >/dev/null

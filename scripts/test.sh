#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh -DZENTA_WERROR=ON
cd build
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"
cd ..
# Each fuzz target for about 15 s on the kept corpus; a crash fails the run.
bash scripts/fuzz.sh

#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test; then checks the
# formatting, and runs the suite again in a clang build under the address
# and undefined-behaviour sanitizers (scripts/sanitize.sh, in build-asan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh -DZENTA_WERROR=ON
(cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)")
format=0
bash scripts/format-check.sh || format=$?
bash scripts/sanitize.sh
# Each fuzz target for about 15 s on the kept corpus; a crash fails the run.
bash scripts/fuzz.sh
if [ "$format" -ne 0 ]; then
  echo "Sources are not formatted: run clang-format -i on the files above." >&2
  exit 1
fi

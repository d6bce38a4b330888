#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test; then checks the
# formatting, and runs the suite again in a clang build under the address
# and undefined-behaviour sanitizers (scripts/sanitize.sh, in build-asan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh -DZENTA_WERROR=ON
(cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)" | tee ctest.log)
format=0
bash scripts/format-check.sh || format=$?
bash scripts/sanitize.sh
# Each fuzz target for about 15 s on the kept corpus; a crash fails the run.
bash scripts/fuzz.sh
if [ "$format" -ne 0 ]; then
  echo "Sources are not formatted: run clang-format -i on the files above." >&2
  exit 1
fi
# The suite's count last, where a reader of the log looks first.
total=$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\).*/\2/p' build/ctest.log)
failed=$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\).*/\1/p' build/ctest.log)
echo "tests: $((total - failed)) passed, $failed failed"

#!/usr/bin/env bash
# Fails when a source file is not formatted as .clang-format says; lists
# what clang-format would change.
set -euo pipefail
cd "$(dirname "$0")/.."
find src tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format --dry-run --Werror

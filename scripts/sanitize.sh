#!/usr/bin/env bash
# Builds everything with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer in ./build-asan and runs the whole suite there.
# The first report of either ends its program with a failure, so any report
# fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
repo="$PWD"
flags="-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all"
# The test programs also run while they build (test discovery), so the
# options hold for the build as well as for ctest.
export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1:strict_string_checks=1:check_initialization_order=1:detect_stack_use_after_return=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$repo/scripts/lsan.supp:print_suppressions=0"
# -O1 keeps the suite quick; the sanitizers need no more.
CC=clang CXX=clang++ cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" -DZENTA_WERROR=ON -DZENTA_BENCH=OFF "$@"
cmake --build build-asan -j"$(nproc)"
cd build-asan
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"

#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz and runs each for a
# bounded time on the corpus kept in tests/fuzz/corpus. Fails on a crash.
# FUZZ_SECONDS sets the time per target (15 by default).
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang++ not found, fuzzing skipped"
  exit 0
fi
seconds="${FUZZ_SECONDS:-15}"
flags="-fsanitize=address,undefined,fuzzer-no-link -fno-sanitize-recover=undefined -g -O1"
cmake -S . -B build-fuzz -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS="$flags" -DZENTA_FUZZ=ON \
  -DZENTA_GUI=OFF -DZENTA_USB=OFF -DZENTA_WERROR=ON >/dev/null
targets=(fuzz_hex_loader fuzz_sim_memory fuzz_args fuzz_numbers)
nice cmake --build build-fuzz -j2 --target "${targets[@]}"
status=0
for target in "${targets[@]}"; do
  corpus="tests/fuzz/corpus/${target#fuzz_}"
  work="build-fuzz/corpus/${target#fuzz_}"
  mkdir -p "$work" "build-fuzz/crashes"
  # New inputs go to the build folder; the repository's corpus stays as it is.
  if ! "build-fuzz/tests/fuzz/$target" -max_total_time="$seconds" -max_len=4096 \
      -artifact_prefix="build-fuzz/crashes/$target-" -print_final_stats=1 \
      "$work" "$corpus" 2>"build-fuzz/$target.log"; then
    echo "fuzz: $target found a crash:"
    grep -E "ERROR|SUMMARY|Test unit written" "build-fuzz/$target.log" || tail -20 "build-fuzz/$target.log"
    status=1
  fi
  runs=$(grep -oE "stat::number_of_executed_units: *[0-9]+" "build-fuzz/$target.log" | grep -oE "[0-9]+$" || echo "?")
  echo "fuzz: $target ran $runs inputs in ${seconds} s"
done
exit "$status"

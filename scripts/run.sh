#!/usr/bin/env bash
# Installs what is missing, builds, and starts the panel on the simulated
# unit. Without a display, the same job runs through the command line.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
export ZENTA_UNIT="${ZENTA_UNIT:-sim:16F877A}"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec ./build/stage/bin/zenta-panel
fi
echo "No display found: running the same job through the command line (zenta) instead."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
gpasm -o "$work/blink.hex" examples/blink.asm >/dev/null
./build/stage/bin/zenta version
./build/stage/bin/zenta --device 16F87xA --sim-memory "$work/chip.txt" id
./build/stage/bin/zenta --device 16F87xA --sim-memory "$work/chip.txt" write "$work/blink.hex"
./build/stage/bin/zenta --device 16F87xA --sim-memory "$work/chip.txt" read --last 10

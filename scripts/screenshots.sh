#!/usr/bin/env bash
# Pictures of the panel's windows on the simulated unit, for the README and
# for checking the layout by eye: runs zenta-panel under Xvfb with
# ZENTA_SCREENSHOTS set, which opens each window, saves it and ends.
#
#   scripts/screenshots.sh [BUILD_DIR] [OUT_DIR]
#
# BUILD_DIR defaults to build, OUT_DIR to BUILD_DIR/screenshots. The main
# window with its test area open is also copied to docs/screenshot-main.png,
# the error window of a failed assembly to docs/screenshot-errview.png.
# Needs xvfb (xvfb-run). The user's own settings are not touched: the run
# keeps its settings in a folder of its own, with the help folder set to
# the source tree's data folder.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$repo/build}"
[[ -d "$build" ]] || { echo "no build folder $build" >&2; exit 2; }
build="$(cd "$build" && pwd)"
out="${2:-$build/screenshots}"
mkdir -p "$out"
out="$(cd "$out" && pwd)"
panel="$build/src/zenta-panel"
[[ -x "$panel" ]] || { echo "no $panel: build the panel first" >&2; exit 2; }
command -v xvfb-run >/dev/null || { echo "xvfb-run is missing (apt-get install xvfb xauth)" >&2; exit 2; }

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config/ZENTA"
cat >"$work/config/ZENTA/ZENTA.conf" <<CONF
[DATA]
DEVICE=1
F_ASM=$repo/data
CMD_ASM=gpasm -k -w2 -r dec -a inhx8m
F_C=
CMD_C=picl -16F877 -Ecerr.txt
F_EDIT=
CMD_EDIT=
CONF

(cd "$work" && XDG_CONFIG_HOME="$work/config" XDG_RUNTIME_DIR="$work" ZENTA_UNIT=sim \
  ZENTA_SCREENSHOTS="$out" timeout 120 xvfb-run -a -s "-screen 0 1280x1024x24" "$panel")

cp "$out/main.png" "$repo/docs/screenshot-main.png"
cp "$out/errview.png" "$repo/docs/screenshot-errview.png"
ls "$out"

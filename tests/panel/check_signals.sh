#!/usr/bin/env bash
# zenta-panel ends on SIGTERM, SIGHUP and SIGINT as closing its window does,
# with its trace on disk to the last exchange (the start-up's LED off).
#   check_signals.sh PANEL
set -u
panel=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work XDG_RUNTIME_DIR=$work QT_QPA_PLATFORM=offscreen ZENTA_UNIT=sim
for signal in TERM HUP INT; do
  export ZENTA_TRACE=$work/$signal.trace
  "$panel" >"$work/out" 2>&1 &
  pid=$!
  # Up and idle: the start-up's last exchange is in the trace once it is flushed.
  for _ in $(seq 50); do
    grep -q "^TX 3B 00" "$ZENTA_TRACE" 2>/dev/null && break
    sleep 0.1
  done
  kill -"$signal" "$pid"
  for _ in $(seq 100); do
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  if kill -0 "$pid" 2>/dev/null; then
    kill -KILL "$pid"
    echo "zenta-panel ignored SIG$signal" >&2
    exit 1
  fi
  wait "$pid"
  status=$?
  if [ "$status" -ne 0 ]; then
    echo "SIG$signal ended zenta-panel with status $status instead of closing it" >&2
    exit 1
  fi
  if [ "$(tail -n 1 "$ZENTA_TRACE" | cut -c1-5)" != "TX 3B" ]; then
    echo "SIG$signal: the trace does not end with the start-up's LED off:" >&2
    tail -n 3 "$ZENTA_TRACE" >&2
    exit 1
  fi
done
echo "zenta-panel ends on SIGTERM, SIGHUP and SIGINT"

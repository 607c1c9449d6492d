#!/usr/bin/env bash
# A marker left by the previous run's shutdown gives the relief line and is removed.
source "$(dirname "$0")/e2e_lib.sh"
mkdir -p "$DATA"
printf '%s' '{"at":"2026-11-14T23:47:13Z","peakC":108,"reason":"emergency countdown reached 0"}' >"$MARKER"
start_monitor

wait_for_line "stage-c: marker found at launch (shutdown at 2026-11-14T23:47:13Z, peak ladder 108); showing relief; marker cleared" 5
[[ ! -f "$MARKER" ]] || fail "the marker was not removed"
stop_monitor
pass

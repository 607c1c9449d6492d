#!/usr/bin/env bash
# SIGTERM during the countdown ends the run cleanly, with no shutdown and no marker.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor --consent on

wait_for_line "stage-c: event cue remaining=5" 10
stop_monitor
expect_no_line "stage-c: marker written"
expect_no_line "shutdown: DRY-RUN: would run"
[[ ! -f "$MARKER" ]] || fail "a marker was left behind"
pass

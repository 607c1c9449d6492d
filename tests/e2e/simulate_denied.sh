#!/usr/bin/env bash
# A refused permission: the probe says so, the shutdown fails and the manual notice shows.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor --consent on --simulate-denied

wait_for_line "stage-c: automation permission: DENIED (" 5
wait_for_line "stage-c: ERROR shutdown failed: " 15
wait_for_line "ui: mode count -> manual" 5
expect_line "shutdown: DRY-RUN: would run logind"
[[ ! -f "$MARKER" ]] || fail "the marker was not cleared after the failed shutdown"
grep -q "page manual" "$OUT" || fail "the terminal output does not show the manual notice"
stop_monitor
pass

#!/usr/bin/env bash
# A test emergency runs the simulation to its end and never leaves a marker.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor --test-emergency

deadline=$((SECONDS + 25))
until (($(count_lines "stage-c SIMULATION: complete. shutdown was NOT called.") > 0)); do
  ((SECONDS < deadline)) || fail "the simulation did not complete within 25s"
  [[ ! -f "$MARKER" ]] || fail "a marker appeared during the simulation"
  sleep 0.1
done
expect_line "stage-c: SIMULATION started (4s Stage B lead-in + 10s countdown). NO shutdown will be run."
expect_line "stage-c SIMULATION: event countdown-start remaining=10"
expect_no_line "stage-c: marker written"
expect_no_line "shutdown: DRY-RUN: would run"
[[ ! -f "$MARKER" ]] || fail "a marker was left behind"
stop_monitor
pass

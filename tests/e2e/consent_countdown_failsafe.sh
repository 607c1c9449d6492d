#!/usr/bin/env bash
# With consent: the countdown, four muted ticks, the marker, the dry-run shutdown, and the
# failsafe 30 s after the call, which clears the marker.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor --consent on

wait_for_line "stage-c: event countdown-start remaining=10" 5
wait_for_line "stage-c: marker written $MARKER" 15
[[ -f "$MARKER" ]] || fail "the marker file did not appear"
expect_line "shutdown: DRY-RUN: would run logind"
before_fire=$(messages | sed -n '/stage-c: event fire/q;p' | grep -c -F "sound: tick (muted)" || true)
((before_fire == 4)) || fail "expected 4 muted ticks before the shutdown call, got $before_fire"

wait_for_line "stage-c: still running 30s after the shutdown call; assuming the shutdown did not happen; clearing marker" 40
[[ ! -f "$MARKER" ]] || fail "the marker was not cleared by the failsafe"
expect_gap "$(time_of "stage-c: still running 30s")" "$(time_of "shutdown: DRY-RUN: would run")" 29.5 31.5
stop_monitor
pass

#!/usr/bin/env bash
# Without consent: no countdown, and the muted alarm repeats every 15 s.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor

wait_for_count "sound: alarm (muted)" 2 25
expect_gap "$(time_of "sound: alarm (muted)" 2)" "$(time_of "sound: alarm (muted)" 1)" 14.5 16
expect_no_line "stage-c: event countdown-start"
expect_no_line "stage-c: marker written"
stop_monitor
pass

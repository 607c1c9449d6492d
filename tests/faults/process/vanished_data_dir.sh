#!/usr/bin/env bash
# The whole data directory is deleted during the countdown: the stored consent stays in force
# and the shutdown is called on time. The log went with the directory, so the time is taken
# from the status output as it arrives.
source "$(dirname "$0")/fault_lib.sh"
store_consent
start_stamped_monitor

wait_for_status "state countdown" 10
sleep 2
rm -rf "$DATA"
wait_for_status "state fired" 15
expect_gap "$(status_time "state fired")" "$(status_time "state countdown")" 9.5 11
expect_no_line "stage-c: event abort"
running "$PID" || fail "the watchdog ended"
stop_within 2
pass

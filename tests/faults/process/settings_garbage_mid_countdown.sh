#!/usr/bin/env bash
# The settings file turns into garbage during the countdown: the last good settings stay in
# force (said once in the log) and the shutdown is called on time.
source "$(dirname "$0")/fault_lib.sh"
store_consent
start_monitor

wait_for_line "stage-c: event countdown-start remaining=10" 10
sleep 2
printf '{ "autoShutdown": tru' >"$SETTINGS"
sleep 1
printf 'garbage, again' >"$SETTINGS"
expect_shutdown_on_time
(($(count_lines "does not hold valid settings; keeping autoShutdown=true consentRecorded=true") == 1)) ||
  fail "expected the unusable settings file to be logged exactly once"
expect_no_line "stage-c: event abort"
stop_monitor
pass

#!/usr/bin/env bash
# Every open of the settings file takes 6 s. Start-up does not wait for it, the countdown starts
# once the stored consent has been read, and a re-read during the countdown (the file rewritten)
# does not delay the shutdown call.
source "$(dirname "$0")/fault_lib.sh"
need_strace
store_consent
start_traced_monitor -P "$SETTINGS" -e trace=open,openat -e inject=open,openat:delay_enter=6s --

wait_for_line "stage-c: the settings file is slow to read; no automatic shutdown until it has been read" 10
wait_for_line "stage-c: settings changed: autoShutdown=true consentRecorded=true enabled=true" 15
wait_for_line "stage-c: event countdown-start remaining=10" 5
sleep 1
store_consent  # the same consent, written again: the file is read again, slowly
expect_shutdown_on_time
expect_no_line "stale"
stop_within 2
pass

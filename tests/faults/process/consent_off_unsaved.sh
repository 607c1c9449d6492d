#!/usr/bin/env bash
# Consent "on" is stored, the user answers "--consent off", and the answer cannot be saved
# (every rename fails, as on a read-only file system): the "off" holds for the whole run, also
# after the old file is read again, so the emergency never calls the shutdown.
source "$(dirname "$0")/fault_lib.sh"
need_strace
store_consent
start_traced_monitor -e trace=rename,renameat,renameat2 \
  -e inject=rename,renameat,renameat2:error=EROFS -- --consent off

wait_for_line "stage-c: ERROR saving consent: " 10
wait_for_line "stage-c: the answer holds until quit: autoShutdown=false enabled=false" 5
sleep 2
store_consent  # the old "yes" once more: read again, and overruled
wait_for_line "holds other settings than this run's unsaved answer; keeping autoShutdown=false" 10
sleep 11
expect_no_line "stage-c: event countdown-start"
expect_no_line "shutdown: DRY-RUN: would run"
grep -q -F "could not save the consent answer" "$OUT" || fail "no word on the terminal: $(cat "$OUT")"
grep -q '"autoShutdown": true' "$SETTINGS" || fail "the stored file changed after all"
stop_within 2
pass

#!/usr/bin/env bash
# SIGTERM while a file operation is stalled (a marker flush of 20 s; a settings open of 20 s
# at start-up) still ends the process within two seconds.
source "$(dirname "$0")/fault_lib.sh"
need_strace
store_consent
start_traced_monitor -e trace=fsync,fdatasync -e inject=fsync,fdatasync:delay_enter=20s:when=1 --
wait_for_line "stage-c: event countdown-start remaining=10" 10
wait_for_line "shutdown: DRY-RUN: would run" 15
sleep 0.5
stop_within 2

: >"$LOG"
start_traced_monitor -P "$SETTINGS" -e trace=open,openat -e inject=open,openat:delay_enter=20s --
wait_for_line "stage-c: the settings file is slow to read" 10
sleep 1
stop_within 2
expect_no_line "shutdown: DRY-RUN: would run"
pass

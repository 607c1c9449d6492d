#!/usr/bin/env bash
# A disk whose flush takes 20 s: the marker is written beside the shutdown call, which comes
# on time; the log says that the call did not wait, and later that the marker was written.
source "$(dirname "$0")/fault_lib.sh"
need_strace
store_consent
start_traced_monitor -e trace=fsync,fdatasync -e inject=fsync,fdatasync:delay_enter=20s:when=1 -- 

wait_for_line "stage-c: event countdown-start remaining=10" 10
expect_shutdown_on_time
expect_line "stage-c: WARNING marker not written after 500 ms (slow disk); calling the shutdown without waiting for it"
wait_for_line "stage-c: marker written $MARKER (peak ladder 108) after the shutdown call" 30
[[ -f "$MARKER" ]] || fail "the marker file is missing"
stop_within 2
pass

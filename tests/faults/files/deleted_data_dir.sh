#!/usr/bin/env bash
# The data directory is deleted while the watchdog runs: it is created again, private to the
# user, and logging goes on.
source "$(dirname "$0")/faults_lib.sh"
mkdir -p "$DATA"
start_plain
wait_for_line "stage-c: settings loaded" 5
rm -rf "$DATA"
sleep 0.5
kill -0 "$PID" || fail "the watchdog ended when its data directory was deleted"
stop_monitor # expects "---- quit" as the last line of a heat.log that exists again
[[ $(stat -c %a "$DATA") == 700 ]] || fail "the re-created data directory is not private"
pass

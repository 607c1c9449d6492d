#!/usr/bin/env bash
# A file-size limit that the log has already reached: writing the log fails from the start,
# but the watchdog lives on and calls the shutdown on time (seen on its status output), and
# the small marker is still written.
source "$(dirname "$0")/fault_lib.sh"
store_consent
head -c 100000 /dev/zero | tr '\0' 'x' >"$LOG"
start_stamped_monitor_limited() {
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" prlimit --fsize=100000 -- "$EXE" --headless \
    --data-dir "$DATA" --dry-run-shutdown --mute --force-thermal critical \
    2>"$OUT" > >(stamp_lines >"$STAMPED") &
  PID=$!
}
start_stamped_monitor_limited

wait_for_status "state countdown" 10
wait_for_status "state fired" 15
expect_gap "$(status_time "state fired")" "$(status_time "state countdown")" 9.5 11
sleep 1
[[ -f "$MARKER" ]] || fail "the marker was not written"
(($(stat -c %s "$LOG") == 100000)) || fail "the log grew past the limit"
running "$PID" || fail "the watchdog ended"
stop_within 2
pass

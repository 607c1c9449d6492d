#!/usr/bin/env bash
# A second watchdog on the same data directory, started while the first has just called the
# shutdown: it says who is running, exits 1 and touches nothing (no log line, the marker kept).
source "$(dirname "$0")/fault_lib.sh"
store_consent
start_monitor

wait_for_line "stage-c: event countdown-start remaining=10" 10
expect_shutdown_on_time
[[ -f "$MARKER" ]] || fail "the first watchdog wrote no marker"
sleep 0.5
# The first watchdog may go on logging (its every-tenth-sample line); the second adds nothing.
log_bytes=$(stat -c %s "$LOG")
log_before=$(md5sum <"$LOG")
launches_before=$(count_lines " launched (")
marker_before=$(md5sum <"$MARKER")
status=0
HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" timeout 20 "$EXE" --headless --data-dir "$DATA" \
  --dry-run-shutdown --mute --force-thermal critical >"$WORK/second.out" 2>"$WORK/second.err" || status=$?
((status == 1)) || fail "the second watchdog ended with status $status, not 1"
grep -q -F "already running (pid $PID)" "$WORK/second.err" || fail "second: $(cat "$WORK/second.err")"
[[ -f "$MARKER" ]] || fail "the second watchdog deleted the marker"
[[ "$(md5sum <"$MARKER")" == "$marker_before" ]] || fail "the marker changed"
[[ "$(head -c "$log_bytes" "$LOG" | md5sum)" == "$log_before" ]] || fail "the log was rewritten"
(($(count_lines " launched (") == launches_before)) || fail "the second watchdog wrote to the log"
if tail -c +"$((log_bytes + 1))" "$LOG" | grep -v -F "live: thermal=" | grep -q .; then
  fail "the second watchdog wrote to the log: $(tail -c +"$((log_bytes + 1))" "$LOG")"
fi
running "$PID" || fail "the first watchdog ended"
(($(count_lines "shutdown: DRY-RUN: would run") == 1)) || fail "the shutdown was called again"
stop_monitor
pass

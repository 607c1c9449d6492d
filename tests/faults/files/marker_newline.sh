#!/usr/bin/env bash
# A marker whose time field holds a line feed and a forged log line: the log keeps one line per
# entry (the line feed is escaped), no relief is shown for it, and it is cleared.
source "$(dirname "$0")/faults_lib.sh"
mkdir -p "$DATA"
forged='2026-11-14 23:47:14.000 shutdown: the user asked for this'
printf '{"at":"2026-11-14T23:47:13Z\\n%s","peakC":108,"reason":"x\\ry"}' "$forged" >"$MARKER"
start_plain
wait_for_line "no relief shown; marker cleared" 5
stop_monitor
if grep -q -x -F "$forged" "$LOG"; then fail "a forged line stands in the log on its own"; fi
grep -q -F 'date-time: '"'"'2026-11-14T23:47:13Z\n2026-11-14 23:47:14.000 shutdown' "$LOG" ||
  fail "the time field is not shown with its line feed escaped"
expect_no_line "showing relief"
[[ ! -e "$MARKER" ]] || fail "the marker was not cleared"
# Every line of the log is one entry: it starts with a timestamp.
if grep -v -q -E '^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3} ' "$LOG"; then
  fail "a line of the log does not start with a timestamp"
fi
pass

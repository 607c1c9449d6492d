#!/usr/bin/env bash
# The launch after an emergency power-off finds a log of 1,000,001 bytes: it is rotated to
# heat.log.1, so the record of the shutdown survives, and the new heat.log starts with the
# banner and the relief.
source "$(dirname "$0")/faults_lib.sh"
mkdir -p "$DATA"
start_plain --consent on --force-thermal critical
wait_for_line "stage-c: marker written $MARKER" 20
kill -KILL "$PID" # the power goes: no quit line
wait "$PID" 2>/dev/null || true
PID=""
[[ -f "$MARKER" ]] || fail "no marker after the emergency"
record=$(grep -F "stage-c: marker written" "$LOG")
# Pad the log before the shutdown record to exactly 1,000,001 bytes.
size=$(stat -c %s "$LOG")
{ head -c $((1000001 - size - 1)) /dev/zero | tr '\0' 'x'; echo; cat "$LOG"; } >"$WORK/padded"
mv "$WORK/padded" "$LOG"
[[ $(stat -c %s "$LOG") == 1000001 ]] || fail "the padded log is not 1,000,001 bytes"

start_plain
wait_for_line "showing relief; marker cleared" 5
stop_monitor
[[ -f "$DATA/heat.log.1" ]] || fail "heat.log.1 was not kept"
grep -q -x -F "$record" "$DATA/heat.log.1" || fail "the shutdown record is not in heat.log.1"
[[ $(stat -c %s "$DATA/heat.log.1") == 1000001 ]] || fail "heat.log.1 is not the whole old log"
[[ "$(messages | head -n 1)" == "---- Velmora Heat Monitor 1.1 launched"* ]] ||
  fail "the new log does not start with the banner"
pass

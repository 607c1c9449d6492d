#!/usr/bin/env bash
# The status output goes into a pipe whose reader leaves after the first line (as with
# `velmora-heat-monitor | head -n1`): the watchdog goes on and calls the shutdown on time.
source "$(dirname "$0")/fault_lib.sh"
store_consent
mkfifo "$WORK/status.fifo"
head -n 1 <"$WORK/status.fifo" >"$WORK/head.txt" &
reader=$!
mkdir -p "$DATA"
HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" "$EXE" --headless --data-dir "$DATA" \
  --dry-run-shutdown --mute --force-thermal critical >"$WORK/status.fifo" 2>"$OUT" &
PID=$!
wait "$reader"

wait_for_line "stage-c: event countdown-start remaining=10" 10
expect_shutdown_on_time
running "$PID" || fail "the watchdog ended"
[[ -s "$WORK/head.txt" ]] || fail "the reader got no line"
stop_monitor
pass

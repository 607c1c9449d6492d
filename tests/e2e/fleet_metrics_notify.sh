#!/usr/bin/env bash
# A consented emergency as a fleet sees it: the metrics file shows the level, the countdown and
# the counters, and the service manager hears READY=1, STATUS= and WATCHDOG=1.
source "$(dirname "$0")/e2e_lib.sh"
PROM="$WORK/velmora.prom"
NOTES="$WORK/notify.txt"
SOCKET="$WORK/notify.sock"

# A stand-in for systemd's notification socket: every datagram becomes one line.
python3 -c '
import socket, sys
s = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
s.bind(sys.argv[1])
with open(sys.argv[2], "a") as out:
    while True:
        out.write(s.recv(4096).decode().replace("\n", "|") + "\n")
        out.flush()
' "$SOCKET" "$NOTES" &
LISTENER=$!
trap 'kill $LISTENER 2>/dev/null || true; cleanup' EXIT
for _ in $(seq 50); do [[ -S "$SOCKET" ]] && break; sleep 0.1; done

NOTIFY_SOCKET="$SOCKET" WATCHDOG_USEC=2000000 start_monitor --consent on --metrics-file "$PROM"

# Waits until the metrics file has a line starting with TEXT.
wait_for_metric() {
  local text=$1 deadline=$((SECONDS + $2))
  until [[ -f "$PROM" ]] && grep -q -F -x -- "$text" "$PROM"; do
    ((SECONDS < deadline)) || { cat "$PROM" >&2 2>/dev/null; fail "no metric line '$text'"; }
    sleep 0.1
  done
}

wait_for_line "stage-c: event cue remaining=5" 15
wait_for_metric "velmora_heat_level 4" 3
wait_for_metric "velmora_countdowns_total 1" 3
wait_for_metric "velmora_emergencies_total 1" 3
wait_for_metric "velmora_thermal_state_forced 1" 3
wait_for_metric 'velmora_thermal_state{state="critical"} 1' 3
grep -q "^velmora_countdown_remaining_seconds [0-9]" "$PROM" || fail "no countdown in the file"
grep -q "^velmora_shutdown_calls_total" "$PROM" && grep -q "^velmora_shutdown_calls_total 0$" "$PROM" ||
  fail "a shutdown was counted before the countdown ended"

wait_for_line "shutdown: DRY-RUN: would run" 10
wait_for_metric "velmora_shutdown_calls_total 1" 3
[[ -z "$(find "$WORK" -maxdepth 1 -name '.velmora.prom.tmp-*')" ]] ||
  fail "a temporary metrics file was left behind"

grep -q "^READY=1|STATUS=" "$NOTES" || fail "no READY=1 with a status: $(cat "$NOTES")"
grep -q "STATUS=EMERGENCY · " "$NOTES" || fail "no EMERGENCY status: $(cat "$NOTES")"
grep -q "^WATCHDOG=1$" "$NOTES" || fail "no watchdog ping: $(cat "$NOTES")"
stop_monitor
# The listener writes what it receives a moment later.
for _ in $(seq 50); do grep -q "^STOPPING=1$" "$NOTES" && break; sleep 0.1; done
grep -q "^STOPPING=1$" "$NOTES" || fail "no STOPPING=1 at the end: $(cat "$NOTES")"
pass

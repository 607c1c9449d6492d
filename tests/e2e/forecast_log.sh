#!/usr/bin/env bash
# The time-to-critical forecast in the real watchdog: a CPU sensor that climbs a degree a second
# toward its 105 °C emergency limit gives one "forecast: critical in about" line and an ETA in
# the metrics file; once it levels off far below, one "no longer heading" line and no ETA. The
# state stays far from critical, so nothing counts down.
source "$(dirname "$0")/e2e_lib.sh"

TREE="$WORK/tree"
CHIP="$TREE/sys/class/hwmon/hwmon0"
PROM="$WORK/velmora.prom"
mkdir -p "$CHIP"
printf 'coretemp\n' >"$CHIP/name"
printf 'Package id 0\n' >"$CHIP/temp1_label"
printf '60000\n' >"$CHIP/temp1_input"
printf '105000\n' >"$CHIP/temp1_emergency"

# The sensor's course, written in place once a second (the watchdog keeps the file open):
# 60 °C, then a degree a second up to 88 °C, then held there.
climb() {
  local celsius=60
  while :; do
    printf '%s\n' $((celsius * 1000)) >"$CHIP/temp1_input"
    ((celsius < 88)) && celsius=$((celsius + 1))
    sleep 1
  done
}

mkdir -p "$DATA"
HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" VELMORA_ROOT="$TREE" "$EXE" --headless \
  --data-dir "$DATA" --dry-run-shutdown --mute --metrics-file "$PROM" >"$OUT" 2>&1 &
PID=$!
climb &
CLIMB=$!
trap 'kill "$CLIMB" 2>/dev/null || true; cleanup' EXIT

wait_for_line "forecast: critical in about " 40
line=$(messages | grep -F "forecast: critical in about ")
[[ "$line" =~ ^forecast:\ critical\ in\ about\ [0-9]+\ s\ \(CPU\ [0-9]+\ °C,\ rising\ .*\;\ limit\ 105\ °C\)$ ]] ||
  fail "unexpected forecast line: $line"
# The metrics file follows the samples: the ETA is there by the next one.
deadline=$((SECONDS + 5))
until grep -q '^velmora_critical_eta_seconds [0-9]' "$PROM"; do
  ((SECONDS < deadline)) || fail "no velmora_critical_eta_seconds in the metrics file"
  sleep 0.2
done

wait_for_line "forecast: no longer heading for critical (CPU 8" 60
(($(count_lines "forecast: critical in about ") == 1)) || fail "the critical forecast was logged more than once"
deadline=$((SECONDS + 5))
while grep -q '^velmora_critical_eta_seconds' "$PROM"; do
  ((SECONDS < deadline)) || fail "velmora_critical_eta_seconds is still in the metrics file"
  sleep 0.2
done
expect_no_line "countdown-start"
messages | grep -F "forecast:"
kill "$CLIMB"
stop_monitor
pass

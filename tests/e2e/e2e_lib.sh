#!/usr/bin/env bash
# Helpers for driving the real executable headless in a fresh data directory and reading its
# log. Each case script sources this file and gets the executable's path as its argument.
set -euo pipefail

EXE=${1:?usage: case script <path to velmora-heat-monitor>}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/velmora-e2e.XXXXXX")
DATA="$WORK/data"
LOG="$DATA/heat.log"
MARKER="$DATA/auto-shutdown.marker"
OUT="$WORK/stdout.txt"
PID=""

cleanup() {
  if [[ -n "$PID" ]] && kill -0 "$PID" 2>/dev/null; then kill -KILL "$PID" 2>/dev/null || true; fi
  rm -rf "$WORK"
}
trap cleanup EXIT

fail() {
  echo "FAIL: $*" >&2
  if [[ -f "$LOG" ]]; then echo "---- heat.log" >&2; cat "$LOG" >&2; fi
  if [[ -f "$OUT" ]]; then echo "---- stdout" >&2; cat "$OUT" >&2; fi
  exit 1
}

# Starts the watchdog headless with the switches every case shares plus the given ones.
start_monitor() {
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" "$EXE" --headless --data-dir "$DATA" \
    --dry-run-shutdown --mute --force-thermal critical "$@" >"$OUT" 2>&1 &
  PID=$!
}

# The log's messages without their timestamps.
messages() { [[ -f "$LOG" ]] && cut -c25- "$LOG" || true; }

count_lines() { messages | grep -c -F -- "$1" || true; }

# Waits until at least N messages contain TEXT, or fails after SECONDS.
wait_for_count() {
  local text=$1 wanted=$2 seconds=$3
  local deadline=$((SECONDS + seconds))
  while (($(count_lines "$text") < wanted)); do
    ((SECONDS < deadline)) || fail "no $wanted line(s) with '$text' within ${seconds}s"
    kill -0 "$PID" 2>/dev/null || fail "the watchdog ended early while waiting for '$text'"
    sleep 0.1
  done
}

wait_for_line() { wait_for_count "$1" 1 "$2"; }

# Seconds since the epoch of the Nth (1-based) message containing TEXT.
time_of() {
  local text=$1 nth=${2:-1} stamp
  stamp=$(grep -F -- "$text" "$LOG" | sed -n "${nth}p" | cut -c1-23)
  [[ -n "$stamp" ]] || fail "no line $nth with '$text'"
  date -d "$stamp" +%s.%3N
}

# Fails unless A - B lies within [LOW, HIGH] seconds.
expect_gap() {
  local a=$1 b=$2 low=$3 high=$4
  awk -v a="$a" -v b="$b" -v lo="$low" -v hi="$high" \
    'BEGIN { d = a - b; exit !(d >= lo && d <= hi) }' ||
    fail "expected a gap of ${low}-${high}s, got $(awk -v a="$a" -v b="$b" 'BEGIN{print a-b}')s"
}

expect_line() { (($(count_lines "$1") >= 1)) || fail "expected a line with '$1'"; }
expect_no_line() { (($(count_lines "$1") == 0)) || fail "expected no line with '$1'"; }

# Ends the run with SIGTERM and expects a clean exit with the quit line last.
stop_monitor() {
  kill -TERM "$PID"
  local status=0
  wait "$PID" || status=$?
  PID=""
  ((status == 0)) || fail "exit status $status after SIGTERM"
  [[ "$(messages | tail -n 1)" == "---- quit" ]] || fail "the log does not end with '---- quit'"
}

pass() { echo "PASS: $(basename "$0" .sh)"; }

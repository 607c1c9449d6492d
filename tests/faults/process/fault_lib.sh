#!/usr/bin/env bash
# Helpers for the fault tests of the watchdog process: the end-to-end helpers, plus a stored
# consent, runs under strace fault injection, a time-stamped copy of the status output and the
# timing of the dry-run shutdown call.
source "$(dirname "${BASH_SOURCE[0]}")/../../e2e/e2e_lib.sh"

# In the sanitizer build: LeakSanitizer cannot run under ptrace (strace), and libfaketime is
# preloaded ahead of the sanitizer's runtime. Both faults are about timing, not memory, so these
# runs keep every other sanitizer check and drop only those two.
if [[ -n "${ASAN_OPTIONS:-}" ]]; then
  export ASAN_OPTIONS="$ASAN_OPTIONS:detect_leaks=0:verify_asan_link_order=0"
fi

SETTINGS="$DATA/settings.json"
STAMPED="$WORK/stdout-stamped.txt"
TRACER=""

fault_cleanup() {
  if [[ -n "$TRACER" ]] && kill -0 "$TRACER" 2>/dev/null; then kill -KILL "$TRACER" 2>/dev/null || true; fi
  cleanup
}
trap fault_cleanup EXIT

# Ends the test as skipped (CTest's SKIP_RETURN_CODE) with the reason.
skip() {
  echo "SKIP: $(basename "$0" .sh): $*"
  exit 77
}

# Consent recorded by an earlier run, as the consent page writes it.
store_consent() {
  mkdir -p "$DATA"
  printf '{\n  "autoShutdown": %s,\n  "consentAt": "2026-11-01T10:00:00Z",\n  "consentRecorded": true\n}\n' \
    "${1:-true}" >"$SETTINGS"
}

need_strace() {
  command -v strace >/dev/null 2>&1 || skip "strace is not installed (scripts/install-deps installs it)"
  strace -f -qq -o /dev/null true >/dev/null 2>&1 || skip "this machine does not allow tracing (ptrace)"
}

# Runs the watchdog with the shared switches under strace: strace options first, then "--",
# then the watchdog's own switches. PID is the watchdog's, TRACER strace's.
start_traced_monitor() {
  local trace=()
  while [[ "$1" != -- ]]; do trace+=("$1"); shift; done
  shift
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" strace -f -qq --seccomp-bpf -o /dev/null "${trace[@]}" \
    "$EXE" --headless --data-dir "$DATA" --dry-run-shutdown --mute --force-thermal critical \
    "$@" >"$OUT" 2>&1 &
  TRACER=$!
  local deadline=$((SECONDS + 10))
  PID=""
  until [[ -n "$PID" ]]; do
    ((SECONDS < deadline)) || fail "the traced watchdog did not start"
    sleep 0.05
    PID=$(pgrep -P "$TRACER" | head -n 1 || true)
  done
}

# Prefixes every line read with the seconds since the epoch at which it arrived.
stamp_lines() {
  local line
  while IFS= read -r line; do printf '%s %s\n' "$(date +%s.%3N)" "$line"; done
}

# Starts the watchdog with its status output time-stamped by this script as it arrives:
# observations that need no log (the log may be unwritable or gone).
start_stamped_monitor() {
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" "$EXE" --headless --data-dir "$DATA" \
    --dry-run-shutdown --mute --force-thermal critical "$@" 2>"$OUT" > >(stamp_lines >"$STAMPED") &
  PID=$!
}

# Waits until the status output has a line with TEXT, or fails after SECONDS.
wait_for_status() {
  local text=$1 seconds=$2
  local deadline=$((SECONDS + seconds))
  until grep -q -F -- "$text" "$STAMPED" 2>/dev/null; do
    ((SECONDS < deadline)) || fail "no status line with '$text' within ${seconds}s"
    kill -0 "$PID" 2>/dev/null || fail "the watchdog ended early while waiting for '$text'"
    sleep 0.1
  done
}

status_time() { grep -F -- "$1" "$STAMPED" | head -n 1 | cut -d' ' -f1; }

# The dry-run shutdown was called once, within 1 s after the ten-second deadline of the
# countdown that the log shows starting.
expect_shutdown_on_time() {
  wait_for_line "shutdown: DRY-RUN: would run" 20
  local called started
  called=$(time_of "shutdown: DRY-RUN: would run")
  started=$(time_of "stage-c: event countdown-start remaining=10")
  echo "shutdown called $(awk -v a="$called" -v b="$started" 'BEGIN { print a - b }')s after the countdown started"
  expect_gap "$called" "$started" 9.5 11
  (($(count_lines "shutdown: DRY-RUN: would run") == 1)) || fail "the shutdown was called more than once"
}

# Alive and not a zombie waiting to be reaped.
running() {
  local state
  state=$(ps -o stat= -p "$1" 2>/dev/null || true)
  [[ -n "$state" && "$state" != Z* ]]
}

# Ends the run with SIGTERM; the process must be gone within SECONDS with status 0.
stop_within() {
  local seconds=$1 status=0 started ended
  started=$(date +%s.%3N)
  kill -TERM "$PID"
  local deadline=$((SECONDS + seconds + 5))
  while running "$PID"; do
    ((SECONDS < deadline)) || fail "still running $((seconds + 5))s after SIGTERM"
    sleep 0.05
  done
  ended=$(date +%s.%3N)
  # Under strace the watchdog is strace's child, and strace ends with its status.
  wait "${TRACER:-$PID}" || status=$?
  PID=""
  TRACER=""
  expect_gap "$ended" "$started" 0 "$seconds"
  ((status == 0)) || fail "exit status $status after SIGTERM"
}

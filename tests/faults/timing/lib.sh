#!/usr/bin/env bash
# Helpers for the timing and sensor fault tests, on top of the end-to-end ones: a generated
# machine tree (VELMORA_ROOT) with hwmon chips, a wrapper the watchdog runs under (libfaketime,
# strace, prlimit), and times taken on the test's own clock, which no fault touches.
source "$(dirname "${BASH_SOURCE[0]}")/../../e2e/e2e_lib.sh"

# In the sanitizer build: LeakSanitizer cannot run under ptrace (strace), and libfaketime is
# preloaded ahead of the sanitizer's runtime. Both faults are about timing, not memory, so these
# runs keep every other sanitizer check and drop only those two.
if [[ -n "${ASAN_OPTIONS:-}" ]]; then
  export ASAN_OPTIONS="$ASAN_OPTIONS:detect_leaks=0:verify_asan_link_order=0"
fi

TREE="$WORK/tree"
HWMON="$TREE/sys/class/hwmon"
WRAP=()
mkdir -p "$HWMON"

# Skips the test (CTest's SKIP_RETURN_CODE) with the reason on stdout.
skip() {
  echo "SKIP: $*"
  exit 77
}

# add_chip N NAME MILLIDEGREES [EMERGENCY_MILLIDEGREES]: hwmonN with one temperature input.
add_chip() {
  local dir="$HWMON/hwmon$1"
  mkdir -p "$dir"
  printf '%s\n' "$2" >"$dir/name"
  printf '%s\n' "$3" >"$dir/temp1_input"
  if [[ -n "${4:-}" ]]; then printf '%s\n' "$4" >"$dir/temp1_emergency"; fi
}

# add_cool_chips FIRST COUNT: COUNT chips of one cool input each, numbered from FIRST.
add_cool_chips() {
  local n dirs=()
  for ((n = $1; n < $1 + $2; n++)); do dirs+=("$HWMON/hwmon$n"); done
  mkdir "${dirs[@]}"  # one process for all of them: thousands of forks are slow
  for ((n = $1; n < $1 + $2; n++)); do
    printf 'nvme\n' >"$HWMON/hwmon$n/name"
    printf '%s\n' $((30000 + n % 20000)) >"$HWMON/hwmon$n/temp1_input"
  done
}

# A GPU at its emergency limit: critical after two samples.
add_hot_gpu() { add_chip "$1" amdgpu 120000 110000; }

# Starts the watchdog on the tree with consent, under WRAP, with the fault tests' switches.
start_watchdog() {
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" VELMORA_ROOT="$TREE" "${WRAP[@]}" "$EXE" \
    --headless --data-dir "$DATA" --dry-run-shutdown --mute --consent on "$@" >"$OUT" 2>&1 &
  PID=$!
}

# The test's clock: seconds since the epoch, never faked.
real_now() { date +%s.%N; }

# Waits for a line and records the real time it was first seen in the variable NAME.
seen_at() {
  local name=$1 text=$2 seconds=$3
  wait_for_line "$text" "$seconds"
  printf -v "$name" '%s' "$(real_now)"
}

# Fails when a line with TEXT shows up within SECONDS.
expect_absent_for() {
  local text=$1 seconds=$2
  local deadline=$((SECONDS + seconds))
  while ((SECONDS < deadline)); do
    (($(count_lines "$text") == 0)) || fail "unexpected line with '$text'"
    kill -0 "$PID" 2>/dev/null || fail "the watchdog ended early"
    sleep 0.2
  done
}

# The shutdown comes 10 s after the countdown started; within a second of that deadline (the
# polling adds at most 0.1 s to either time).
expect_shutdown_on_time() {
  local started shutdown
  seen_at started "stage-c: event countdown-start remaining=10" "${1:-10}"
  seen_at shutdown "shutdown: DRY-RUN: would run" 20
  expect_gap "$shutdown" "$started" 9 11
  expect_no_line "stage-c: event abort"
  expect_no_line "stage-c: event stale-restart"
}

# Ends the run: SIGTERM to the watchdog itself (the wrapper's child when the wrapper stays).
stop_watchdog() {
  local target=${1:-$PID}
  kill -TERM "$target" 2>/dev/null || true
  local i
  for ((i = 0; i < 50; i++)); do
    kill -0 "$PID" 2>/dev/null || break
    sleep 0.1
  done
  kill -0 "$PID" 2>/dev/null && fail "still running 5 s after SIGTERM"
  wait "$PID" 2>/dev/null || true
  PID=""
  [[ "$(messages | tail -n 1)" == "---- quit" ]] || fail "the log does not end with '---- quit'"
}

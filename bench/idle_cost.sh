#!/usr/bin/env bash
# Measures what the idle headless watchdog costs the machine: CPU share of one core, wake-ups
# a second and resident memory, over IDLE_SECONDS (120 by default) after a short settling time.
# Usage: bench/idle_cost.sh [path/to/velmora-heat-monitor]
# IDLE_ARGS adds switches, e.g. IDLE_ARGS="--consent on" to measure with a settings file.
# CPU time comes from the scheduler's nanosecond run times (/proc/PID/task/*/schedstat) where
# the kernel keeps them, else from utime+stime in /proc/PID/stat (10 ms ticks). Wake-ups are
# the voluntary and involuntary context switches of all its threads (/proc/PID/task/*/status):
# every timer expiry, poll return or condition wake is one.
set -euo pipefail

exe=${1:-build/velmora-heat-monitor}
seconds=${IDLE_SECONDS:-120}
settle=${IDLE_SETTLE_SECONDS:-5}
[[ -x "$exe" ]] || { echo "idle_cost: no executable at $exe" >&2; exit 1; }

data=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; rm -rf "$data"' EXIT
# Not a terminal, as under systemd: no status line is drawn.
# shellcheck disable=SC2086  # IDLE_ARGS is a list of switches
"$exe" --headless --mute --no-menu-item --data-dir "$data" ${IDLE_ARGS:-} >/dev/null 2>&1 &
pid=$!
sleep "$settle"
kill -0 "$pid" 2>/dev/null || { echo "idle_cost: the watchdog exited early" >&2; exit 1; }

run_ns() {  # total run time of all threads, nanoseconds
  local total=0 t
  if [[ -r /proc/$pid/schedstat ]]; then
    for t in /proc/$pid/task/*/schedstat; do
      total=$((total + $(cut -d' ' -f1 "$t" 2>/dev/null || echo 0)))
    done
  else
    local ticks hz
    ticks=$(awk '{print $14 + $15}' "/proc/$pid/stat")
    hz=$(getconf CLK_TCK)
    total=$((ticks * 1000000000 / hz))
  fi
  echo "$total"
}

switches() {  # context switches of all threads
  cat /proc/"$pid"/task/*/status 2>/dev/null |
    awk '/^(voluntary|nonvoluntary)_ctxt_switches/ {n += $2} END {print n + 0}'
}

start_ns=$(run_ns); start_sw=$(switches); start_t=$(date +%s.%N)
sleep "$seconds"
end_ns=$(run_ns); end_sw=$(switches); end_t=$(date +%s.%N)
rss_kb=$(awk '/^VmRSS/ {print $2}' "/proc/$pid/status")
threads=$(ls /proc/"$pid"/task | wc -l)

awk -v ns=$((end_ns - start_ns)) -v sw=$((end_sw - start_sw)) -v t0="$start_t" -v t1="$end_t" \
    -v rss="$rss_kb" -v threads="$threads" 'BEGIN {
  elapsed = t1 - t0
  cpu = ns / 1e9 / elapsed * 100
  wakes = sw / elapsed
  printf "idle headless watchdog over %.0f s (%d threads)\n", elapsed, threads
  printf "  CPU        %.4f %% of one core   target <= 0.05 %%   %s\n", cpu, cpu <= 0.05 ? "met" : "NOT met"
  printf "  wake-ups   %.2f per second        target <= 2        %s\n", wakes, wakes <= 2 ? "met" : "NOT met"
  printf "  RSS        %.1f MB                 target <= 8 MB     %s\n", rss / 1024, rss / 1024 <= 8 ? "met" : "NOT met"
}'

#!/usr/bin/env bash
# CPU and memory of the desktop application with its WebKit processes, on a virtual display:
#   bench/desktop_cpu.sh [path to velmora-heat-monitor] [seconds]
# Measures the home page for SECONDS (default 60) and an emergency from the start of
# its countdown (the countdown's own 10 s, then the rest of SECONDS), summing user+system
# time of the application and every process below it (WebKit's web and network processes,
# their sandbox) from /proc; memory is the summed PSS and RSS at the end of each window.
# Targets: <= 0.5 % of one core on the home page, <= 2 % during a countdown, <= 150 MiB PSS
# with the window shown. The program runs exactly as a user starts it: no WebKit or GL
# tuning in the environment. One more line measures the home page with the accessibility
# bus off (NO_AT_BRIDGE=1), which some desktops do; the per-process table follows each window.
set -euo pipefail
EXE=${1:-build/velmora-heat-monitor}
SECONDS_WANTED=${2:-60}
EXE=$(realpath "$EXE")
if [[ -z "${VELMORA_BENCH_INNER:-}" ]]; then
  export VELMORA_BENCH_INNER=1
  exec xvfb-run -a -s "-screen 0 1280x800x24 -nolisten tcp" dbus-run-session -- bash "$0" "$EXE" "$SECONDS_WANTED"
fi
WORK=$(mktemp -d "${TMPDIR:-/tmp}/velmora-bench.XXXXXX")
export HOME="$WORK" XDG_CONFIG_HOME="$WORK/config"
: "${VELMORA_ROOT:=$(dirname "$0")/../tests/fixtures/linux/intel_laptop}"
export VELMORA_ROOT=$(realpath "$VELMORA_ROOT")
PID=""
trap '[[ -n "$PID" ]] && kill -TERM "$PID" 2>/dev/null; sleep 1; rm -rf "$WORK"' EXIT
HZ=$(getconf CLK_TCK)

# The process and all its descendants.
tree() {
  local pids=("$1") i=0 child
  while ((i < ${#pids[@]})); do
    for child in $(cat /proc/"${pids[$i]}"/task/*/children 2>/dev/null); do pids+=("$child"); done
    i=$((i + 1))
  done
  echo "${pids[@]}"
}
# utime + stime in clock ticks, summed over the tree (children that already ended included
# through cutime/cstime of their parents).
ticks() {
  local total=0 p fields
  for p in $(tree "$1"); do
    fields=$(sed 's/.*) //' /proc/"$p"/stat 2>/dev/null) || continue
    set -- $fields
    total=$((total + ${12} + ${13} + ${14} + ${15}))
  done
  echo "$total"
}
memory() {
  local pss=0 rss=0 p v
  for p in $(tree "$1"); do
    v=$(awk '/^Pss:/ {print $2}' /proc/"$p"/smaps_rollup 2>/dev/null || echo 0); pss=$((pss + ${v:-0}))
    v=$(awk '/^VmRSS:/ {print $2}' /proc/"$p"/status 2>/dev/null || echo 0); rss=$((rss + ${v:-0}))
  done
  echo "PSS $((pss / 1024)) MiB, RSS $((rss / 1024)) MiB over $(tree "$1" | wc -w) processes"
}
# One line per process of the tree: its PSS and its command name.
per_process() {
  local p name v
  for p in $(tree "$1"); do
    name=$(tr '\0' ' ' </proc/"$p"/cmdline 2>/dev/null | cut -c1-60)
    v=$(awk '/^Pss:/ {print $2}' /proc/"$p"/smaps_rollup 2>/dev/null || echo 0)
    printf '    %6d KiB  %s\n' "${v:-0}" "$name"
  done
}
measure() {
  local label=$1 seconds=$2 before after
  before=$(ticks "$PID")
  sleep "$seconds"
  after=$(ticks "$PID")
  awk -v t=$((after - before)) -v hz="$HZ" -v s="$seconds" -v l="$label" \
    'BEGIN { printf "%-34s %6.2f %% of one core over %d s\n", l, 100 * t / hz / s, s }'
}
wait_log() {
  local deadline=$((SECONDS + 30))
  until grep -q -F -- "$1" "$WORK/data/heat.log" 2>/dev/null; do
    ((SECONDS < deadline)) || { echo "no '$1' in the log" >&2; exit 1; }
    sleep 0.05
  done
}

home_page() {
  local label=$1
  shift
  rm -rf "$WORK/data"
  env "$@" "$EXE" --data-dir "$WORK/data" --dry-run-shutdown --mute --consent on >/dev/null 2>&1 &
  PID=$!
  wait_log "live: thermal="
  sleep 5  # page loaded, first pushes done
  measure "$label" "$SECONDS_WANTED"
  echo "$label memory: $(memory "$PID")"
  per_process "$PID"
  kill -TERM "$PID"; wait "$PID" || true; PID=""
}
home_page "home page"
home_page "home page, accessibility bus off" NO_AT_BRIDGE=1

# A countdown on a window that has settled: the machine's sensors (a copy of the fixture tree)
# turn critical once the pages are loaded, so page loading is not counted as countdown cost.
rm -rf "$WORK/data"
cp -a "$VELMORA_ROOT" "$WORK/root"
VELMORA_ROOT="$WORK/root" "$EXE" --data-dir "$WORK/data" --dry-run-shutdown --mute --consent on \
  >/dev/null 2>&1 &
PID=$!
wait_log "live: thermal="
sleep 5
find "$WORK/root/sys/class" \( -name 'temp*_input' -o -path '*/thermal_zone*/temp' \) \
  -exec sh -c 'echo 130000 > "$1"' sh {} \;  # past every critical limit of the fixtures
wait_log "stage-c: event countdown-start"
measure "countdown (10 s)" 9
echo "countdown memory: $(memory "$PID")"
per_process "$PID"
measure "after the countdown fired" $((SECONDS_WANTED > 10 ? SECONDS_WANTED - 10 : 1))
kill -TERM "$PID"; wait "$PID" || true; PID=""

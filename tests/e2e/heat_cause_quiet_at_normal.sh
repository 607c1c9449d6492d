#!/usr/bin/env bash
# At NORMAL the watchdog opens no other process's /proc/PID file; the same trace taken above
# NORMAL shows such opens, so the check can see them when they happen.
source "$(dirname "$0")/e2e_lib.sh"
FIXTURE="$(cd "$(dirname "$0")/../fixtures/linux/intel_laptop" && pwd)"
command -v strace >/dev/null || { echo "SKIP: strace is not installed"; exit 77; }
strace -f -qq -o /dev/null true 2>/dev/null || { echo "SKIP: tracing is not permitted"; exit 77; }

# Runs the watchdog traced at the given thermal state until SAMPLES summaries are logged.
traced_run() {
  local state=$1 samples=$2
  rm -rf "$DATA"
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" VELMORA_ROOT="$FIXTURE" VELMORA_CAUSE_ROOT=/ \
    strace -f -qq -y -e trace=open,openat,openat2 -o "$WORK/trace.$state" \
    "$EXE" --headless --data-dir "$DATA" --dry-run-shutdown --mute --force-thermal "$state" \
    >"$OUT" 2>&1 &
  PID=$!
  wait_for_count "live: thermal=" "$samples" 40
  # The watchdog is strace's child; strace ends with it.
  local watchdog
  watchdog=$(pgrep -P "$PID" | head -n 1)
  [[ -n "$watchdog" ]] || fail "the traced watchdog is not running"
  kill -TERM "$watchdog"
  wait "$PID" || true
  PID=""
}

# Opens of /proc/<pid>/... by path, or of "<pid>/..." relative to an open /proc directory,
# leaving out the watchdog's own pid.
foreign_proc_opens() {
  local trace=$1 self
  self=$(head -n 1 "$trace" | awk '{ print $1 }')
  grep -E '"/+proc/[0-9]+/|/proc>, "[0-9]+/' "$trace" | grep -v -E "proc/$self/|\"$self/" || true
}

traced_run nominal 2
quiet=$(foreign_proc_opens "$WORK/trace.nominal")
[[ -z "$quiet" ]] || fail "process files opened at NORMAL: $(head -n 3 <<<"$quiet")"

traced_run serious 1
[[ -n "$(foreign_proc_opens "$WORK/trace.serious")" ]] ||
  fail "no process file opened above NORMAL: the trace does not show the scan"
pass

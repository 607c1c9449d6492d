#!/usr/bin/env bash
# A forced rise names the process that is heating the machine: a real busy child, named with
# parentheses and a space, is on the "heat: " line with its pid. The sensors come from a fixture
# machine, the processes from the real /proc (VELMORA_CAUSE_ROOT=/).
source "$(dirname "$0")/e2e_lib.sh"
FIXTURE="$(cd "$(dirname "$0")/../fixtures/linux/intel_laptop" && pwd)"
[[ -r /proc/self/stat ]] || { echo "SKIP: no /proc to read"; exit 77; }

BUSY=""
stop_busy() { if [[ -n "$BUSY" ]]; then kill -KILL "$BUSY" 2>/dev/null || true; fi; cleanup; }
trap stop_busy EXIT

ln -s "$(command -v yes)" "$WORK/busy (loop)"
# Ahead of the other work on a shared machine where that is permitted (root, CAP_SYS_NICE).
NICE=()
if nice -n -10 true 2>/dev/null; then NICE=(nice -n -10); fi
"${NICE[@]}" "$WORK/busy (loop)" >/dev/null &
BUSY=$!
disown "$BUSY"  # killed at the end without a job-control notice

# Own CPU ticks of the child (fields 14 and 15 after its name).
busy_ticks() { sed 's/.*) //' "/proc/$BUSY/stat" | awk '{ print $12 + $13 }'; }
# Until it has used more CPU than the shortest window (5 s) lasts: then it is older than the
# window, and its share is its whole rate, which stands out even on a loaded machine.
ticks_wanted=$((6 * $(getconf CLK_TCK)))
deadline=$((SECONDS + 90))
while (($(busy_ticks) < ticks_wanted)); do
  ((SECONDS < deadline)) || fail "the busy child did not get the CPU"
  sleep 0.1
done

mkdir -p "$DATA"
HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" VELMORA_ROOT="$FIXTURE" VELMORA_CAUSE_ROOT=/ \
  "$EXE" --headless --data-dir "$DATA" --dry-run-shutdown --mute --force-thermal serious \
  >"$OUT" 2>&1 &
PID=$!
wait_for_line "heat: NORMAL -> EXTREME HEAT; busiest: " 20
line=$(messages | grep -F "heat: NORMAL -> EXTREME HEAT; busiest: ")
[[ "$line" == *"busy (loop) (pid $BUSY) "*"% of a core"* ]] ||
  fail "the busy child (pid $BUSY) is not named on the heat line: $line"
(($(count_lines "heat: ") == 1)) || fail "more than one heat line for one rise"
stop_monitor
pass

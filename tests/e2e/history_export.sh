#!/usr/bin/env bash
# The history kept by a running watchdog can be exported beside it, read-only and without the
# lock; two runs end up in one file in time order; a killed run leaves a usable file; a file
# that is not a history is refused by the export and set aside by the next watchdog.
source "$(dirname "$0")/e2e_lib.sh"
ROOT="$(cd "$(dirname "$0")/../fixtures/linux/intel_laptop" && pwd)"
HEADER='time,level,thermal_state,cpu_temp_c,gpu_temp_c,hottest_c,cpu_percent,power_w,fan_rpm,battery_percent,top_process'

run_watchdog() {
  mkdir -p "$DATA"
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" VELMORA_ROOT="$ROOT" "$EXE" --headless \
    --data-dir "$DATA" --dry-run-shutdown --mute >"$OUT" 2>&1 &
  PID=$!
}

export_to() { HOME="$WORK" "$EXE" --data-dir "$DATA" --export-history "$1"; }

rows() { export_to - | tail -n +2; }

# Waits until the export shows more than N rows whose time is later than AFTER.
wait_for_rows() {
  local wanted=$1 after=${2:-} deadline=$((SECONDS + 30))
  while :; do
    local n
    n=$(rows | awk -F, -v a="$after" '$1 > a' | wc -l)
    ((n > wanted)) && return 0
    ((SECONDS < deadline)) || fail "the export showed $n rows after '$after', wanted more than $wanted"
    kill -0 "$PID" 2>/dev/null || fail "the watchdog ended early"
    sleep 0.2
  done
}

check_export() {
  local file=$1
  [[ "$(head -n 1 "$file")" == "$HEADER"* ]] || fail "wrong header: $(head -n 1 "$file")"
  tail -n +2 "$file" | awk -F, '
    length($1) != 20 || $1 !~ /^[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]T[0-9][0-9]:[0-9][0-9]:[0-9][0-9]Z$/ { print "bad time " $1; exit 1 }
    NR > 1 && $1 <= last { print "not increasing: " last " then " $1; exit 1 }
    $2 !~ /^(NORMAL|WARM|HOT|EXTREME HEAT|EMERGENCY|)$/ { print "bad level " $2; exit 1 }
    { last = $1 }' || fail "the export is out of order or malformed"
}

# Nothing kept yet: the header alone, and the data directory is not created.
export_to - >"$WORK/empty.csv" || fail "export of an empty history failed"
[[ "$(cat "$WORK/empty.csv")" == "$HEADER"* ]] || fail "empty export is not just the header"
(($(wc -l <"$WORK/empty.csv") == 1)) || fail "empty export has rows"
[[ ! -e "$DATA" ]] || fail "the export created the data directory"

# While the watchdog runs: its points up to its last write.
run_watchdog
wait_for_line "live: " 15
wait_for_rows 1
export_to "$WORK/running.csv" || fail "export beside the watchdog failed"
check_export "$WORK/running.csv"
grep -q ',nominal,' "$WORK/running.csv" || fail "no thermal state in the rows"
stop_monitor
first_last=$(rows | tail -n 1 | cut -d, -f1)

# A second run continues the same file after a gap; a kill -9 leaves it usable.
sleep 1.1  # a new wall-clock second, so that the second run's first row is later
run_watchdog
wait_for_rows 2 "$first_last"
kill -KILL "$PID"
wait "$PID" 2>/dev/null || true
PID=""
export_to "$WORK/both.csv" || fail "export after a kill -9 failed"
check_export "$WORK/both.csv"
grep -q "^$first_last," "$WORK/both.csv" || fail "the first run's points are gone"
(($(awk -F, -v a="$first_last" 'NR > 1 && $1 > a' "$WORK/both.csv" | wc -l) >= 2)) ||
  fail "the second run's points are missing"
[[ ! -e "$DATA/history.bad" ]] || fail "a killed run's file was set aside"

# A file that is not a history: the export refuses it and changes nothing; the watchdog sets
# it aside once and starts again.
head -c 4096 /dev/urandom >"$DATA/history.bin"
before=$(md5sum <"$DATA/history.bin")
if export_to - >"$WORK/bad.csv" 2>"$WORK/bad.err"; then fail "export of garbage succeeded"; fi
grep -q "cannot export the history: .*history.bin is truncated" "$WORK/bad.err" ||
  fail "unclear message: $(cat "$WORK/bad.err")"
[[ "$(md5sum <"$DATA/history.bin")" == "$before" ]] || fail "the export changed the file"
run_watchdog
wait_for_line "set aside as $DATA/history.bad" 15
wait_for_rows 0
stop_monitor
(($(count_lines "set aside as") == 1)) || fail "the bad file was reported more than once"
[[ "$(md5sum <"$DATA/history.bad")" == "$before" ]] || fail "history.bad is not the bad file"
pass

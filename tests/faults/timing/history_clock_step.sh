#!/usr/bin/env bash
# The wall clock set back two minutes while the watchdog records its history: the points made
# after the step take the place of those they overlap, and the export stays in increasing time
# order, before the step, across it and after it.
source "$(dirname "$0")/lib.sh"

preload=$(compgen -G "/usr/lib/*/faketime/libfaketime.so.1" | head -n 1 || true)
[[ -n "$preload" ]] || skip "libfaketime is not installed (scripts/install-deps installs it)"

offset="$WORK/faketime"
printf '+0\n' >"$offset"
WRAP=(env LD_PRELOAD="$preload" FAKETIME_TIMESTAMP_FILE="$offset" FAKETIME_NO_CACHE=1
  FAKETIME_DONT_FAKE_MONOTONIC=1)
add_chip 0 coretemp 55000
start_watchdog

# The export runs on the real clock, beside the watchdog.
export_rows() { HOME="$WORK" "$EXE" --data-dir "$DATA" --export-history - | tail -n +2; }
in_order() {
  export_rows | awk -F, 'NR > 1 && $1 <= last { bad = 1 } { last = $1 } END { exit bad }'
}
newest() { export_rows | tail -n 1 | cut -d, -f1; }

deadline=$((SECONDS + 20))
until (($(export_rows | wc -l) >= 2)); do
  ((SECONDS < deadline)) || fail "no history written within 20 s"
  sleep 0.2
done
before=$(newest)
printf -- '-120\n' >"$offset"

# Points made after the step are written at once, and the rows end before the old newest one.
deadline=$((SECONDS + 20))
until [[ "$(newest)" < "$before" ]]; do
  ((SECONDS < deadline)) || fail "the export still ends at $(newest), not before $before"
  sleep 0.2
done
in_order || fail "the export is out of order after the clock step"
kill -0 "$PID" 2>/dev/null || fail "the watchdog ended after the clock step"
stop_watchdog
in_order || fail "the export is out of order after the run"
pass

#!/usr/bin/env bash
# The wall clock set back 60 s in the middle of a countdown (an NTP step, an RTC in local time)
# must not move the shutdown: it comes 10 s after the countdown started, by the monotonic clock.
source "$(dirname "$0")/lib.sh"

preload=$(compgen -G "/usr/lib/*/faketime/libfaketime.so.1" | head -n 1 || true)
[[ -n "$preload" ]] || skip "libfaketime is not installed (scripts/install-deps installs it)"

offset="$WORK/faketime"
printf '+0\n' >"$offset"
# Only the wall clock moves, as with a real clock step; the monotonic clock runs on.
WRAP=(env LD_PRELOAD="$preload" FAKETIME_TIMESTAMP_FILE="$offset" FAKETIME_NO_CACHE=1
  FAKETIME_DONT_FAKE_MONOTONIC=1)
add_hot_gpu 0
start_watchdog

seen_at started "stage-c: event countdown-start remaining=10" 10
sleep 3
printf -- '-60\n' >"$offset"
seen_at shutdown "shutdown: DRY-RUN: would run" 25
expect_gap "$shutdown" "$started" 9 11
expect_no_line "stage-c: event stale-restart"
expect_no_line "stage-c: event abort"

# The step did reach the watchdog: its log went back in time while the countdown ran.
expect_gap "$(time_of "stage-c: event countdown-start")" "$(time_of "shutdown: DRY-RUN: would run")" 49 52
stop_watchdog
pass

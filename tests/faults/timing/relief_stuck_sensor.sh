#!/usr/bin/env bash
# The launch after a shutdown, with a sensor stuck at its emergency limit: the relief notice
# gets 60 s before any countdown may start, so the stuck sensor cannot power off every boot.
source "$(dirname "$0")/lib.sh"

mkdir -p "$DATA"
printf '%s' '{"at":"2026-11-14T23:47:13Z","peakC":108,"reason":"emergency countdown reached 0"}' >"$MARKER"
add_hot_gpu 0
launched=$(real_now)
start_watchdog

wait_for_line "stage-c: no countdown for the next 60s after the shutdown" 5
seen_at started "stage-c: event countdown-start remaining=10" 75
expect_gap "$started" "$launched" 60 63
expect_line "stage-c: relief hold over; countdowns allowed again"
seen_at shutdown "shutdown: DRY-RUN: would run" 15
expect_gap "$shutdown" "$started" 9 11
stop_watchdog
pass

#!/usr/bin/env bash
# A sensor at its emergency limit that climbs past the plausible range (120 C, then 151 C)
# keeps the emergency: the countdown runs on and the shutdown comes on time.
source "$(dirname "$0")/lib.sh"

add_hot_gpu 0
start_watchdog

seen_at started "stage-c: event countdown-start remaining=10" 10
sleep 2
printf '151000\n' >"$HWMON/hwmon0/temp1_input"
seen_at shutdown "shutdown: DRY-RUN: would run" 20
expect_gap "$shutdown" "$started" 9 11
expect_no_line "stage-c: event abort"
stop_watchdog
pass

#!/usr/bin/env bash
# 600 sensors under a 1024-descriptor limit: a rediscovery (a new device) keeps every sensor,
# reusing the open descriptors, and the GPU at its emergency limit shuts the machine down on time.
source "$(dirname "$0")/lib.sh"

command -v prlimit >/dev/null || skip "prlimit is not installed (util-linux)"
add_cool_chips 0 599
add_hot_gpu 599
WRAP=(prlimit --nofile=1024:1024)
start_watchdog

seen_at started "stage-c: event countdown-start remaining=10" 15
add_chip 600 nvme 42000
: >"$HWMON/hwmon0/temp1_input"
wait_for_line "live: sensors rediscovered: 600 temperature inputs and 0 fans open, 599 of them kept from before" 10
seen_at shutdown "shutdown: DRY-RUN: would run" 20
expect_gap "$shutdown" "$started" 9 11
expect_no_line "descriptor limit"
expect_no_line "stage-c: event abort"
stop_watchdog
pass

#!/usr/bin/env bash
# A read that never returns (a FIFO where a sensor file should be, found by a rediscovery in the
# middle of a countdown) is abandoned after its deadline; the countdown is not frozen and the
# shutdown comes on time.
source "$(dirname "$0")/lib.sh"

add_hot_gpu 0
add_chip 1 nvme 41000
start_watchdog

seen_at started "stage-c: event countdown-start remaining=10" 10
# A new device appears whose input hangs, and a failed read makes the watchdog look again.
mkdir "$HWMON/hwmon2"
printf 'wedged\n' >"$HWMON/hwmon2/name"
mkfifo "$HWMON/hwmon2/temp1_input"
: >"$HWMON/hwmon1/temp1_input"
seen_at shutdown "shutdown: DRY-RUN: would run" 20
expect_gap "$shutdown" "$started" 9 11
expect_no_line "stage-c: event abort"
expect_line "live: reading $HWMON/hwmon2/temp1_input has not answered for 2 s or more"
# The loop stayed responsive all along: it ends at once on SIGTERM although a read still hangs.
stop_watchdog
pass

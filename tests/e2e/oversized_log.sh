#!/usr/bin/env bash
# A log of 1,000,001 bytes is rotated at start: the old one becomes heat.log.1, whole, and the
# new heat.log starts with the banner.
source "$(dirname "$0")/e2e_lib.sh"
mkdir -p "$DATA"
head -c 1000001 /dev/zero | tr '\0' 'x' >"$LOG"
start_monitor

wait_for_line "---- Velmora Heat Monitor 1.1 launched" 5
stop_monitor
size=$(stat -c %s "$LOG")
((size < 100000)) || fail "the old log was kept as heat.log ($size bytes)"
[[ $(stat -c %s "$DATA/heat.log.1") == 1000001 ]] || fail "the old log was not kept whole as heat.log.1"
[[ "$(messages | head -n 1)" == "---- Velmora Heat Monitor 1.1 launched"* ]] ||
  fail "the new log does not start with the banner"
pass

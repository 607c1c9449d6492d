#!/usr/bin/env bash
# 2,000 sensors under a 1024-descriptor limit: the launch works, the sensors with emergency
# limits and the hottest are kept, what was left out is logged, and the GPU at its emergency
# limit (the last one found) still shuts the machine down on time.
source "$(dirname "$0")/lib.sh"

command -v prlimit >/dev/null || skip "prlimit is not installed (util-linux)"
add_cool_chips 0 1999
add_hot_gpu 1999
WRAP=(prlimit --nofile=1024:1024)
start_watchdog

expect_shutdown_on_time 20
expect_line "live: descriptor limit: "
expect_line "sensor inputs left out (kept "
stop_watchdog
pass

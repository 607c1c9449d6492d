#!/usr/bin/env bash
# A sensor at its emergency limit whose every third read fails with EIO (strace fault
# injection): each failed read is held, stale, so the countdown neither aborts nor restarts and
# the shutdown comes on time.
source "$(dirname "$0")/lib.sh"

command -v strace >/dev/null || skip "strace is not installed (scripts/install-deps installs it)"
strace -f -qq -o /dev/null -e trace=pread64 -e inject=pread64:error=EIO:when=3+3 true 2>/dev/null ||
  skip "strace cannot trace here (ptrace not permitted)"

WRAP=(strace -f -qq -o /dev/null -e trace=pread64 -e inject=pread64:error=EIO:when=3+3)
add_hot_gpu 0
start_watchdog

expect_shutdown_on_time 15
expect_line "did not read a plausible value; its last value (120 C) and state are held, stale"
stop_watchdog "$(pgrep -P "$PID" | head -n 1)"
pass

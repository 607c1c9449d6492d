#!/usr/bin/env bash
# A watchdog without a window maps none of the window's toolkit: GTK and WebKit live in a
# module that is loaded only when there may be a display.
source "$(dirname "$0")/e2e_lib.sh"
start_monitor --consent on

wait_for_line "live: " 10
maps=$(cat /proc/"$PID"/maps)
grep -q "libglib-2.0" <<<"$maps" || fail "the process's maps could not be read"
if grep -q -e "libgtk-3" -e "libwebkit2gtk" <<<"$maps"; then
  fail "a headless run maps the toolkit: $(grep -o -e 'libgtk-3[^ ]*' -e 'libwebkit2gtk[^ ]*' <<<"$maps" | sort -u)"
fi
stop_monitor
pass

#!/usr/bin/env bash
# The headless watchdog in a session with a bus sends the desktop notifications: the
# countdown's, urgent and replaced each second, whose "Keep working · Cancel" cancels the
# countdown. Without a session bus it sends none and says so once. Runs itself again inside a
# private session bus with the stand-in notification server given as the second argument.
source "$(dirname "$0")/e2e_lib.sh"
SERVER=${2:?usage: headless_notifications.sh <velmora-heat-monitor> <standin notification server>}

if [[ -z "${VELMORA_E2E_IN_SESSION:-}" ]]; then
  command -v dbus-run-session >/dev/null || fail "dbus-run-session is missing (scripts/install-deps)"
  # Without a session bus first: no notifications, one line in the log.
  (
    unset DBUS_SESSION_BUS_ADDRESS
    export XDG_RUNTIME_DIR="$WORK"
    start_monitor --consent on
    wait_for_line "stage-c: event countdown-start remaining=10" 10
    wait_for_line "notify: no session bus; no desktop notifications" 5
    wait_for_count "sound: tick (muted)" 3 10
    (($(count_lines "notify: no session bus") == 1)) || fail "the missing bus was logged more than once"
    stop_monitor
  )
  cleanup
  trap - EXIT
  VELMORA_E2E_IN_SESSION=1 exec dbus-run-session -- bash "$0" "$@"
fi

RECORD="$WORK/notifications.jsonl"
coproc STANDIN { exec "$SERVER" "$RECORD"; }
read -r -t 10 ready <&"${STANDIN[0]}" || fail "the stand-in notification server did not start"
[[ "$ready" == ready ]] || fail "the stand-in notification server said '$ready'"

start_monitor --consent on
wait_for_line "stage-c: event countdown-start remaining=10" 10
for _ in $(seq 1 100); do
  (($(grep -c '"call":"Notify"' "$RECORD" 2>/dev/null || true) >= 3)) && break
  sleep 0.1
done
notifies=$(grep '"call":"Notify"' "$RECORD" || true)
(($(wc -l <<<"$notifies") >= 3)) || fail "expected a countdown notification each second: $notifies"
first=$(head -n 1 <<<"$notifies")
[[ "$first" == *'"summary":"EMERGENCY · shutting down in '* ]] || fail "first: $first"
[[ "$first" == *'"urgency":2'* && "$first" == *'"expire":0'* ]] || fail "not urgent: $first"
[[ "$first" == *'"actions":["cancel","Keep working · Cancel"]'* ]] || fail "no cancel: $first"
id=$(sed -E 's/.*"id":([0-9]+).*/\1/' <<<"$first")
# Every update replaces that one notification, without a sound.
while read -r line; do
  [[ "$line" == *"\"id\":$id,"* || "$line" == *"\"id\":$id}"* ]] || fail "a second notification: $line"
done <<<"$(tail -n +2 <<<"$notifies")"
[[ "$(sed -n 2p <<<"$notifies")" == *'"suppressSound":true'* ]] || fail "an update with sound"

gdbus call --session --dest org.freedesktop.Notifications \
  --object-path /org/freedesktop/Notifications \
  --method org.velmora.test.NotificationUser.InvokeAction "$id" cancel >/dev/null \
  || fail "could not press the notification's action"
wait_for_line "stage-c: user pressed Keep working · Cancel during the countdown" 5
expect_line "ui: countdown cancel asked from the desktop notification"
expect_no_line "shutdown: DRY-RUN: would run"
stop_monitor
kill "$STANDIN_PID" 2>/dev/null || true
pass

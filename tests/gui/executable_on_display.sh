#!/usr/bin/env bash
# The real executable with a display: it opens its window, a second launch on the same
# display shows the first one's window instead of starting another watchdog, SIGTERM ends
# it cleanly, an unreachable display means the headless watchdog, and a display that goes
# away ends the run with a log line and status 0.
set -euo pipefail
EXE=${1:?usage: executable_on_display.sh <path to velmora-heat-monitor>}
for tool in Xvfb dbus-run-session; do
  command -v "$tool" >/dev/null 2>&1 || { echo "SKIP: $tool is not installed"; exit 77; }
done
if [[ -z "${VELMORA_GUI_INNER:-}" ]]; then
  export VELMORA_GUI_INNER=1
  exec dbus-run-session -- bash "$0" "$@"
fi

WORK=$(mktemp -d "${TMPDIR:-/tmp}/velmora-gui-exe.XXXXXX")
XPID="" PID=""
cleanup() {
  for p in $PID $XPID; do kill -KILL "$p" 2>/dev/null || true; done
  rm -rf "$WORK"
}
trap cleanup EXIT
export HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" WEBKIT_DISABLE_COMPOSITING_MODE=1 \
  LIBGL_ALWAYS_SOFTWARE=1 NO_AT_BRIDGE=1
unset WAYLAND_DISPLAY
# GTK, fontconfig and WebKit keep allocations for the life of the process that LeakSanitizer
# reports at exit; leaks in our own code are found by the other suites, which keep it on.
if [[ -n "${ASAN_OPTIONS:-}" ]]; then export ASAN_OPTIONS="$ASAN_OPTIONS:detect_leaks=0"; fi
LOG="$WORK/data/heat.log"

fail() {
  echo "FAIL: $*" >&2
  [[ -f "$LOG" ]] && { echo "---- heat.log" >&2; cat "$LOG" >&2; }
  [[ -f "$WORK/out.txt" ]] && { echo "---- output" >&2; cat "$WORK/out.txt" >&2; }
  exit 1
}
messages() { [[ -f "$LOG" ]] && cut -c25- "$LOG" || true; }
wait_for_line() {
  local deadline=$((SECONDS + $2))
  until messages | grep -q -F -- "$1"; do
    ((SECONDS < deadline)) || fail "no line with '$1' within $2s"
    kill -0 "$PID" 2>/dev/null || fail "the application ended early while waiting for '$1'"
    sleep 0.1
  done
}
start_display() {
  Xvfb -displayfd 9 -screen 0 1280x800x24 -nolisten tcp 9>"$WORK/display" 2>/dev/null &
  XPID=$!
  local deadline=$((SECONDS + 10))
  until [[ -s "$WORK/display" ]]; do
    ((SECONDS < deadline)) || fail "Xvfb did not start"
    sleep 0.1
  done
  export DISPLAY=":$(head -n 1 "$WORK/display")"
}
start_app() {
  "$EXE" --data-dir "$WORK/data" --dry-run-shutdown --mute --consent on "$@" >"$WORK/out.txt" 2>&1 &
  PID=$!
}

# An unreachable display: one line, then the headless watchdog.
DISPLAY=:987 "$EXE" --data-dir "$WORK/nodisplay" --dry-run-shutdown --mute --consent on \
  >"$WORK/nodisplay.txt" 2>&1 &
nd=$!
# Headless once its first sample is logged.
deadline=$((SECONDS + 20))
until [[ -f "$WORK/nodisplay/heat.log" ]] && grep -q -F "live: thermal=" "$WORK/nodisplay/heat.log"; do
  ((SECONDS < deadline)) || fail "the headless fallback logged no sample: $(cat "$WORK/nodisplay.txt")"
  kill -0 "$nd" 2>/dev/null || fail "the headless fallback ended early: $(cat "$WORK/nodisplay.txt")"
  sleep 0.1
done
kill -TERM "$nd"
wait "$nd" || fail "the headless fallback did not end cleanly"
grep -q "cannot open the display; running headless" "$WORK/nodisplay.txt" ||
  fail "no fallback message: $(cat "$WORK/nodisplay.txt")"

start_display
start_app
wait_for_line "live: thermal=" 20
messages | grep -q "web sandbox not available" && echo "note: $(messages | grep 'web sandbox')"

# A second launch on the same display hands over to the first and ends at once.
timeout 20 "$EXE" --data-dir "$WORK/second" --dry-run-shutdown --mute >"$WORK/second.txt" 2>&1 ||
  fail "the second launch failed: $(cat "$WORK/second.txt")"
grep -q "already running on this display" "$WORK/second.txt" ||
  fail "the second launch did not hand over: $(cat "$WORK/second.txt")"
[[ ! -e "$WORK/second/heat.log" ]] || fail "the second launch started a second watchdog"
kill -0 "$PID" 2>/dev/null || fail "the first instance ended"

# A window on a data directory that a headless watchdog already guards refuses to start, so
# the two never both count down.
mkdir -p "$WORK/guarded" && chmod 700 "$WORK/guarded"
"$EXE" --headless --data-dir "$WORK/guarded" --dry-run-shutdown --mute >"$WORK/guard.txt" 2>&1 &
guard=$!
deadline=$((SECONDS + 10))
until [[ -s "$WORK/guarded/instance.lock" ]]; do
  ((SECONDS < deadline)) || fail "the headless watchdog took no lock"
  sleep 0.1
done
status=0
DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent timeout 20 "$EXE" --data-dir "$WORK/guarded" \
  --dry-run-shutdown --mute >"$WORK/guarded.txt" 2>&1 || status=$?
kill -TERM "$guard"
wait "$guard" || true
((status == 1)) || fail "a window on a guarded data directory gave status $status"
grep -q "already running (pid $guard)" "$WORK/guarded.txt" ||
  fail "no 'already running' message: $(cat "$WORK/guarded.txt")"

kill -TERM "$PID"
status=0
wait "$PID" || status=$?
PID=""
((status == 0)) || fail "exit status $status after SIGTERM"
[[ "$(messages | tail -n 1)" == "---- quit" ]] || fail "the log does not end with '---- quit'"

# The display goes away while the window is up, in the middle of the countdown (once the web
# process is up: WebKit itself aborts when the display vanishes while it starts one).
rm -f "$LOG"
start_app --force-thermal critical
wait_for_line "stage-c: event cue remaining=5" 20
kill -KILL "$XPID"
XPID=""
deadline=$((SECONDS + 15))
while kill -0 "$PID" 2>/dev/null; do
  ((SECONDS < deadline)) || fail "the application hung after the display went away"
  sleep 0.1
done
status=0
wait "$PID" || status=$?
PID=""
((status == 0)) || fail "exit status $status after the display went away"
messages | grep -q -F "ui: the display went away; quitting" || fail "no line about the display"
[[ "$(messages | tail -n 1)" == "---- quit" ]] || fail "the log does not end with '---- quit'"
echo PASS

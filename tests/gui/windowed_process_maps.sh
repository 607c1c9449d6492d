#!/usr/bin/env bash
# A process with a window maps the watchdog's shared library once, from one file, beside the
# executable and the desktop module; GTK and WebKit come with the module. Run under
# with_display.sh. Usage: windowed_process_maps.sh EXECUTABLE
set -euo pipefail
EXE=${1:?usage: windowed_process_maps.sh <path to velmora-heat-monitor>}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/velmora-maps.XXXXXX")
PID=""
cleanup() {
  [[ -n "$PID" ]] && kill -KILL "$PID" 2>/dev/null || true
  rm -rf "$WORK"
}
trap cleanup EXIT
export HOME="$WORK" XDG_CONFIG_HOME="$WORK/config"
LOG="$WORK/data/heat.log"
fail() {
  echo "FAIL: $*" >&2
  [[ -f "$WORK/out.txt" ]] && { echo "---- output" >&2; cat "$WORK/out.txt" >&2; }
  exit 1
}

"$EXE" --data-dir "$WORK/data" --dry-run-shutdown --mute >"$WORK/out.txt" 2>&1 &
PID=$!
deadline=$((SECONDS + 30))
# The live line follows the first sample, once the run is up.
until [[ -f "$LOG" ]] && grep -q "live: " "$LOG"; do
  ((SECONDS < deadline)) || fail "no live line within 30s"
  kill -0 "$PID" 2>/dev/null || fail "the application ended early"
  sleep 0.1
done
grep -q "running headless" "$WORK/out.txt" && fail "no window: $(cat "$WORK/out.txt")"

files=$(grep -o '/[^ ]*\.so[^ ]*' /proc/"$PID"/maps | sort -u)
core=$(grep -c '/libvelmora-heat-monitor-core\.so$' <<<"$files" || true)
((core == 1)) || fail "the shared library is mapped from $core files: $(grep velmora <<<"$files")"
grep -q '/velmora-heat-monitor-desktop\.so$' <<<"$files" || fail "the desktop module is not mapped"
grep -q '/libgtk-3\.so' <<<"$files" || fail "a window without GTK?"
echo "velmora files mapped:"
grep -o '/[^ ]*velmora[^ ]*' /proc/"$PID"/maps | sort -u | sed 's/^/  /'

kill -TERM "$PID"
status=0
wait "$PID" || status=$?
PID=""
((status == 0)) || fail "exit status $status after SIGTERM"
echo PASS

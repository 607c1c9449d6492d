#!/usr/bin/env bash
# A full file system and a file-size limit stop log lines, never the watchdog: the lost lines
# are counted and reported once, as soon as a line can be written again, and no line is left
# cut in half.
source "$(dirname "$0")/faults_lib.sh"

every_line_whole() {
  if grep -v -q -E '^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3} ' "$1"; then
    fail "$1 holds a line that is not a whole entry"
  fi
}

# 1. A file-size limit (no root needed): the log already fills it.
mkdir -p "$DATA"
head -c 3000 /dev/zero | tr '\0' 'x' >"$LOG"
echo >>"$LOG"
sed -i 's/^/2026-01-01 00:00:00.000 /' "$LOG"
size_before=$(stat -c %s "$LOG")
HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" prlimit --fsize=$((size_before + 150)) -- \
  "$EXE" --headless --data-dir "$DATA" --dry-run-shutdown --mute --force-thermal critical \
  >"$OUT" 2>&1 &
PID=$!
sleep 1.5
kill -0 "$PID" || fail "the watchdog ended at the file-size limit"
kill -TERM "$PID"
status=0
wait "$PID" || status=$?
PID=""
((status == 0)) || fail "exit status $status after SIGTERM at the file-size limit"
every_line_whole "$LOG"
(($(stat -c %s "$LOG") <= size_before + 150)) || fail "the log grew past the limit"
rm -rf "$DATA"

# 2. A full file system: a small tmpfs, filled up, needs root.
if [[ $(id -u) -ne 0 ]]; then
  echo "note: not root, so no small file system can be mounted; the full-disk part is skipped"
  pass
  exit 0
fi
mkdir -p "$DATA"
if ! mount -t tmpfs -o size=256k,mode=0700 tmpfs "$DATA" 2>"$WORK/mount.err"; then
  echo "note: cannot mount a tmpfs here ($(cat "$WORK/mount.err")); the full-disk part is skipped"
  pass
  exit 0
fi
trap 'kill -KILL "$PID" 2>/dev/null || true; umount "$DATA" 2>/dev/null || true; rm -rf "$WORK"' EXIT
dd if=/dev/zero of="$DATA/filler" bs=4k 2>/dev/null || true
start_plain --force-thermal critical
sleep 1.5
kill -0 "$PID" || fail "the watchdog ended on a full disk"
rm -f "$DATA/filler"
stop_monitor
every_line_whole "$LOG"
expect_line "could not be written (No space left on device)"
(($(count_lines "could not be written") == 1)) || fail "the lost lines were reported more than once"
lost=$(messages | grep -o -E 'log: [0-9]+ lines? could not be written' | grep -o -E '[0-9]+')
((lost >= 3)) || fail "expected the start-up lines to be counted as lost, got $lost"
pass

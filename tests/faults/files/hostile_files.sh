#!/usr/bin/env bash
# Settings and marker files that are not what they claim: a symbolic link, a FIFO, /dev/zero
# and oversized files. The watchdog starts at once, never follows, waits or reads them whole,
# reports each once, treats it as unreadable (default settings, no relief) and lives on.
source "$(dirname "$0")/faults_lib.sh"
SETTINGS="$DATA/settings.json"
consent='{"autoShutdown": true, "consentRecorded": true, "consentAt": "2026-01-01T00:00:00Z"}'
marker='{"at":"2026-11-14T23:47:13Z","peakC":108,"reason":"emergency countdown reached 0"}'

# Starts, waits for the start-up lines, lets it tick a while, stops.
run_briefly() {
  rm -f "$LOG"
  start_plain
  wait_for_line "stage-c: settings loaded" 5
  sleep 1.2 # about five ticks, each of which loads the settings
  stop_monitor
}

expect_defaults() {
  expect_line "stage-c: settings loaded: autoShutdown=true consentRecorded=false enabled=false"
}

expect_reported_once() {
  local count
  count=$(count_lines "$1")
  ((count == 1)) || fail "expected '$1' exactly once, got $count"
}

mkdir -p "$DATA"
printf '%s' "$consent" >"$WORK/real-settings.json"
printf '%s' "$marker" >"$WORK/real-marker"

# Symbolic links, even to a valid file, are not followed.
ln -s "$WORK/real-settings.json" "$SETTINGS"
ln -s "$WORK/real-marker" "$MARKER"
run_briefly
expect_defaults
expect_reported_once "settings: $SETTINGS is a symbolic link; not used"
expect_line "marker found at launch but not usable ($MARKER is a symbolic link); no relief shown"
expect_no_line "showing relief"
[[ ! -L "$MARKER" && -f "$WORK/real-marker" ]] || fail "the marker link was not removed, or its target was"
rm -f "$SETTINGS"

# FIFOs with no writer: the launch must not hang.
mkfifo "$SETTINGS" "$MARKER"
run_briefly
expect_defaults
expect_reported_once "settings: $SETTINGS is a FIFO; not used"
expect_line "marker found at launch but not usable ($MARKER is a FIFO); no relief shown"
rm -f "$SETTINGS" "$MARKER"

# /dev/zero behind a link, and a device node itself where root may make one.
ln -s /dev/zero "$SETTINGS"
ln -s /dev/zero "$MARKER"
run_briefly
expect_defaults
expect_reported_once "settings: $SETTINGS is a symbolic link"
rm -f "$SETTINGS" "$MARKER"
if [[ $(id -u) -eq 0 ]] && mknod "$SETTINGS" c 1 5 2>/dev/null; then
  mknod "$MARKER" c 1 5
  run_briefly
  expect_defaults
  expect_reported_once "settings: $SETTINGS is a device; not used"
  expect_line "marker found at launch but not usable ($MARKER is a device)"
  rm -f "$SETTINGS" "$MARKER"
else
  echo "note: not root, so no device node is planted in the data directory"
fi

# Oversized: a valid settings object padded past 64 KiB, a marker past 4 KiB.
{ printf '%s' "${consent%\}}, \"pad\": \""; head -c 70000 /dev/zero | tr '\0' 'x'; printf '"}'; } >"$SETTINGS"
{ printf '%s' "${marker%\}}, \"pad\": \""; head -c 5000 /dev/zero | tr '\0' 'x'; printf '"}'; } >"$MARKER"
run_briefly
expect_defaults
expect_reported_once "settings: $SETTINGS is larger than 65536 bytes; not used"
expect_line "marker found at launch but not usable ($MARKER is larger than 4096 bytes)"
expect_no_line "showing relief"

# A 50 MB settings file costs no more than a small one: it is refused by its size.
head -c 50000000 /dev/zero >"$SETTINGS"
run_briefly
expect_reported_once "settings: $SETTINGS is larger than 65536 bytes"

# Back to a valid file: it is used again, and the problem is not reported.
printf '%s' "$consent" >"$SETTINGS"
run_briefly
expect_line "stage-c: settings loaded: autoShutdown=true consentRecorded=true enabled=true"
expect_no_line "settings: $SETTINGS"
pass

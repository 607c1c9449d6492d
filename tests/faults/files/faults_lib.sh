#!/usr/bin/env bash
# What the file fault cases share beyond the end-to-end helpers: starting the watchdog with
# exactly the switches a case names, and skipping with a reason.
source "$(dirname "${BASH_SOURCE[0]}")/../../e2e/e2e_lib.sh"

# Starts the watchdog headless, dry run and muted, in $DATA, plus the given switches.
start_plain() {
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" "$EXE" --headless --data-dir "$DATA" \
    --dry-run-shutdown --mute "$@" >"$OUT" 2>&1 &
  PID=$!
}

skip() {
  echo "SKIP: $(basename "$0" .sh): $*"
  exit 77
}

# A file's checksum, or "absent".
fingerprint() { if [[ -e "$1" ]]; then sha256sum <"$1" | cut -d' ' -f1; else echo absent; fi; }

#!/usr/bin/env bash
# Switches that decide a power-off must be exact: a misspelt one, an unknown one or one missing
# its value is refused with a message naming it and exit status 2, before anything happens
# (no data directory, no log). Arguments macOS passes to applications are still ignored.
source "$(dirname "$0")/faults_lib.sh"

# expect_refusal "text the message must hold" ARGS...
expect_refusal() {
  local wanted=$1 status=0
  shift
  HOME="$WORK" "$EXE" "$@" >"$OUT" 2>&1 || status=$?
  ((status == 2)) || fail "expected exit status 2 for '$*', got $status"
  grep -q -F -- "$wanted" "$OUT" || fail "the refusal of '$*' does not say '$wanted'"
  [[ ! -e "$DATA" ]] || fail "'$*' created the data directory before being refused"
}

common=(--headless --data-dir "$DATA" --mute --force-thermal critical)
expect_refusal "unknown switch '--dry-run' (did you mean '--dry-run-shutdown'?)" "${common[@]}" --dry-run
expect_refusal "unknown switch '--dryrun-shutdown' (did you mean '--dry-run-shutdown'?)" "${common[@]}" --dryrun-shutdown
expect_refusal "unknown switch '--force-thermal=critical' (did you mean '--force-thermal critical'?)" \
  --headless --data-dir "$DATA" --dry-run-shutdown --force-thermal=critical
expect_refusal "'--data-dir' needs a value (PATH) but is the last argument" --headless --dry-run-shutdown --data-dir
expect_refusal "'--data-dir' needs a value (PATH) but is followed by '--mute'" --headless --data-dir --mute --dry-run-shutdown
expect_refusal "'--force-thermal' does not accept 'boiling'" --dry-run-shutdown --force-thermal boiling
expect_refusal "'--consent' does not accept 'yes'" --dry-run-shutdown --consent yes
expect_refusal "unexpected argument 'stray'" --dry-run-shutdown stray
expect_refusal "unknown switch '-h'" -h
expect_refusal "Try 'velmora-heat-monitor --help'" --bogus

# macOS's own arguments are ignored; --data-dir works with neither HOME nor XDG_DATA_HOME.
env -u HOME -u XDG_DATA_HOME "$EXE" -psn_0_12345 -NSDocumentRevisionsDebugMode YES \
  -ApplePersistenceIgnoreState YES --headless --data-dir "$DATA" --dry-run-shutdown --mute \
  >"$OUT" 2>&1 &
PID=$!
wait_for_line "---- Velmora Heat Monitor 1.1 launched" 5
stop_monitor
expect_line "dryRun=true"
pass

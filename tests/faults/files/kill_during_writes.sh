#!/usr/bin/env bash
# SIGKILL at random moments while the settings and the marker are being saved, hundreds of
# times: what is left is always either nothing or a whole file, and the next launch removes
# the temporaries of the killed writes and shows no relief from a broken marker. Then the same
# for the real program's own consent write.
source "$(dirname "$0")/faults_lib.sh"
WRITER=${STORE_WRITE_LOOP:?the test-only writer is needed}
KILLS=${KILLS:-300}
mkdir -p "$DATA"

for ((i = 1; i <= KILLS; i++)); do
  "$WRITER" write "$DATA" 2>/dev/null &
  writer=$!
  sleep "0.00$((RANDOM % 10))"
  kill -KILL "$writer"
  wait "$writer" 2>/dev/null || true
  verdict=$("$WRITER" check "$DATA") || fail "after kill $i: $verdict"
done
[[ -f "$DATA/settings.json" ]] || fail "no settings.json was ever completed"
echo "after $KILLS kills: $(find "$DATA" -name '.*.tmp-*' | wc -l) stray temporary files"

# The next launch cleans up and judges the marker: a whole one gives relief, none gives none.
had_marker=no
[[ -f "$MARKER" ]] && had_marker=yes
start_plain
wait_for_line "stage-c: settings loaded" 5
stop_monitor
leftovers=$(find "$DATA" -name '.*.tmp-*' | wc -l)
((leftovers == 0)) || fail "$leftovers temporary files of killed writes were left at launch"
expect_no_line "not usable"
expect_no_line "shutdown at ,"
if [[ $had_marker == yes ]]; then expect_line "showing relief; marker cleared"; fi
[[ ! -e "$MARKER" ]] || fail "the marker was not cleared at launch"

# The real program killed while it records consent given on its command line.
for ((i = 1; i <= 40; i++)); do
  answer=on
  ((i % 2)) && answer=off
  HOME="$WORK" XDG_CONFIG_HOME="$WORK/config" "$EXE" --headless --data-dir "$DATA" \
    --dry-run-shutdown --mute --consent "$answer" >/dev/null 2>&1 &
  victim=$!
  sleep "0.0$((RANDOM % 10))"
  kill -KILL "$victim" 2>/dev/null || true
  wait "$victim" 2>/dev/null || true
  verdict=$("$WRITER" check "$DATA") || fail "after killing the watchdog $i times: $verdict"
done
pass

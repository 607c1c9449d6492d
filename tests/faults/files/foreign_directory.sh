#!/usr/bin/env bash
# A data directory that other users may write to, or that another user owns, is refused before
# anything is written, so links planted there cannot turn the log or the marker against the
# user. Links planted in the user's own directory are replaced, never followed.
source "$(dirname "$0")/faults_lib.sh"
VICTIMS="$WORK/victims"
mkdir -p "$VICTIMS"
for name in profile marker settings old-log; do printf 'precious %s\n' "$name" >"$VICTIMS/$name"; done
before=$(cd "$VICTIMS" && sha256sum ./*)

plant_links() {
  ln -sfn "$VICTIMS/profile" "$1/heat.log"
  ln -sfn "$VICTIMS/marker" "$1/auto-shutdown.marker"
  ln -sfn "$VICTIMS/settings" "$1/settings.json"
  ln -sfn "$VICTIMS/old-log" "$1/heat.log.1"
}

expect_victims_unchanged() {
  [[ "$(cd "$VICTIMS" && sha256sum ./*)" == "$before" ]] || fail "a victim file was changed"
}

# Runs the watchdog on DIR and expects a refusal naming WHY, exit status 1, nothing written.
expect_refused() {
  local dir=$1 why=$2 status=0
  HOME="$WORK" "$EXE" --headless --data-dir "$dir" --dry-run-shutdown --mute --consent on \
    --force-thermal critical >"$OUT" 2>&1 || status=$?
  ((status == 1)) || fail "expected exit status 1 for $dir, got $status"
  grep -q -F "refusing the data directory $dir: $why" "$OUT" || fail "no refusal naming '$why'"
  expect_victims_unchanged
}

# A directory everybody may write to, like /tmp itself.
SHARED="$WORK/shared"
mkdir -m 1777 "$SHARED"
plant_links "$SHARED"
expect_refused "$SHARED" "other users may write to it (mode 1777)"
# Group-writable is refused too.
chmod 0770 "$SHARED"
expect_refused "$SHARED" "other users may write to it (mode 0770)"

# A directory owned by someone else.
if [[ $(id -u) -eq 0 ]]; then
  FOREIGN="$WORK/foreign"
  mkdir -m 0755 "$FOREIGN"
  chown 65534:65534 "$FOREIGN"
  expect_refused "$FOREIGN" "it belongs to user id 65534, not to you"
else
  echo "note: not root, so no directory owned by another user can be made; that part is not run"
fi

# The user's own directory with links planted in it: a whole emergency writes the settings,
# the log and the marker, and not one byte reaches the link targets.
mkdir -m 0700 "$DATA"
plant_links "$DATA"
start_plain --consent on --force-thermal critical
sleep 0.5
wait_for_line "stage-c: marker written $MARKER" 20
stop_monitor
expect_victims_unchanged
for name in heat.log auto-shutdown.marker settings.json; do
  [[ -f "$DATA/$name" && ! -L "$DATA/$name" ]] || fail "$name is not a regular file of its own"
done
expect_line "log: $LOG was a symbolic link to $VICTIMS/profile; it was removed and a new log begun"
grep -q '"consentRecorded": true' "$DATA/settings.json" || fail "consent was not saved"
[[ $(stat -c %a "$DATA/settings.json") == 600 ]] || fail "settings.json is not private to the user"
pass

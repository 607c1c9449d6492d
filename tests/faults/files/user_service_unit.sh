#!/usr/bin/env bash
# The desktop session's unit passes `systemd-analyze --user verify` and keeps the protections
# a user's service manager supports: an exposure score of at most 3.0 of 10 in
# `systemd-analyze --user security`, and none of the settings that would break the window.
source "$(dirname "$0")/faults_lib.sh"
command -v systemd-analyze >/dev/null 2>&1 || skip "systemd-analyze is not installed"
UNIT="$WORK/velmora-heat-monitor-user.service"
sed -e "s|@VELMORA_EXECUTABLE@|$EXE|" -e "s|@VELMORA_DOC_DIR@|$WORK|" \
  "${VELMORA_SOURCE_DIR:?}/packaging/linux/velmora-heat-monitor-user.service.in" >"$UNIT"
if grep -q '@VELMORA' "$UNIT"; then fail "the unit still holds a placeholder: $(grep '@VELMORA' "$UNIT")"; fi
# A user manager needs a runtime directory of its own, which a build machine may not have.
export XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -m 0700 "$XDG_RUNTIME_DIR"
(cd "$WORK" && systemd-analyze --user verify --man=no "$UNIT") >"$OUT" 2>&1 || fail "verify: $(cat "$OUT")"
[[ ! -s "$OUT" ]] || fail "verify warned: $(cat "$OUT")"
if ! systemd-analyze --user security --offline=true "$UNIT" >"$OUT" 2>&1; then
  skip "this systemd-analyze cannot score a unit file offline: $(tail -n 1 "$OUT")"
fi
tail -n 1 "$OUT"
systemd-analyze --user security --offline=true --threshold=30 "$UNIT" >/dev/null 2>&1 ||
  fail "the exposure score is above 3.0: $(tail -n 1 "$OUT")"
for setting in NoNewPrivileges=yes ProtectSystem=strict ProtectHome=read-only ReadWritePaths= \
  RestrictAddressFamilies=AF_UNIX SystemCallFilter=@system-service UMask=0077 MemoryMax=; do
  grep -q "^$setting" "$UNIT" || fail "the unit lacks $setting"
done
# The web view's sandbox needs namespaces, its JavaScript engine writable code, the X server's
# socket lives in /tmp and the GPU in /dev.
for setting in RestrictNamespaces= MemoryDenyWriteExecute= PrivateTmp= PrivateDevices=; do
  if grep -q "^$setting" "$UNIT"; then fail "the unit sets $setting, which breaks the window"; fi
done
pass

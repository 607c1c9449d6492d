#!/usr/bin/env bash
# The systemd unit passes `systemd-analyze verify` and keeps its exposure score low in
# `systemd-analyze security` (at most 1.5 of 10).
source "$(dirname "$0")/faults_lib.sh"
command -v systemd-analyze >/dev/null 2>&1 || skip "systemd-analyze is not installed"
UNIT="$WORK/velmora-heat-monitor.service"
sed -e "s|@VELMORA_EXECUTABLE@|$EXE|" -e "s|@VELMORA_DOC_DIR@|$WORK|" \
  -e "s|@VELMORA_RULES_EXAMPLE@|$WORK/50-velmora-heat-monitor.rules|" \
  "${VELMORA_SOURCE_DIR:?}/packaging/linux/velmora-heat-monitor.service.in" >"$UNIT"
if grep -q '@VELMORA' "$UNIT"; then fail "the unit still holds a placeholder: $(grep '@VELMORA' "$UNIT")"; fi
(cd "$WORK" && systemd-analyze verify --man=no "$UNIT") >"$OUT" 2>&1 || fail "verify: $(cat "$OUT")"
[[ ! -s "$OUT" ]] || fail "verify warned: $(cat "$OUT")"
if ! systemd-analyze security --offline=true "$UNIT" >"$OUT" 2>&1; then
  skip "this systemd-analyze cannot score a unit file offline: $(tail -n 1 "$OUT")"
fi
tail -n 1 "$OUT"
systemd-analyze security --offline=true --threshold=15 "$UNIT" >/dev/null 2>&1 ||
  fail "the exposure score is above 1.5: $(tail -n 1 "$OUT")"
for setting in LimitNOFILE= NoNewPrivileges=yes ProtectSystem=strict ProtectHome=yes \
  PrivateTmp=yes PrivateDevices=yes RestrictAddressFamilies=AF_UNIX MemoryMax= \
  Restart=on-failure StartLimitBurst= StateDirectory=; do
  grep -q "^$setting" "$UNIT" || fail "the unit lacks $setting"
done
pass

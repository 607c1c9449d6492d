#!/usr/bin/env bash
# --diagnose reads the counters twice a moment apart, so the live system's CPU figures are real
# figures in its snapshot, never "n/a" and never noise from a zero-length interval.
source "$(dirname "$0")/e2e_lib.sh"
[[ -r /proc/stat ]] || { echo "SKIP: no /proc/stat to read"; pass; exit 0; }
HOME="$WORK" "$EXE" --diagnose --data-dir "$DATA" >"$OUT" 2>&1 || fail "--diagnose failed"
grep -Eq '^CPU busy +[0-9]+% +REAL live' "$OUT" || fail "no live CPU busy figure"
grep -Eq '^Per-core CPU +[0-9]+ cores +REAL live' "$OUT" || fail "no live per-core figures"
grep -q '"coreLoads":\[' "$OUT" || fail "no per-core loads in the snapshot"
grep -Eq '^Busiest processes between the two samples \([0-9.]+ s\):$' "$OUT" ||
  fail "no list of the busiest processes"
grep -Eq '^  (.+ \(pid [0-9]+\) [0-9]+% of a core|none measured)$' "$OUT" ||
  fail "the busiest processes are not listed"
pass

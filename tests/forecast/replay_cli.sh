#!/bin/sh
# forecast_replay from the command line: a series in, "t,eta" out; bad input is refused with a
# message on standard error and exit status 2.
tool=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

expect_refusal() {  # name, expected message part, then the arguments; input on stdin
    name=$1; message=$2; shift 2
    status=0
    "$tool" "$@" >"$work/out" 2>"$work/err" || status=$?
    [ "$status" -eq 2 ] || fail "$name: exit status $status, expected 2"
    grep -q -- "$message" "$work/err" || fail "$name: stderr lacks '$message': $(cat "$work/err")"
    [ ! -s "$work/out" ] || fail "$name: printed on stdout: $(head -3 "$work/out")"
}

i=0
while [ $i -le 60 ]; do echo "$i,$((80 + i / 10))"; i=$((i + 1)); done >"$work/ramp.csv"
"$tool" --limit 100 <"$work/ramp.csv" >"$work/out" || fail "ramp: exit status $?"
[ "$(wc -l <"$work/out")" -eq 61 ] || fail "ramp: $(wc -l <"$work/out") lines for 61 samples"
[ "$(head -1 "$work/out")" = "0,none" ] || fail "ramp: first line $(head -1 "$work/out")"
last=$(tail -1 "$work/out")
eta=${last#60,}
case $eta in
    none|*[!0-9]*) fail "ramp: no ETA at the end: $last" ;;
esac
# 86 °C at 60 s, rising 0.1 °C/s: about 140 s.
[ "$eta" -ge 120 ] && [ "$eta" -le 160 ] || fail "ramp: ETA $eta, expected about 140"

printf '0,50\n1,warm\n' | expect_refusal "non-number" "line 2: expected" --limit 100
printf '0,50\n5,51\n4,52\n' | expect_refusal "backwards" "time goes backwards" --limit 100
expect_refusal "empty" "the input is empty" --limit 100 </dev/null
echo "0,50" | expect_refusal "no limit" "--limit is required"
echo "0,50" | expect_refusal "bad limit" "--limit must be a number" --limit hot
echo "forecast_replay: all command-line cases passed"

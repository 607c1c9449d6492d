#!/usr/bin/env bash
# The manual page and the bash completion the build writes list exactly the switches that
# `--help` lists, each of which the program accepts; the page is clean roff.
set -euo pipefail
EXE=${1:?usage: switch_docs_match.sh EXE MANPAGE COMPLETION}
MAN=${2:?}
COMPLETION=${3:?}
fail() { echo "FAIL: $*" >&2; exit 1; }

from_help=$("$EXE" --help | grep -o -E '^  --[a-z-]+' | sed 's/^ *//' | sort)
# Option entries in the OPTIONS section: `.B \-\-mute`, or `.BI "\-\-data\-dir " PATH` for a switch with a value.
from_man=$(sed -n '/^\.SH OPTIONS/,/^\.SH FILES/p' "$MAN" | grep -E '^\.BI? "?\\-\\-' | sed -e 's/^\.BI\{0,1\} "\{0,1\}//' -e 's/\\-/-/g' -e 's/[ "].*//' | sort)
[[ -n "$from_help" ]] || fail "--help lists no switches"
[[ "$from_man" == "$from_help" ]] || fail "the manual page lists other switches than --help:
$(diff <(echo "$from_help") <(echo "$from_man"))"

# Every listed switch is accepted (with a value when it takes one).
while read -r name; do
  # "  --data-dir PATH   Keep..." names a value; "  --mute   Play..." does not.
  value_name=$("$EXE" --help | sed -n -E "s/^  $name ([^ ]+).*/\1/p")
  args=("$name")
  case "$value_name" in
    "") ;;
    PATH|FILE) args+=("/tmp") ;;
    *) args+=("$(bash -c "source '$COMPLETION'; COMP_WORDS=(velmora-heat-monitor $name ''); COMP_CWORD=2; _velmora_heat_monitor; echo \${COMPREPLY[0]}")") ;;
  esac
  "$EXE" "${args[@]}" --help >/dev/null 2>&1 || fail "the program refuses '${args[*]}'"
done <<<"$from_help"

# The completion offers the same switches, and the values of those that take a choice.
complete_words() {
  bash -c "source '$COMPLETION'; COMP_WORDS=(velmora-heat-monitor $*); COMP_CWORD=\$((\${#COMP_WORDS[@]} - 1)); _velmora_heat_monitor; printf '%s\n' \"\${COMPREPLY[@]}\""
}
[[ "$(complete_words '--' | sort)" == "$from_help" ]] || fail "the completion offers other switches than --help"
[[ "$(complete_words '--force-thermal' 'c')" == "critical" ]] || fail "no completion of thermal state names"
[[ "$(complete_words '--consent' "''" | sort | tr '\n' ' ')" == "off on " ]] || fail "no completion of on/off"

if command -v groff >/dev/null 2>&1; then
  warnings=$(groff -man -ww -z "$MAN" 2>&1)
  [[ -z "$warnings" ]] || fail "groff warns about the manual page: $warnings"
else
  echo "note: groff is not installed; the roff itself is not checked"
fi
echo "PASS: switch_docs_match"

#!/usr/bin/env bash
# One copy of the watchdog per process: its code lives in the shared library alone, the
# executable and the desktop module only use it, the module shows the executable one symbol,
# and neither the executable nor the shared library needs GTK or WebKit.
# Usage: one_copy.sh EXECUTABLE SHARED_LIBRARY MODULE
set -euo pipefail
exe=${1:?executable}
core=${2:?shared library}
module=${3:?desktop module}
for tool in nm readelf; do
  command -v "$tool" >/dev/null 2>&1 || { echo "SKIP: $tool is not installed"; exit 77; }
done
fail() { echo "FAIL: $*" >&2; exit 1; }

needed() { readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }
needed "$exe" | grep -qx "$(basename "$core")" || fail "the executable does not use $(basename "$core")"
needed "$module" | grep -qx "$(basename "$core")" || fail "the module does not use $(basename "$core")"
for file in "$exe" "$core"; do
  if needed "$file" | grep -q -e libgtk -e libwebkit2gtk -e libdbusmenu; then
    fail "$(basename "$file") needs the toolkit: $(needed "$file" | tr '\n' ' ')"
  fi
done

exported=$(nm -D --defined-only "$module" | awk '{print $3}')
[[ "$exported" == "velmora_desktop_module" ]] || fail "the module exports: $exported"

# Code and statics of the watchdog, each defined exactly once among the three files.
definitions() { nm -C --defined-only "$1" | grep -c -F -- "$2" || true; }
for symbol in "velmora::Engine::tick" "velmora::AppController::start()" \
    "velmora::replaceFile(" "velmora::LiveSampler::LiveSampler(" \
    "velmora::quarantineRead(" "quarantine()::instance" "velmora::makePlatformParts("; do
  in_core=$(definitions "$core" "$symbol")
  in_exe=$(definitions "$exe" "$symbol")
  in_module=$(definitions "$module" "$symbol")
  ((in_core >= 1)) || fail "$symbol is not in the shared library"
  ((in_exe == 0 && in_module == 0)) ||
    fail "$symbol has a second copy (executable $in_exe, module $in_module)"
done
echo "PASS: one copy, in $(basename "$core")"

#!/usr/bin/env bash
# Runs a command on a private virtual display and a private session bus, as the GUI tests
# need: no desktop has to be installed or running. Exit status 77 (skipped) when the tools
# are missing.
set -euo pipefail
for tool in xvfb-run xauth Xvfb dbus-run-session; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    echo "SKIP: $tool is not installed (scripts/install-deps installs it)"
    exit 77
  fi
done
# WebKit draws without GPU compositing on a virtual display; software GL where it asks.
export WEBKIT_DISABLE_COMPOSITING_MODE=1 LIBGL_ALWAYS_SOFTWARE=1
# No accessibility bus on the private session; GTK's own accessible objects still work.
export NO_AT_BRIDGE=1
unset WAYLAND_DISPLAY
# GTK, fontconfig and WebKit keep allocations for the life of the process that LeakSanitizer
# reports at exit; leaks in our own code are found by the other suites, which keep it on.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
exec xvfb-run -a -s "-screen 0 1280x800x24 -nolisten tcp" dbus-run-session -- "$@"

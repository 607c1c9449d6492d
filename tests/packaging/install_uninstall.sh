#!/usr/bin/env bash
# Installs the build into a temporary root as a package would (DESTDIR), checks the desktop
# entry, the software-centre entry, the icons and that the installed program finds its pages
# and sounds there, then uninstalls and expects the root to be empty again.
# Usage: install_uninstall.sh BUILD_DIR INSTALL_PREFIX FIXTURE_ROOT
set -euo pipefail
build=${1:?build folder} prefix=${2:?install prefix} fixture=${3:?fixture machine tree}
app_id=org.velmora.heat-monitor

for tool in desktop-file-validate appstreamcli; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    echo "skipped: $tool is not installed (scripts/install-deps installs it)"
    exit 77
  fi
done

work=$(mktemp -d "${TMPDIR:-/tmp}/velmora-install.XXXXXX")
root="$work/root"
mkdir -p "$root"
# The build's own record of a real installation must survive this test.
records=(install_manifest.txt install_destdir.txt)
for record in "${records[@]}"; do
  if [[ -f "$build/$record" ]]; then cp -p "$build/$record" "$work/$record.saved"; fi
done
restore() {
  for record in "${records[@]}"; do
    if [[ -f "$work/$record.saved" ]]; then cp -p "$work/$record.saved" "$build/$record"; fi
  done
  rm -rf "$work"
}
trap restore EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

DESTDIR="$root" cmake --install "$build" >"$work/install.log" || { cat "$work/install.log"; fail "install"; }
usr="$root$prefix"
echo "installed $(find "$root" -type f | wc -l) files under $root$prefix"

desktop="$usr/share/applications/$app_id.desktop"
[[ -f "$desktop" ]] || fail "no desktop entry $desktop"
desktop-file-validate "$desktop" || fail "desktop-file-validate"
metainfo="$usr/share/metainfo/$app_id.metainfo.xml"
[[ -f "$metainfo" ]] || fail "no metainfo $metainfo"
appstreamcli validate --no-net "$metainfo" || fail "appstreamcli validate"

exec_path=$(sed -n 's/^Exec=//p' "$desktop" | head -1)
[[ "$exec_path" == "$prefix/bin/velmora-heat-monitor" ]] || fail "Exec is '$exec_path'"
[[ -x "$root$exec_path" ]] || fail "the Exec program $root$exec_path is not installed"

icon=$(sed -n 's/^Icon=//p' "$desktop")
[[ "$icon" == "$app_id" ]] || fail "Icon is '$icon'"
icons="$usr/share/icons/hicolor"
grep -q '<svg' "$icons/scalable/apps/$icon.svg" || fail "no scalable icon"
for size in 16 24 32 48 64 128 256; do
  png="$icons/${size}x${size}/apps/$icon.png"
  [[ -f "$png" ]] || fail "no ${size}px icon"
  # The PNG signature, then the header's width and height as 4-byte big-endian numbers.
  read -r signature < <(od -An -tx1 -N8 "$png" | tr -d ' \n'; echo)
  [[ "$signature" == 89504e470d0a1a0a ]] || fail "$png is not a PNG"
  dims=$(od -An -tu1 -j16 -N8 "$png" | awk '{print $3*256+$4 "x" $7*256+$8}')
  [[ "$dims" == "${size}x${size}" ]] || fail "$png is $dims"
done
for status in heat-normal heat-warm heat-hot alarm; do
  [[ -f "$icons/scalable/status/$app_id-$status-symbolic.svg" ]] || fail "no $status icon"
done
for file in lib/systemd/system/velmora-heat-monitor.service \
    share/doc/velmora-heat-monitor/examples/50-velmora-heat-monitor.rules; do
  [[ -f "$usr/$file" ]] || fail "no $file"
done
# The window is a module beside the libraries, loaded only when there is a display; the
# watchdog's code is the shared library beside it, which the executable finds from its own
# folder, never from the build tree.
[[ -n "$(find "$usr/lib" -path '*/velmora-heat-monitor/velmora-heat-monitor-desktop.so')" ]] ||
  fail "no desktop module"
[[ -n "$(find "$usr/lib" -path '*/velmora-heat-monitor/libvelmora-heat-monitor-core.so')" ]] ||
  fail "no shared library beside the desktop module"
if command -v readelf >/dev/null 2>&1; then
  runpath=$(readelf -d "$root$exec_path" | sed -n 's/.*(RUNPATH).*\[\(.*\)\]/\1/p')
  [[ "$runpath" == '$ORIGIN/'* ]] || fail "the installed program looks for its library in '$runpath'"
fi

# The installed program, run from the root, reads its resources there and nowhere else.
home="$work/home"
mkdir -p "$home"
report=$(cd / && HOME="$home" XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" \
  VELMORA_ROOT="$fixture" "$root$exec_path" --diagnose) || fail "--diagnose failed"
head -3 <<<"$report"
grep -qxF "resources: $usr/share/velmora-heat-monitor" <<<"$report" || fail "resources elsewhere"
grep -qxF "  pages: all 4 found" <<<"$report" || fail "pages missing"
grep -qxF "  sounds: all 2 found" <<<"$report" || fail "sounds missing"

DESTDIR="$root" cmake --build "$build" --target uninstall >"$work/uninstall.log" ||
  { cat "$work/uninstall.log"; fail "uninstall"; }
left=$(find "$root" -mindepth 1 | head -20)
[[ -z "$left" ]] || fail "uninstall left: $left"
echo "uninstall left the root empty"

#!/usr/bin/env bash
# Runs a test program as an ordinary user: itself when the caller is one already, otherwise (root,
# as in CI) as VELMORA_TEST_USER (default nobody) through setpriv. Permission bits stop an
# ordinary user but never root, so the cases about folders that refuse writes only mean
# something for the former. Exits 77 (skipped) when root cannot become that user here.
# Usage: as_ordinary_user.sh TEST_PROGRAM [ARGUMENTS...]
set -euo pipefail

program=${1:?usage: as_ordinary_user.sh TEST_PROGRAM [ARGUMENTS...]}
shift
user=${VELMORA_TEST_USER:-nobody}
skip() {
  echo "skipped: $*"
  exit 77
}

[[ $(id -u) -eq 0 ]] || exec "$program" "$@"
command -v setpriv >/dev/null || skip "setpriv (util-linux) is not installed"
uid=$(id -u "$user" 2>/dev/null) || skip "there is no user '$user' to run them as"
gid=$(id -g "$user")

# The build tree may lie where that user cannot reach: run a copy from a folder it can read,
# with a temporary folder of its own.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 0755 "$work"
copy="$work/$(basename "$program")"
cp "$program" "$copy"
chmod 0755 "$copy"
mkdir "$work/tmp"
chown "$uid:$gid" "$work/tmp"
cd "$work"
if ! setpriv --reuid="$uid" --regid="$gid" --clear-groups true 2>/dev/null; then
  skip "this machine does not let root become '$user' (setpriv failed)"
fi
env HOME="$work/tmp" TMPDIR="$work/tmp" \
  setpriv --reuid="$uid" --regid="$gid" --clear-groups --inh-caps=-all "$copy" "$@"

#!/usr/bin/env bash
# The store tests once more as an ordinary user, when the suite runs as root (as CI does):
# permission bits stop an ordinary user but never root, so the failures of a directory that
# refuses writes are only real for the former. Usage: as_ordinary_user.sh STORE_TESTS [USER]
set -euo pipefail

tests=$1
user=${2:-nobody}
skip() {
  echo "skipped: $*"
  exit 77
}

[[ $(id -u) -eq 0 ]] || skip "not root: the store tests already ran as an ordinary user"
command -v setpriv >/dev/null || skip "setpriv (util-linux) is not installed"
uid=$(id -u "$user" 2>/dev/null) || skip "there is no user '$user' to run them as"
gid=$(id -g "$user")

# The build tree may lie where that user cannot reach: run a copy from a folder it can read,
# with a temporary folder of its own.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 0755 "$work"
cp "$tests" "$work/store_tests"
chmod 0755 "$work/store_tests"
mkdir "$work/tmp"
chown "$uid:$gid" "$work/tmp"
cd "$work"
if ! setpriv --reuid="$uid" --regid="$gid" --clear-groups true 2>/dev/null; then
  skip "this machine does not let root become '$user' (setpriv failed)"
fi
env HOME="$work/tmp" TMPDIR="$work/tmp" \
  setpriv --reuid="$uid" --regid="$gid" --clear-groups --inh-caps=-all \
  "$work/store_tests"

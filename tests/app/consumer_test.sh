#!/usr/bin/env bash
# Builds the sample add-on from an installed tree alone, loads it and runs its command: consumer_test.sh TREE SOURCE
set -euo pipefail
tree=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -a "$tree" "$work/installed"
cp -a "$source" "$work/source"
cmake -G Ninja -S "$work/source" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/installed" -DCMAKE_CXX_FLAGS="${KORVANE_CONSUMER_FLAGS:-}" >"$work/log" 2>&1 &&
  cmake --build "$work/build" >>"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
export XDG_CONFIG_HOME=$work/config
answer=$("$work/installed/bin/korvane" --module "$work/build/Hello.kvx" --script <(printf 'HELLO\nMei Lin\n'))
grep -q 'Hello, Mei Lin. The first application is QX_SUPERPART.' <<<"$answer" || { echo "$answer"; exit 1; }

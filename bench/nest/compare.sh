#!/bin/sh
# Sets the nester and the packing solver beside their peers: compare.sh BUILD_FOLDER [SECONDS [NUMBERS [N...]]]
# The peers (npm: maxrects-packer, or-tools-wasm) are installed in a temporary folder that is removed afterwards.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$1; shift
seconds=${1:-10}; numbers=${2:-2}
[ $# -gt 2 ] && shift 2 || set -- 10 30 50
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
cp "$here/compare/compare.mjs" "$work"
(cd "$work" && npm install --silent --no-audit --no-fund maxrects-packer@2.7.4 or-tools-wasm@0.9.1)
"$build/bench/nest_instances" rectangles > "$work/rectangles.jsonl"
(cd "$work" && node compare.mjs rectangles rectangles.jsonl)
"$build/bench/nest_instances" boxes "$seconds" "$numbers" "$@" > "$work/boxes.jsonl"
(cd "$work" && node compare.mjs boxes boxes.jsonl "$seconds")

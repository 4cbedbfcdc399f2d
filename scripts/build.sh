#!/usr/bin/env bash
# Builds one preset (release by default), with all its targets or the ones named: scripts/build.sh [PRESET [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
shift || true
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! cmake --preset "$preset" >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
targets=()
[ $# -gt 0 ] && targets=(--target "$@")
cmake --build --preset "$preset" "${targets[@]}"

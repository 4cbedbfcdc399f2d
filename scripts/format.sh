#!/usr/bin/env bash
# Formats every source file by .clang-format, or checks only: scripts/format.sh [--check]
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run --Werror)
git ls-files -- '*.cpp' '*.h' ':!platform/text/casemap_table.h' | xargs clang-format "${mode[@]}"

#!/bin/sh
# compare.sh BUILD [DRAWING]: reading and writing beside dxflib and ezdxf, interleaved; medians of five, in seconds.
# BUILD is configured with -DKORVANE_BENCH=ON -DKORVANE_BENCH_DXFLIB=ON. Peers that aren't there are left out.
set -eu
build=$1
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
drawing=${2:-$work/drawing.dxf}
[ -f "$drawing" ] || python3 "$here/../gen/drawing.py" "$drawing"
cp "$drawing" "$work/input.dxf"

own() {  # NAME: the benchmark's time in milliseconds, as seconds
  KORVANE_BENCH_DRAWING="$work/input.dxf" "$build/bench/bench_io" --benchmark_filter="^$1\$" --benchmark_format=csv 2>/dev/null |
    awk -F, -v name="\"$1\"" '$1 == name { printf "%.4f\n", $3 / 1000 }'
}

for round in 1 2 3 4 5; do
  for name in readFromMemory readFromFile write/toMemory write/toFile; do
    own "$name" >>"$work/korvane-$(echo "$name" | tr / -)"
  done
  [ ! -x "$build/bench/dxflib_read" ] || "$build/bench/dxflib_read" "$work/input.dxf" >>"$work/dxflib-read"
  if /usr/bin/python3 -c 'import ezdxf' 2>/dev/null; then
    /usr/bin/python3 "$here/ezdxf_times.py" "$work/input.dxf" >"$work/both"
    cut -d' ' -f1 "$work/both" >>"$work/ezdxf-read"
    cut -d' ' -f2 "$work/both" >>"$work/ezdxf-write"
  fi
done
for times in "$work"/*-*; do
  printf '%-28s %s\n' "$(basename "$times")" "$(sort -n "$times" | sed -n 3p)"
done

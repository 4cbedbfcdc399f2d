#!/usr/bin/env bash
# Springs as people meet them: the script of ./run, single springs, refusals, and a command that is cancelled.
# springs_test.sh TREE SOURCE
set -euo pipefail
korvane=$1/bin/korvane
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
failures=0
expect() { # WHAT ACTUAL EXPECTED
  if [ "$2" != "$3" ]; then
    printf 'FAIL %s: "%s" instead of "%s"\n' "$1" "$2" "$3"
    failures=$((failures + 1))
  fi
}
entities() { "$korvane" info "$1" | sed -n '1s/.*objects, \([0-9]*\) entities.*/\1/p'; }

drawing=$source/examples/drawings/sheet_parts_chute_r2000.dxf
"$korvane" "$drawing" --script "$source/scripts/springs.scr" --save "$work/springs.dxf" --save-version R2018 >/dev/null </dev/null
[ "$(entities "$work/springs.dxf")" -gt "$(entities "$drawing")" ] || expect "springs were drawn" no yes
"$korvane" audit "$work/springs.dxf" >"$work/audit" || expect "no faults" "$(head -1 "$work/audit")" "none"
for layer in 粗实线 点画线 剖面符号; do
  "$korvane" info "$work/springs.dxf" | grep -q "$layer" || expect "layer $layer" missing there
done
# An independent reader takes it without a word.
errors=$(/usr/bin/python3 - "$work/springs.dxf" <<'PY'
import sys, ezdxf
print(len(ezdxf.readfile(sys.argv[1]).audit().errors))
PY
)
expect "an independent reader's errors" "$errors" 0

for request in "--family compression --form 3" "--family extension" "--family torsion --form 2 --H0 40" "--family end --H0 30 -n 25" \
  "--family standard --standard RYII --H0 120"; do
  # shellcheck disable=SC2086
  "$korvane" spring $request -o "$work/one.dxf" -o "$work/one.svg" >/dev/null
  [ "$(entities "$work/one.dxf")" -gt 0 ] || expect "$request" nothing drawn
  grep -q '<path' "$work/one.svg" || expect "$request: a picture" none drawn
done

refused() { # WORDS ARGUMENTS...
  local words=$1 code=0
  shift
  "$korvane" spring "$@" -o "$work/no.dxf" >/dev/null 2>"$work/err" || code=$?
  expect "exit code of $*" "$code" 2
  grep -q "$words" "$work/err" || expect "words of $*" "$(cat "$work/err")" "$words"
  [ ! -e "$work/no.dxf" ] || expect "file of $*" made none
}
refused "thicker than the coil" -d 30 -D 20
refused "too short" --H0 5
refused "At least 3 coils" -n 2.9
refused "At most 1000 coils" -n 1e9
refused "no standard form" --family standard --standard XI
refused "no family" --family leaf

# A wrong length is asked for again; Esc leaves nothing behind, not even a layer that is current.
printf 'KMSPRING\nCompression\n5\n2\n20\n5\n5\n2\n20\n50\n5\n0,0\n' >"$work/again.scr"
"$korvane" --script "$work/again.scr" --save "$work/again.dxf" >"$work/log" </dev/null
grep -q "too short" "$work/log" || expect "the wrong length" "no word" refused
[ "$(entities "$work/again.dxf")" -gt 10 ] || expect "the spring after it" missing drawn
printf 'KMSPRING\nStandard\nYI\n1\n3\n23\n120\n^C\nSAVEAS\n%s\n' "$work/esc.dxf" >"$work/esc.scr"
"$korvane" --script "$work/esc.scr" --keep-going >/dev/null 2>&1 </dev/null || true
expect "entities after Esc" "$(entities "$work/esc.dxf")" 0
exit $((failures > 0))

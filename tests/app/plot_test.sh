#!/usr/bin/env bash
# `korvane plot` as a person meets it: plot_test.sh TREE EXAMPLES
set -uo pipefail
korvane=$1/bin/korvane
drawings=$2/drawings
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
  echo "FAIL: $1"
  [ -n "${2:-}" ] && echo "$2"
  exit 1
}
expect() { # code, words on standard error, arguments
  local code=$1 words=$2 got=0
  shift 2
  "$korvane" plot "$@" >"$work/out" 2>"$work/err" || got=$?
  [ "$got" -eq "$code" ] || fail "$* gave $got, not $code" "$(cat "$work/err")"
  [ -z "$words" ] || grep -qF -- "$words" "$work/err" || fail "$* doesn't say: $words" "$(cat "$work/err")"
  [ ! -s "$work/out" ] || fail "$* prints to standard output" "$(cat "$work/out")"
}

a=$drawings/ae_r2000_ascii.dxf
b=$drawings/sheet_parts_chute_r2000.dxf
sheet=$drawings/viewport_frozen_layers_r2013.dxf

# One file of each form, told by its first bytes.
expect 0 "" "$a" -o "$work/a.svg"
expect 0 "" "$a" -o "$work/a.pdf"
expect 0 "" "$a" -o "$work/a.PNG" --resolution 30
head -c 5 "$work/a.svg" | grep -q '<?xml' || fail "no SVG"
head -c 5 "$work/a.pdf" | grep -q '%PDF-' || fail "no PDF"
head -c 4 "$work/a.PNG" | grep -q 'PNG' || fail "no PNG"

# Several: pages of one PDF, or a file for each.
expect 0 "" "$a" "$b" -o "$work/both.pdf"
grep -aq '/Count 2' "$work/both.pdf" || fail "two drawings aren't two pages"
expect 0 "" "$a" "$b" -o "$work/many/{}.svg"
[ -s "$work/many/ae_r2000_ascii.svg" ] && [ -s "$work/many/sheet_parts_chute_r2000.svg" ] || fail "pattern" "$(ls "$work/many")"
expect 0 "" "$a" "$b" -o "$work/folder/"
[ -s "$work/folder/ae_r2000_ascii.pdf" ] || fail "folder" "$(ls "$work/folder")"
expect 2 "one picture shows one drawing" "$a" "$b" -o "$work/both.svg"
expect 1 "would take the place" "$a" "$a" -o "$work/twice/{}.svg"

# Options reach the page.
expect 0 "" "$a" -o "$work/o.svg" --paper A3 --landscape --scale 1:2 --monochrome --margin 5
grep -q 'width="420mm" height="297mm"' "$work/o.svg" || fail "paper" "$(head -2 "$work/o.svg")"
grep -o 'stroke="#[0-9a-f]*"' "$work/o.svg" | sort -u | diff - <(echo 'stroke="#000000"') || fail "monochrome"
expect 0 "" "$sheet" -o "$work/l.svg" --layout '*'
[ "$(grep -c '<clipPath' "$work/l.svg")" -eq 3 ] || fail "viewports"
expect 0 "" "$b" -o "$work/w.svg" --window 0,0,100,50 --scale 2
expect 1 "nothing to plot" "$a" -o "$work/n.svg" --layer 'NO SUCH*'

# Wrong use is 2, work that fails is 1; then there is no file.
expect 2 'no paper' "$a" -o "$work/x.svg" --paper B77
expect 2 'no scale' "$a" -o "$work/x.svg" --scale 1:0
expect 2 'exclude each other' "$a" -o "$work/x.svg" --scale 1:2 --fit
expect 2 'exclude each other' "$a" -o "$work/x.svg" --landscape --portrait
expect 2 'ends in .svg, .pdf or .png' "$a" -o "$work/x.bmp"
expect 2 'no background' "$a" -o "$work/x.svg" --background pink
expect 2 'resolution' "$a" -o "$work/x.png" --resolution 0
expect 2 '' -o "$work/x.svg"
expect 1 'there is no layout "X"' "$a" -o "$work/x.svg" --layout X
expect 1 'nosuch.dxf' "$work/nosuch.dxf" -o "$work/x.svg"
expect 1 '32767' "$a" -o "$work/x.png" --resolution 9000
[ ! -e "$work/x.svg" ] && [ ! -e "$work/x.png" ] || fail "a failure left a file"
expect 1 '' "$a" "$work/nosuch.dxf" -o "$work/part.pdf"
grep -aq '/Count 1' "$work/part.pdf" || fail "the drawing that can be plotted is missing"
expect 1 '' "$a" -o "$work/no/such/folder/x.svg"

# Without fonts letters are boxes, told once.
XDG_DATA_DIRS=$work XDG_DATA_HOME=$work HOME=$work "$korvane" plot "$sheet" -o "$work/boxes.svg" 2>"$work/err" || fail "no fonts" "$(cat "$work/err")"
[ "$(grep -c osifont.ttf "$work/err")" -eq 1 ] || fail "missing font isn't told once" "$(cat "$work/err")"
grep -q '<use' "$work/boxes.svg" || fail "no boxes"

# The program plots what it has open.
"$korvane" "$a" --plot "$work/main.svg" </dev/null || fail "--plot"
grep -q '<path' "$work/main.svg" || fail "--plot drew nothing"
if "$korvane" "$a" --plot "$work/main.txt" </dev/null 2>/dev/null; then fail "--plot to .txt gave 0"; fi
echo ok

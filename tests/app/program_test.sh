#!/usr/bin/env bash
# The program as a person runs it: program_test.sh TREE
set -euo pipefail
tree=$1
korvane=$tree/bin/korvane
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config LC_ALL=C.UTF-8
fail() { echo "FAILED: $1"; shift; printf '%s\n' "$@"; exit 1; }

about=$("$korvane" --command QX_ABOUT </dev/null) || fail "the About box" "$about"
for text in 'About Korvane Mechanical' 'BUILD 0.1.0' 'Free software under the MIT licence' 5530.png; do
  grep -qF "$text" <<<"$about" || fail "the About box lacks $text" "$about"
done
# A command that may run inside another one, typed so, and its second name.
"$korvane" --command "'QX_ABOUT" --command ABOUTKM </dev/null >/dev/null || fail "other names of the command"
grep -qF 'not in this build' <<<"$("$korvane" --command IMINCREASEBACKUP)" || fail "a command of another build"

# The first failed command ends a script, with file and line; --keep-going goes on.
printf '; comment\n\nNOSUCH\nIM_RESXML\n' >"$work/a.scr"
if out=$("$korvane" --script "$work/a.scr" 2>"$work/err"); then fail "a failed script gave 0"; fi
grep -qF "a.scr:3: unknown command" "$work/err" || fail "position" "$(cat "$work/err")"
! grep -qF 'not in this build' <<<"$out" || fail "went on after a failure" "$out"
if out=$("$korvane" --keep-going --script "$work/a.scr" 2>/dev/null); then fail "--keep-going hid the failure"; fi
grep -qF 'not in this build' <<<"$out" || fail "--keep-going stopped" "$out"
"$korvane" --script "$work/none.scr" 2>"$work/err" && fail "a missing script gave 0"
grep -qF none.scr "$work/err" || fail "missing script" "$(cat "$work/err")"

# Standard input is a script, in UTF-8 or in the system's code page.
out=$(LC_ALL=zh_CN.UTF-8 "$korvane" <<<'关于机械') || fail "a localized name" "$out"
grep -qF 'BUILD 0.1.0' <<<"$out" || fail "a localized name" "$out"
out=$(printf '\xb9\xd8\xd3\xda\xbb\xfa\xd0\xb5\n' | LC_ALL=zh_CN.GBK "$korvane") || fail "a name in the 8-bit code page" "$out"
# Whatever the bytes make a command write stays in the test's own folder.
head -c 20000 /dev/urandom | (cd "$work" && "$korvane" --keep-going) >/dev/null 2>&1 || [ $? -eq 1 ] || fail "random bytes"

# Help comes from the commands' own table.
grep -qF 'Specify first corner point or [Chamfer/Fillet/Width]:' <<<"$("$korvane" help rec)" || fail "help by a short name"
"$korvane" help NOSUCH >/dev/null 2>"$work/err" && fail "help on nothing gave 0"
grep -qF '"NOSUCH"' "$work/err" || fail "help on nothing" "$(cat "$work/err")"
grep -qF '## PLINE' <<<"$("$korvane" help --markdown)" || fail "the page of commands"

# Wrong use is 2; a module that can't be loaded is told by file and reason.
"$korvane" --nonsense >/dev/null 2>&1 && fail "--nonsense gave 0" || [ $? -eq 2 ] || fail "--nonsense isn't wrong use"
printf 'not a library' >"$work/bad.kvx"
if "$korvane" --module "$work/bad.kvx" --command QX_ABOUT </dev/null >/dev/null 2>"$work/err"; then fail "a bad module gave 0"; fi
grep -qF bad.kvx "$work/err" || fail "bad module" "$(cat "$work/err")"
cp -a "$tree" "$work/tree"
rm "$work/tree/Professional/KVX8x64/MekCore.kvx"
code=0; "$work/tree/bin/korvane" --command QX_ABOUT </dev/null >/dev/null 2>"$work/err" || code=$?
[ $code -eq 1 ] && grep -qF MekCore.kvx "$work/err" || fail "missing module: $code" "$(cat "$work/err")"

# The standard goes with the drawing; a faulty line of the user's settings is told with file and number.
printf 'KMSTANDARD\nDIN\n' >"$work/din.scr"
"$korvane" --script "$work/din.scr" --save "$work/din.dxf" >/dev/null || fail "KMSTANDARD"
grep -qF AM_DIN "$work/din.dxf" || fail "the standard's style isn't in the drawing"
settings=$(find "$work/config" -name Symbols.ini)
[ -n "$settings" ] || fail "the user has no Symbols.ini"
printf '[General]\nStandard=JIS\nColour=red\n' >"$settings"
out=$("$korvane" --script <(printf 'KMSTANDARD\n\n')) || fail "KMSTANDARD with faulty settings" "$out"
grep -qF 'Symbols.ini(3): unknown key "Colour"' <<<"$out" || fail "the fault isn't told" "$out"
grep -qF 'Drafting standard: JIS' <<<"$out" || fail "the user's settings don't win" "$out"
out=$("$korvane" "$work/din.dxf" --script <(printf 'KMSTANDARD\n\n')) || fail "KMSTANDARD in a drawing" "$out"
grep -qF 'Drafting standard: DIN' <<<"$out" || fail "the drawing's standard doesn't win" "$out"
cp -a "$tree" "$work/nosymbols"
rm "$work/nosymbols/Professional/KVX8x64/KmSymbb.kvx"
"$work/nosymbols/bin/korvane" --command QX_ABOUT </dev/null >/dev/null 2>"$work/err" || fail "a tree without the symbol module"
grep -qF KmSymbb.kvx "$work/err" || fail "the missing symbol module isn't told" "$(cat "$work/err")"

# The tree runs from anywhere, also from a folder with blanks and other letters, and without its data files.
mkdir "$work/位置 x"
cp -a "$tree" "$work/位置 x/tree"
moved=$("$work/位置 x/tree/bin/korvane" --command QX_ABOUT </dev/null)
grep -qF 'BUILD 0.1.0' <<<"$moved" || fail "a moved tree" "$moved"
rm "$work/位置 x/tree/StartupConfig.xml"
printf '<broken' >"$work/位置 x/tree/share/korvane/resources/messages.xml"
"$work/位置 x/tree/bin/korvane" --command QX_ABOUT </dev/null >/dev/null || fail "a tree without its data"

# The commands of KmTools about a drawing's content.
printf '%s\n' 0 SECTION 2 TABLES 0 TABLE 2 APPID 70 1 0 APPID 2 ONE 70 0 0 ENDTAB 0 ENDSEC 0 SECTION 2 ENTITIES 0 LINE 8 0 \
  10 0 20 0 30 0 11 9 21 9 31 0 1001 ONE 1002 '{' 1040 2.5 1002 '}' 0 ENDSEC 0 EOF >"$work/data.dxf"
out=$(printf 'KMXDATA\n500000,500000\nL\nKMXDATA\n500000,500000\n\nKMLAYERS\nMake\nKMLAYERS\nM\nKMLAYERS\n\n' | "$korvane" "$work/data.dxf") ||
  fail "KMXDATA and KMLAYERS" "$out"
for text in 'Nothing was found there.' 'ONE' '1040  real            2.5' '55 layers made, 0 were there.' \
  '0 layers made, 55 were there.' 'HIDDEN2' "55 of the standard's 55 layers"; do
  grep -qF -- "$text" <<<"$out" || fail "KMXDATA and KMLAYERS lack $text" "$out"
done
cp -a "$tree" "$work/plain"
rm "$work/plain/Professional/KVX8x64/KmSymbb.kvx"
if out=$(printf 'KMLAYERS\nList\n' | "$work/plain/bin/korvane" 2>&1); then fail "KMLAYERS without its module gave 0" "$out"; fi
grep -qF 'The symbol module (KmSymbb.kvx)' <<<"$out" || fail "KMLAYERS without its module" "$out"

# Frames of a drawing onto sheets, and back by one step of undo.
printf 'RECTANG\n0,0\n210,297\nRECTANG\n900,100\n1320,397\nCIRCLE\n5000,0\n50\n' >"$work/frames.scr"
"$korvane" --script "$work/frames.scr" --save "$work/frames.dxf" >/dev/null || fail "frames"
printf 'KMNEST\nALL\n\n600\n420\n5\n\n\n1000,500\n' >"$work/nest.scr"
out=$("$korvane" "$work/frames.dxf" --script "$work/nest.scr" --save "$work/nested.dxf") || fail "KMNEST" "$out"
grep -qF '3 of 3 frames placed on ' <<<"$out" || fail "KMNEST" "$out"
cmp -s "$work/frames.dxf" "$work/nested.dxf" && fail "KMNEST moved nothing"
echo U >>"$work/nest.scr"
"$korvane" "$work/frames.dxf" --script "$work/nest.scr" --save "$work/undone.dxf" >/dev/null || fail "undoing KMNEST"
cmp "$work/frames.dxf" "$work/undone.dxf" || fail "one U did not bring the frames back"
out=$("$korvane" nest "$work/frames.dxf" --sheet 600x420 --gap 5 -o "$work/plan.dxf") || fail "nesting a drawing" "$out"
grep -qF ', 3 of 3 items placed, ' <<<"$out" || fail "nesting a drawing" "$out"
grep -qE 'LABELS: 3$' <<<"$("$korvane" info "$work/plan.dxf")" || fail "the plan's labels"

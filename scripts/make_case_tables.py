#!/usr/bin/env python3
"""Writes platform/text/casemap_table.h: the simple upper- and lower-case mappings of Unicode as ranges."""
import sys
import unicodedata


def ranges(mapping):
    """Collapses {code: target} into (first, last, step, delta) rows."""
    rows = []
    for code, target in sorted(mapping.items()):
        delta = target - code
        if rows:
            first, last, step, row_delta = rows[-1]
            gap = code - last
            if row_delta == delta and gap in (1, 2) and (step in (0, gap)):
                rows[-1] = (first, code, gap, delta)
                continue
        rows.append((code, code, 0, delta))
    return [(first, last, step or 1, delta) for first, last, step, delta in rows]


def table(name, convert):
    mapping = {}
    for code in range(0x80, 0x110000):
        if 0xD800 <= code < 0xE000:
            continue
        other = convert(chr(code))
        if len(other) == 1 and ord(other) != code:
            mapping[code] = ord(other)
    lines = [f"inline constexpr CaseRange {name}[] = {{"]
    lines += [f"    {{0x{a:04X}, 0x{b:04X}, {s}, {d}}}," for a, b, s, d in ranges(mapping)]
    return lines + ["};"]


out = ["#pragma once",
       f"// Made by scripts/make_case_tables.py from Unicode {unicodedata.unidata_version}. Do not edit.",
       "",
       "namespace platform {",
       "",
       "/// Every `step`-th code point from `first` to `last` maps to itself plus `delta`.",
       "struct CaseRange {",
       "  int first, last, step, delta;",
       "};",
       ""]
out += table("kToUpper", str.upper) + [""] + table("kToLower", str.lower) + ["", "}  // namespace platform", ""]
open(sys.argv[1], "w", encoding="ascii").write("\n".join(out))

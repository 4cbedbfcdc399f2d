#!/usr/bin/env python3
"""Asks an independent reader whether AFTER has faults that BEFORE has not: audit_drawings.py BEFORE AFTER

Reads both with ezdxf in its strict way (BEFORE also in the tolerant way, where it needs that) and counts what its audit finds by code.
Exit code 1 when AFTER cannot be read, has more findings of any code, or other numbers of entities by type.
"""
import collections
import sys

import ezdxf
from ezdxf import recover


def findings(document):
    audit = document.audit()
    return collections.Counter(e.code for e in audit.errors) + collections.Counter(e.code for e in audit.fixes)


def counts(document):
    found = collections.Counter(e.dxftype() for layout in document.layouts for e in layout)
    for block in document.blocks:
        if not block.is_any_layout:
            found.update("block:" + e.dxftype() for e in block)
    return found


def main():
    try:
        before = ezdxf.readfile(sys.argv[1])
    except Exception:
        before, _ = recover.readfile(sys.argv[1])
    after = ezdxf.readfile(sys.argv[2])
    problems = []
    first, second = counts(before), counts(after)
    for kind in sorted(set(first) | set(second)):
        if first[kind] != second[kind]:
            problems.append(f"{kind}: {first[kind]} became {second[kind]}")
    old, new = findings(before), findings(after)
    for code, count in new.items():
        if count > old[code]:
            problems.append(f"finding {code}: {old[code]} became {count}")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

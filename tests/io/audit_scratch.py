#!/usr/bin/env python3
"""Asks an independent reader for a drawing that was made from nothing: audit_scratch.py FILE TYPE=COUNT...

It must be read strictly, its audit must find nothing, and each type must stand there as often as was said.
"""
import collections
import sys

import ezdxf


def main():
    document = ezdxf.readfile(sys.argv[1])
    audit = document.audit()
    problems = [f"{e.code}: {e.message}" for e in audit.errors + audit.fixes]
    found = collections.Counter(e.dxftype() for e in document.entitydb.values() if e.is_alive)
    for wanted in sys.argv[2:]:
        kind, count = wanted.split("=")
        if found[kind] < int(count):
            problems.append(f"{kind}: {found[kind]}, {count} were made")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

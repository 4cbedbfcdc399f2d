#!/usr/bin/python3
"""ezdxf_copy.py [ENTITIES]: seconds that a copy of a drawing takes with ezdxf, which has no undo: what a program does instead.

Half lines, half circles, as in host_bench.cpp; then their move for comparison.
"""
import sys
import time

import ezdxf

count = int(sys.argv[1]) if len(sys.argv) > 1 else 100_000
drawing = ezdxf.new("R2010")
space = drawing.modelspace()
for i in range(count):
    x, y = i % 300, i / 300
    if i % 2:
        space.add_circle((x, y), 0.4)
    else:
        space.add_line((x, y), (x + 1, y + 1))
start = time.perf_counter()
kept = [entity.copy() for entity in space]
copied = time.perf_counter()
for entity in space:
    entity.translate(1, 2, 0)
moved = time.perf_counter()
print(f"copy {copied - start:.3f} s, move {moved - copied:.3f} s, {len(kept)} entities")

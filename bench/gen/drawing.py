#!/usr/bin/env python3
"""A drawing for measurements, the same at every run: drawing.py FILE [ENTITIES]

R2000 text DXF: LINE 50 %, LWPOLYLINE 15 % (30 % of the vertices bulged), CIRCLE 10 %, ARC 10 %, TEXT 8 %, INSERT 4 %, SPLINE 3 %.
"""
import random
import sys

random.seed(20260)
count = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
handle = 0x1000
out = []


def g(code, value):
    out.append(f"{code:>3}\r\n{value}\r\n")


def number():
    return round(random.uniform(-5000, 5000), 6)


def head(kind, *markers):
    global handle
    handle += 1
    g(0, kind)
    g(5, f"{handle:X}")
    g(330, "1F")
    g(100, "AcDbEntity")
    g(8, random.choice(["0", "CONTOUR", "CENTER", "HATCH", "TEXT"]))
    for marker in markers:
        g(100, marker)


def point(code, z=True):
    g(code, number())
    g(code + 10, number())
    if z:
        g(code + 20, 0.0)


def table(name, number_of_records, records):
    g(0, "TABLE")
    g(2, name)
    g(5, f"{0x10 + len(out) % 0x40:X}{len(out) % 97:X}")
    g(330, "0")
    g(100, "AcDbSymbolTable")
    g(70, number_of_records)
    records()
    g(0, "ENDTAB")


def blocks():
    for name, record in (("*Model_Space", "1F"), ("*Paper_Space", "1B"), ("PART", "A00")):
        g(0, "BLOCK_RECORD")
        g(5, record)
        g(330, "1")
        g(100, "AcDbSymbolTableRecord")
        g(100, "AcDbBlockTableRecord")
        g(2, name)


g(0, "SECTION"), g(2, "HEADER"), g(9, "$ACADVER"), g(1, "AC1015"), g(9, "$DWGCODEPAGE"), g(3, "ANSI_1252"), g(0, "ENDSEC")
g(0, "SECTION"), g(2, "TABLES"), table("BLOCK_RECORD", 3, blocks), g(0, "ENDSEC")
g(0, "SECTION"), g(2, "BLOCKS")
for name, record, begin, end in (("*Model_Space", "1F", "20", "21"), ("*Paper_Space", "1B", "1C", "1D"), ("PART", "A00", "A01", "A02")):
    g(0, "BLOCK"), g(5, begin), g(330, record), g(100, "AcDbEntity"), g(8, "0"), g(100, "AcDbBlockBegin"), g(2, name), g(70, 0)
    g(10, 0.0), g(20, 0.0), g(30, 0.0), g(3, name), g(1, "")
    g(0, "ENDBLK"), g(5, end), g(330, record), g(100, "AcDbEntity"), g(8, "0"), g(100, "AcDbBlockEnd")
g(0, "ENDSEC"), g(0, "SECTION"), g(2, "ENTITIES")
for _ in range(count):
    kind = random.random()
    if kind < 0.50:
        head("LINE", "AcDbLine"), point(10), point(11)
    elif kind < 0.65:
        vertices = random.randint(3, 12)
        head("LWPOLYLINE", "AcDbPolyline"), g(90, vertices), g(70, random.randint(0, 1)), g(43, 0.0)
        for _ in range(vertices):
            point(10, False)
            if random.random() < 0.3:
                g(42, round(random.uniform(-1, 1), 6))
    elif kind < 0.75:
        head("CIRCLE", "AcDbCircle"), point(10), g(40, round(random.uniform(0.1, 100), 6))
    elif kind < 0.85:
        head("ARC", "AcDbCircle"), point(10), g(40, round(random.uniform(0.1, 100), 6)), g(100, "AcDbArc")
        g(50, round(random.uniform(0, 360), 6)), g(51, round(random.uniform(0, 360), 6))
    elif kind < 0.93:
        head("TEXT", "AcDbText"), point(10), g(40, 3.5), g(1, f"NOTE {random.randint(1, 9999)}"), g(100, "AcDbText")
    elif kind < 0.97:
        head("INSERT", "AcDbBlockReference"), g(2, "PART"), point(10)
    else:
        head("SPLINE", "AcDbSpline"), g(70, 8), g(71, 3), g(72, 12), g(73, 8), g(74, 0)
        for knot in (0, 0, 0, 0, 1, 2, 3, 4, 5, 5, 5, 5):
            g(40, float(knot))
        for _ in range(8):
            point(10)
g(0, "ENDSEC"), g(0, "EOF")
open(sys.argv[1], "w", newline="").write("".join(out))

#!/usr/bin/env python3
"""Writes share/tree/share/korvane/tables: standard parts as pairs of schema and data in the form of a database export.

The sizes stand here; SOURCES.md beside the tables names the standards that they come from.
"""
import os
import sys
from xml.sax.saxutils import escape

SINGLE, LONG, TEXT = ("single", "real", "xsd:float"), ("longinteger", "int", "xsd:int"), ("text", "nvarchar", None)

LENGTHS = [2.5, 3, 4, 5, 6, 8, 10, 12, 16, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 80, 90, 100, 110, 120, 130, 140, 150, 160,
           180, 200]

# d, pitch, thread length, head diameter, head height, key width, key depth, shortest and longest length
CAP_SCREWS = [(1.6, .35, 15, 3, 1.6, 1.5, .7, 2.5, 16), (2, .4, 16, 3.8, 2, 1.5, 1, 3, 20), (2.5, .45, 17, 4.5, 2.5, 2, 1.1, 4, 25),
              (3, .5, 18, 5.5, 3, 2.5, 1.3, 5, 30), (4, .7, 20, 7, 4, 3, 2, 6, 40), (5, .8, 22, 8.5, 5, 4, 2.5, 8, 50),
              (6, 1, 24, 10, 6, 5, 3, 10, 60), (8, 1.25, 28, 13, 8, 6, 4, 12, 80), (10, 1.5, 32, 16, 10, 8, 5, 16, 100),
              (12, 1.75, 36, 18, 12, 10, 6, 20, 120), (16, 2, 44, 24, 16, 14, 8, 25, 160), (20, 2.5, 52, 30, 20, 17, 10, 30, 200),
              (24, 3, 60, 36, 24, 19, 12, 40, 200), (30, 3.5, 72, 45, 30, 22, 15.5, 45, 200), (36, 4, 84, 54, 36, 27, 19, 55, 200)]
# d, pitch, head height, width across flats, shortest and longest length
HEX_BOLTS = [(5, .8, 3.5, 8, 25, 50), (6, 1, 4, 10, 30, 60), (8, 1.25, 5.3, 13, 40, 80), (10, 1.5, 6.4, 16, 45, 100),
             (12, 1.75, 7.5, 18, 50, 120), (16, 2, 10, 24, 65, 160), (20, 2.5, 12.5, 30, 80, 200), (24, 3, 15, 36, 90, 240),
             (30, 3.5, 18.7, 46, 110, 300)]
# d, pitch, greatest height, width across flats
HEX_NUTS = [(1.6, .35, 1.3, 3.2), (2, .4, 1.6, 4), (2.5, .45, 2, 5), (3, .5, 2.4, 5.5), (4, .7, 3.2, 7), (5, .8, 4.7, 8), (6, 1, 5.2, 10),
            (8, 1.25, 6.8, 13), (10, 1.5, 8.4, 16), (12, 1.75, 10.8, 18), (16, 2, 14.8, 24), (20, 2.5, 18, 30), (24, 3, 21.5, 36),
            (30, 3.5, 25.6, 46), (36, 4, 31, 55), (42, 4.5, 34, 65), (48, 5, 38, 75), (56, 5.5, 45, 85), (64, 6, 51, 95)]
# thread, hole, outer diameter, thickness
WASHERS = [(1.6, 1.7, 4, .3), (2, 2.2, 5, .3), (2.5, 2.7, 6, .5), (3, 3.2, 7, .5), (4, 4.3, 9, .8), (5, 5.3, 10, 1), (6, 6.4, 12, 1.6),
           (8, 8.4, 16, 1.6), (10, 10.5, 20, 2), (12, 13, 24, 2.5), (16, 17, 30, 3), (20, 21, 37, 3), (24, 25, 44, 4), (30, 31, 56, 4),
           (36, 37, 66, 5), (42, 45, 78, 8), (48, 52, 92, 8), (56, 62, 105, 10), (64, 70, 115, 10)]
# shaft above, up to, key width, height, depth in the shaft, in the hub, shortest and longest length
KEYS = [(6, 8, 2, 2, 1.2, 1, 6, 20), (8, 10, 3, 3, 1.8, 1.4, 6, 36), (10, 12, 4, 4, 2.5, 1.8, 8, 45), (12, 17, 5, 5, 3, 2.3, 10, 56),
        (17, 22, 6, 6, 3.5, 2.8, 14, 70), (22, 30, 8, 7, 4, 3.3, 18, 90), (30, 38, 10, 8, 5, 3.3, 22, 110),
        (38, 44, 12, 8, 5, 3.3, 28, 140), (44, 50, 14, 9, 5.5, 3.8, 36, 160), (50, 58, 16, 10, 6, 4.3, 45, 180),
        (58, 65, 18, 11, 7, 4.4, 50, 200), (65, 75, 20, 12, 7.5, 4.9, 56, 220), (75, 85, 22, 14, 9, 5.4, 63, 250),
        (85, 95, 25, 14, 9, 5.4, 70, 280), (95, 110, 28, 16, 10, 6.4, 80, 320), (110, 130, 32, 18, 11, 7.4, 90, 360)]
BORES = [10, 12, 15, 17, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75, 80, 85, 90, 95, 100]
# series: outer diameters and widths for the bores above
BEARINGS = {
    "60": ([26, 28, 32, 35, 42, 47, 55, 62, 68, 75, 80, 90, 95, 100, 110, 115, 125, 130, 140, 145, 150],
           [8, 8, 9, 10, 12, 12, 13, 14, 15, 16, 16, 18, 18, 18, 20, 20, 22, 22, 24, 24, 24]),
    "62": ([30, 32, 35, 40, 47, 52, 62, 72, 80, 85, 90, 100, 110, 120, 125, 130, 140, 150, 160, 170, 180],
           [9, 10, 11, 12, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 28, 30, 32, 34]),
    "63": ([35, 37, 42, 47, 52, 62, 72, 80, 90, 100, 110, 120, 130, 140, 150, 160, 170, 180, 190, 200, 215],
           [11, 12, 13, 14, 15, 17, 19, 21, 23, 25, 27, 29, 31, 33, 35, 37, 39, 41, 43, 45, 47]),
}
RING_BORES = [18, 19, 20, 21.2, 22.4, 23.6, 25, 25.8, 26.5, 28, 30, 31.5, 32.5, 33.5, 34.5, 35.5, 36.5, 37.5, 38.7, 40, 41.2, 42.5, 43.7,
              45, 46.2, 47.5, 48.7, 50, 51.5, 53, 54.5, 56, 58, 60, 61.5, 63, 65, 67, 69, 71, 73, 75, 77.5, 80, 82.5, 85, 87.5, 90, 92.5,
              95, 97.5, 100]
# section, its tolerance, first and last bore
RING_SECTIONS = [(2.65, .09, 18, 50), (3.55, .10, 18, 100), (5.30, .13, 40, 100)]


def number(value):
    return f"{value:g}"


def bearing_rows():
    for series, (outers, widths) in BEARINGS.items():
        for index, (bore, outer, width) in enumerate(zip(BORES, outers, widths)):
            yield f"{series}{index:02d}", bore, outer, width, "深沟球轴承", series


def tables():
    yield "GB 70", [("名称", TEXT), ("规格", TEXT), ("d", SINGLE), ("L", SINGLE), ("P", SINGLE), ("b", SINGLE), ("dk", SINGLE), ("k", SINGLE),
                    ("s", SINGLE), ("t", SINGLE)], [
        ("内六角圆柱头螺钉", f"M{number(d)}×{number(length)}", d, length, p, b, dk, k, s, t)
        for d, p, b, dk, k, s, t, low, high in CAP_SCREWS for length in LENGTHS if low <= length <= high]
    yield "GB 5782", [("名称", TEXT), ("d", SINGLE), ("P", SINGLE), ("k", SINGLE), ("s", SINGLE), ("b1", SINGLE), ("b2", SINGLE), ("b3", SINGLE),
                      ("Lfirst", SINGLE), ("Llast", SINGLE)], [
        # b2 and b3 are for lengths that shorter bolts don't have.
        ("六角头螺栓", d, p, k, s, 2 * d + 6, 2 * d + 12 if last > 125 else None, 2 * d + 25 if last > 200 else None, first, last)
        for d, p, k, s, first, last in HEX_BOLTS]
    yield "GB 6170", [("名称", TEXT), ("d", SINGLE), ("P", SINGLE), ("m", SINGLE), ("s", SINGLE)], [
        ("1型六角螺母", *row) for row in HEX_NUTS]
    yield "GB 97.1", [("名称", TEXT), ("d", SINGLE), ("d1", SINGLE), ("d2", SINGLE), ("h", SINGLE)], [("平垫圈 A级", *row) for row in WASHERS]
    yield "GB 1096", [("名称", TEXT), ("above", SINGLE), ("upto", SINGLE), ("b", SINGLE), ("h", SINGLE), ("t1", SINGLE), ("t2", SINGLE),
                      ("Lfirst", SINGLE), ("Llast", SINGLE)], [("普通型 平键", *row) for row in KEYS]
    yield "GB 276", [("Part_x0020_No", TEXT), ("d", SINGLE), ("OD", SINGLE), ("B", SINGLE), ("名称", TEXT), ("系列", TEXT)], list(bearing_rows())
    yield "GB 3452.1", [("ID", LONG), ("名称", TEXT), ("d1", SINGLE), ("d2", SINGLE), ("tol", SINGLE)], [
        (index + 1, "O形橡胶密封圈", *row) for index, row in enumerate(
            (bore, section, tolerance) for section, tolerance, low, high in RING_SECTIONS for bore in RING_BORES if low <= bore <= high)]


def schema(element, fields):
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             '<xsd:schema xmlns:xsd="http://www.w3.org/2001/XMLSchema" xmlns:od="urn:schemas-microsoft-com:officedata">',
             '<xsd:element name="dataroot">', '<xsd:complexType>', '<xsd:sequence>',
             f'<xsd:element ref="{element}" minOccurs="0" maxOccurs="unbounded"/>', '</xsd:sequence>',
             '<xsd:attribute name="generated" type="xsd:dateTime"/>', '</xsd:complexType>', '</xsd:element>',
             f'<xsd:element name="{element}">', '<xsd:complexType>', '<xsd:sequence>']
    for name, (jet, sql, kind) in fields:
        start = f'<xsd:element name="{name}" minOccurs="0" od:jetType="{jet}" od:sqlSType="{sql}"'
        if kind:
            lines.append(f'{start} type="{kind}"/>')
        else:
            lines += [start + '>', '<xsd:simpleType>', '<xsd:restriction base="xsd:string">', '<xsd:maxLength value="255"/>',
                      '</xsd:restriction>', '</xsd:simpleType>', '</xsd:element>']
    return lines + ['</xsd:sequence>', '</xsd:complexType>', '</xsd:element>', '</xsd:schema>']


def data(element, fields, rows):
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             '<dataroot xmlns:od="urn:schemas-microsoft-com:officedata">']
    for row in rows:
        lines.append(f'<{element}>')
        for (name, _), value in zip(fields, row):
            if value is not None:
                lines.append(f'<{name}>{escape(value if isinstance(value, str) else number(value))}</{name}>')
        lines.append(f'</{element}>')
    return lines + ['</dataroot>']


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))),
                                                              "share/tree/share/korvane/tables")
    os.makedirs(folder, exist_ok=True)
    for stem, fields, rows in tables():
        element = stem.replace(" ", "_x0020_")
        for suffix, lines in ((".xsd", schema(element, fields)), (".xml", data(element, fields, rows))):
            with open(os.path.join(folder, stem + suffix), "w", encoding="utf-8", newline="\n") as out:
                out.write("\n".join(lines) + "\n")
        print(f"{stem}: {len(rows)} rows")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Compares drawing files group by group, object by object: compare_drawings.py BEFORE AFTER

Both are text DXF. Every object of BEFORE that bears a handle must stand in AFTER with the same groups; header variables, classes and
other sections likewise. What the form forces may differ: the version, the handle seed, counts of table records, groups that hold their
default, numbers written another way, texts escaped or cut another way. Prints what is lost or changed; exit code 1 when anything is.
"""
import collections
import re
import sys

# Groups that hold their default may be left out, on either side: (code, value).
DEFAULTS = {(6, "BYLAYER"), (62, 256), (48, 1.0), (60, 0), (370, -1), (39, 0.0), (290, 1), (67, 0), (71, 0), (72, 0), (73, 0),
            (50, 0.0), (51, 0.0), (41, 1.0), (42, 1.0), (43, 1.0), (44, 0.0), (45, 0.0), (70, 0), (210, 0.0), (220, 0.0), (230, 1.0),
            (347, 0), (390, 0), (102, "}")}


def is_real(code):
    return 10 <= code <= 59 or 110 <= code <= 149 or 210 <= code <= 239 or 460 <= code <= 469 or 1010 <= code <= 1059


def is_whole(code):
    return (60 <= code <= 99 or 160 <= code <= 179 or 270 <= code <= 299 or 370 <= code <= 389 or 400 <= code <= 409 or
            420 <= code <= 429 or 440 <= code <= 459 or 1060 <= code <= 1071)


def is_handle(code):
    return code in (5, 105, 1005) or 320 <= code <= 369 or 390 <= code <= 399 or 480 <= code <= 481


def load(path):
    raw = open(path, "rb").read()
    if raw.startswith(b"\xef\xbb\xbf"):
        raw = raw[3:]
    version = re.search(rb"\$ACADVER\s+1\s+(AC\d+)", raw)
    page = re.search(rb"\$DWGCODEPAGE\s+3\s+(\S+)", raw)
    encoding = "utf-8"
    if not version or version.group(1) < b"AC1021":
        name = (page.group(1) if page else b"ANSI_1252").decode().lower()
        encoding = {"ansi_936": "gbk", "dos850": "cp850"}.get(name, name.replace("ansi_", "cp"))
    lines = raw.split(b"\n")
    tags = []
    for at in range(0, len(lines) - 1, 2):
        try:
            code = int(lines[at])
        except ValueError:
            break
        value = lines[at + 1].rstrip(b"\r")
        try:
            text = value.decode(encoding)
        except UnicodeDecodeError:
            text = value.decode("utf-8", "replace")
        if is_real(code):
            value = float(text)
        elif is_whole(code):
            value = int(float(text))
        elif is_handle(code):
            try:
                value = int(text, 16)
            except ValueError:
                value = text
        else:
            text = re.sub(r"\\M\+5([0-9A-Fa-f]{4})", lambda m: bytes.fromhex(m.group(1)).decode("gbk", "replace"), text)
            value = re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), text)
            if code in (6, 8):
                value = value.upper()  # names of records compare without regard to case
            value = {"$MODEL_SPACE": "*Model_Space", "$PAPER_SPACE": "*Paper_Space"}.get(value, value)
        tags.append((code, value))
        if code == 0 and value == "EOF":
            break
    return tags


def objects(tags):
    """Sections of (type, handle, counter of groups); unnumbered ones by their order."""
    section, found, current = None, {}, None
    header, variable = collections.defaultdict(list), None
    for index, (code, value) in enumerate(tags):
        if code == 2 and tags[index - 1] == (0, "SECTION"):
            section, current = value, None
            continue
        if section == "HEADER":
            if code == 9:
                variable = value
            elif variable and code != 0:
                header[variable].append((code, value))
            continue
        if code == 0:
            current = {"type": value, "section": section, "handle": None, "groups": collections.Counter()}
            if value not in ("SECTION", "ENDSEC", "TABLE", "ENDTAB", "EOF"):
                found[index] = current
            continue
        if current is None:
            continue
        if code in (5, 105) and current["handle"] is None and not (code == 5 and current["type"] == "DIMSTYLE"):
            current["handle"] = value
        # The contents of paragraph text are one text, wherever a writer cuts them.
        if current["type"] == "MTEXT" and code == 3 and isinstance(value, str):
            current["pieces"] = current.get("pieces", "") + value
            continue
        if current["type"] == "MTEXT" and code == 1:
            value = current.pop("pieces", "") + value
        current["groups"][(code, value)] += 1
    return header, list(found.values())


def difference(before, after):
    lost = []
    for key, count in before.items():
        if key in DEFAULTS or key[0] == 999:
            continue
        if after.get(key, 0) < count:
            lost.append(key)
    return lost


def main():
    before_header, before = objects(load(sys.argv[1]))
    after_header, after = objects(load(sys.argv[2]))
    problems = []
    for name, groups in before_header.items():
        if name in ("$ACADVER", "$HANDSEED", "$DWGCODEPAGE"):
            continue
        if after_header.get(name) != groups:
            problems.append(f"header {name}: {groups} became {after_header.get(name)}")
    by_handle = {(o["handle"], o["type"]): o for o in after if o["handle"] is not None}
    by_type = collections.defaultdict(list)
    for o in after:
        by_type[o["type"]].append(o)
    for o in before:
        if o["handle"] is not None:
            match = by_handle.get((o["handle"], o["type"]))
            if match is None:
                problems.append(f"{o['section']}: {o['type']} {o['handle']:X} is lost")
                continue
            candidates = [match]
        else:
            candidates = by_type[o["type"]]
        best = min((difference(o["groups"], c["groups"]) for c in candidates), key=len, default=[("all", "")])
        if best:
            problems.append(f"{o['section']}: {o['type']} {o['handle'] or 0:X} lost {best[:6]}")
    if not before:
        problems.append("no objects were read")
    for problem in problems[:60]:
        print(problem)
    if len(problems) > 60:
        print(f"... and {len(problems) - 60} more")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

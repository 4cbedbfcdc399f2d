#!/usr/bin/env python3
"""Every example drawing is opened, saved and opened again with nothing lost: drawings_test.py KORVANE EXAMPLES [--audit]

Text files are compared group by group (compare_drawings.py); a binary save opened again gives the same text; twins of the two forms give the
same drawing. With --audit an independent reader must find no new faults.
"""
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
PYTHON_WITH_READER = "/usr/bin/python3"
TWINS = [("allkinds_r2004_ascii", "allkinds_r2004_binary"), ("allkinds_r12_ascii", "allkinds_r12_binary")]


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True, errors="replace", stdin=subprocess.DEVNULL)
    return done.returncode, done.stdout + done.stderr


def numbers(extents):
    """Each coordinate by its layout, corner and axis."""
    return {(name, corner, axis): value for name, box in extents.items() if box
            for corner in ("min", "max") for axis, value in enumerate(box[corner])}


def main():
    korvane, examples = sys.argv[1], sys.argv[2]
    audits = "--audit" in sys.argv
    problems, checked = [], 0
    with tempfile.TemporaryDirectory() as work:
        os.environ["XDG_CONFIG_HOME"] = work
        saved = {}
        names = sorted(n for n in os.listdir(os.path.join(examples, "drawings")) if n.endswith(".dxf"))
        for name in names:
            source = os.path.join(examples, "drawings", name)
            first, binary, again = (os.path.join(work, prefix + name) for prefix in ("text-", "binary-", "again-"))
            code, output = run(korvane, source, "--save", first)
            if code:
                problems.append(f"{name}: not opened or saved: {output[-300:]}")
                continue
            checked += 1
            saved[name] = first
            if not open(source, "rb").read(22).startswith(b"AutoCAD Binary"):
                code, output = run(sys.executable, os.path.join(HERE, "compare_drawings.py"), source, first)
                if code:
                    problems.append(f"{name}: {output}")
            # A `.dwg` name gets the binary form; reading goes by content.
            binary = binary[:-4] + ".dwg"
            if run(korvane, first, "--save", binary)[0] or run(korvane, binary, "--save", again)[0]:
                problems.append(f"{name}: the binary form fails")
            elif open(first, "rb").read() != open(again, "rb").read():
                problems.append(f"{name}: the binary form isn't the same drawing")
            if audits:
                code, output = run(PYTHON_WITH_READER, os.path.join(HERE, "audit_drawings.py"), source, first)
                if code:
                    problems.append(f"{name}: independent reader: {output[-500:]}")
        # The twins were saved one after the other, so handles, times and a few housekeeping objects differ; what is drawn may not.
        for text, binary in TWINS:
            contents = [json.loads(run(korvane, "info", "--json", saved[name + ".dxf"])[1]) for name in (text, binary)]
            for key in ("version", "codePage", "entities", "blocks", "types", "layers"):
                if contents[0][key] != contents[1][key]:
                    problems.append(f"{text} and {binary}: {key} differ: {contents[0][key]} and {contents[1][key]}")
            # Text rounds to sixteen digits, so boxes agree to fewer.
            boxes = [numbers(c["extents"]) for c in contents]
            if not boxes[0] or list(boxes[0]) != list(boxes[1]) or any(abs(boxes[0][k] - boxes[1][k]) > 1e-9 for k in boxes[0]):
                problems.append(f"{text} and {binary}: extents differ: {boxes[0]} and {boxes[1]}")
        for name in sorted(os.listdir(os.path.join(examples, "malformed"))):
            target = os.path.join(work, "mended-" + name)
            code, output = run(korvane, "audit", "--json", os.path.join(examples, "malformed", name))
            told = json.loads(output)
            if code != 1 or told["errorCount"] < 1 or told["fixCount"] or len(told["errors"]) > told["errorCount"]:
                problems.append(f"{name}: faults not told: {output[:300]}")
            code, output = run(korvane, "audit", os.path.join(examples, "malformed", name), "--fix", "-o", target)
            if code or run(korvane, target, "--save", target + ".dxf")[0]:
                problems.append(f"{name}: not mended: {output[-300:]}")
            elif run(korvane, "audit", target)[0]:
                problems.append(f"{name}: faults stand in what was mended: {run(korvane, 'audit', target)[1][:300]}")
            elif audits and run(PYTHON_WITH_READER, "-c", "import ezdxf, sys; ezdxf.readfile(sys.argv[1])", target)[0]:
                problems.append(f"{name}: an independent reader refuses what was mended")
    if checked < 20:
        problems.append(f"only {checked} drawings were checked")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

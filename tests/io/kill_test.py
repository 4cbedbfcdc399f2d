#!/usr/bin/env python3
"""kill -9 in the middle of saving leaves the old file or the new one, never a part: kill_test.py KORVANE GENERATOR

A drawing of 20,000 entities is and one of 10,000 are saved in turn to one file; the saving process is killed at random moments
spread over the time that it takes. After each kill the file must be, byte for byte, one of the two drawings. Enough of the kills must have
struck while a save was under way (its temporary file was there), else the test has shown nothing.
"""
import os
import random
import signal
import subprocess
import sys
import tempfile
import time

KILLS = 40
LEAST_DURING_A_SAVE = 5
LINES = 20000


def saved(korvane, source, target):
    subprocess.run([korvane, source, "--save", target], check=True, capture_output=True, stdin=subprocess.DEVNULL)
    with open(target, "rb") as file:
        return file.read()


def main():
    korvane, generator = sys.argv[1], sys.argv[2]
    rng = random.Random(20)
    with tempfile.TemporaryDirectory() as work:
        os.environ["XDG_CONFIG_HOME"] = work
        source = os.path.join(work, "source.dxf")
        other = os.path.join(work, "other.dxf")
        subprocess.run([sys.executable, generator, source, str(LINES)], check=True)
        subprocess.run([sys.executable, generator, other, str(LINES // 2)], check=True)
        saves = os.path.join(work, "saves")
        os.mkdir(saves)
        target = os.path.join(saves, "drawing.dxf")
        # Saving what was saved gives the same bytes, so each of the two drawings has one form.
        whole = {name: saved(korvane, name, os.path.join(work, "whole.dxf")) for name in (source, other)}
        assert whole[source] != whole[other]
        saved(korvane, source, target)
        start = time.monotonic()
        saved(korvane, source, target)
        duration = time.monotonic() - start
        during, problems, replaced = 0, [], 0
        for number in range(KILLS):
            name = (source, other)[number % 2]
            process = subprocess.Popen([korvane, name, "--save", target], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            if number % 4 == 0:
                time.sleep(rng.uniform(0, 1.2 * duration))  # anywhere
            else:
                deadline = time.monotonic() + 60  # as soon as the save begins, and a little later
                while process.poll() is None and len(os.listdir(saves)) == 1 and time.monotonic() < deadline:
                    pass
                time.sleep(rng.uniform(0, 0.02 * duration))
            process.send_signal(signal.SIGKILL)
            process.wait()
            left = [entry for entry in os.listdir(saves) if entry != "drawing.dxf"]
            during += bool(left)
            for entry in left:
                os.remove(os.path.join(saves, entry))
            with open(target, "rb") as file:
                now = file.read()
            replaced += now == whole[name]
            if now not in whole.values():
                problems.append(f"kill {number}: the file has {len(now)} bytes and is neither drawing")
                saved(korvane, source, target)
        if during < LEAST_DURING_A_SAVE:
            problems.append(f"only {during} of {KILLS} kills struck during a save")
        print(f"{KILLS} kills, {during} during a save, {replaced} behind it")
        print("\n".join(problems))
        return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

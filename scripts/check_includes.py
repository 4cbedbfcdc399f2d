#!/usr/bin/env python3
"""Rejects includes that run against the house's order.

Every folder with a CMakeLists.txt that calls korvane_folder(target DEPENDS ...) may include its own headers and
those of the folders it names there; it may name only folders that stand above it in ORDER. `module/` and
`siblings/` never include a header below host/*/internal/ or platform/*/internal/, and no public header includes an internal one.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

# From the ground up. A folder may depend only on what stands before it.
ORDER = (["platform/" + f for f in ("env", "text", "files", "system", "xml", "sheet", "ui")]
         + ["host/" + f for f in ("base", "geometry", "lettering", "database", "entities", "io", "editor", "graphics",
                                  "commands", "app")]
         + ["siblings/resources"]
         + ["module/" + f for f in ("core", "toolkit", "entity", "draw", "select", "break", "data", "nest", "spring",
                                    "workflow/backup", "workflow/convert", "workflow/plm", "workflow/language")]
         + ["siblings/symbols", "siblings/tools", "apps/korvane"])
# include/korvane/ holds the umbrella headers; they stand for what they include.
UMBRELLAS = {"korvane/kvhost.h": "host/app", "korvane/mekcore.h": "module/core"}


def folder_of(path):
    """The house folder that a repository-relative file or header lies in, or None."""
    parts = path.split("/")
    for length in (3, 2):
        name = "/".join(parts[:length])
        if len(parts) > length and name in ORDER:
            return name
    return None


def target_name(folder):
    return folder.replace("/", "_")


def declared(folder):
    """The folders named behind DEPENDS in the folder's CMakeLists.txt."""
    try:
        text = open(os.path.join(ROOT, folder, "CMakeLists.txt"), encoding="utf-8").read()
    except FileNotFoundError:
        return None
    call = re.search(r"korvane_folder\s*\(\s*(\w+)(.*?)\)", text, re.S)
    if not call:
        return None
    if call.group(1) != target_name(folder):
        sys.exit(f"{folder}/CMakeLists.txt: the target should be called {target_name(folder)}")
    depends = re.search(r"\bDEPENDS\b((?:\s+\w+)*?)(?=\s+LIBS\b|\s*$)", call.group(2))
    return depends.group(1).split() if depends else []


def main():
    by_target = {target_name(f): f for f in ORDER}
    problems, checked = [], 0
    for index, folder in enumerate(ORDER):
        names = declared(folder)
        if names is None:
            continue
        allowed = {folder}
        for name in names:
            other = by_target.get(name)
            if other is None:
                problems.append(f"{folder}/CMakeLists.txt: {name} is no folder of the house")
            elif ORDER.index(other) >= index:
                problems.append(f"{folder}/CMakeLists.txt: {other} stands above it")
            else:
                allowed.add(other)
        for where, _, files in os.walk(os.path.join(ROOT, folder)):
            for file in files:
                if not file.endswith((".h", ".cpp")):
                    continue
                path = os.path.relpath(os.path.join(where, file), ROOT)
                if folder_of(path) != folder:
                    continue
                for number, line in enumerate(open(os.path.join(ROOT, path), encoding="utf-8"), 1):
                    include = re.match(r'\s*#\s*include\s*["<]([^">]+)[">]', line)
                    if not include:
                        continue
                    header = include.group(1)
                    target = UMBRELLAS.get(header) or folder_of(header)
                    if target is None:
                        continue
                    checked += 1
                    if target not in allowed:
                        problems.append(f"{path}:{number}: {folder} may not include {header}")
                    elif "/internal/" in header and target != folder:
                        problems.append(f"{path}:{number}: {header} is internal to {target}")
                    elif "/internal/" in header and path.endswith(".h") and "/internal/" not in path:
                        problems.append(f"{path}:{number}: a public header may not include {header}, which is not installed")
    for problem in problems:
        print(problem)
    if checked == 0:
        problems.append("no include was checked")
        print(problems[-1])
    else:
        print(f"includes: {checked} checked, {len(problems)} against the order")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

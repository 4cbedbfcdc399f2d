#!/usr/bin/env python3
"""Profile files written here must be readable for Python's configparser: profile_configparser.py WRITER

Files of each encoding are begun, changed through WRITER in a random but repeatable order, decoded and compared with what
was asked for, value by value.
"""
import configparser
import os
import random
import subprocess
import sys
import tempfile

# name, content at the beginning, encoding of the whole file
FILES = [
    ("missing.ini", None, "gbk"),
    ("gbk.ini", "; 注释\r\n[旧]\r\n键 = 值\r\n\r\n".encode("gbk"), "gbk"),
    ("utf16.ini", b"\xff\xfe", "utf-16"),
    ("utf16be.ini", b"\xfe\xff" + "[旧]\n键=值".encode("utf-16-be"), "utf-16"),
    ("utf8.ini", b"\xef\xbb\xbf" + "[旧]\n键=值\n".encode(), "utf-8-sig"),
]
SECTIONS = ["StartTimer", "旧", "matchrule", "层 表"]
KEYS = ["SavePath", "Minute", "键", "a b", "Ärger"]
VALUES = ["C:\\backup", "30", "值", "a=b", "", "[x]", "; no comment", "誠\\x", "x" * 3000]


def decodable(text, encoding):
    try:
        text.encode(encoding)
        return True
    except UnicodeEncodeError:
        return False


def main():
    rng = random.Random(1)
    checked = 0
    with tempfile.TemporaryDirectory() as folder:
        lines, wanted = [], {}
        for name, content, encoding in FILES:
            path = os.path.join(folder, name)
            if content is not None:
                open(path, "wb").write(content)
                if "[旧]".encode("gbk") in content or len(content) > 4:
                    wanted[(name, "旧", "键")] = "值"
            for _ in range(60):
                section, key, value = rng.choice(SECTIONS), rng.choice(KEYS), rng.choice(VALUES)
                if not decodable(section + key + value, encoding):
                    continue
                lines.append("\t".join([path.replace("/", "\\"), section, key, value]))
                wanted[(name, section, key)] = value
        subprocess.run([sys.argv[1]], input="\n".join(lines).encode() + b"\n", check=True)
        for name, _, encoding in FILES:
            parser = configparser.ConfigParser(interpolation=None, delimiters="=", comment_prefixes=(";",), strict=True)
            parser.optionxform = str
            with open(os.path.join(folder, name), encoding=encoding, newline=None) as file:
                parser.read_file(file)
            found = {(name, section, key): parser.get(section, key) for section in parser.sections() for key in parser[section]}
            expected = {place: value for place, value in wanted.items() if place[0] == name}
            if found != expected:
                sys.exit(f"{name}: found and not asked for, or otherwise: {sorted(found.items() ^ expected.items())}")
            checked += len(found)
    print(f"{checked} values in {len(FILES)} files")
    if checked < 50:
        sys.exit("too few values were checked")


if __name__ == "__main__":
    main()

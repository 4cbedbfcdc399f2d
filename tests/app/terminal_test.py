#!/usr/bin/env python3
"""The program at a terminal: completion by the tabulator, an empty line that repeats, history. terminal_test.py TREE"""
import os
import pty
import select
import sys
import tempfile

SILENCE = 5  # seconds after which a key counts as lost
PATIENCE = 60  # seconds; a bound for a program that hangs, not a measure


class Terminal:
    def __init__(self, program, home):
        self.shown = b""
        self.pid, self.file = pty.fork()
        if self.pid == 0:
            os.environ.update(XDG_CONFIG_HOME=home, HOME=home, TERM="vt100", LC_ALL="C.UTF-8", COLUMNS="200")
            os.chdir(home)
            os.execv(program, [program])

    def press(self, key, text):
        """A key and what it brings. On a busy machine a key that comes in the instant in which the terminal changes its mode
        is lost to any line editor; a person presses it again."""
        for _ in range(3):
            self.type(key)
            if self.expect(text, SILENCE):
                return
        self.expect(text)

    def expect(self, text, patience=None):
        """Reads until the text has come, and forgets all up to its end. With a patience of its own: whether it came."""
        wanted = text.encode()
        while wanted not in self.shown:
            ready, _, _ = select.select([self.file], [], [], patience or PATIENCE)
            if patience and not ready:
                return False
            try:
                more = os.read(self.file, 4096) if ready else b""
            except OSError:
                more = b""
            if not more:
                sys.exit(f"FAILED: {text!r} didn't come; shown: {self.shown.decode(errors='replace')!r}")
            self.shown += more
        self.shown = self.shown[self.shown.index(wanted) + len(wanted):]
        return True

    def type(self, text):
        os.write(self.file, text.encode())


def main():
    program = os.path.abspath(os.path.join(sys.argv[1], "bin", "korvane"))
    with tempfile.TemporaryDirectory() as home:
        one = Terminal(program, home)
        one.expect("Command: ")
        one.type("PLI\t")
        one.expect("NE")
        one.type("\r")
        one.expect("start point: ")
        one.type("0,0\r")
        one.expect("next point")
        one.type("Wi\t")
        one.expect("dth")
        one.type("\r")
        one.expect("starting width")
        one.type("\r")
        one.expect("ending width")
        one.type("\r")
        one.expect("next point")
        one.press("\x03", "*Cancel*")
        one.expect("Command: ")
        one.type("\r")  # repeats
        one.expect("start point: ")
        one.press("\x03", "*Cancel*")
        one.expect("Command: ")
        one.type("CIRCLE\r")
        one.expect("[3P/2P")
        one.press("1,\x1b", "*Cancel*")  # Escape alone, in the middle of an answer
        one.expect("Command: ")
        one.type("POINT 1,1  \r")  # blanks at the end are no answers: nothing is repeated
        one.expect("Command: ")
        one.type("DISTT 0,0 1,1\r")  # an unknown command takes the rest of its line along
        one.expect("Did you mean DIST?")
        one.expect("Command: ")
        one.type("DIST 0,0 3,4\r")
        one.expect("Distance = 5")
        one.expect("Command: ")
        one.type("LINE 0,0 5,5 'ORTHO ON\r")
        one.expect("Resuming LINE")
        one.type("\r")
        one.expect("Command: ")
        one.type("LINE\r")
        one.expect("first point")
        one.press("\x04", "*Cancel*")  # the end of input cancels first, then it quits, and asks
        one.expect("Command: ")
        one.press("\x04", "[Yes/No] <No>: ")
        one.type("N\r")
        one.expect("Command: ")
        one.type("DIMA\t\t")  # several words: a list of them
        one.expect("DIMALIGNED")
        one.expect("DIMANGULAR")
        one.type("\x15QUIT\r")
        one.expect("[Yes/No] <No>: ")
        one.type("Y\r")
        _, status = os.waitpid(one.pid, 0)
        if status != 0:
            sys.exit(f"FAILED: ended with {status}")
        two = Terminal(program, home)
        two.expect("Command: ")
        two.type("\x10\x10")  # the line before the last one of the first session
        two.expect("QUIT")
        two.type("\r")
        _, status = os.waitpid(two.pid, 0)
        if status != 0:
            sys.exit(f"FAILED: the second session ended with {status}")
    print("the terminal is well")


main()

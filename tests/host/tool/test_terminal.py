"""What a person sees in a terminal: one line that is written anew and always fits, whole blocks above it, and nothing left
of it in the end. The program runs in a pseudo-terminal of its own."""

import fcntl
import os
import pty
import re
import struct
import termios
import time
import unicodedata
import unittest

from command_line import ZAB, sanitizer_options
from test_workers import STEPS, StepTest

DRAWN = re.compile(r"\r\x1b\[K")


def columns(text):
    return sum(2 if unicodedata.east_asian_width(letter) in "WF" else 1 for letter in text)


class Terminal(StepTest):
    def see(self, *arguments, width=80, environment=None, type_after=None):
        """All that the terminal got, the exit status, and how long it took. `type_after`: Ctrl-C once this was seen."""
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(self.folder)
            os.execve(os.path.abspath(ZAB), ["zab", "--plugin", STEPS, "build", *arguments],
                      {"TERM": "xterm", "PATH": "/bin", "LC_ALL": "C", **sanitizer_options(), **(environment or {})})
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        seen, begin = b"", time.monotonic()
        while True:
            try:
                chunk = os.read(terminal, 65536)
            except OSError:
                break
            if not chunk:
                break
            seen += chunk
            if type_after and type_after in seen:
                os.write(terminal, b"\x03")
                type_after, begin = None, time.monotonic()
        os.close(terminal)
        return seen.decode(), os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), time.monotonic() - begin

    def test_one_line_that_fits_at_most_ten_times_a_second(self):
        names = ["a" * 60, "図" * 30, "e\x1b[31m\u0301" * 6, "four"]
        self.prepare({name: f"say of {i}\nsleep 300\nmakes {i}" + ("\nfail" if i == 3 else "")
                      for i, name in enumerate(names)})
        seen, status, seconds = self.see("-j2", width=40, environment={"NO_COLOR": "1"})
        self.assertEqual(status, 1)
        pieces = DRAWN.split(seen)
        lines = [piece for piece in pieces[1:] if piece and "\n" not in piece]
        self.assertGreater(len(lines), 2, seen)
        self.assertLessEqual(len(lines), seconds * 10 + 2)
        for line in lines:
            self.assertRegex(line, r"\A\[\d/4\]( |\Z)")
            self.assertLessEqual(columns(line), 39, line)
            self.assertNotIn("\x1b", line)
        self.assertTrue(any(line.endswith("...") for line in lines), lines)
        # Each action's block is whole, and what comes last is the list and the summary, with no progress line behind.
        for i, name in enumerate(names):
            shown = name.replace("\x1b", "\\x1b")
            self.assertIn(f"{shown}\r\nof {i}\r\n", seen)
        self.assertRegex(pieces[-1], r"(\A|\n)Failed:\r\n  raw_data/four.step: told to fail\r\n3 built, 1 failed in \d\.\d s\r\n\Z")

    def test_colour(self):
        self.prepare({"a": "sleep 150\nsay x\nmakes a"})
        self.assertIn("\x1b[32mdone\x1b[0m: a\r\nx\r\n", self.see()[0])
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            seen = self.see(environment=environment)[0]
            self.assertNotIn("\x1b[3", seen)
        self.assertNotIn("\x1b", seen)

    def test_the_key_reaches_the_tool_and_not_the_workers(self):
        self.prepare({"a": "makes a", "b": "after a\nmakes b\nstay", "c": "makes c\nstay"})
        seen, status, seconds = self.see("-j1", type_after=b" b")
        self.assertEqual(status, 130, seen)
        self.assertLess(seconds, 1)
        self.assertRegex(seen, r"Interrupted: 1 built, 0 failed, 2 not run in \d\.\d s\r\n\Z")
        self.assertEqual(self.files(), ["a"])


if __name__ == "__main__":
    unittest.main()

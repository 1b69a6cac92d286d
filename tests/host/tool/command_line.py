"""What the tests of the command share: a project in a folder of its own, images made from numbers, and the program run
as a person runs it. Root's eyes see everything, so where permissions matter the program runs as an ordinary user."""

import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

ZAB = os.environ.get("ZAB", "build/release/bin/zab")
PLUGIN = os.environ.get("ZAB_PLUGIN", "build/release/lib/zab/ZAB_Texture.so")

RULE = '[[rule]]\nname = "Texture"\nTargetPath = "textures/{dir}"\nCompressionFormat = "rgba"\n'


def tga(width, height, texels=None):
    """32 bits, bottom-left origin."""
    if texels is None:
        texels = b"".join(bytes([x * 16 % 256, y * 16 % 256, 77, 255]) for y in range(height) for x in range(width))
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, width, height, 32, 8) + texels


def png(width, height):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes([200, 100, 50, 255]) * width for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def sanitizer_options(*more):
    """What the environment tells the sanitizers, where the program is built with one, and `more` of it."""
    return {name: ":".join(filter(None, (os.environ.get(name), *more))) for name in ("ASAN_OPTIONS", "TSAN_OPTIONS")}


class ProjectTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zab-test-")).resolve()
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.folder.chmod(0o755)

    def ordinary_user(self):
        """Whom the program runs as where permissions matter; None is the one who runs the tests. That user can read what is
        written from here on; where he cannot come at all the test is skipped."""
        self.addCleanup(os.umask, os.umask(0o022))
        if os.geteuid() != 0:
            return None
        try:
            if (self.zab("rules", user=65534)[0] == 0
                    and subprocess.run(["test", "-x", self.folder], user=65534).returncode == 0):
                return 65534
        except OSError:
            pass
        return self.skipTest("the program or the folder of temporary files lies where an ordinary user cannot go")

    def wait_for(self, condition):
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end, "waited for in vain")
            time.sleep(0.01)

    def started(self, process):
        """A test that fails half way leaves none running, whose output somebody would wait for."""
        self.addCleanup(process.wait)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.kill)
        return process

    def write(self, files):
        """Names (text or bytes) to contents; a name that ends in a slash is a folder."""
        for name, contents in files.items():
            path = os.path.join(os.fsencode(self.folder), os.fsencode(name))
            os.makedirs(path if path.endswith(b"/") else os.path.dirname(path), exist_ok=True)
            if not path.endswith(b"/"):
                with open(path, "wb") as file:
                    file.write(contents.encode() if isinstance(contents, str) else contents)

    def zab(self, *arguments, folder=".", user=None, environment=None):
        """Exit status, standard output and standard error, the project's folder in them written as "@". A build runs one
        action at a time, so that lines come in one order, unless a test says otherwise."""
        if "build" in arguments and "help" not in arguments and not any(str(argument).startswith("-j") for argument in arguments):
            place = arguments.index("build") + 1
            arguments = (*arguments[:place], "-j1", *arguments[place:])
        plugin = [] if "--plugin" in arguments else ["--plugin", PLUGIN]
        run = subprocess.run(
            [os.path.abspath(ZAB), *plugin, *arguments], cwd=self.folder / folder, user=user, capture_output=True,
            timeout=120, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin", "HOME": str(self.folder),
                              **sanitizer_options(), **(environment or {})})
        shown = [text.decode().replace(str(self.folder), "@") for text in (run.stdout, run.stderr)]
        return run.returncode, *shown

    def check(self, arguments, status, out=None, err=None, **options):
        """Compares whole streams; None means that this one does not matter."""
        got = self.zab(*arguments, **options)
        self.assertEqual(got[0], status, got)
        if out is not None:
            self.assertEqual(got[1], out)
        if err is not None:
            self.assertEqual(got[2], err)
        return got

    def files(self, folder="working_data"):
        """Without the build state, which is the tool's own."""
        root = self.folder / folder
        paths = (path.relative_to(root) for path in root.rglob("*") if not path.is_dir())
        return sorted(str(path) for path in paths if path.parts[0] != ".zab")

"""What a stranger's project, a plug-in with mistakes and a system with too little of everything do to the tool: one line
and a status that says whose fault it was, and no file touched that is not its own."""

import os
import pathlib
import resource
import signal
import struct
import subprocess
import tempfile
import time
import unittest

from command_line import RULE, ZAB, sanitizer_options, tga
from test_workers import STEPS, StepTest

# Nobody's, so that nothing else counts against its limits.
STRANGER = 61234


def hot_journal(victim):
    """A rollback journal of no pages that names the file as the journal above it, in SQLite's form."""
    magic, name = bytes.fromhex("d9d505f920a163d7"), os.fsencode(victim)
    head = (magic + struct.pack(">5I", 0, 0, 1, 512, 4096)).ljust(512, b"\0")
    return head + struct.pack(">I", 0x40000000 // 4096 + 1) + name + struct.pack(">2I", len(name), sum(name)) + magic


class StateFolder(StepTest):
    def setUp(self):
        super().setUp()
        self.mine = pathlib.Path(tempfile.mkdtemp(prefix="zab-mine-")) / "mine"
        self.mine.write_text("keep")
        self.prepare({"a": "makes a"})

    def test_what_a_build_does_not_leave_there_is_refused(self):
        kinds = {"link": lambda path: path.symlink_to(self.mine), "pipe": os.mkfifo, "folder": lambda path: path.mkdir(),
                 "zero": lambda path: path.symlink_to("/dev/zero")}
        for name in ("lock", "running", "state.db", "state.db-wal", "state.db-journal", ""):
            for kind, make in kinds.items():
                if not name and kind == "folder":
                    continue
                with self.subTest(name=name, kind=kind):
                    self.setUp()
                    (self.folder / ".zab").mkdir() if name else None
                    make(self.folder / ".zab" / name)
                    what = f".zab/{name}, which is no regular file" if name else ".zab, which is no real folder"
                    for command in ("build", "plan", "clean"):
                        self.check([command, "--plugin", STEPS], 3, "",
                                   f"zab: error: the build state lies in {what}; remove it\n")
                    self.assertEqual((self.mine.read_text(), self.files()), ("keep", []))

    def test_files_with_second_names_are_not_written_to(self):
        self.build({})
        others = {name: self.folder / ("other-" + name) for name in ("lock", "running", "state.db")}
        (self.folder / ".zab/running").write_text("x")
        for name, path in others.items():
            os.link(self.folder / ".zab" / name, path)
        before = {name: path.read_bytes() for name, path in others.items()}
        self.assertEqual(self.build({"b": "makes b"})[0], 0)
        self.assertEqual({name: path.read_bytes() for name, path in others.items()}, before)
        self.assertEqual(self.zab("build", "-n", "--plugin", STEPS)[1], "")

    def test_a_foreign_journal_of_the_database_is_not_obeyed(self):
        self.build({})
        journal = self.folder / ".zab/state.db-journal"
        journal.write_bytes(hot_journal(self.mine))
        for command in ("plan", "build"):
            self.assertRegex(self.zab(command, "--plugin", STEPS)[2], r"state\.db has a journal that this program did not write")
        self.assertEqual((self.mine.read_text(), journal.exists()), ("keep", False))
        self.assertEqual(self.zab("build", "-n", "--plugin", STEPS)[1:], ("", ""))

    def test_a_foreign_journal_of_a_build_removes_nothing(self):
        build = None
        for origin in ("forged", "copied"):
            self.setUp()
            self.prepare({"a": "makes a\nhold raw:h\ndeaf"})
            build = self.start()
            while not (self.folder / "raw_data/h").exists() or "a" not in self.files():
                time.sleep(0.01)
            time.sleep(0.1)
            build.kill()
            build.communicate()
            running = self.folder / ".zab/running"
            text = running.read_text()
            running.unlink()
            running.write_text(text if origin == "copied" else "".join(text.splitlines(True)[1:]))
            self.prepare({"a": "makes b"})
            _, _, err = self.check(["build", "--plugin", STEPS], 0)
            self.assertIn(".zab/running is no journal of a build that ran here; it is taken away unread\n", err)
            self.assertEqual((self.files(), (self.folder / "raw_data/h").exists()), (["a", "b"], True))

    def test_nobody_else_may_write_there(self):
        former = os.umask(0)
        self.addCleanup(os.umask, former)
        self.prepare({"a": "makes a\ndeaf"})
        build = self.start()
        while "a" not in self.files():
            time.sleep(0.01)
        paths = [self.folder / ".zab", *(self.folder / ".zab").iterdir()]
        modes = {path.name: path.stat().st_mode & 0o022 for path in paths}
        build.kill()
        build.communicate()
        self.assertEqual(modes, {".zab": 0, "lock": 0, "running": 0})
        self.build({"a": "makes a"})
        self.assertEqual((self.folder / ".zab/state.db").stat().st_mode & 0o022, 0)


class PlugIns(StepTest):
    def test_one_that_fails_while_it_plans(self):
        for how, what in (("null", 'its processor "Step" answered with a null action'), ("throw", "told to throw"),
                          ("exit", "it ended the program"), (int(signal.SIGSEGV), "it crashed (SIGSEGV)"),
                          (int(signal.SIGABRT), "it gave up (SIGABRT)")):
            self.prepare({"a": f"plans {how}"})
            for command in ("build", "plan"):
                self.check([command, "--plugin", STEPS], 3, "", "zab: error: the plug-in "
                           f"{STEPS} failed while it was asked for actions: {what}\n",
                           environment=sanitizer_options("handle_segv=0:detect_leaks=0"))


class Limits(StepTest):
    def limited(self, limit, most, *arguments, user=None):
        self.folder.chmod(0o777)
        return subprocess.run([os.path.abspath(ZAB), "--plugin", STEPS, "build", *arguments], cwd=self.folder, text=True,
                              capture_output=True, timeout=60, user=user,
                              preexec_fn=lambda: resource.setrlimit(limit, (most, most)))

    @unittest.skipUnless(os.geteuid() == 0, "counts all processes of the user's")
    @unittest.skipIf(os.environ.get("ZAB_SANITIZE"), "sanitizers have threads of their own")
    def test_too_few_threads(self):
        for most in range(1, 7):
            self.setUp()
            self.prepare({name: f"threads\nmakes {name}" for name in "abcd"})
            try:
                run = self.limited(resource.RLIMIT_NPROC, most, "-j2", user=STRANGER)
            except PermissionError:
                self.skipTest("the program lies where an ordinary user cannot go")
            self.assertEqual((run.returncode, self.files()), (0, list("abcd")) if most > 1 else (3, []), (most, run.stderr))

    def test_files_that_may_not_grow(self):
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(256, 256)})
        run = subprocess.run(["sh", "-c", f'ulimit -f 100; exec "$@"', "sh", os.path.abspath(ZAB), "build"], text=True,
                             cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual(run.returncode, 3, run.stderr)
        self.assertRegex(run.stderr, r"\n  raw_data/a\.tga: .* \[a file may have only \d+ KB\]\n")
        self.setUp()
        self.prepare({"a": "makes a"})
        run = self.limited(resource.RLIMIT_FSIZE, 0)
        self.assertEqual((run.returncode, run.stderr.splitlines()[1:]), (
            3, ["zab: error: @/.zab/running cannot be written: File too large".replace("@", str(self.folder))]))

    def test_a_full_disk(self):
        self.write({"zab.toml": RULE, "working_data/": "",
                    **{f"raw_data/{i}.tga": tga(256, 256) if i % 2 else tga(128, 64) for i in range(6)}})
        for size in (100, 600):
            run = subprocess.run(["unshare", "-m", "sh", "-c", f'mount -t tmpfs -o size={size}k none working_data || exit 9\n'
                                  'for i in 1 2 3; do "$@"; echo $?; done', "sh", os.path.abspath(ZAB), "build", "-q", "-j2"],
                                 cwd=self.folder, capture_output=True, text=True, timeout=60)
            if not run.stdout:
                self.skipTest("no disk can be mounted here")
            self.assertEqual(run.stdout.split(), ["3"] * 3, run.stderr)

    def test_closed_streams(self):
        self.prepare({"a": "noise x\nmakes a\nfail"})
        for closed in ("<&- >&- 2>&-", ">&-", "2>&-", "<&-"):
            run = subprocess.run(["sh", "-c", f'exec "$@" {closed}', "sh", os.path.abspath(ZAB), "--plugin", STEPS, "build"],
                                 cwd=self.folder, timeout=60, capture_output=True)
            self.assertEqual(run.returncode, 1)
            self.assertRegex((self.folder / ".zab/lock").read_text(), r"\A\d+\n\Z")

    def test_version_control_ends_with_its_action(self):
        self.write({"zab.toml": RULE + '[version_control]\nkind = "git"\n', "raw_data/a.tga": tga(4, 4),
                    "bin/git": f"#!/bin/sh\necho $$ >>'{self.folder}/pids'\nsleep 300 & echo $! >>'{self.folder}/pids'\nwait\n"})
        (self.folder / "bin/git").chmod(0o755)
        status, _, err = self.zab("build", "--timeout", "0.5", environment={"PATH": f"{self.folder}/bin:/usr/bin:/bin"})
        self.assertEqual(status, 1, err)
        for pid in (self.folder / "pids").read_text().split():
            entry = pathlib.Path(f"/proc/{pid}/stat")
            # Whoever inherits them may not look after them.
            self.assertTrue(not entry.exists() or ") Z" in entry.read_text(), err)


if __name__ == "__main__":
    unittest.main()

"""Builds that are ended from outside at any moment: what was finished stays, nothing half written does, and the next build
comes to the same bytes as one that nobody disturbed. ZAB_KILLS sets how many moments are tried; the release is tried with 100."""

import os
import pathlib
import random
import shutil
import signal
import subprocess
import time
import unittest

from command_line import PLUGIN, RULE, ZAB, ProjectTest, tga
from test_workers import STEPS, StepTest

KILLS = int(os.environ.get("ZAB_KILLS", "16"))


def workers_of(process):
    try:
        return [int(pid) for pid in pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()]
    except FileNotFoundError:
        return []


class Interrupted(StepTest):
    def test_a_signal_ends_it_in_under_a_second(self):
        for order, signals in (("stay", [signal.SIGINT]), ("stubborn", [signal.SIGINT]), ("deaf", [signal.SIGTERM]), ("deaf", [signal.SIGINT] * 2)):
            with self.subTest(order=order, signals=signals):
                self.setUp()
                self.prepare({"a": "makes a", "b": f"after a\nscratch s\nmakes b\n{order}", "c": "after b\nmakes c"})
                build = self.start()
                self.wait_for(lambda: "b" in self.files())
                begin = time.monotonic()
                for number in signals:
                    build.send_signal(number)
                    time.sleep(0.02)
                err = build.communicate(timeout=10)[1]
                self.assertLess(time.monotonic() - begin, 1)
                self.assertEqual(build.returncode, 130, err)
                self.assertIn("[2/3] interrupted: b", err.splitlines())
                self.assertRegex(err.splitlines()[-1], r"^Interrupted: 1 built, 0 failed, 2 not run in ")
                self.assertEqual(self.files(), ["a"])


    def test_what_is_done_is_kept(self):
        self.write({"zab.toml": RULE.replace("rgba", "dxt5"), **{f"raw_data/{i:02}.tga": tga(256, 256) for i in range(30)}})
        build = self.started(subprocess.Popen([os.path.abspath(ZAB), "--plugin", PLUGIN, "build"], cwd=self.folder,
                                              text=True, stderr=subprocess.PIPE))
        first = build.stderr.readline()
        self.assertTrue(first.startswith("[1/30] done: "), first)
        build.send_signal(signal.SIGINT)
        err = build.communicate(timeout=60)[1]
        self.assertEqual(build.returncode, 130, err)
        self.assertRegex(err.splitlines()[-1], r"^Interrupted: \d+ built, 0 failed, \d+ not run in ")
        sizes = {(self.folder / "working_data" / name).stat().st_size for name in self.files()}
        self.assertEqual(len(sizes), 1)


class OthersFiles(StepTest):
    def test_what_looks_half_written_and_is_not(self):
        """Names such as files bear that are being written, some of them the dead build's own."""
        for victim in ("tool", "worker"):
            with self.subTest(victim=victim):
                self.setUp()
                self.prepare({"a": "scratch s\nscratch raw:s.dds\nhold raw:held.dds\nhold raw:new.dds\nmakes a\nslow a2\ndeaf"})
                self.write({"working_data/old.part": "mine", "working_data/a2.part": "", "raw_data/old.dds": "mine"})
                build = self.start()
                self.wait_for(lambda: "a2" in self.files() and (self.folder / "working_data/a2").stat().st_size >= 11)
                if victim == "worker" and not workers_of(build):
                    self.skipTest("no /proc here that tells of a process's children")
                others = {"working_data/new.part": "mine", "working_data/a.backup": "mine", "raw_data/s.dds": "mine"}
                if victim == "worker":
                    self.write(others)
                    os.unlink(self.folder / "raw_data/new.dds")
                    self.write({"raw_data/new.dds": "mine"})
                os.kill(build.pid if victim == "tool" else workers_of(build)[0], signal.SIGKILL)
                build.communicate(timeout=10)
                if victim == "tool":
                    self.write(others)
                    os.unlink(self.folder / "raw_data/new.dds")
                    self.write({"raw_data/new.dds": "mine"})
                self.write({"raw_data/a.step": "makes b"})
                self.check(["--plugin", STEPS, "build", "-q"], 0, "", "")
                self.assertEqual(self.files(), ["a.backup", "b", "new.part", "old.part"])
                self.assertEqual(self.files("raw_data"), ["a.step", "new.dds", "old.dds", "s.dds"])

    def test_what_is_there_is_no_work_file(self):
        self.write({"zab.toml": '[[rule]]\nname = "TextureOld"\nTargetPath = "old"\nmatch = "*.tga"\n'
                                '[[rule]]\nname = "Texture"\nTargetPath = "new"\nmatch = "*.dds"\n',
                    **{f"raw_data/{name}.tga": tga(8, 8) for name in ("a", "b", "sub/c", "sub/d")},
                    "raw_data/a.dds": "a source"})
        os.symlink("nowhere", self.folder / "raw_data/sub/d.dds")
        self.check(["build"], 1)
        self.assertEqual(self.files(), ["old/b.dds", "old/c.dds"])
        # What is up to date needs no room; what is built again keeps its target while it cannot be made.
        self.write({"raw_data/sub/c.dds": "nobody's source", "zab.toml": (self.folder / "zab.toml").read_text().replace(
            '"*.dds"', '"none"')})
        os.remove(self.folder / "raw_data/sub/d.dds")
        _, _, err = self.check(["build"], 1)
        self.assertEqual(self.files(), ["old/b.dds", "old/c.dds", "old/d.dds"])
        _, _, err = self.check(["build", "--force"], 1)
        for name in ("a", "sub/c"):
            self.assertIn(f"\nraw_data/{name}.dds is in the way: this action needs a file of that name for itself\n", err)
        self.assertEqual(self.files(), ["old/b.dds", "old/c.dds", "old/d.dds"])
        self.assertEqual([(self.folder / f"raw_data/{name}.dds").read_text() for name in ("a", "sub/c")],
                         ["a source", "nobody's source"])


class RandomMoments(ProjectTest):
    def tree(self):
        """Every file of the project but its state, with its bytes."""
        return {name: (self.folder / name).read_bytes() for name in self.files(".")}

    def command(self, *arguments):
        return [os.path.abspath(ZAB), "--plugin", self.plugin, "build", "-q", "-j2", *arguments]

    def complete(self, *arguments):
        run = subprocess.run(self.command(*arguments), cwd=self.folder, capture_output=True, text=True, timeout=60)
        self.assertEqual(run.returncode, 0, run.stderr)

    def disturb(self, build, chance):
        kind = chance.choice(["tool", "worker", "interrupt"])
        if kind == "tool":
            build.kill()
        elif kind == "interrupt":
            build.send_signal(signal.SIGINT)
        elif workers := workers_of(build):
            try:
                os.kill(chance.choice(workers), signal.SIGKILL)
            except ProcessLookupError:
                pass
        build.communicate(timeout=30)

    def try_moments(self, kills, only_one):
        chance = random.Random(20261121)
        begin = time.monotonic()
        self.complete()
        span = time.monotonic() - begin
        whole = self.tree()
        for moment in range(kills):
            with self.subTest(moment=moment):
                shutil.rmtree(self.folder / "working_data")
                build = self.started(subprocess.Popen(self.command(), cwd=self.folder, stderr=subprocess.PIPE))
                time.sleep(chance.uniform(0, span))
                self.disturb(build, chance)
                # A build of one file finds and removes what the disturbed one left, and makes no more than that.
                self.complete(only_one)
                left = self.tree()
                self.assertEqual({name: whole.get(name) for name in left}, left)
                self.complete()
                self.assertEqual(self.tree(), whole)

    def test_steps(self):
        self.plugin = STEPS
        steps = {f"{i:02}": f"slow {i}/a\nscratch {i}/w\nmakes {i}/b" + (f"\nafter {i - 7:02}" if i % 3 == 0 and i > 6 else "")
                 for i in range(16)}
        self.write({"zab.toml": "", **{f"raw_data/{name}.step": text for name, text in steps.items()}})
        self.try_moments(KILLS // 2, "raw_data/01.step")

    def test_textures(self):
        self.plugin = PLUGIN
        old = '[[rule]]\nname = "TextureOld"\nTargetPath = "old"\n'
        self.write({"zab.toml": RULE.replace("[[rule]]\n", '[[rule]]\nmatch = "new/**"\n').replace("rgba", "dxt5"),
                    "raw_data/old/zab_rules.toml": old,
                    **{f"raw_data/new/{i:02}.tga": tga(128, 64) for i in range(8)},
                    **{f"raw_data/old/{i:02}.tga": tga(64, 128) for i in range(8)}})
        self.try_moments(KILLS - KILLS // 2, "raw_data/new/01.tga")


if __name__ == "__main__":
    unittest.main()

"""Actions in worker processes: what a worker's end costs, how many run together, and what they know of one another."""

import json
import os
import shutil
import subprocess
import unittest

from command_line import RULE, ZAB, ProjectTest, sanitizer_options, tga

STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")


class StepTest(ProjectTest):
    def prepare(self, steps):
        self.write({"zab.toml": "", **{f"raw_data/{name}.step": text for name, text in steps.items()}})

    def build(self, steps, *arguments, **options):
        self.prepare(steps)
        status, out, err = self.zab("build", "--plugin", STEPS, *arguments, **options)
        return status, out, err.splitlines()

    def start(self, *arguments, **options):
        return self.started(subprocess.Popen([os.path.abspath(ZAB), "--plugin", STEPS, "build", *arguments],
                                             cwd=self.folder, stderr=subprocess.PIPE, text=True, **options))


class Deaths(StepTest):
    def test_a_worker_that_dies_costs_its_one_action(self):
        for order, arguments, cause in (
                ("signal 11", (), "killed by signal 11 (SIGSEGV)"),
                ("signal 9", (), "killed by signal 9 (SIGKILL, perhaps out of memory)"),
                ("exit 7", (), "the worker ended with status 7"),
                ("babble", (), "the worker sent a message that is damaged"),
                ("deaf", ("--timeout", "0.3"), "ran longer than the 0.3 s that it may")):
            with self.subTest(order=order):
                self.setUp()
                status, _, lines = self.build({
                    "a": "makes a", "b": f"makes b1\nscratch s\nsay before\n{order}\nmakes b2", "c": "makes c",
                    "d": "after b\nmakes d", "e": "makes e"}, *arguments,
                    # Sanitizers would make a report and an exit status of the signal.
                    environment=sanitizer_options("handle_segv=0"))
                self.assertEqual(status, 1)
                self.assertEqual(lines[:-1], [
                    "[1/5] done: a", "[2/5] FAILED: b", "before", f'"b" on raw_data/b.step: {cause}', "[3/5] done: c",
                    "[4/5] FAILED: d", 'Not run: it needs "b", which failed', "[5/5] done: e",
                    "Failed:", f"  raw_data/b.step: {cause}", '  raw_data/d.step: Not run: it needs "b", which failed'])
                self.assertEqual(self.files(), ["a", "c", "e"])
                self.assertFalse((self.folder / ".zab/running").exists())

    @unittest.skipIf(os.environ.get("ZAB_SANITIZE"), "sanitizers reserve terabytes")
    def test_memory_that_runs_out(self):
        # The limit stands for the machine's end: what an allocation gets to hear is the same.
        limited = ["sh", "-c", 'ulimit -v 2000000; exec "$@"', "sh"]
        self.prepare({"a": "eat\nmakes a", "b": "makes b"})
        run = subprocess.run([*limited, os.path.abspath(ZAB), "--plugin", STEPS, "build", "-j1"], cwd=self.folder,
                             capture_output=True, text=True, timeout=60)
        self.assertEqual(run.returncode, 1, run.stderr)
        self.assertEqual(self.files(), ["b"])

    def test_what_an_action_left_beside_its_targets_goes_too(self):
        self.build({"a": "scratch other/s\nmakes a", "b": "after a\nslow b\nsignal 11"})
        self.assertEqual(self.files(), ["a"])
        build = self.start("-j1") if self.prepare({"b": "slow b\nscratch x/s\ndeaf"}) is None else None
        self.wait_for((self.folder / "working_data/x").exists)
        build.kill()
        build.communicate()
        self.assertIn("b", self.files())
        self.write({"working_data/mine.part": ""})
        os.utime(self.folder / "working_data/mine.part", (1, 1))
        status, _, lines = self.build({}, "raw_data/a.step")
        self.assertEqual((status, self.files()), (0, ["a", "mine.part"]))


class SideBySide(StepTest):
    def test_as_many_as_allowed_run_together(self):
        cores = len(os.sched_getaffinity(0))
        if cores > 1:
            met = {"a": "makes a1\nmeet b1\nmakes a2", "b": "makes b1\nmeet a1"}
            self.assertEqual(self.build(met, "-j2")[0], 0)
        # One at a time by order, by memory, and because there are no more processors.
        alone = {name: "alone here\nmakes " + name for name in "abcd"}
        for arguments, options in ((["-j1"], {}), (["-j2", "--memory", "1K"], {}), (["-j16"], {"one_processor": True})):
            self.setUp()
            allowed = os.sched_getaffinity(0)
            if options:
                os.sched_setaffinity(0, {min(allowed)})
            try:
                status, _, lines = self.build(alone, *arguments)
            finally:
                os.sched_setaffinity(0, allowed)
            self.assertEqual(status, 0, lines)

    def test_order_holds_and_the_graph_is_shared(self):
        steps = {f"s{i}": f"makes {i}\nregister f{i}" for i in range(6)}
        steps["z"] = "known z" + "".join(f"\nafter s{i}" for i in range(6))
        for jobs in ("-j1", "-j2", "-j16"):
            self.setUp()
            status, _, lines = self.build(steps, jobs)
            self.assertEqual(status, 0, lines)
            self.assertEqual((self.folder / "working_data/z").read_text(), "f0 f1 f2 f3 f4 f5")

    def test_what_libraries_print_belongs_to_the_action(self):
        status, out, lines = self.build({"a": "noise from a\nsay a\nmakes a", "b": "noise from b\nmakes b"}, "-j2",
                                        "--events", "-")
        events = [json.loads(line) for line in out.splitlines()]
        self.assertEqual(status, 0)
        self.assertEqual(sorted((event["id"], event["text"]) for event in events if event["event"] == "library_line"),
                         [(1, "from a"), (2, "from b")])
        place = [line.endswith("done: a") for line in lines].index(True)
        self.assertEqual(lines[place + 1:place + 3], ["from a", "a"])

    def test_two_actions_that_come_to_write_one_file(self):
        self.write({"zab.toml": "", "raw_data/a.step": "makes a\nregisters shared", "raw_data/b.step": "makes b\nregisters shared"})
        status, _, err = self.zab("build", "--plugin", STEPS)
        self.assertEqual(status, 1, err)
        self.assertIn("another action makes working_data/shared as well\n", err)
        self.assertRegex(err, r"\n1 built, 1 failed in ")
        # Nobody knows whose bytes the file holds, so it is neither's.
        self.assertEqual(self.files(), ["a"])
        _, out, _ = self.check(["plan", "--plugin", STEPS], 0)
        self.assertIn("a: the target working_data/shared is missing\n", out)
        self.assertEqual(self.zab("build", "--plugin", STEPS)[0], 1)

    def test_the_same_bytes_for_any_number_of_jobs(self):
        formats = ("dxt1", "dxt5", "rgba", "bc7", "bc6")
        for i, name in enumerate(formats):
            side = 16 << (i % 3)
            self.write({f"raw_data/{name}/{side + k}.tga": tga(side, side * 2) for k in range(4)})
            self.write({f"raw_data/{name}/zab_rules.toml": f'[[rule]]\nname = "Texture"\nCompressionFormat = "{name}"\n'})
        self.write({"zab.toml": RULE})
        trees = []
        for jobs in ("-j1", "-j2", "-j16"):
            status, _, err = self.zab("build", jobs)
            self.assertEqual(status, 0, err)
            root = self.folder / "working_data"
            trees.append({name: (root / name).read_bytes() for name in self.files()})
            self.zab("clean")
        self.assertEqual(len(trees[0]), 20)
        self.assertEqual(trees[0], trees[1])
        self.assertEqual(trees[0], trees[2])


class Surroundings(StepTest):
    @unittest.skipUnless(shutil.which("git"), "needs git")
    def test_workers_share_the_index_of_git(self):
        git = {"GIT_CONFIG_NOSYSTEM": "1"}
        self.write({"zab.toml": RULE + '[version_control]\nkind = "git"\n',
                    **{f"raw_data/{i}.tga": tga(4, 4) for i in range(40)}})
        subprocess.run(["git", "init", "-q"], cwd=self.folder, check=True, env={**os.environ, **git})
        status, _, err = self.zab("build", "-j2", environment=git)
        self.assertEqual(status, 0, err)
        staged = subprocess.run(["git", "ls-files", "working_data"], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(len(staged.stdout.split()), 40)

    def test_the_second_build_waits_or_says_so(self):
        self.prepare({"a": "makes a\nstay"})
        first = self.start()
        self.wait_for((self.folder / "working_data/a").exists)
        self.check(["build", "--plugin", STEPS, "--no-wait"], 3, "",
                   f"zab: error: another build of this project is running (process {first.pid})\n")
        second = self.start()
        self.assertEqual(second.stderr.readline(),
                         f"zab: waiting for another build of this project to end (process {first.pid})\n")
        second.send_signal(2)
        self.assertEqual((second.wait(timeout=5), second.stderr.read()), (130, ""))
        third = self.start()
        third.stderr.readline()
        # Killed, not ended: a lock never stays behind.
        self.prepare({"a": "makes a"})
        first.kill()
        self.assertEqual((third.wait(timeout=10), third.stderr.read()[:9]), (0, "[1/1] don"))

    def test_targets_that_cannot_be_written(self):
        user = self.ordinary_user()
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), "working_data/textures/": None})
        self.folder.chmod(0o777)
        (self.folder / "working_data/textures").chmod(0o555)
        status, _, err = self.zab("build", user=user)
        self.assertEqual((status, err.splitlines()[3:-1]), (3, [
            "  raw_data/a.tga: The target folder @/working_data/textures cannot be written: Permission denied"]))
        (self.folder / ".zab/lock").unlink()
        (self.folder / ".zab").chmod(0o555)
        self.check(["build"], 3, "", "zab: error: the build state cannot be kept in .zab: Permission denied\n", user=user)

    def test_options_with_mistakes(self):
        self.prepare({"a": "makes a"})
        for arguments in (("-j0",), ("-j", "x"), ("--memory", "4Q"), ("--memory", "-1"), ("--timeout", "0")):
            status, out, err = self.zab("build", "--plugin", STEPS, *arguments)
            self.assertEqual((status, out), (2, ""), err)
        self.assertFalse((self.folder / ".zab").exists())

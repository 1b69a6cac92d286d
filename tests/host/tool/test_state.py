"""What is built again after a change, why, and that nothing else is."""

import json
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import unittest

from command_line import PLUGIN, RULE, ZAB, ProjectTest, tga

NO_CHANGE_TIMES = os.environ.get("ZAB_NO_CHANGE_TIMES", "build/release/lib/no_change_times.so")
STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")


class StateTest(ProjectTest):
    plugin = STEPS

    def tool(self, *arguments):
        return self.zab("--plugin", self.plugin, *arguments)

    def change(self, files):
        """As `write`, and None removes a file or folder."""
        for name, contents in files.items():
            path = self.folder / name
            if contents is not None:
                self.write({name: contents})
            elif path.is_dir():
                shutil.rmtree(path)
            else:
                path.unlink()

    def reasons(self):
        """What would run, by name, with its reason."""
        status, out, err = self.tool("build", "-q", "-n", "--explain")
        self.assertEqual((status, err), (0, ""))
        return dict(re.fullmatch(r"would run: (\w+(?: [^:]*)?): (.*)", line).groups() for line in out.splitlines())

    def build(self, *arguments, expected=0):
        """The names of the actions that ran, in their order, and all that was said."""
        status, _, err = self.tool("build", *arguments)
        self.assertEqual(status, expected, err)
        return re.findall(r"^\[\d+/\d+\] (?:done|made no file|FAILED): (.*)$", err, re.M), err

    def settled(self):
        """Nothing is left to do; returns what a build says of that."""
        self.assertEqual(self.reasons(), {})
        ran, err = self.build()
        self.assertEqual(ran, [])
        return err


class Reasons(StateTest):
    project = '[global]\nRetail = {}\n[tables]\nlist = "list.xml"\n'
    a = "asks Format\nasks Size\nglobal Retail\nlooks b.png\ntable list\nmakes a.out"

    def setUp(self):
        super().setUp()
        self.write({"zab.toml": self.project.format("false"), "list.xml": '<table><row name="a"/></table>',
                    "raw_data/zab_rules.toml": '[[rule]]\nname = "Step"\nmatch = "a.step"\nFormat = "dxt1"\nOther = 1\n',
                    "raw_data/a.step": self.a, "raw_data/b.step": "reads a.out\nmakes b.out",
                    "raw_data/c.step": "makes c.out\nregisters c1.out", "raw_data/d.step": "makes d.out\nlooks c.step"})
        self.build()
        self.settled()

    def test_a_file_that_was_not_made_is_tried_again(self):
        self.write({"raw_data/p.step": "say why\nidle\nmakes p.out", "raw_data/q.step": "idle\nmakes q.out",
                    "working_data/q.out/in_the_way": ""})
        self.build()
        for _ in range(2):
            self.assertEqual(self.reasons(), {"p": "made no file the last time", "q": "made no file the last time"})
            self.assertEqual(self.build()[0], ["p", "q"])

    def test_changes(self):
        rules, c = "raw_data/zab_rules.toml", "makes c.out\nregisters c1.out\nmakes c2.out"
        table = '[[rule]]\nname = "Step"\nmatch = "a.step"\nFormat = "bc7"\n'
        # What is written; which action runs, and why. Where a runs, b waits for it and finds what it made before.
        for files, name, reason in (
            ({rules: table + "Other = 1\n"}, "a", f"rule value Format changed from dxt1 to bc7 ({rules}:4)"),
            # Nobody reads the one, and the other was asked under another topic.
            ({rules: table + "Other = 2\nUnread = true\n"}, None, None),
            ({rules: table + "Size = 1\n"}, "a", f"rule value Size was set to 1 ({rules}:5)"),
            ({rules: table + 'Size = "1"\n'}, "a", f'rule value Size changed from 1 to "1" ({rules}:5)'),
            ({rules: table + "Size = 0.25\n"}, "a", f"rule value Size changed from 1 to 0.25 ({rules}:5)"),
            ({rules: table + "Size = 0.2500000000000001\n"}, "a",
             f"rule value Size changed from 0.25 to 0.2500000000000001 ({rules}:5)"),
            ({rules: table + "Size = nan\n"}, "a", f"rule value Size changed from 0.2500000000000001 to nan ({rules}:5)"),
            ({rules: table}, "a", "rule value Size is no longer set (it was nan)"),
            # Asked by the processor before the action was made.
            ({rules: table + "Made = 0.5\n"}, "a", f"rule value Made was set to 0.5 ({rules}:5)"),
            ({"zab.toml": self.project.format("true")}, "a",
             "global rule value Retail changed from false to true (zab.toml:2)"),
            ({"list.xml": '<table><row name="b"/></table>'}, "a", "the table list changed"),
            ({"raw_data/b.png": "x"}, "a", "raw_data/b.png appeared; it looks for that file"),
            ({"raw_data/b.png": "y"}, None, None),
            ({"raw_data/b.png": None}, "a", "raw_data/b.png was removed; it looks for that file"),
            ({"raw_data/d.step": "looks none\nmakes d.out"}, "d", "raw_data/d.step changed"),
            ({"working_data/c.out": None}, "c", "the target working_data/c.out is missing"),
            ({"working_data/c1.out": "mine"}, "c", "the target working_data/c1.out was changed since it was made"),
            ({"raw_data/c.step": c}, "c", "working_data/c2.out is a new target"),
            ({"raw_data/c.step": c + "\nreads d.out"}, "c", "working_data/d.out is a new source"),
            ({"raw_data/c.step": c}, "c", "working_data/d.out is no longer a source"),
        ):
            with self.subTest(files=files):
                self.change(files)
                expected = {name: reason} if name else {}
                if name == "a":
                    expected["b"] = 'needs "a", which will be built'
                self.assertEqual(self.reasons(), expected)
                self.assertEqual(self.build()[0], [name] if name else [])
                self.settled()
        self.change({".zab": None})
        self.assertEqual(self.reasons(), {name: f"nothing is known of how the target working_data/{name}.out was made"
                                          for name in "abcd"})

    def test_other_bytes_go_on_to_those_who_read_them(self):
        self.write({"raw_data/a.step": "writes new\n" + self.a})
        ran, err = self.build("--explain")
        self.assertEqual(ran, ["a", "b"])
        self.assertIn("b: working_data/a.out changed\n", err)

    def test_stamps_do_not_decide_and_cannot_deceive(self):
        source = self.folder / "raw_data/d.step"
        os.utime(source, (1, 1))
        shutil.copytree(self.folder / "working_data", self.folder / "copy")
        shutil.rmtree(self.folder / "working_data")
        os.rename(self.folder / "copy", self.folder / "working_data")
        self.settled()
        # Another content of the same size, with the time of modification set back.
        before = source.stat()
        self.write({"raw_data/d.step": source.read_text().replace("c.step", "d.step")})
        os.utime(source, ns=(before.st_atime_ns, before.st_mtime_ns))
        self.assertEqual(self.reasons(), {"d": "raw_data/d.step changed"})

    @unittest.skipIf(os.environ.get("ZAB_SANITIZE"), "sanitizers want to be loaded first")
    def test_contents_decide_where_times_of_change_are_not_kept(self):
        disk = {"LD_PRELOAD": os.path.abspath(NO_CHANGE_TIMES)}
        source, before = self.folder / "raw_data/d.step", None
        for text in ("looks c.step\nmakes d.out", "looks d.step\nmakes d.out", "looks c.step\nmakes d.out"):
            self.write({"raw_data/d.step": text})
            os.utime(source, (1, 1))
            _, out, _ = self.zab("--plugin", STEPS, "build", "-n", "--explain", environment=disk)
            if before:
                self.assertEqual(out, "would run: d: raw_data/d.step changed\n")
            before = text
            self.assertEqual(self.zab("--plugin", STEPS, "build", environment=disk)[0], 0)
            self.assertEqual(self.zab("--plugin", STEPS, "build", "-n", environment=disk)[1], "")

    def test_a_change_right_behind_a_build_is_noticed(self):
        for contents in ("one!", "two!", "six!") * 4:
            self.write({"working_data/d.out": contents})
            self.assertEqual(self.build()[0], ["d"])

    def test_force_and_restriction(self):
        self.assertEqual(self.build("--force", "raw_data/c.step")[0], ["c"])
        self.write({"raw_data/c.step": "makes c.out", "raw_data/d.step": "makes d.out"})
        self.assertEqual(self.build("raw_data/d.step")[0], ["d"])
        self.assertIn("1 file is left of earlier builds", self.build()[1])

    def test_failures_are_tried_again_and_what_needs_them_waits(self):
        self.write({"raw_data/a.step": "fail\n" + self.a})
        for _ in range(2):
            self.assertEqual(self.build(expected=1)[0], ["a", "b"])
        self.write({"raw_data/a.step": self.a})
        self.assertEqual(self.reasons(), {"a": "failed the last time", "b": "working_data/a.out was removed"})
        self.assertEqual(self.build()[0], ["a"])
        self.settled()

    def test_what_plan_and_explain_say(self):
        self.write({"raw_data/d.step": "makes d.out"})
        for line in ("2 b: up to date\n", "4 d: raw_data/d.step changed\n"):
            self.assertIn(line, self.tool("plan")[1])
        plan = json.loads(self.tool("plan", "--json")[1])
        self.assertEqual([(action["state"], action["reason"]) for action in plan],
                         [("up-to-date", "")] * 3 + [("run", "raw_data/d.step changed")])
        self.assertIn("  to be built: raw_data/d.step changed\n", self.tool("explain", "raw_data/d.step")[1])
        self.assertIn("  up to date\n", self.tool("explain", "raw_data/a.step")[1])


class Stale(StateTest):
    def setUp(self):
        super().setUp()
        self.write({"zab.toml": "", "raw_data/a.step": "makes a\nregisters a1\nregisters a2", "raw_data/b.step": "makes x/b"})
        self.build()

    def test_files_that_nobody_makes(self):
        self.change({"raw_data/a.step": "makes a\nregisters a1", "raw_data/b.step": None})
        ran, err = self.build()
        self.assertEqual(ran, ["a"])
        self.assertIn('2 files are left of earlier builds that no action makes any more; "zab clean --stale" removes them\n',
                      err)
        self.assertTrue(self.tool("plan")[1].endswith("no action makes working_data/a2 any more\n"
                                                      "no action makes working_data/x/b any more\n"))
        stale = "working_data/a2\nworking_data/x/b\n"
        self.assertEqual(self.tool("clean", "--stale", "-n"), (0, stale, "2 would be removed\n"))
        self.assertEqual(self.tool("clean", "--stale"), (0, "", "2 removed\n"))
        self.assertEqual(self.files(), ["a", "a1"])
        self.assertFalse((self.folder / "working_data/x").exists())
        self.assertNotIn("left", self.settled())

    def test_what_somebody_changed_is_his(self):
        self.change({"raw_data/b.step": None, "working_data/x/b": "mine"})
        self.assertEqual(self.tool("clean", "--stale"), (0, "", "0 removed\n"))
        self.assertEqual(self.files(), ["a", "a1", "a2", "x/b"])

    def test_a_source_that_comes_back_finds_its_target(self):
        os.rename(self.folder / "raw_data/b.step", self.folder / "b.step")
        self.assertIn("1 file is left", self.settled())
        os.rename(self.folder / "b.step", self.folder / "raw_data/b.step")
        self.assertNotIn("left", self.settled())

    def test_clean_takes_registered_files_too(self):
        self.assertEqual(self.tool("clean"), (0, "", "5 removed\n"))
        self.assertEqual(self.files(), [])


class Textures(StateTest):
    plugin = PLUGIN

    def setUp(self):
        super().setUp()
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), "raw_data/ui/b.tga": tga(4, 4),
                    "raw_data/ui/c_gloss.tga": tga(4, 4)})
        self.build()
        self.settled()

    def test_rules(self):
        rules, table = "raw_data/ui/zab_rules.toml", '[[rule]]\nname = "Texture"\nCompressionFormat = "dxt5"\n'
        names = re.findall(r"^\d+ (.*): up to date$", self.tool("plan", "raw_data/ui")[1], re.M)
        self.assertEqual(len(names), 2)
        moved = table + 'TargetPath = "moved"\n'
        for text, reason in (
            (table, f"rule value CompressionFormat changed from rgba to dxt5 ({rules}:3)"),
            (table + "AverageGrey = 0.25\n", f"rule value AverageGrey was set to 0.25 ({rules}:4)"),
            (table, "rule value AverageGrey is no longer set (it was 0.25)"),
            (moved, f"rule value TargetPath changed from textures/{{dir}} to moved ({rules}:4)"),
        ):
            with self.subTest(reason=reason):
                self.write({rules: text})
                self.assertEqual(self.reasons(), dict.fromkeys(names, reason))
                self.assertEqual(self.build()[0], names)
                self.settled()
        # A rule of atlases concerns no conversion.
        self.write({rules: moved + '[[rule]]\nname = "Atlas"\nmatch = "*.tga"\nTargetBaseName = "all"\n'})
        self.assertEqual(re.findall("would run: (.*)", self.tool("build", "-n")[1]), [])

    def test_a_sibling_that_is_read_when_it_is_there(self):
        self.write({"raw_data/ui/c_factionmask.tga": tga(4, 4)})
        self.assertEqual(list(self.reasons().values()), ["raw_data/ui/c_factionmask.tga is a new source"])

    def test_the_plug_in(self):
        # What it works with counts, too: here its codecs' library, as another build of it would be.
        libraries = self.folder / "libraries"
        libraries.mkdir()
        linked = subprocess.run(["ldd", PLUGIN], capture_output=True, text=True).stdout
        codecs = pathlib.Path(re.search(r"libfreeimage\S* => (\S+)", linked)[1])
        shutil.copy(codecs, libraries / codecs.name)
        same = {"LD_LIBRARY_PATH": str(libraries)}
        dry = ("--plugin", PLUGIN, "build", "-n", "--explain")
        self.assertEqual(self.zab(*dry, environment=same)[1], "")
        bytes_ = codecs.read_bytes()
        place = bytes_.index(b"\4\0\0\0\x14\0\0\0\3\0\0\0GNU\0") + 16
        (libraries / codecs.name).write_bytes(bytes_[:place] + bytes([bytes_[place] ^ 1]) + bytes_[place + 1:])
        self.assertEqual(self.zab(*dry, environment=same)[1].count(": the plug-in changed\n"), 3)
        self.plugin = str(self.folder / "copy.so")
        shutil.copy(PLUGIN, self.plugin)
        self.assertEqual(self.reasons(), {})
        with open(self.plugin, "ab") as library:
            library.write(b"\0")
        self.assertEqual(list(self.reasons().values()), ["the plug-in changed"] * 3)


class OddActions(StateTest):
    plugin = PLUGIN

    def test_a_source_that_is_not_listed(self):
        mask, fourth = tga(4, 4), "raw_data/a_colormask4.tga"
        self.write({"zab.toml": RULE + '[[rule]]\nname = "Texture"\nmatch = "*4.tga"\nCompressionFormat = "rgb"\n',
                    "raw_data/a_colormask.tga": mask, "raw_data/a_colormask3.tga": mask})
        self.build()
        for contents, why in ((mask, "is a new source"), (tga(4, 4, bytes(64)), "changed"), (None, "is no longer a source")):
            self.change({fourth: contents})
            self.assertEqual(self.reasons()["Convert mask texture (a)"], f"{fourth} {why}")
            self.build()
            self.settled()

    def test_an_action_in_error_has_no_target(self):
        """Its rule no longer says where to, and another action's target stands where it would go by itself."""
        texture = '[[rule]]\nname = "Texture"\nmatch = "a.tga"\n'
        old = '[[rule]]\nname = "TextureOld"\nmatch = "b.tga"\nForbidDXT1 = true\nTargetPath = "old"\n'
        files = {"raw_data/a.tga": tga(4, 4), "raw_data/b.tga": tga(4, 4)}
        self.write({"zab.toml": texture + 'TargetPath = ""\nTargetBaseName = "b"\n' + old, **files})
        self.build()
        self.write({"zab.toml": (texture + 'TargetPath = ""\nTargetBaseName = "b"\n' + old).replace('TargetPath = "old"\n', "")})
        self.assertEqual(self.build(expected=1)[0], ["Convert texture (b.tga)"])
        self.assertEqual(self.tool("explain", "raw_data/b.tga")[1].count("  makes "), 0)
        self.assertEqual(self.tool("clean", "--stale", "-n")[1], "working_data/old/b.dds\n")
        shutil.rmtree(self.folder / "working_data")
        self.write({"zab.toml": texture.replace("Texture", "TextureOld"), "working_data/d": "in the way", "raw_data/d/a.tga": tga(4, 4)})
        self.assertIn("(d/a.tga)\nNo target path has been specified in the rule!\n", self.build(expected=1)[1])

    def test_an_instruction_set_that_is_none(self):
        self.write({"zab.toml": "", "raw_data/": ""})
        _, _, err = self.zab("--plugin", PLUGIN, "plan", environment={"ZAB_SIMD": "mmx"})
        self.assertEqual(err.splitlines()[0], 'zab: warning: ZAB_SIMD is "mmx"; it takes scalar, sse4, avx2 or avx512')


class Database(StateTest):
    def setUp(self):
        super().setUp()
        self.write({"zab.toml": "", "raw_data/a.step": "makes a"})
        self.build()

    def test_a_state_that_cannot_be_used_is_set_aside(self):
        path = self.folder / ".zab/state.db"
        whole = path.read_bytes()
        for contents, what in ((b"no database at all, whatever the name says", "is damaged"), (whole[:5000], "is damaged"),
                               (None, "is of another version of this program")):
            with self.subTest(what=what):
                if contents:
                    path.write_bytes(contents)
                else:
                    database = sqlite3.connect(path)
                    database.execute("PRAGMA user_version = 99")
                    database.close()
                before = path.read_bytes()
                err = self.tool("plan")[2]
                self.assertRegex(err, rf"\Azab: warning: the build state @/.zab/state.db {what}.*everything is built anew\n\Z")
                self.assertEqual(path.read_bytes(), before)
                ran, err = self.build()
                self.assertEqual((ran, err.count("warning")), (["a"], 1))
                self.settled()

    def test_asking_leaves_no_trace(self):
        shutil.rmtree(self.folder / ".zab")
        for command in (["plan"], ["build", "-n"], ["explain", "raw_data/a.step"], ["clean", "-n"], ["clean", "--stale"]):
            self.tool(*command)
            self.assertFalse((self.folder / ".zab").exists(), command)

    def test_results_of_a_killed_build_stay(self):
        image = tga(256, 256)
        self.write({"zab.toml": RULE.replace("rgba", "dxt5"), **{f"raw_data/{i:02}.tga": image for i in range(40)}})
        self.plugin = PLUGIN
        build = self.started(subprocess.Popen([os.path.abspath(ZAB), "--plugin", PLUGIN, "build"], cwd=self.folder,
                                              stderr=subprocess.PIPE))
        for _ in range(4):
            build.stderr.readline()
        build.kill()
        said = 4 + len(build.communicate()[1].splitlines())
        # Actions are remembered before they are reported; the last one may have been just between the two.
        self.assertIn(40 - len(self.reasons()), (said, said + 1))


if __name__ == "__main__":
    unittest.main()

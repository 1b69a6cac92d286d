"""What a stranger's project may not do, and what names of files may be: anything that the system takes."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

from command_line import PLUGIN, RULE, ZAB, ProjectTest, tga

STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")

# Each would break a program that puts names into shell lines, formats, JSON or terminal lines without a thought.
NAMES = ["two words", "quote\"and'quote", "line\nend", "-C", "--help", "%1 %2 %s", "$(touch oops)`touch oops`;&|",
         "back\\slash", "#@*[?]{dir}", "W\u00e4nde \u58c1 \U0001F9F1", "\x1b[31mred", "\u202egnp", "~", "tab\t"]


class Outside(ProjectTest):
    """Nothing is written outside the working root, whatever rules and links say."""

    def setUp(self):
        super().setUp()
        self.outside = pathlib.Path(tempfile.mkdtemp(prefix="zab-outside-")).resolve()
        self.addCleanup(shutil.rmtree, self.outside)

    def refused(self, target_path):
        self.write({"zab.toml": '[[rule]]\nname = "Texture"\nCompressionFormat = "rgba"\n'
                                f"TargetPath = {json.dumps(target_path)}\n", "raw_data/a.tga": tga(4, 4)})
        before = sorted(self.folder.rglob("*"))
        status, _, err = self.zab("build")
        self.assertEqual(status, 1, (target_path, err))
        self.assertIn("outside the working root" if "circle" not in target_path else "in a circle", err)
        self.assertEqual(list(self.outside.iterdir()), [], target_path)
        self.assertEqual([path for path in sorted(self.folder.rglob("*")) if path not in before and
                          ".zab" not in path.parts], [], target_path)

    def test_by_rule_values(self):
        for path in ["..", "../raw_data", "a/../../b", "{dir}/../../b", "../working_data2"]:
            self.refused(path)

    def test_by_links(self):
        working = self.folder / "working_data"
        (working / "deep").mkdir(parents=True)
        (working / "straight").symlink_to(self.outside)
        (working / "deep" / "up").symlink_to("../../..")
        # Links to what is not there yet, one of them by way of a second.
        (working / "open").symlink_to(self.outside / "new")
        (working / "chain").symlink_to("open")
        (working / "circle").symlink_to("circle2")
        (working / "circle2").symlink_to("circle")
        for path in ["straight", "straight/x/y", "deep/up/x", "open", "open/x", "chain/x", "circle/x"]:
            self.refused(path)

    def test_a_link_in_the_place_of_a_file_is_replaced(self):
        mine = self.outside / "mine"
        mine.write_text("keep")
        self.write({"zab.toml": RULE.replace("rgba", "dxt1"), "raw_data/a.tga": tga(4, 4), "working_data/textures/": ""})
        for name in ("a.dds", "a.dds.part"):
            (self.folder / "working_data/textures" / name).symlink_to(mine)
        self.check(["build", "-q"], 0, "", "")
        self.assertEqual((mine.read_text(), list(self.outside.iterdir())), ("keep", [mine]))
        self.assertFalse((self.folder / "working_data/textures/a.dds").is_symlink())


class Names(ProjectTest):
    def test_every_name_builds_and_stays_in_its_line(self):
        self.write({"zab.toml": RULE, **{f"raw_data/{name}/{name}.tga": tga(4, 4) for name in NAMES}})
        status, out, err = self.zab("build", "--events", "-")
        self.assertEqual(status, 0, err)
        self.assertEqual(len(err.splitlines()), len(NAMES) + 1, err)
        self.assertFalse(set(err) & set("\x1b\t\u202e"), err)
        self.assertEqual(self.files(), sorted(f"textures/{name}/{name}.dds" for name in NAMES))
        self.assertEqual(set(os.listdir(self.folder)), {"zab.toml", "raw_data", "working_data"} | self.state())
        events = [json.loads(line) for line in out.splitlines()]
        built = {event["sources"][0] for event in events if event["event"] == "action_finished"}
        self.assertEqual(built, {f"<raw>/{name}/{name}.tga" for name in NAMES})
        self.assertEqual(len(json.loads(self.zab("plan", "--json")[1])), len(NAMES))
        self.check(["clean", "-q"], 0, "", "")
        self.assertEqual(self.files(), [])

    def state(self):
        return {".zab"} & set(os.listdir(self.folder))

    def test_every_name_can_be_asked_for(self):
        for name in NAMES:
            self.write({"zab.toml": RULE, f"raw_data/{name}.tga": tga(4, 4)})
            for command in (["info"], ["explain"], ["plan"], ["view", f"--output={name}.png"], ["compare"]):
                files = [name + ".tga"] * (2 if command == ["compare"] else 1)
                status, out, err = self.zab(*command, "--", *files, folder="raw_data")
                self.assertEqual(status, 0, (command, name, err))
                self.assertFalse(set(out + err) & set("\x1b\t\u202e"), (command, name, out))
                if command == ["info"]:
                    self.assertEqual(len(out.splitlines()), 1, out)
            os.remove(self.folder / "raw_data" / f"{name}.tga")
            for command in (["info"], ["explain"], ["view"], ["-C", self.folder / name, "plan"]):
                err = self.zab(*command, "--", *([] if "-C" in command else ["../" + name]), folder="raw_data")[2]
                self.assertLessEqual(len(err.splitlines()), 1, (command, name, err))
        self.assertFalse((self.folder / "raw_data/oops").exists())

    def test_failures_stay_in_their_line(self):
        self.write({"zab.toml": RULE, "raw_data/a\nFailed:\x1b[2J.tga": b"no TGA"})
        status, _, err = self.zab("build")
        self.assertEqual(status, 1)
        self.assertEqual([line for line in err.splitlines() if line.startswith("Failed:")], ["Failed:"])
        self.assertNotIn("\x1b", err)
        self.write({"raw_data/x\ny/zab_rules.toml": "[[rule\n"})
        _, _, err = self.zab("plan")
        self.assertRegex(err, r"^raw_data/x\\ny/zab_rules.toml:1:\d+: error: [^\n]*\n$")


class VersionControl(ProjectTest):
    """git and p4 get each name as one argument, and no shell in between."""

    def fake(self, kind, names):
        # The program writes its arguments down, each ended by a zero byte.
        self.write({"bin/" + kind: f'#!/bin/sh\nprintf "%s\\0" "$@" >>"{self.folder}/arguments"\nexit 0\n',
                    "zab.toml": f'[version_control]\nkind = "{"git" if kind == "git" else "perforce"}"\n' + RULE,
                    **{f"raw_data/{name}.tga": tga(4, 4) for name in names}})
        (self.folder / "bin" / kind).chmod(0o755)
        status, _, err = self.zab("build", environment={"PATH": f"{self.folder}/bin:/usr/bin:/bin"})
        self.assertEqual(status, 0, err)
        self.assertFalse((self.folder / "oops").exists())
        return (self.folder / "arguments").read_bytes().decode().split("\0")

    def test_git(self):
        given = self.fake("git", NAMES)
        for name in NAMES:
            target = str(self.folder / "working_data/textures" / (name + ".dds"))
            self.assertEqual(given[given.index(target) - 1], "--")

    def test_perforce(self):
        given = self.fake("p4", NAMES)
        for name in NAMES:
            self.assertIn(str(self.folder / "working_data/textures" / (name + ".dds")), given)

    @unittest.skipUnless(shutil.which("git"), "needs git")
    def test_the_real_git(self):
        self.write({"zab.toml": '[image_database]\nenabled = true\n[version_control]\nkind = "git"\n' + RULE,
                    **{f"raw_data/{name}.tga": tga(4, 4) for name in NAMES}})
        subprocess.run(["git", "init", "-q", str(self.folder)], check=True)
        textures = sorted(f"working_data/textures/{name}.dds" for name in NAMES)
        # Whatever a build writes, and without textures no database.
        for files in (["working_data/img_db.bin", *textures], textures):
            self.check(["build", "-q"], 0, "", "")
            listed = subprocess.run(["git", "ls-files", "-z"], cwd=self.folder, check=True, capture_output=True).stdout
            self.assertEqual(sorted(listed.decode().split("\0")[:-1]), files)
            for folder in ("raw_data", "working_data/textures"):
                shutil.rmtree(self.folder / folder, ignore_errors=True)
            (self.folder / "raw_data").mkdir()


class Endless(ProjectTest):
    """Small files that would take memory, stack or time without end."""

    def refused(self, files, status, text, **options):
        self.write(files)
        begin = time.monotonic()
        self.assertRegex(self.check(["build"], status, **options)[2], text)
        self.assertLess(time.monotonic() - begin, 30)

    def test_project_files(self):
        for text in ("[" + "a." * 300000 + "a]\n", "a." * 300000 + "a = 1\n", "x = {" + "'a'." * 300000 + "a = 1}\n",
                     'x = """\n\'\n"""\n' + "a . " * 300000 + "a = 1\n"):
            self.refused({"zab.toml": text, "raw_data/": ""}, 2, r"^zab\.toml:\d:1: error: a key of more than 256 parts\n$")
        self.refused({"zab.toml": "x = " + "[" * 300000}, 2, r"^zab\.toml:1:\d+: error: ")
        os.remove(self.folder / "zab.toml")
        os.mkfifo(self.folder / "zab.toml")
        self.refused({}, 2, r"zab\.toml: error: is no regular file\n$")

    def test_patterns(self):
        self.write({"zab.toml": '[[rule]]\nname = "Texture"\nTargetPath = "t"\nmatch = "' + "**/a/" * 30 + 'b"\n',
                    "raw_data/" + "a/" * 60 + "a.tga": tga(4, 4)})
        self.refused({}, 0, "^0 built")

    @unittest.skipIf(os.environ.get("ZAB_SANITIZE"), "sanitizers reserve terabytes")
    def test_too_little_memory(self):
        # 64 MiB of texels, of which a build takes up to twelve times as much.
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(4096, 4096, bytes(4096 * 4096 * 4))})
        for limit in (96, 192, 384):
            run = subprocess.run(["/bin/sh", "-c", f'ulimit -v {limit * 1024}; exec "$@"', "sh", os.path.abspath(ZAB),
                                  "--plugin", os.path.abspath(PLUGIN), "build"], cwd=self.folder, capture_output=True,
                                 text=True, timeout=120)
            self.assertEqual(run.returncode, 1, (limit, run.stderr))
            # Of the action that it is converting, or of the tool that looks why the action did not get its source.
            self.assertRegex(run.stderr, r"\n  raw_data/a\.tga: .*not enough memory|: Not enough memory to convert '/")
            self.assertEqual(self.files(), [])

    def test_images(self):
        head = tga(0, 0)[:12]
        for name, data, text in (
                ("a.tga", head + b"\xff\xff\xff\xff\x20\x08" + bytes(64), "announces 65535 x 65535 texels"),
                ("b.dds", b"DDS \x7c\0\0\0\x07\x10\0\0" + b"\0\0\1\0" * 2 + bytes(60) + b"\4\0\0\0DXT1" + bytes(40),
                 "announces 65536 x 65536 texels")):
            self.write({name: data})
            self.assertIn(text, self.check(["view", name], 1, "")[2])


if __name__ == "__main__":
    unittest.main()

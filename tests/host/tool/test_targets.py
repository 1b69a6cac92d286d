"""What is written, and what is left alone by it: every kind of file that a build makes is a fresh one in its place."""

import os
import pathlib
import shutil
import tempfile

from command_line import RULE, ProjectTest, png, tga
from test_database import field

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples"


def rule(name, match, **properties):
    return f'[[rule]]\nname = "{name}"\nmatch = "{match}"\n' + "".join(f'{key} = "{value}"\n' for key, value in properties.items())


class EveryWriter(ProjectTest):
    def setUp(self):
        super().setUp()
        self.outside = self.folder / "outside"
        self.write({
            "zab.toml": "[global]\nRetail = true\n[image_database]\nenabled = true\n" + rule("Texture", "/t/", TargetPath="{dir}") +
                        rule("Texture", "ati*", Compressor="ati") + rule("Texture", "d3d*", CompressionFormat="bc7") +
                        rule("Texture", "other*", Format="png") + rule("TextureOld", "/legacy/", TargetPath="{dir}") +
                        '[[rule]]\nname = "Atlas"\nmatch = "/icons/"\nTargetBaseName = "icons/page"\nWidth = 64\nHeight = 64\n',
            **{f"raw_data/{name}.tga": tga(8, 8) for name in ("t/nvtt", "t/ati", "t/d3d", "t/other", "legacy/a", "icons/i")},
            "raw_data/t/wind.fga": field(4), "raw_data/w.texture_array": "t/nvtt\n", "outside/": ""})
        shutil.copytree(EXAMPLES / "channel_maps/raw_data", self.folder / "raw_data/maps")

    def made(self):
        """Every file that a build makes, with its bytes."""
        names = [f"working_data/{name}" for name in self.files() if not name.endswith(".part")] + ["raw_data/w.texture_array.agf"]
        return {name: (self.folder / name).read_bytes() for name in names}

    def written_in(self, name):
        """A texture that the old rule makes of one image is written beside it."""
        beside = name.replace("working_data", "raw_data")
        is_old = "/old/" in name or "/legacy/" in name
        return beside if is_old and (self.folder / beside).with_suffix(".tga").exists() else name

    def test_links_are_replaced_and_never_followed(self):
        mask = os.umask(0o027)
        self.addCleanup(os.umask, mask)
        self.check(["build", "-q"], 0, "")
        made = self.made()
        self.assertEqual(len(made), 34, sorted(made))
        for path in (*self.folder.glob("working_data/**/*"), *self.folder.glob(".zab/*"), *self.folder.glob("raw_data/*.agf")):
            self.assertEqual(path.stat().st_mode & 0o777, 0o750 if path.is_dir() else 0o640, path)

        parts = [self.written_in(name) + ".part" for name in (*made, "working_data/icons/page0.tga")]
        places = [*made, *parts]
        for kind in ("symlink", "dangling", "hard link"):
            for number, place in enumerate(places):
                victim = self.outside / f"{kind} {number}"
                (self.folder / place).unlink(missing_ok=True)
                if kind != "dangling":
                    victim.write_text(place)
                (os.link if kind == "hard link" else os.symlink)(victim, self.folder / place)
            before = {path: path.read_bytes() for path in self.outside.iterdir()}
            self.check(["build", "-q", "--force"], 0, "")
            self.assertEqual({path: path.read_bytes() for path in self.outside.iterdir()}, before, kind)
            self.assertEqual(self.made(), made, kind)
            for name in made:
                status = (self.folder / name).lstat()
                self.assertEqual((status.st_mode, status.st_nlink), (0o100640, 1), (kind, name))
            # Who has the name of an unfinished file keeps it, and there is no other one.
            for name in parts:
                beside = sorted(path.name for path in (self.folder / name).parent.glob("*.part"))
                self.assertIn((self.folder / name).name, beside, kind)
                self.assertFalse([other for other in beside if other.endswith(".1.part")], kind)
        self.assertEqual(sorted(self.files("raw_data/icons")), ["i.tga"])

    def test_pictures_for_the_eye(self):
        mine = self.outside / "mine"
        mine.write_text("keep")
        (self.folder / "a.png").symlink_to(mine)
        self.check(["view", "raw_data/t/nvtt.tga", "-o", "a.png"], 0)
        self.assertEqual((mine.read_text(), (self.folder / "a.png").is_symlink()), ("keep", False))

    def test_a_fragment_that_says_the_same_is_left_alone(self):
        self.check(["build", "-q"], 0, "")
        fragment = self.folder / "raw_data/w.texture_array.agf"
        stamp = fragment.stat().st_mtime_ns
        self.check(["build", "-q", "--force"], 0, "")
        self.assertEqual(fragment.stat().st_mtime_ns, stamp)
        self.assertRegex(self.check(["build"], 0)[2], r"(?m)^0 built")


class Meanwhile(ProjectTest):
    """What others do between an action's writing and the tool's look at it. Version control is asked just then."""

    def build(self, what):
        self.write({"bin/git": f'#!/bin/sh\nset -e\nfor target; do :; done\n{what}\n',
                    "zab.toml": '[version_control]\nkind = "git"\n' + RULE})
        (self.folder / "bin/git").chmod(0o755)
        return self.zab("build", environment={"PATH": f"{self.folder}/bin:/usr/bin:/bin"})

    def test_a_target_that_is_changed_is_not_taken_for_the_actions(self):
        self.write({f"raw_data/{name}.tga": tga(8, 8) for name in ("changed", "removed", "left")})
        self.assertEqual(self.build('case "$target" in *changed*) echo more >>"$target";; *removed*) rm "$target";; esac')[0], 0)
        out = self.check(["build", "-n", "--explain"], 0)[1]
        self.assertRegex(out, r"changed\.tga\): the target working_data/textures/changed\.dds [^\n]*chang")
        self.assertIn("removed.tga)", out)
        self.assertNotIn("left.tga", out)

    def test_a_folder_that_is_exchanged_for_a_link_takes_nothing_outside(self):
        outside = pathlib.Path(tempfile.mkdtemp(prefix="zab-outside-")).resolve()
        self.addCleanup(shutil.rmtree, outside)
        names = [f"{folder}/{i}" for folder in ("one", "two") for i in range(6)]
        for exchanged in ("working_data", "working_data/textures/one"):
            self.write({f"raw_data/{name}.tga": tga(8, 8) for name in names})
            (outside / "textures/one").mkdir(parents=True, exist_ok=True)
            mine = [outside / "textures/one/3.dds", outside / "3.dds"]
            for file in mine:
                file.write_text("mine")
            before = sorted(outside.rglob("*"))
            root = self.folder / exchanged
            self.build(f'[ -L "{root}" ] || {{ mv "{root}" "{self.folder}/moved"; ln -s "{outside}" "{root}"; }}')
            self.assertEqual((sorted(outside.rglob("*")), [file.read_bytes() for file in mine]), (before, [b"mine"] * 2))
            # The folder of the start got what belongs to it, wherever it is.
            self.assertEqual(len(self.files("moved")), len(names) if exchanged == "working_data" else 1)
            root.unlink()
            shutil.rmtree(self.folder / "moved")

    def test_links_that_stay_inside_and_a_root_that_is_a_link_work(self):
        self.write({"raw_data/a/1.tga": tga(8, 8), "raw_data/b/2.tga": tga(8, 8), "raw_data/c/deep/3.tga": tga(8, 8),
                    "elsewhere/textures/kept/": ""})
        for name, leads_to in (("working_data", "elsewhere"), ("elsewhere/textures/a", "kept"),
                               ("elsewhere/textures/b", self.folder / "elsewhere/textures/kept"),
                               ("elsewhere/textures/c", self.folder / "working_data/textures/kept")):
            os.symlink(leads_to, self.folder / name)
        self.write({"zab.toml": RULE})
        self.check(["build", "-q"], 0, "", "")
        self.assertEqual(self.files("elsewhere/textures/kept"), ["1.dds", "2.dds", "deep/3.dds"])

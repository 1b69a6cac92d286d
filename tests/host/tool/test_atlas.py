"""Atlases from end to end: pages that are cut apart again by the index, read here and with code of this file alone."""

import os
import shutil
import struct
import subprocess
import unittest

from command_line import ProjectTest, tga

STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")
RULE = '[[rule]]\nname = "Atlas"\nTargetBaseName = "ui/icons"\nWidth = {}\nHeight = {}\n'


def flat(width, height, texel):
    return tga(width, height, bytes(texel) * (width * height))


def colour_565(value):
    return value >> 11 << 3 | value >> 13, value >> 5 << 2 & 255 | value >> 9 & 3, value << 3 & 255 | value >> 2 & 7


def top_left_texel(dds, x, y):
    """Red, green, blue of a DXT1 or DXT5 file's texel; x and y are multiples of 4, and the block is of one colour."""
    height, width = struct.unpack_from("<II", dds, 12)
    size = {b"DXT1": 8, b"DXT5": 16}[dds[84:88]]
    block = dds[128 + size * (y // 4 * (width // 4) + x // 4):][:size][-8:]
    colours = [colour_565(value) for value in struct.unpack_from("<HH", block)]
    index = block[4] & 3
    return colours[index] if index < 2 else tuple((a + b) // 2 for a, b in zip(*colours))


class Atlas(ProjectTest):
    def entries(self):
        """Name to page and the rectangle's left, top, width, height in texels of that page."""
        entries = {}
        for line in (self.folder / "working_data/ui/icons.tai").read_text().splitlines():
            if not line or line.startswith("#"):
                continue
            name, place = line.split("\t\t")
            page, index, kind, *numbers = place.split(", ")
            self.assertEqual((page, kind), (f"icons{index}.dds", "2D"))
            left, top, depth, width, height = map(float, numbers)
            self.assertEqual(depth, 0)
            dds = (self.folder / "working_data/ui" / page).read_bytes()
            down, across = struct.unpack_from("<II", dds, 12)
            entries[name] = dds, [round(value) for value in (left * across, top * down, width * across, height * down)]
        return entries

    def test_every_source_stands_where_the_index_says(self):
        colours = {f"{i}.tga": (37 * i % 256, 91 * i % 256, 200 - 9 * i, 255) for i in range(20)}
        sizes = {name: ((16, 8), (32, 32), (13, 20), (8, 64))[i % 4] for i, name in enumerate(colours)}
        self.write({"zab.toml": RULE.format(64, 128),
                    **{f"raw_data/{name}": flat(*sizes[name], texel) for name, texel in colours.items()}})
        status, out, err = self.zab("build")
        self.assertEqual((status, out), (0, ""), err)
        entries = self.entries()
        self.assertEqual(sorted(entries), sorted(colours))
        for name, (dds, (left, top, width, height)) in entries.items():
            self.assertEqual((width, height), tuple(1 << (side - 1).bit_length() for side in sizes[name]))
            blue, green, red, _ = colours[name]
            for x, y in ((left, top), (left + width - 4, top + height - 4)):
                got = top_left_texel(dds, x, y)
                self.assertTrue(all(abs(a - b) <= 8 for a, b in zip(got, (red, green, blue))), (name, got))

    def test_a_smaller_build_takes_what_is_left_over_away(self):
        self.write({"zab.toml": RULE.format(32, 32),
                    **{f"raw_data/{i}.tga": flat(32, 32, (i, 0, 0, 255)) for i in range(3)}})
        self.check(["build"], 0)
        self.assertEqual(self.files(), ["ui/icons.tai", "ui/icons0.dds", "ui/icons1.dds", "ui/icons2.dds"])
        first = (self.folder / "working_data/ui/icons0.dds").read_bytes()
        # Pages that are there are announced, which they were not before.
        self.check(["build", "-q", "-n", "--explain"], 0, "", "")
        for i in (1, 2):
            (self.folder / f"raw_data/{i}.tga").unlink()
        _, _, err = self.check(["build"], 0)
        self.assertIn("[1/1] done: Create atlas", err)
        self.assertEqual(self.files(), ["ui/icons.tai", "ui/icons0.dds"])
        self.check(["clean", "-n"], 0, "working_data/ui/icons0.dds\nworking_data/ui/icons.tai\n.zab\n", "3 would be removed\n")
        for _ in range(2):
            self.assertRegex(self.check(["build"], 0)[2], r"^0 built, 1 up to date, 0 failed in [0-9.]+ s\n$")
        self.assertEqual((self.folder / "working_data/ui/icons0.dds").read_bytes(), first)

    def test_a_broken_source_names_itself_and_leaves_nothing(self):
        self.write({"zab.toml": RULE.format(32, 32), "raw_data/a.tga": flat(32, 32, (1, 2, 3, 255)),
                    "raw_data/b.tga": tga(8, 8)[:50]})
        _, _, err = self.check(["build"], 1)
        self.assertIn("*** Error: Loading texture @/raw_data/b.tga failed.\n", err)
        self.assertIn("Failed to load source texture: @/raw_data/b.tga\n", err)
        self.assertEqual(self.files(), [])

    def test_who_else_may_write_a_page(self):
        icons = {f"raw_data/a/{i}.tga": flat(32, 32, (i, 0, 0, 255)) for i in range(11)}
        others = {"icons0.dds": '[[rule]]\nname = "Texture"\nmatch = "icons*.tga"\nTargetPath = "ui"\n',
                  "icons10.dds": '[[rule]]\nname = "Atlas"\nmatch = "icons*.tga"\nTargetBaseName = "ui/icons1"\n',
                  "icons2.tga": '[[rule]]\nname = "Texture"\nmatch = "icons*.tga"\nTargetPath = "ui"\nFormat = "tga"\n'}
        for page, rule in others.items():
            rules = RULE.format(32, 32).replace("\nT", '\nmatch = "a/"\nT', 1) + rule + "Width = 32\nHeight = 32\n"
            name = page.replace(".dds", ".tga")
            self.setUp()
            self.write({"zab.toml": rules, f"raw_data/{name}": flat(32, 32, (1, 2, 3, 255)), **icons})
            for _ in range(2):
                _, _, err = self.check(["build"], 2, "")
                self.assertIn(f"two actions may write working_data/ui/{page}, the name of an atlas's page\n", err)
                self.assertEqual(self.files(), [])
            # With smaller images, of which a page holds 16, or fewer of them it will not come to that.
            for i in range(11):
                self.write({f"raw_data/a/{i}.tga": flat(8, 7, (i, 0, 0, 255))})
            self.check(["build"], 2 if page == "icons0.dds" else 0)
            self.write(icons)
            for i in range(2, 11):
                (self.folder / f"raw_data/a/{i}.tga").unlink()
            self.check(["build"], 2 if page in ("icons0.dds", "icons2.tga") else 0)

    def test_a_file_that_only_has_the_name_of_a_page(self):
        images = {f"raw_data/{i}.tga": flat(32, 32, (i, 0, 0, 255)) for i in range(2)}
        for own in ("ui/icons0.dds", "ui/icons2.dds", "ui/icons1.tga"):
            for is_built in (False, True):
                with self.subTest(own=own, is_built=is_built):
                    self.setUp()
                    self.write({"zab.toml": RULE.format(32, 32), **images})
                    if is_built:
                        self.check(["build"], 0)
                        # What the state does not know, the index tells.
                        shutil.rmtree(self.folder / ".zab")
                        if own == "ui/icons0.dds":
                            self.check(["build"], 0)
                            continue
                    self.write({f"working_data/{own}": "my own"})
                    for command in ("build", "build", "clean"):
                        status, _, err = self.zab(command)
                        if command == "build":
                            self.assertEqual(status, 1)
                            self.assertIn(f"\nworking_data/{own} is no file of the atlas working_data/ui/icons.tai, but has "
                                          "the name of one of its pages; ", err)
                        self.assertEqual((self.folder / "working_data" / own).read_text(), "my own")
                    self.assertEqual(self.files(), [own])
                    (self.folder / "working_data" / own).unlink()
                    self.check(["build"], 0)

    def test_an_index_without_one_of_its_pages(self):
        self.write({"zab.toml": "", "raw_data/a.step": "writes a\t\tui1.dds, 1, 2D, 0.0, 0.0, 0.0, 1.0, 1.0\nmakes ui.tai\n"
                                                       "registers ui0.dds"})
        _, _, err = self.check(["build", "--plugin", STEPS], 1)
        self.assertIn("\nThe target was not made: @/working_data/ui1.dds\n", err)
        self.assertEqual(self.files(), [])

    @unittest.skipUnless(shutil.which("git"), "needs git")
    def test_what_version_control_brings_back_stays(self):
        self.write({"zab.toml": '[version_control]\nkind = "git"\n' + RULE.format(32, 32),
                    "raw_data/a.tga": flat(32, 32, (1, 2, 3, 255))})
        git = ["git", "-C", str(self.folder), "-c", "user.name=a", "-c", "user.email=a@b"]
        subprocess.run([*git, "init", "-q"], check=True)
        self.check(["build"], 0)
        subprocess.run([*git, "commit", "-q", "-m", "built"], check=True)
        page = (self.folder / "working_data/ui/icons0.dds").read_bytes()
        index = self.folder / "working_data/ui/icons.tai"
        index.unlink()
        self.write({"raw_data/a.tga": flat(32, 32, (200, 2, 3, 255)), "working_data/ui/icons.tai/in_the_way": ""})
        _, _, err = self.check(["build"], 1)
        self.assertIn("*** Error: Unable to open file", err)
        self.assertEqual((self.folder / "working_data/ui/icons0.dds").read_bytes(), page)


if __name__ == "__main__":
    unittest.main()

"""The image-information database at the end of a build, and texture arrays: what a whole build makes of them."""

import json
import os
import shutil
import unittest

from command_line import RULE, ProjectTest, tga

STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")
ENABLED = "[image_database]\nenabled = true\n"


def field(side):
    return f"{side},{side},{side},0,0,0,1,1,1," + ",".join(["1"] * side ** 3 * 3)


class LastStep(ProjectTest):
    def build(self, steps, *arguments):
        self.write({"zab.toml": ENABLED, **{f"raw_data/{name}.step": text for name, text in steps.items()}})
        return self.zab("build", "--plugin", STEPS, *arguments)

    def listed(self):
        return (self.folder / "working_data/list").read_text().split()

    def test_a_first_build_knows_what_a_second_one_knows(self):
        steps = {"a": "makes b.out\ndrops a.out", "z": "makes d/a.out\nmakes c.out"}
        for arguments, tail in [((), r"\[3/3\] done: List\n3 built, 0 failed in "),
                                ((), r"^0 built, 3 up to date, 0 failed in "),
                                (("--force",), r"\[3/3\] done: List\n3 built, 0 failed in ")]:
            status, _, err = self.build(steps, *arguments)
            self.assertEqual(status, 0, err)
            self.assertEqual(self.listed(), ["a.out", "b.out", "c.out", "d/a.out"])
            self.assertRegex(err, tail)

    def test_it_needs_all_that_it_reads(self):
        status, _, err = self.build({"a": "makes a.out\nfail", "b": "makes b.out"})
        self.assertEqual(status, 1)
        self.assertIn('[3/3] FAILED: List\nNot run: it needs "a", which failed\n', err)
        self.assertRegex(err, r"\n1 built, 2 failed in ")
        self.assertEqual(self.files(), ["b.out"])
        status, _, err = self.build({"a": "makes a.out\nfail", "b": "makes b.out"}, "--fail-fast")
        self.assertRegex(err, r"\n0 built, 1 up to date, 1 failed, 1 not run in ")

    def test_a_path_leaves_it_alone(self):
        status, _, err = self.build({"a": "makes a.out", "b": "makes b.out"}, "raw_data/a.step")
        self.assertEqual((status, self.files()), (0, ["a.out"]), err)

    def test_it_comes_after_all_others(self):
        self.build({"a": "makes a.out", "b": "drops b.out"}, "-n")
        _, out, _ = self.check(["plan", "--plugin", STEPS, "--json"], 0)
        self.assertEqual([(action["name"], action["depends"]) for action in json.loads(out)],
                         [("a", []), ("b", []), ("List", [1, 2])])

    def test_it_is_there_where_the_project_asks_for_it(self):
        status, out, _ = self.build({"a": "makes a.out"}, "--dry-run")
        self.assertEqual((status, out), (0, "would run: a\nwould run: List\n"))
        self.write({"zab.toml": ""})
        status, out, _ = self.zab("build", "--plugin", STEPS, "--dry-run")
        self.assertEqual((status, out), (0, "would run: a\n"))


class Retail(ProjectTest):
    def setUp(self):
        super().setUp()
        self.write({
            "zab.toml": "[global]\nRetail = true\n[tables]\ntexc_expansions = \"e.xml\"\n" + ENABLED + RULE,
            "e.xml": '<table><row name="north" pack_filename_extension="n"/><row name="south" pack_filename_extension="s"/>'
                     '<row name="west" pack_filename_extension="w"/></table>',
            "raw_data/north/zab_rules.toml": '[[rule]]\nname = "Expansion"\nName = "north"\n',
            "raw_data/south/zab_rules.toml": '[[rule]]\nname = "Expansion"\nName = "south"\n'
                                             '[[rule]]\nname = "Expansion"\nmatch = "*_wip.tga"\nReleased = false\n',
            "raw_data/a.tga": tga(8, 8), "raw_data/north/b.tga": tga(16, 8), "raw_data/north/wind.fga": field(4),
            "raw_data/south/c.tga": tga(4, 4), "raw_data/south/d_wip.tga": tga(4, 4),
        })

    def records(self, name):
        _, out, _ = self.check(["imgdb", "--json", f"working_data/img_db__{name}.bin"], 0)
        return {image["name"]: (image["width"], image["height"], image["format"], image["levels"])
                for image in json.loads(out)}

    def test_one_database_for_each_expansion(self):
        bytes_of = None
        for _ in range(2):
            self.check(["build"], 0)
            self.assertEqual([name for name in self.files() if "/" not in name and not name.endswith(".part")],
                             [f"img_db__{name}.{kind}" for name in ("core", "n", "s") for kind in ("agf", "bin")])
            self.assertEqual(self.records("core"), {"textures/a.dds": (8, 8, "B8G8R8A8", 4)})
            self.assertEqual(self.records("n"), {"textures/north/b.dds": (16, 8, "B8G8R8A8", 5),
                                                 "textures/north/wind.dds": (4, 4, "R16G16B16A16_FLOAT", 1)})
            self.assertEqual(self.records("s"), {"textures/south/c.dds": (4, 4, "B8G8R8A8", 3)})
            now = [(self.folder / "working_data" / name).read_bytes() for name in self.files()]
            self.assertIn(bytes_of, (None, now))
            bytes_of = now
        self.assertIn('<fragment name="img_db__n" file="&lt;working&gt;/img_db__n.bin" package="north"/>',
                      (self.folder / "working_data/img_db__n.agf").read_text())

    def test_an_expansion_that_is_given_up_loses_its_database(self):
        self.check(["build"], 0)
        (self.folder / "raw_data/north/zab_rules.toml").unlink()
        self.check(["build"], 0)
        self.assertEqual([name for name in self.files() if "/" not in name],
                         [f"img_db__{name}.{kind}" for name in ("core", "s") for kind in ("agf", "bin")])
        self.assertIn("textures/north/b.dds", self.records("core"))

    def test_a_fragment_that_has_to_stay_goes_with_a_later_build(self):
        self.check(["build"], 0)
        fragment = self.folder / "working_data/img_db__n.agf"
        (self.folder / "raw_data/north/zab_rules.toml").unlink()
        fragment.unlink()
        self.write({"working_data/img_db__n.agf/in_the_way": ""})
        _, _, err = self.check(["build"], 1)
        self.assertIn("\nFailed to remove '@/working_data/img_db__n.agf': ", err)
        shutil.rmtree(fragment)
        fragment.write_text("")
        self.check(["build"], 0)
        self.assertFalse(fragment.exists())

    def test_expansions_without_a_row_of_their_own(self):
        self.write({"e.xml": "<table/>"})
        status, _, err = self.zab("build")
        self.assertEqual(status, 2)
        self.assertIn("two actions would write working_data/img_db__core.bin\n", err)

    def test_rows_whose_database_is_still_made(self):
        self.write({"e.xml": '<table><row name="north" pack_filename_extension="n"/><row name="south" pack_filename_extension="s"/>'
                             '<row name="west" pack_filename_extension=""/><row name="east" pack_filename_extension="n"/></table>'})
        self.check(["build"], 0)
        self.assertRegex(self.check(["build"], 0)[2], r"^0 built, 8 up to date, 0 failed in ")

    def test_a_database_that_cannot_be_saved(self):
        in_the_way = {f"working_data/img_db__n.bin{number}.part": "" for number in ("", *(f".{i}" for i in range(1, 16)))}
        self.write(in_the_way)
        for arguments, what in (([], "made"), (["--force"], "written")):
            _, _, err = self.check(["build", *arguments], 1)
            self.assertIn(f"\nThe target was not {what}: @/working_data/img_db__n.bin\n", err)
            self.assertRegex(err, r"\n  working_data/img_db__n\.bin: ")
            self.assertEqual([name for name in self.files() if "/" not in name and not name.endswith(".part")],
                             [f"img_db__{name}.{kind}" for name in ("core", "s") for kind in ("agf", "bin")])
            for name in in_the_way:
                (self.folder / name).unlink()
            self.check(["build"], 0)
            self.assertIn("textures/north/b.dds", self.records("n"))
            self.write(in_the_way)

    def test_files_in_capitals_and_with_odd_names(self):
        self.write({"zab.toml": ENABLED + RULE})
        self.check(["build"], 0)
        texture = (self.folder / "working_data/textures/a.dds").read_bytes()
        self.write({"working_data/X\x1b[31m.DDS": texture})
        self.check(["build"], 0)
        _, out, _ = self.check(["imgdb", "working_data/img_db.bin"], 0)
        self.assertTrue(out.startswith("X\\x1b[31m.DDS: 8 x 8, "), out)
        self.check(["build", "-n", "--force", "working_data/textures/a.dds"], 0, "")

    def test_not_for_retail_there_is_one(self):
        self.write({"zab.toml": ENABLED + RULE})
        self.check(["build"], 0)
        self.check(["imgdb", "working_data/img_db.bin"], 0, "textures/a.dds: 8 x 8, B8G8R8A8, 4 levels\n"
                   "textures/north/b.dds: 16 x 8, B8G8R8A8, 5 levels\n"
                   "textures/north/wind.dds: 4 x 4, R16G16B16A16_FLOAT, 1 level\n"
                   "textures/south/c.dds: 4 x 4, B8G8R8A8, 3 levels\n")
        self.check(["imgdb", "working_data/img_db.bin", "textures/a.dds", "a.dds"], 1,
                   "textures/a.dds: 8 x 8, B8G8R8A8, 4 levels\n",
                   "zab: error: working_data/img_db.bin: there is no image a.dds\n")
        self.write({"broken.bin": (self.folder / "working_data/img_db.bin").read_bytes()[:-1], "empty.bin": b""})
        self.check(["imgdb", "broken.bin"], 1, "", "zab: error: broken.bin: the file has another size than its header says\n")
        self.check(["imgdb", "empty.bin"], 1, "", "zab: error: empty.bin: this is no image-information database\n")


class Fragments(ProjectTest):
    def test_fragments_stand_beside_their_lists(self):
        self.write({"zab.toml": RULE, "raw_data/d/a.tga": tga(4, 4), "raw_data/d/x.texture_array": "textures/d/a\nnone\n",
                    "raw_data/d/x.agf": "of old"})
        self.check(["build", "-q"], 0, "", "")
        self.assertEqual(self.files("raw_data"), ["d/a.tga", "d/x.texture_array", "d/x.texture_array.agf"])
        self.assertIn('<dependency fragment="textures/d/a.dds" kind="all"/>',
                      (self.folder / "raw_data/d/x.texture_array.agf").read_text())
        self.assertRegex(self.check(["build"], 0)[2], r"^0 built, 2 up to date, ")
        # One that comes back, and one that only now belongs to no texture.
        for before in ({"raw_data/d/x.agf": "of old"}, {"raw_data/d/x.agf": "of old", "raw_data/d/x.dds": ""}):
            self.write(before)
            self.zab("build")
            self.assertEqual((self.folder / "raw_data/d/x.agf").exists(), len(before) == 2)
        (self.folder / "raw_data/d/x.dds").unlink()
        self.check(["build"], 0)
        self.assertFalse((self.folder / "raw_data/d/x.agf").exists())
        self.write({"raw_data/d/x.agf": "of old"})
        self.check(["build", "-n", "--explain"], 0,
                   "would run: Asset Graph (x.texture_array): raw_data/d/x.agf is there and is to go\n", "")
        self.check(["clean"], 0)
        self.assertEqual(self.files("raw_data"), ["d/a.tga", "d/x.agf", "d/x.texture_array"])

    def test_a_list_that_is_gone_leaves_a_fragment_to_clean(self):
        lists = ["raw_data/a.texture_array", "raw_data/b.texture_array"]
        for arguments in (["clean", "--stale"], ["clean"]):
            self.write({"zab.toml": "", **{name: "" for name in lists}})
            self.check(["build"], 0)
            for name in lists:
                (self.folder / name).unlink()
            self.write({"raw_data/b.texture_array.agf": "changed by hand"})
            self.check(arguments, 0)
            self.assertEqual(self.files("raw_data"), ["b.texture_array.agf"])
            (self.folder / "raw_data/b.texture_array.agf").unlink()

    def test_a_failure_takes_the_new_fragment_and_leaves_the_old(self):
        user = self.ordinary_user()
        self.write({"zab.toml": "", "raw_data/a.texture_array": "", "raw_data/a.agf": "", "raw_data/a.texture_array.agf": ""})
        os.chmod(self.folder / "raw_data/a.texture_array", 0)
        os.chmod(self.folder / "raw_data", 0o777)
        os.chmod(self.folder, 0o777)
        _, _, err = self.check(["build"], 1, user=user)
        self.assertIn("FAILED: Asset Graph (a.texture_array)\nFailed to open file: @/raw_data/a.texture_array\n", err)
        self.assertEqual(self.files("raw_data"), ["a.agf", "a.texture_array"])

    def test_no_other_target_may_stand_in_the_raw_folder(self):
        self.write({"zab.toml": '[[rule]]\nname = "Texture"\nTargetPath = "../raw_data"\nFormat = "agf"\n',
                    "raw_data/a.tga": tga(4, 4)})
        status, _, err = self.zab("build")
        self.assertEqual(status, 1)
        self.assertIn("lies outside the working root", err)


if __name__ == "__main__":
    unittest.main()

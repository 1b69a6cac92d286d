"""Every kind of bad input gets one clear line that names the file, the right exit status, and no half-written target."""

import os
import re
import unittest

from command_line import RULE, ProjectTest, png, tga

NO_TGA = "Attempting to compress @/raw_data/x.tga but it does not exist !"


class BadSources(ProjectTest):
    def fails(self, contents, line, diagnosis, prepare=None, user=None):
        with self.subTest(diagnosis=diagnosis):
            self.setUp()
            self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), "working_data/": None, "raw_data/x.tga": contents})
            for folder in (self.folder, self.folder / "working_data"):
                folder.chmod(0o777)
            if prepare:
                prepare(self.folder / "raw_data/x.tga")
            status, out, err = self.zab("build", user=user)
            self.assertEqual((status, out), (1, ""), err)
            *lines, summary = err.splitlines()
            self.assertEqual(lines, ["[1/2] done: Convert texture (a.tga)", "[2/2] FAILED: Convert texture (x.tga)", line,
                                     "Failed:", f"  raw_data/x.tga: {line} [{diagnosis}]"])
            self.assertRegex(summary, r"^1 built, 1 failed in \d+\.\d s$")
            self.assertEqual(self.files(), ["textures/a.dds"])

    def test_broken_images(self):
        self.fails(tga(8, 8)[:100], NO_TGA, "the header announces 8 x 8 texels of 32 bits (256 bytes), but only 82 bytes "
                   "follow")
        self.fails(tga(65535, 65535, b"0123456789"), NO_TGA, "the header announces 65535 x 65535 texels of 32 bits "
                   "(17179344900 bytes), but only 10 bytes follow")
        self.fails(png(8, 8), NO_TGA, "the file holds a PNG image, not TGA")
        self.fails(b"", NO_TGA, "the file is empty")
        self.fails(b"\0\0\2", NO_TGA, "the file has 3 bytes, too few for a TGA header")

    def test_unreadable_file(self):
        self.fails(tga(8, 8), NO_TGA, "Permission denied", prepare=lambda path: path.chmod(0), user=self.ordinary_user())

    def test_folder_with_an_image_name(self):
        self.write({"zab.toml": RULE, "raw_data/x.tga/in.tga": tga(4, 4)})
        got = self.zab("build", "-v")
        self.assertEqual(got[0], 0, got)
        self.assertTrue(got[2].startswith(
            "raw_data/x.tga: warning: a folder with the name of an image; looked into as a folder\n"), got)
        self.assertEqual(self.files(), ["textures/x.tga/in.dds"])


class BadProjects(ProjectTest):
    def refused(self, files, message, status=2):
        with self.subTest(message=message):
            self.setUp()
            self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), **files})
            self.check(["build"], status, "", message)
            self.assertFalse((self.folder / "working_data").exists())

    def test_files_with_mistakes(self):
        self.refused({"zab.toml": '[[rule]]\nname = "Texture"\nMaxSize = {}\n'},
                     'zab.toml:3:11: error: the property "MaxSize" holds a table; it takes a string, a number or a '
                     "boolean\n")
        self.refused({"raw_data/zab_rules.toml": '[[rule]]\nname = "Texture"\nMaxSize = [1]\n'},
                     'raw_data/zab_rules.toml:3:11: error: the property "MaxSize" holds an array; it takes a string, a '
                     "number or a boolean\n")
        self.refused({"zab.toml": RULE + '[tables]\nt = "none.xml"\n'},
                     "none.xml: error: No such file or directory\n")
        self.refused({"zab.toml": '[roots]\nraw = "art"\n'}, "art: error: the raw data folder does not exist\n")
        self.refused({"zab.toml": '[roots]\nworking = "raw_data/out"\n'},
                     'zab.toml:2:11: error: the raw root "@/raw_data" and the working root "@/raw_data/out" lie in one '
                     "another; they must be apart\n")

    def test_syntax_errors_are_placed(self):
        for file, text in {"zab.toml": "[roots]\nraw = \n", "raw_data/zab_rules.toml": "[[rule]]\nname = 'a\n"}.items():
            self.setUp()
            self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), file: text})
            status, out, err = self.zab("build")
            self.assertEqual((status, out), (2, ""))
            self.assertRegex(err, rf"\A{file}:2:\d+: error: [^\n]+\n\Z")

    def test_unknown_properties_are_warned_about_and_the_build_goes_on(self):
        self.write({"zab.toml": RULE + "MaxSise = 4\n", "raw_data/a.tga": tga(8, 8)})
        warning = 'zab.toml:5:1: warning: the rule "Texture" declares no property "MaxSise"; did you mean "MaxSize"?\n'
        self.check(["plan"], 0, err=warning)
        self.check(["build", "-q"], 0, "", "")
        self.assertEqual(self.files(), ["textures/a.dds"])

    def test_two_actions_with_one_target(self):
        self.refused({"raw_data/a.png": png(8, 8)},
                     "zab: error: two actions would write working_data/textures/a.dds\n"
                     "  raw_data/a.png: Convert texture (a.png) (zab.toml:3)\n"
                     "  raw_data/a.tga: Convert texture (a.tga) (zab.toml:3)\n")

    def test_a_file_and_a_folder_of_one_name(self):
        # Whichever of the two comes first, and however many lie in the folder.
        for inner in ("a", "z"):
            self.setUp()
            self.write({"zab.toml": RULE.replace("textures/{dir}", "t") + RULE.replace("textures/{dir}", "t/m.dds/x") +
                        f'match = "{inner}*"\n', **{f"raw_data/{name}.tga": tga(8, 8) for name in ("m", inner, inner * 2)}})
            err = self.check(["build"], 2, "")[2]
            first, second = sorted((f"  raw_data/{name}.tga: Convert texture ({name}.tga)" for name in ("m", inner)))
            self.assertRegex(err, rf"\Azab: error: working_data/t/m\.dds[^\n]* would be a file and a folder\n"
                                  rf"{re.escape(first)}[^\n]*\n{re.escape(second)}[^\n]*\n\Z")
            self.assertFalse((self.folder / "working_data").exists())

    def test_two_names_of_one_target(self):
        self.write({"zab.toml": RULE, "raw_data/one/a.tga": tga(8, 8), "raw_data/two/a.tga": tga(8, 8),
                    "working_data/textures/one/": ""})
        os.symlink("one", self.folder / "working_data/textures/two")
        _, _, err = self.check(["build"], 2, "")
        self.assertIn("two actions would write working_data/textures/two/a.dds\n", err)
        self.assertEqual(self.files(), [])


class TargetsOutside(ProjectTest):
    def refused(self, target, complaint):
        self.write({"zab.toml": RULE.replace("textures/{dir}", target), "raw_data/a.tga": tga(8, 8)})
        before = self.files(".")
        line = f"{complaint} (zab.toml:3)"
        status, out, err = self.zab("build")
        self.assertEqual((status, out), (1, ""), err)
        self.assertEqual("".join(err.splitlines(keepends=True)[:-1]),
                         f"[1/1] FAILED: Convert texture (a.tga)\n{line}\nFailed:\n  raw_data/a.tga: {line}\n")
        self.assertEqual(self.files("."), before)

    def test_by_name(self):
        self.refused("../evil", 'the target "@/evil/a.dds" lies outside the working root "@/working_data"')
        self.refused("x/../../raw_data",
                     'the target "@/raw_data/a.dds" lies outside the working root "@/working_data"')

    def test_by_link(self):
        self.write({"working_data/": None, "elsewhere/": None})
        os.symlink("../elsewhere", self.folder / "working_data" / "out")
        self.refused("out", 'the target "@/working_data/out/a.dds" lies outside the working root "@/working_data": a link '
                     'leads to "@/elsewhere"')

    def test_working_root_linked_into_the_raw_root(self):
        self.write({"zab.toml": RULE, "raw_data/out/": None, "raw_data/a.tga": tga(8, 8)})
        os.symlink("raw_data/out", self.folder / "working_data")
        self.check(["build"], 2, "", 'working_data: error: leads to "@/raw_data/out", which is not apart from the raw root '
                   '"@/raw_data"\n')


class Surroundings(ProjectTest):
    def test_plugins_that_are_none(self):
        self.write({"zab.toml": RULE, "raw_data/": None, "text.so": "no library"})
        status, out, err = self.zab("build", "--plugin", "none.so")
        self.assertEqual((status, out, err), (3, "", "zab: error: the plug-in none.so does not exist\n"))
        status, out, err = self.zab("rules", "--plugin", "text.so")
        self.assertEqual((status, out), (3, ""))
        self.assertRegex(err, r"\Azab: error: the plug-in text.so cannot be loaded: [^\n]+\n\Z")

    def test_names_that_are_not_utf8(self):
        self.write({"zab.toml": RULE, b"raw_data/caf\xe9.tga": tga(4, 4), "raw_data/b\u00e4r.tga": tga(4, 4)})
        status, out, err = self.zab("build")
        self.assertEqual((status, out), (0, ""))
        self.assertIn("raw_data/caf\ufffd.tga: warning: the name is not valid UTF-8; left out\n", err)
        self.assertEqual(self.files(), ["textures/b\u00e4r.dds"])


if __name__ == "__main__":
    unittest.main()

"""The commands as they are meant to be used, and as they are misused."""

import json
import os
import re
import shlex
import shutil
import subprocess
import unittest

from command_line import PLUGIN, RULE, ZAB, ProjectTest, tga


class Spellings(ProjectTest):
    def test_one_target_has_one_name(self):
        """However a rule spells it, database, arrays, atlases and questions mean the same file."""
        rules = ""
        for path, base in (("/t", "a"), (".", "b"), ("../working_data/t", "c"), ("{dir}/t", "d"), ("t", "../e"), ("t", "s//f")):
            name = base[-1]
            rules += f'[[rule]]\nname = "Texture"\nmatch = "{name}.tga"\nTargetPath = "{path}"\nTargetBaseName = "{base}"\n'
            self.write({f"raw_data/{name}.tga": tga(4, 4)})
        self.write({"zab.toml": "[image_database]\nenabled = true\n" + rules +
                    '[[rule]]\nname = "Atlas"\nmatch = "ui/"\nTargetBaseName = "../working_data//ui"\nWidth = 16\nHeight = 16\n',
                    "raw_data/ui/x.tga": tga(16, 16), "raw_data/ui/y.tga": tga(16, 16),
                    "raw_data/l.texture_array": "t/a\n./t//c\n/b\n"})
        self.check(["build"], 0)
        targets = ["b", "e", "t/a", "t/c", "t/d", "t/s/f", "ui0", "ui1"]
        _, out, _ = self.check(["imgdb", "--json", "working_data/img_db.bin"], 0)
        self.assertEqual([image["name"] for image in json.loads(out)], [f"{name}.dds" for name in targets])
        self.assertEqual(re.findall('dependency fragment="(.*?)"', (self.folder / "raw_data/l.texture_array.agf").read_text()),
                         ["t/c.dds", "b.dds", "t/a.dds"])
        for name in targets:
            self.assertIn("\nmade by action ", self.check(["explain", f"working_data/{name}.dds"], 0)[1])
        self.assertIn("\nmade by action ", self.check(["explain", "<working>//t/../t/a.dds"], 0)[1])
        (self.folder / "raw_data/ui/y.tga").unlink()
        self.check(["build"], 0)
        self.assertEqual([name for name in self.files() if name.startswith("ui")], ["ui.tai", "ui0.dds"])


class WrongUse(ProjectTest):
    def test_command_lines(self):
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), "elsewhere/a.tga": tga(8, 8)})
        see = "See: zab {}--help\n".format
        for arguments, err in {
            ("build", "--forced"): "zab: error: The following argument was not expected: --forced\n" + see("build "),
            ("help", "nothing"): 'zab: error: there is no command "nothing"\n' + see("help "),
            ("build", "-q", "-v"): "zab: error: -q and -v exclude each other\n" + see("build "),
            ("build", "none.tga"): "zab: error: none.tga lies in neither data folder of the project\n",
            ("build", "raw_data/none.tga"): "zab: error: raw_data/none.tga does not exist\n",
            ("build", "elsewhere"): "zab: error: elsewhere lies in neither data folder of the project\n",
            ("build", "-C", "none"): "zab: error: there is no folder none\n",
            ("plan", "-C", "elsewhere"): 'zab: error: no zab.toml in elsewhere; "zab init" makes one\n',
            ("init",): "zab: error: zab.toml exists; it stays as it is\n",
            ("view", "elsewhere/a.tga", "--level", "1"): "zab: error: elsewhere/a.tga: there is no level 1: the file has 1\n",
            ("view", "elsewhere/a.tga", "--face", "3"): "zab: error: elsewhere/a.tga: there is no face 3: the file has 1\n",
            ("view", "elsewhere/a.tga", "-o", "elsewhere/../elsewhere/a.tga"):
                "zab: error: elsewhere/a.tga would be overwritten by its own picture\n",
        }.items():
            with self.subTest(arguments=arguments):
                self.check(arguments, 2, "", err)
        for arguments in (("view",), ("explain",), ("compare", "a"), ("build", "--color=pink"), ("view", "a", "--level", "-1"),
                          ("nothing",), ()):
            with self.subTest(arguments=arguments):
                status, out, err = self.zab(*arguments)
                self.assertEqual((status, out), (2, ""), err)
                self.assertTrue(err)

    def test_no_project(self):
        self.check(["build"], 2, "", 'zab: error: no zab.toml in this folder or any above it; "zab init" makes one\n')

    def test_pictures_that_cannot_be_had(self):
        self.write({"a.tga": tga(8, 8), "b.tga": tga(8, 4), "broken.tga": tga(8, 8)[:50]})
        for arguments, err in {
            ("compare", "a.tga", "b.tga"): "the sizes differ: a.tga is 8 x 8, b.tga is 8 x 4",
            ("compare", "a.tga", "broken.tga"): "broken.tga: the header announces 8 x 8 texels of 32 bits (256 bytes), but "
                                                "only 32 bytes follow",
            ("view", "broken.tga"): "broken.tga: the header announces 8 x 8 texels of 32 bits (256 bytes), but only 32 "
                                    "bytes follow",
        }.items():
            self.check(arguments, 1, "", f"zab: error: {err}\n")
        self.assertFalse((self.folder / "broken.png").exists())


class Build(ProjectTest):
    def setUp(self):
        super().setUp()
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(8, 8), "raw_data/ui/b.tga": tga(4, 4),
                    "raw_data/ui/c.tga": tga(3, 4), "raw_data/ui/ab.tga": b"", "raw_data/read.me": "text"})

    def test_paths_and_folders(self):
        self.check(["build", "b.tga"], 0, folder="raw_data/ui")
        self.assertEqual(self.files(), ["textures/ui/b.dds"])
        self.check(["-C", str(self.folder), "build", "--", "../raw_data/a.tga"], 0, folder="working_data")
        self.assertEqual(self.files(), ["textures/a.dds", "textures/ui/b.dds"])
        self.check(["build", "raw_data/read.me"], 0, "", 'zab: warning: no action reads what is asked for; "zab explain" '
                   "tells of a file's rules\n0 built, 0 failed in 0.0 s\n")

    def test_dry_run_and_explain(self):
        self.check(["build", "-n", "--explain", "raw_data/a.tga"], 0,
                   "would run: Convert texture (a.tga): never built\n", "")
        self.assertFalse((self.folder / "working_data").exists())

    def test_a_failure_takes_an_earlier_target_with_it(self):
        self.check(["build", "raw_data/a.tga"], 0)
        self.write({"raw_data/a.tga": tga(8, 8)[:-1]})
        self.check(["build", "raw_data/a.tga"], 1)
        self.assertEqual(self.files(), [])

    def test_success_without_a_file_is_told(self):
        self.write({"zab.toml": RULE + 'Compressor = "quick"\n'})
        status, _, err = self.zab("build", "raw_data/a.tga")
        self.assertEqual(status, 0)
        self.assertRegex(err, r"\A\[1/1\] made no file: Convert texture \(a.tga\)\n(.+\n)+0 built, 1 made no file, 0 failed")

    def test_fail_fast(self):
        status, _, err = self.zab("build", "--fail-fast", "raw_data/ui")
        self.assertEqual(status, 1)
        self.assertRegex(err.splitlines()[-1], r"^\d built, 1 failed, 2 not run in ")

    def test_colour_only_where_it_is_wanted(self):
        for arguments, environment, coloured in (
            (["--color=always"], {"NO_COLOR": "1"}, True), ([], {}, False), (["--color=never"], {}, False)):
            _, _, err = self.zab("build", *arguments, "raw_data/ui/ab.tga", environment=environment)
            self.assertEqual("\x1b[31mFAILED\x1b[0m" in err, coloured, err)
            self.assertIn("FAILED", err)

    def test_events(self):
        status, out, _ = self.zab("build", "-q", "--events", "-", "raw_data/ui/b.tga", "raw_data/ui/ab.tga")
        self.assertEqual(status, 1)
        events = [json.loads(line) for line in out.splitlines()]
        for event in events:
            for changing in ("milliseconds", "peak_bytes"):
                self.assertGreaterEqual(event.pop(changing, 0), 0)
        name, failed = "Convert texture (ui/b.tga)", "Convert texture (ui/ab.tga)"
        finished = {"event": "action_finished", "made_no_file": False, "killed_by": None}
        self.maxDiff = None
        self.assertEqual(events, [
            {"event": "run_started", "version": 1, "actions": 2},
            {"event": "action_started", "id": 2, "name": failed},
            {"event": "line", "id": 2,
             "text": "Attempting to compress @/raw_data/ui/ab.tga but it does not exist !"},
            {**finished, "id": 2, "name": failed, "status": "failed", "diagnosis": "the file is empty",
             "sources": ["<raw>/ui/ab.tga"], "targets": ["<working>/textures/ui/ab.dds"]},
            {"event": "action_started", "id": 3, "name": name},
            {**finished, "id": 3, "name": name, "status": "succeeded", "diagnosis": None,
             "sources": ["<raw>/ui/b.tga"], "targets": ["<working>/textures/ui/b.dds"]},
            {"event": "run_finished", "total": 2, "succeeded": 1, "made_no_file": 0, "up_to_date": 0, "failed": 1,
             "not_run": 0,
             "interrupted": False},
        ])
        self.check(["build", "--events", "none/e.jsonl"], 3, "",
                   "zab: error: the events cannot be written to none/e.jsonl: No such file or directory\n")

    def test_results_that_do_not_arrive(self):
        with open("/dev/full", "w") as full:
            run = subprocess.run([os.path.abspath(ZAB), "--plugin", PLUGIN, "rules"], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual((run.returncode, run.stderr), (3, b"zab: error: the results could not be written to standard "
                                                           b"output\n"))


class Questions(ProjectTest):
    def setUp(self):
        super().setUp()
        self.write({"zab.toml": RULE, "raw_data/ui/b.tga": tga(8, 8),
                    "raw_data/ui/zab_rules.toml": '[[rule]]\nname = "Texture"\nmatch = "*.tga"\nmipmaps = false\n'
                                                  'AverageGrey = 1.0\n'})

    def test_explain(self):
        self.check(["explain", "raw_data/ui/b.tga"], 0,
                   'raw_data/ui/b.tga (<raw>/ui/b.tga)\n'
                   'rule "Texture" from zab.toml:2, raw_data/ui/zab_rules.toml:2\n'
                   '  AverageGrey = 1.0              raw_data/ui/zab_rules.toml:5\n'
                   '  CompressionFormat = "rgba"     zab.toml:4\n'
                   '  mipmaps = false                raw_data/ui/zab_rules.toml:4\n'
                   '  TargetPath = "textures/{dir}"  zab.toml:3\n'
                   'read by action 1, Convert texture (ui/b.tga)\n'
                   '  to be built: never built\n'
                   '  makes working_data/textures/ui/b.dds\n', "")
        self.check(["explain", "<working>/none"], 0, "working_data/none (<working>/none): not among the project's files\n"
                   "no rule applies\nno action reads or makes it\n", "")

    def test_plan(self):
        _, out, _ = self.check(["plan", "--json"], 0, err="")
        self.assertEqual(json.loads(out), [{
            "id": 1, "name": "Convert texture (ui/b.tga)", "sources": ["<raw>/ui/b.tga"],
            "targets": ["<working>/textures/ui/b.dds"], "depends": [], "state": "run", "reason": "never built",
            "error": None}])
        self.check(["plan"], 0, "1 Convert texture (ui/b.tga): never built\n  reads raw_data/ui/b.tga\n"
                                "  makes working_data/textures/ui/b.dds\n")

    def test_rules(self):
        _, out, _ = self.check(["rules", "--json"], 0, err="")
        schemas = {schema["name"]: schema for schema in json.loads(out)}
        self.assertEqual(list(schemas), sorted(schemas))
        self.assertLessEqual({"Atlas", "Expansion", "Texture", "TextureLevelling", "TextureOld"}, set(schemas))
        self.assertIn("TargetPath", [entry["name"] for entry in schemas["Texture"]["properties"]])
        _, text, _ = self.check(["rules"], 0)
        self.assertIn("Texture: " + schemas["Texture"]["description"], text)

    def test_clean_removes_targets_and_nothing_else(self):
        self.check(["build"], 0)
        self.write({"working_data/textures/mine.txt": "keep", ".zab/state": "x", "working_data/textures/ui/.keep": ""})
        os.remove(self.folder / "working_data/textures/ui/.keep")
        self.check(["clean", "-n"], 0, "working_data/textures/ui/b.dds\n.zab\n", "2 would be removed\n")
        self.check(["clean"], 0, "", "2 removed\n")
        self.assertEqual(self.files(), ["textures/mine.txt"])
        self.assertFalse((self.folder / ".zab").exists() or (self.folder / "working_data/textures/ui").exists())

    def test_init_makes_a_project_that_builds(self):
        self.check(["init", "new/one"], 0, "new/one/zab.toml\n", "")
        self.write({"new/one/raw_data/x/y.tga": tga(4, 4)})
        self.check(["-C", "new/one", "build", "-q"], 0, "", "")
        self.assertEqual(self.files("new/one/working_data"), ["textures/x/y.dds"])


class Surface(ProjectTest):
    """The manual page and the completions tell of the options that there are, and of no others."""

    OPTION = re.compile(r"(?<![\w-])(--?[A-Za-z][\w-]*)")

    def options_in_help(self, *command):
        _, text, _ = self.check(["help", *command], 0)
        return {name for line in text.splitlines() if line.startswith("  -") for name in self.OPTION.findall(line[:30])}

    def script(self, shell):
        return self.check(["help", "--completions", shell], 0, err="")[1]

    def completed(self, *words):
        (self.folder / "zab.bash").write_text(self.script("bash"))
        run = subprocess.run(["bash", "--norc", "-c", f"source ./zab.bash; COMP_WORDS=({shlex.join(words)}); "
                              f"COMP_CWORD={len(words) - 1}; _zab; printf '%s\\n' \"${{COMPREPLY[@]}}\""],
                             cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(run.stderr, "")
        return set(run.stdout.split())

    def test_completions(self):
        common = self.options_in_help()
        commands = self.completed("zab", "")
        self.assertLessEqual({"build", "plan", "help"}, commands)
        scripts = {shell: self.script(shell) for shell in ("zsh", "fish")}
        for command in commands:
            own = self.options_in_help(command)
            self.assertEqual(self.completed("zab", "-q", command, "-"), own | common)
            page = self.check(["help", "--man"], 0, err="")[1].replace("\\-", "-")
            section = re.split(r"^\.S[SH] ", page.split(f".SS {command}\n")[1], flags=re.M)[0]
            self.assertEqual(set(re.findall(r"\\fB(-[\w-]+)\\fR", section)), own - {"-h", "--help"})
            zsh = scripts["zsh"].split(f"        {command}) ")[1].split(";;")[0]
            self.assertEqual(set(re.findall(r"'\*(-[\w-]+)\[", zsh)), own)
            fish = [line for line in scripts["fish"].splitlines() if f"__fish_seen_subcommand_from {command}' -" in line]
            self.assertEqual({name for line in fish for short, long in re.findall(r" -s (\w)| -l ([\w-]+)", line)
                              for name in (["-" + short] if short else ["--" + long])}, own)
        self.write({"here/x": "", "file": ""})
        for words, answer in ((("zab", "--color", "a"), {"always", "auto"}), (("zab", "help", "pl"), {"plan"}),
                              (("zab", "build", "--dr"), {"--dry-run"}), (("zab", "-C", "h"), {"here"}),
                              (("zab", "info", "fi"), {"file"}), (("zab", "build", "--timeout", ""), set())):
            self.assertEqual(self.completed(*words), answer, words)
        self.check(["help", "--completions", "tcsh"], 2, "")

    def test_the_shells_and_man_take_them(self):
        for program, arguments, text in (("zsh", ["-n"], self.script("zsh")), ("fish", ["-n"], self.script("fish")),
                                         ("groff", ["-man", "-ww", "-Tutf8"], self.check(["help", "--man"], 0)[1])):
            if shutil.which(program):
                run = subprocess.run([program, *arguments, "/dev/stdin"], input=text, capture_output=True, text=True)
                self.assertEqual((run.returncode, run.stderr), (0, ""), program)


class Pictures(ProjectTest):
    def test_info_view_and_compare(self):
        self.write({"zab.toml": RULE, "raw_data/a.tga": tga(16, 8)})
        self.check(["build", "-q"], 0)
        dds = "working_data/textures/a.dds"
        self.check(["info", "raw_data/a.tga", dds], 0,
                   "raw_data/a.tga: TGA, 16 x 8, 1 level, 32-bit true colour, alpha\n"
                   f"{dds}: DDS (legacy header), 16 x 8, 5 levels, A8R8G8B8, alpha\n", "")
        _, out, _ = self.check(["info", "--json", dds, "none.dds"], 1)
        self.assertEqual([(file["file"], file["width"], file["levels"]) for file in json.loads(out)], [(dds, 16, 5)])
        self.check(["view", dds], 0, "a.png: 16 x 8\n", "")
        self.check(["view", dds], 2, "", "zab: error: a.png exists; name a file with -o\n")
        self.check(["view", dds, "--level", "2", "-o", "level.png"], 0, "level.png: 4 x 2\n", "")
        _, out, _ = self.check(["compare", "--json", "a.png", "raw_data/a.tga"], 0)
        self.assertEqual(json.loads(out)["rgba"], {"mse": 0, "psnr": None})
        # One step in blue at one of 128 texels.
        texels = bytearray(tga(16, 8))
        texels[18] += 1
        self.write({"b.tga": bytes(texels)})
        self.check(["compare", "raw_data/a.tga", "b.tga"], 0,
                   "            MSE   PSNR dB\n"
                   "red       0.000     equal\n"
                   "green     0.000     equal\n"
                   "blue      0.008     69.20\n"
                   "alpha     0.000     equal\n"
                   "rgb       0.003     73.97\n"
                   "rgba      0.002     75.22\n", "")


if __name__ == "__main__":
    unittest.main()

"""The bash scripts of setup/, run on copies with pretended system commands: what they would do to a machine, and what they
leave behind when something fails."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]


class SCRIPT_TEST(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp()).resolve()
        self.addCleanup(shutil.rmtree, self.folder)
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        shutil.copytree(REPOSITORY / "setup", self.folder / "setup")

    def pretend(self, name, body):
        """A command of that name; what it is called with goes to the file `calls`."""
        command = self.bin / name
        command.write_text(f'#!/bin/bash\necho "{name} $*" >>"{self.folder}/calls"\n{body}\n')
        command.chmod(0o755)

    def calls(self):
        file = self.folder / "calls"
        return file.read_text().splitlines() if file.exists() else []

    def run_script(self, name, *arguments, **environment):
        return subprocess.run([self.folder / "setup" / name, *arguments], capture_output=True, text=True,
                              env={**os.environ, "PATH": f"{self.bin}:{os.environ['PATH']}",
                                   "ZAB_SETUP_DIR": f"{self.folder}/private", **environment})


class PACKAGES(SCRIPT_TEST):
    def setUp(self):
        super().setUp()
        (self.folder / "setup/packages.txt").write_text(
            "# List\n[build]\nhave-it   # a\n\nlack-it # b\nof-another-release@0\n# More\n[check]  # c\nremoved\n")
        self.pretend("id", "echo 0")
        # `removed` left its configuration behind: known to dpkg, yet not there.
        self.pretend("dpkg-query", 'case ${!#} in have-it) echo -n "ii  ";; removed) echo -n "rc  ";; '
                                   "*) exit 1;; esac")


    def apt_calls(self):
        return [[word for word in call.split()[1:] if not word.startswith("-") and "::" not in word]
                for call in self.calls() if call.startswith("apt-get") and "--simulate" not in call]

    def test_installs_what_is_missing(self):
        self.pretend("apt-get", "")
        self.assertEqual(self.run_script("debian_packages").returncode, 0)
        self.assertEqual(self.apt_calls(), [["install", "lack-it", "removed"]])

    def test_one_section_alone(self):
        self.pretend("apt-get", "")
        self.assertEqual(self.run_script("debian_packages", "build").returncode, 0)
        self.assertEqual(self.apt_calls(), [["install", "lack-it"]])

    def test_leaves_apt_alone_when_nothing_is_missing(self):
        (self.folder / "setup/packages.txt").write_text("have-it\n")
        self.pretend("apt-get", "")
        self.assertEqual(self.run_script("debian_packages").returncode, 0)
        self.assertEqual(self.apt_calls(), [])

    def test_fresh_lists_when_the_old_ones_do_not_do(self):
        for fault in ("--simulate", "-y"):
            with self.subTest(fault):
                (self.folder / "calls").unlink(missing_ok=True)
                updated = self.folder / "updated"
                updated.unlink(missing_ok=True)
                self.pretend("apt-get", f'[[ "$*" != *update* ]] || touch "{updated}"\n'
                                        f'[[ -e "{updated}" || "$*" != *{fault}* ]]')
                self.assertEqual(self.run_script("debian_packages").returncode, 0)
                self.assertEqual(self.apt_calls()[-2:], [["update"], ["install", "lack-it", "removed"]])

    def test_no_network(self):
        self.pretend("apt-get", '[[ "$*" == *update* ]]')
        result = self.run_script("debian_packages")
        self.assertEqual(result.returncode, 1)
        self.assertIn("could not install: lack-it removed", result.stderr)

    def test_neither_root_nor_sudo(self):
        self.pretend("id", "echo 1000")
        self.pretend("apt-get", "")
        for tool in ("bash", "awk", "dirname", "env"):
            (self.bin / tool).symlink_to(shutil.which(tool))
        result = self.run_script("debian_packages", PATH=str(self.bin))
        self.assertEqual(result.returncode, 1)
        self.assertIn("apt-get install lack-it removed", result.stderr)
        self.assertEqual(self.apt_calls(), [])


class NVTT(SCRIPT_TEST):
    def setUp(self):
        super().setUp()
        self.private = self.folder / "private"
        self.old = self.private / "nvtt" / "lib" / "libnvtt.a"

    def make_old_build(self):
        self.old.parent.mkdir(parents=True)
        self.old.write_text("old")
        (self.private / "nvtt" / "stamp").write_text("1.0\nflags: others\ncompiler: another\n")

    def test_failure_leaves_things_as_they_were(self):
        broken = self.folder / "broken"
        (broken / "src/nvtt").mkdir(parents=True)
        (broken / "src/nvtt/nvtt.h").write_text("")
        (broken / "VERSION").write_text("9\n")
        (broken / "CMakeLists.txt").write_text("message(FATAL_ERROR broken-on-purpose)\n")
        self.pretend("debian_source_list", "echo Types: deb-src")
        shutil.copy(self.bin / "debian_source_list", self.folder / "setup" / "debian_source_list")
        self.pretend("apt-get", "echo no-answer-from-mirror >&2; exit 100")
        for arguments, complaint in (([], "no-answer-from-mirror"), ([broken], "broken-on-purpose"),
                                     ([self.folder], "no source folder")):
            for old_build in (False, True):
                with self.subTest(complaint, old_build=old_build):
                    shutil.rmtree(self.private, ignore_errors=True)
                    if old_build:
                        self.make_old_build()
                    result = self.run_script("nvtt", *arguments)
                    self.assertEqual(result.returncode, 1)
                    self.assertIn(complaint, result.stderr)
                    self.assertIn("setup/nvtt: ", result.stderr.splitlines()[-1])
                    self.assertEqual([path.name for path in self.private.iterdir()], ["nvtt"] if old_build else [])
                    self.assertEqual(self.old.exists(), old_build)

    def test_builds_once_and_again_for_other_flags(self):
        source = self.folder / "source"
        (source / "src/nvtt").mkdir(parents=True)
        (source / "src/nvtt/nvtt.h").write_text("// the header\n")
        (source / "src/nvtt/answer.cpp").write_text("int answer() { return 42; }\n")
        (source / "src/nvtt/core.cpp").write_text("int core() { return 6; }\n")
        (source / "VERSION").write_text("9.9\n")
        (source / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.10)\nproject(n CXX)\nadd_subdirectory(src)\n")
        (source / "src/CMakeLists.txt").write_text(
            "add_library(core nvtt/core.cpp)\nadd_library(nvtt nvtt/answer.cpp)\ntarget_link_libraries(nvtt core)\n"
            "find_program(CUDA_COMPILER bash)\nif(CUDA_COMPILER)\nmessage(FATAL_ERROR found)\nendif()\n")
        self.make_old_build()
        result = self.run_script("nvtt", source)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(sorted(path.name for path in self.private.iterdir()), ["nvtt"])
        members = subprocess.run(["ar", "t", self.old], capture_output=True, text=True).stdout.split()
        self.assertEqual(sorted(members), ["answer.cpp.o", "core.cpp.o"])
        self.assertTrue((self.private / "nvtt/include/nvtt/nvtt.h").is_file())
        # Any use of apt or of the source would fail now.
        self.pretend("apt-get", "exit 100")
        result = self.run_script("nvtt")
        self.assertEqual((result.returncode, self.calls()), (0, []))
        self.assertIn("already built (9.9)", result.stdout)


class QUICK_PROJECT(SCRIPT_TEST):
    def make(self, folder):
        return self.run_script("quick_project", str(folder), str(self.folder / "projects"))

    def test_projects(self):
        first = self.folder / "a" / 'My "best"\\ images'
        namesake = self.folder / "b" / first.name
        for folder in (first, namesake):
            folder.mkdir(parents=True)
        for folder, name in ((first, first.name), (namesake, first.name + "-2"), (first, first.name)):
            result = self.make(folder)
            self.assertEqual(result.returncode, 0, result.stderr)
            project = pathlib.Path(result.stdout.rstrip("\n"))
            self.assertEqual(project, self.folder / "projects" / name)
            quoted = str(folder).replace("\\", "\\\\").replace('"', '\\"')
            self.assertIn(f'raw = "{quoted}"\n', (project / "zab.toml").read_text())
            self.assertEqual(list(folder.iterdir()), [])

    def test_refuses(self):
        (self.folder / "line\nbreak").mkdir()
        for folder in (self.folder / "absent", self.folder, self.folder / "line\nbreak", "/"):
            with self.subTest(folder):
                self.assertEqual(self.make(folder).returncode, 2)
                self.assertEqual(list(self.folder.glob("projects/*")), [])


if __name__ == "__main__":
    unittest.main()

"""What a whole build opens, makes, renames and removes, as strace sees it, held against the list of what it may; and the
permissions of all that it makes. The program runs in a folder of nothing, so that what is looked for there shows, too."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

from command_line import PLUGIN, RULE, ZAB, ProjectTest, tga

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples"
PROGRAM = pathlib.Path(ZAB).resolve()
WRITTEN = {
    r"@/(working_data|\.zab)(/.*)?": "targets and the build state",
    r"@/raw_data/.*\.texture_array\.agf(\.part)?": "fragments stand beside their lists",
    r"@/raw_data/old/[\w/]+\.dds(\.part)?": "what an older conversion makes first, beside its source",
    r"@/events": "as the command line says",
    "/dev/null": "nothing",
    "/proc/self/fd/[0-9]+": "a file that was written without a name gets one",
    "/dev/fd/[0-9]+": "a file in memory, which a library takes by a name alone",
    "/proc/(self|[0-9]+)/(clear_refs|oom_score_adj)": "a worker measures its memory, and goes first when there is none left"}
READ = {
    "@(/.*)?": "the project", **WRITTEN,
    "(/usr)?/lib(64)?/.*|/etc/ld[.]so[.].*": "libraries of the system",
    "|".join(re.escape(f"{folder}/") + ".*" for folder in (PROGRAM.parent, PROGRAM.parents[1] / "lib",
                                                           pathlib.Path(PLUGIN).resolve().parent)): "the program's own",
    "/etc/localtime|/usr/share/zoneinfo/.*": "the line with the date in an atlas's index",
    "/etc/machine-id": "the journal belongs to one machine",
    "/proc/meminfo|/proc/self/cgroup|/sys/fs/cgroup/.*": "how much memory there is",
    "/sys/devices/system/cpu/.*|/proc/cpuinfo": "how many processors there are",
    "/proc/(self|[0-9]+)/(stat|statm|status|maps|task/.*)": "how much memory a worker holds",
    "/dev/urandom": "SQLite"}
WRITING = re.compile(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC")
LOOKING = {"access", "faccessat", "faccessat2", "stat", "lstat", "newfstatat", "statx", "statfs", "readlink", "readlinkat",
           "getcwd", "chdir", "getxattr", "lgetxattr"}


def strace_works():
    return shutil.which("strace") and subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True).returncode == 0


def touched(trace):
    """Every path that a process named, or held open, in a call that reads or writes: ("read" or "written", path)."""
    for line in trace.splitlines():
        call, _, rest = line.partition("(")
        if not call.isidentifier() or call in LOOKING or "O_TMPFILE" in rest:   # those get a name by linkat
            continue
        arguments = rest.rpartition(") = ")[0]
        kind = "read" if call == "execve" or call.startswith("open") and not WRITING.search(arguments) else "written"
        if call == "execve":
            arguments = arguments.partition(", ")[0]
        named = re.findall(r'(?:(?:AT_FDCWD|\d+)<([^>]*)>, )?"((?:[^"\\]|\\.)*)"', arguments)
        for folder, name in named or re.findall(r"\d+<([^>]*)>()", arguments):
            path = os.path.normpath(os.path.join(folder, name))
            # Beyond ASCII strace shows the bytes, as "\\303\\266".
            yield kind, path.encode().decode("unicode_escape").encode("latin1").decode(errors="surrogateescape"), line


class TouchedFiles(ProjectTest):
    def setUp(self):
        super().setUp()
        for example in ("first_light", "channel_maps", "atlas"):
            shutil.copytree(EXAMPLES / example, self.folder / example, ignore=shutil.ignore_patterns("working_data", ".zab"))
        everything = RULE.replace("\nTarget", '\nmatch = ["*", "!old/"]\nTarget') + RULE.replace("Texture", "TextureOld").replace(
            "\nTarget", '\nmatch = "old/"\nTarget') + "[global]\nRetail = true\n[image_database]\nenabled = true\n"
        self.write({"everything/zab.toml": everything, "everything/raw_data/a.tga": tga(8, 8),
                    "everything/raw_data/old/b.tga": tga(8, 8), "everything/raw_data/s.texture_array": "textures/a\n",
                    "everything/raw_data/f.fga": "2,2,2," + "1," * 30, "nothing/": "", "home/": ""})

    def run_all(self, *before, **options):
        for project in ("first_light", "channel_maps", "atlas", "everything"):
            command = [*before, PROGRAM, "--plugin", pathlib.Path(PLUGIN).resolve(), "-C", self.folder / project, "build", "-q",
                       "--events", self.folder / project / "events"]
            run = subprocess.run(command, cwd=self.folder / "nothing", capture_output=True, text=True, timeout=120,
                                 env={"LC_ALL": "C", "PATH": "/usr/bin:/bin", "HOME": str(self.folder / "home")}, **options)
            self.assertEqual((run.returncode, run.stderr), (0, ""))

    @unittest.skipIf(os.environ.get("ZAB_SANITIZE"), "sanitizers open files of their own")
    @unittest.skipUnless(strace_works(), "strace is not there, or may not trace")
    def test_nothing_else_is_read_or_written(self):
        self.run_all("strace", "-ff", "-y", "-s", "4096", "-e", "trace=%file,fchmod,fchown", "-o", self.folder / "trace")
        allowed = {kind: re.compile("|".join(f"({path})" for path in paths)) for kind, paths in (("read", READ), ("written", WRITTEN))}
        seen = set()
        for trace in self.folder.glob("trace.*"):
            for kind, path, line in touched(trace.read_text()):
                shown = re.sub(rf"^{self.folder}/(first_light|channel_maps|atlas|everything)\b", "@", path)
                seen.add((kind, shown))
                self.assertTrue(allowed[kind].fullmatch(shown), f"{shown} is {kind}: {line}")
        for example in (("written", "@/working_data/atlases/icons.tai"), ("written", "@/.zab/state.db"),
                        ("written", "@/raw_data/s.texture_array.agf"), ("read", "@/raw_data/a.tga")):
            self.assertIn(example, seen)        # so it was a trace of everything

    def test_permissions_are_the_users(self):
        for umask in (0o022, 0o077):
            shutil.rmtree(self.folder)
            self.setUp()
            before = set(self.folder.rglob("*"))
            self.run_all(umask=umask)
            for path in set(self.folder.rglob("*")) - before:
                mode = (0o777 if path.is_dir() else 0o666) & ~umask
                self.assertEqual(oct(path.stat().st_mode & 0o7777), oct(mode), path)

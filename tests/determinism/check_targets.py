"""Builds every example project with each instruction set, with one thread and with many, twice each, and holds the SHA-256
of every target against the list beside this file: the same input gives the same bytes, and a change of output is seen in
review.

Usage: check_targets.py [--write]        --write: make the list anew, after one build of each
"""

import hashlib
import itertools
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent.parent / "examples"
LIST = HERE / "targets.sha256"
ZAB = os.path.abspath(os.environ.get("ZAB", "build/release/bin/zab"))
PLUGIN = os.path.abspath(os.environ.get("ZAB_PLUGIN", "build/release/lib/zab/ZAB_Texture.so"))
LEVELS = ["scalar", "sse4", "avx2", "avx512"]
THREADS = ["1", "4"]


def build(level, threads, arguments):
    """One line a target, "hash  project/target" as sha256sum writes it, sorted by target."""
    lines = []
    with tempfile.TemporaryDirectory(prefix="zab-determinism-") as folder:
        for example in sorted(path for path in EXAMPLES.iterdir() if (path / "zab.toml").exists()):
            project = pathlib.Path(folder) / example.name
            shutil.copytree(example, project, ignore=shutil.ignore_patterns("working_data", ".zab"))
            environment = {**os.environ, "ZAB_SIMD": level, "OMP_NUM_THREADS": threads}
            run = subprocess.run([ZAB, "-C", project, "--plugin", PLUGIN, "build", "-q", *arguments], env=environment,
                                 capture_output=True, text=True)
            if run.returncode != 0 or run.stderr:
                sys.exit(f"{example.name} does not build with {level}, {threads} threads:\n{run.stderr}")
            working = project / "working_data"
            lines += [f"{hashlib.sha256(path.read_bytes()).hexdigest()}  {path.relative_to(folder).as_posix()}"
                      for path in working.rglob("*") if path.is_file()]
    return sorted(lines, key=lambda line: line[66:])


def main():
    if sys.argv[1:] == ["--write"]:
        LIST.write_text("\n".join(build("avx512", "4", ["-j", "4"])) + "\n")
        return
    expected = LIST.read_text().splitlines()
    failed = False
    for level, threads, turn in itertools.product(LEVELS, THREADS, (1, 2)):
        found = build(level, threads, ["-j", threads])
        differing = sorted({line[66:] for line in set(found) ^ set(expected)})
        if differing:
            failed = True
            print(f"{level}, {threads} at once, turn {turn}: not as in targets.sha256:", *differing, sep="\n  ")
    if failed:
        sys.exit("If the change is meant, tests/determinism/check_targets.py --write makes the list anew.")
    print(f"{len(expected)} targets, {len(LEVELS) * len(THREADS) * 2} builds, all the same")


if __name__ == "__main__":
    main()

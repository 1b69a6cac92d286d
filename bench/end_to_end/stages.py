"""Where a build's time goes: samples of `perf record`, sorted by the function or library that they fell into. And what is
not block compression, held against the blocks and against `cp` of the same files."""

import os
import re
import shutil
import subprocess
import sys

from end_to_end import inputs, report
from end_to_end.main_job import ZAB
from end_to_end.measure import OTHERS, interleaved, measured, median, run

# The first row that matches the library and the start of the function's name.
STAGES = [
    ("blocks", r"", r"blocks::|squish::|nv::(Optimal|Quick|Slow|Fast)\w*|nv::(Alpha|Color)Block|nv::\w*Compressor"),
    ("mip levels", r"", r"TOOLDATABUILDER::(\(anonymous namespace\)::)?(make_lower_mips|average_|narrow|widen|halve)"
                        r"|nv::FloatImage|nv::\w*Filter|make_one_bit_alpha_chain"),
    # Powers are taken for gamma alone, on the way into the levels' averages and back.
    ("mip levels", r"libm\.", r""),
    ("reading", r"libz\.|libpng|libjpeg|libtiff|libfreeimage", r""),
    ("reading", r"ZAB_Texture", r"QE::(?!replace_file)|IMAGE_LOADER::(\(anonymous namespace\)::)?(take_|load|detect)"),
    ("working copy, channels", r"ZAB_Texture", r"IMAGE_LOADER::|premultiply|(\(anonymous namespace\)::)?multiply_as_is"
                                               r"|is_fully_opaque|shuffle|halve_image|nv::(Image|InputOptions)|nvtt::"),
    ("writing", r"ZAB_Texture", r"TOOLDATABUILDER::|dds_container::|QE::replace_file|nv::\w*Output"),
    ("files and memory: the system", r"kernel|vdso", r""),
    ("memory: copying, clearing, allocating", r"libc\.", r"(__)?(mem|malloc|free|realloc|calloc|_int_|cfree|unlink_chunk)"),
    ("everything else: host, start, rules", r"", r""),
]
NAMES = list(dict.fromkeys(name for name, _, _ in STAGES))


def stage_of(library, function):
    return next(name for name, libraries, functions in STAGES
                if re.match(libraries and f".*({libraries})", library) and re.match(functions, function))


def shares(report_lines):
    """Stage → share of all samples, from lines of `perf report -t ';' --sort dso,symbol`."""
    found = dict.fromkeys(NAMES, 0.0)
    for line in report_lines:
        fields = [field.strip() for field in line.split(";")]
        if line.startswith("#") or len(fields) < 3 or not fields[0].endswith("%"):
            continue
        function = re.sub(r"^\[.\] ", "", fields[2])
        found[stage_of(fields[1], function)] += float(fields[0][:-1])
    total = sum(found.values())
    return {name: share / total for name, share in found.items()} if total else None


def profile(row):
    """Stage → share, and the processor time of the run."""
    samples = row.project / "perf.data"
    inputs.put_away(row.project / "working_data", row.project / ".zab")
    cost = run(["perf", "record", "-q", "-F", "1999", "-o", samples, row.zab, "-C", row.project, "build", "-q", "-j", "1"])
    listed = subprocess.run(["perf", "report", "-i", samples, "--stdio", "-t", ";", "--percent-limit", "0", "--sort",
                             "dso,symbol"], capture_output=True, text=True)
    samples.unlink()
    return shares(listed.stdout.splitlines()), cost.processor


def copy(sources, target):
    inputs.put_away(target)
    return run(["cp", "-r", sources, target])


def measure(options):
    if not shutil.which("perf"):
        print("left out: stages (there is no perf)", file=sys.stderr)
        return {}
    others = OTHERS()
    columns = {}
    held = []
    for tree_name in inputs.SOURCES:
        tree = inputs.tree(tree_name, options.sample)
        for setting, title in ("highest", ""), ("own", ", own"):
            row = ZAB("zab", options.zab, tree, setting)
            found, whole = profile(row)
            if not found:
                print(f"left out: stages of {tree_name} (perf has no samples)", file=sys.stderr)
                continue
            columns[tree_name + title] = found
            beside = inputs.CACHE / "copies"
            costs = interleaved({
                "sources": lambda: copy(inputs.folder_of(tree), beside),
                "textures": lambda: copy(row.project / "working_data", beside),
            }, options.runs)
            copies = sum(median(cost).processor for cost in costs.values())
            rest = whole * (1 - found["blocks"])
            held.append([tree_name + title, report.seconds(whole * found["blocks"]), report.seconds(rest),
                         report.percent(rest / (whole * found["blocks"])), report.seconds(whole * found["reading"]),
                         report.seconds(copies), f"{rest / copies:.1f}"])
    said = "Builds ran once, under perf; `cp`: " + measured(options.runs, others)
    where = report.table(["", *columns], [[name, *(report.percent(c[name]) for c in columns.values())]
                                          for name in NAMES])
    against = report.table(["", "blocks", "all else", "of the blocks", "of it reading", "`cp`", "all else / `cp`"], held)
    return {"stages": where, "not-blocks": f"{said}\n\n{against}"}


def measurements():
    yield "stages", measure

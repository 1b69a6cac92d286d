"""How time and memory grow with the number of sources and with the size of one texture, as tables and plots on
logarithmic axes."""

import os
import shutil
import struct
from pathlib import Path

from end_to_end import inputs, report
from end_to_end.log_plot import log_plot
from end_to_end.measure import OTHERS, measured, median, run

PLOTS = report.ROOT / "docs/growth"
FOLDER_SIZE = 500


def tga(path, width, height):
    """Texels of 24 bits: one row of noise, every row begun elsewhere in it, over slopes that differ from row to row."""
    noise = os.urandom(3 * width)
    with open(path, "wb") as file:
        file.write(struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, width, height, 24, 0))
        for y in range(height):
            start = 3 * (y * 7919 % width)
            table = bytes((value // 16 + y // 8 + 37) & 255 for value in range(256))
            file.write((noise[start:] + noise[:start]).translate(table))


def project(name, rule):
    folder = inputs.CACHE / "growth" / name
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "raw_data").mkdir(parents=True)
    properties = "\n".join(f"{key} = {value}" for key, value in rule.items())
    (folder / "zab.toml").write_text("[[rule]]\n" + properties + "\n")
    return folder


def from_nothing(folder, command):
    """The cost of a run that has no results to keep."""
    inputs.put_away(folder / "working_data", folder / ".zab")
    return run(command(folder))


def grow(options, name, unit, steps, make, command, plotted=("", lambda size: size)):
    """A table, and plots if asked for. `make` a size: the project's folder; `command` it: what is measured; `plotted`:
    what stands on the plots' axis, where it is not the size."""
    others = OTHERS()
    rows, times, memory = [], [], []
    for size in steps:
        folder = make(size)
        cost = median([from_nothing(folder, command) for _ in range(options.runs if size < steps[-1] else 1)])
        shutil.rmtree(folder)
        rows.append([f"{size:,}", report.seconds(cost.processor), report.mebibytes(cost.peak_bytes)])
        times.append((plotted[1](size), cost.processor))
        memory.append((plotted[1](size), cost.peak_bytes))
    if options.write:
        PLOTS.mkdir(exist_ok=True)
        (PLOTS / f"{name}-time.svg").write_text(log_plot(plotted[0] or unit, "s", {"processor time": times}))
        (PLOTS / f"{name}-memory.svg").write_text(log_plot(plotted[0] or unit, "B", {"peak memory": memory}))
    said = measured(options.runs, others) + " The last size ran once."
    return {f"growth-{name}": f"{said}\n\n" + report.table([unit, "processor", "peak memory"], rows)}


def sources(options):
    """Scan, rules, dispatch and plan of small sources, in folders of 500, every tenth folder with rules of its own."""

    def make(count):
        folder = project("sources", {"name": '"Texture"', "TargetPath": '"{dir}"', "match": '["*.tga", "!*_x.tga"]'})
        for start in range(0, count, FOLDER_SIZE):
            below = folder / "raw_data" / f"set{start // (20 * FOLDER_SIZE)}" / f"folder{start // FOLDER_SIZE}"
            below.mkdir(parents=True)
            if start // FOLDER_SIZE % 10 == 0:
                (below / "zab_rules.toml").write_text('[[rule]]\nname = "Texture"\nCompressionFormat = "dxt5"\n')
            for number in range(start, min(start + FOLDER_SIZE, count)):
                (below / f"texture{number}.tga").touch()
        return folder

    steps = [100, 1000, 10_000, 100_000] + ([] if options.sample else [1_000_000])
    return grow(options, "sources", "sources", steps, make,
                lambda folder: [options.zab, "-C", folder, "build", "--dry-run", "-q"])


def sides(options):
    """One square texture from TGA to DXT1 with all levels, by this project's own encoders at their fastest: the rest of
    the conversion weighs most there."""

    def make(side):
        folder = project("side", {"name": '"Texture"', "TargetPath": '"{dir}"', "Compressor": '"ati"',
                                  "CompressionFormat": '"rgb"' if side < 4 else '"dxt1"',
                                  "FastestCompressionQuality": "true"})
        tga(folder / "raw_data" / "texture.tga", side, side)
        return folder

    steps = [1, 4, 16, 64, 256, 1024, 4096] + ([] if options.sample else [16384])
    return grow(options, "side", "texels a side", steps, make,
                lambda folder: [options.zab, "-C", folder, "build", "-q", "-j", "1"],
                ("texels", lambda side: side * side))


def atlas(options):
    """One atlas of images of 16 x 16 texels on pages of 1024 x 1024, 4096 on each."""

    def make(count):
        folder = project("atlas", {"name": '"Atlas"', "TargetBaseName": '"icons"', "Width": 1024, "Height": 1024})
        icon = folder / "raw_data" / "icon0.tga"
        tga(icon, 16, 16)
        for number in range(1, count):
            shutil.copyfile(icon, icon.with_name(f"icon{number}.tga"))
        return folder

    return grow(options, "atlas", "sources of an atlas", [10, 100, 1000, 10_000], make,
                lambda folder: [options.zab, "-C", folder, "build", "-q", "-j", "1"])


def measurements():
    yield "growth-sources", sources
    yield "growth-side", sides
    yield "growth-atlas", atlas

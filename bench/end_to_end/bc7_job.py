"""BC7: zab on a game's TGAs against bc7enc on the same texels as PNG, which is the only kind it reads; turning one into
the other is not timed. zab makes all mip levels, a third more texels; bc7enc makes the largest alone."""

import os
import subprocess
import sys

from end_to_end import inputs, quality, ratios, report
from end_to_end.main_job import PEER, ZAB
from end_to_end.measure import OTHERS, interleaved, measured, median

TREE = "openarena"
LEVELS = ["-u6", "-u4", "-u1", "-u0"]


def texels_with_levels(width, height):
    total = width * height
    while max(width, height) > 1:
        width, height = max(width // 2, 1), max(height // 2, 1)
        total += width * height
    return total


def as_png(zab, image, tree):
    """A copy of the image as PNG, made by `zab view`."""
    copy = inputs.CACHE / "pngs" / image.relative_to(inputs.CACHE).with_suffix(".png")
    if not copy.exists():
        copy.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run([zab, "view", image, "-o", copy], check=True, stdout=subprocess.DEVNULL)
    return copy


def measure(options):
    bc7enc = inputs.npm_package("@gpu-tex-enc/bc") / "bin/linux/bc7enc"
    tree = inputs.tree(TREE, options.sample)
    pngs = {image: as_png(options.zab, image, tree) for image in tree.images}
    others = OTHERS()
    rows = [ZAB("zab", options.zab, tree, "bc7")]
    if os.access(bc7enc, os.X_OK):
        rows += [PEER(f"bc7enc {level}", tree, [bc7enc, "-q", "-g", level], lambda image, texture: [pngs[image], texture])
                 for level in LEVELS]
    else:
        print("left out: bc7enc (the package has no program for this machine)", file=sys.stderr)
    costs = {processes: interleaved({row.name: lambda row=row: row.build(processes) for row in rows}, options.runs)
             for processes in dict.fromkeys((os.cpu_count(), 1))}
    table, figures = [], {}
    for row in rows:
        if row.name not in costs[1]:
            continue
        textures = {image: row.texture(image, tree) for image in tree.images}
        psnrs = quality.pooled(options.zab, list(textures.items()))
        with_levels = isinstance(row, ZAB)
        texels = sum(texels_with_levels(*inputs.sides(image)) for image in tree.images) if with_levels else tree.texels
        alone = median(costs[1][row.name])
        size = sum(texture.stat().st_size for texture in textures.values())
        table.append([row.name, report.seconds(alone.wall), report.wall(costs[os.cpu_count()].get(row.name)),
                      report.seconds(alone.processor), f"{texels / 1e6 / alone.processor:.2f}",
                      report.mebibytes(alone.peak_bytes), report.mebibytes(size), *(f"{value:.2f}" for value in psnrs)])
        figures[row.name] = alone.processor * tree.texels / texels, psnrs[0]
    heads = ["", "wall, 1 process", f"wall, {os.cpu_count()}", "processor", "million texels / s", "peak", "size", "RGB",
             "alpha"]
    ratios.keep("bc7", figures)
    return {"bc7": f"{tree.described()}. {measured(options.runs, others)}\n\n{report.table(heads, table)}"}


def measurements():
    yield "bc7", measure

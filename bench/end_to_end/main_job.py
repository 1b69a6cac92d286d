"""The main job: every image of a game to DXT1 or DXT5 with all mip levels, by one `zab build` and by the peers' programs
called once for each image, as a script or makefile would. A peer gets the format that zab chose for the image: its own
program chooses none."""

import os
import shutil
import sys

from end_to_end import inputs, quality, ratios, report
from end_to_end.measure import OTHERS, interleaved, measured, median, run

RULES = {
    "highest": {"CompressionFormat": '"dxt1_or_dxt5"'},
    "fastest": {"CompressionFormat": '"dxt1_or_dxt5"', "FastestCompressionQuality": "true"},
    "bc7": {"CompressionFormat": '"bc7"'},
    "own": {"CompressionFormat": '"dxt1_or_dxt5"', "Compressor": '"ati"'},
    "own-fastest": {"CompressionFormat": '"dxt1_or_dxt5"', "Compressor": '"ati"', "FastestCompressionQuality": "true"},
}
DXT = {b"DXT1": ("-bc1", "dxt1"), b"DXT5": ("-bc3", "dxt5")}


class ZAB:
    def __init__(self, name, zab, tree, setting):
        self.name = name
        self.zab = zab
        self.project = inputs.project(tree, setting, RULES[setting])

    def build(self, processes):
        inputs.put_away(self.project / "working_data", self.project / ".zab")
        return run([self.zab, "-C", self.project, "build", "-q", "-j", processes])

    def texture(self, image, tree):
        return self.project / "working_data" / image.relative_to(inputs.folder_of(tree)).with_suffix(".dds")


class PEER:
    """A program that is called once for each image, through xargs."""

    def __init__(self, name, tree, command, arguments_of):
        """`arguments_of` an image and its texture: those that differ from image to image."""
        self.name = name
        self.command = command
        self.folder = inputs.CACHE / "peers" / inputs.folder_of(tree).name / name.replace(" ", "_")
        self.arguments = [arguments_of(image, self.texture(image, tree)) for image in tree.images]

    def build(self, processes):
        listed = self.folder / "arguments"
        inputs.put_away(self.folder)
        for arguments in self.arguments:
            arguments[-1].parent.mkdir(parents=True, exist_ok=True)
        listed.write_text("".join(f"{argument}\n" for arguments in self.arguments for argument in arguments))
        xargs = ["xargs", "-d", "\\n", "-a", listed, "-P", processes, "-n", len(self.arguments[0])]
        return run(xargs + self.command)

    def texture(self, image, tree):
        return self.folder / image.relative_to(inputs.folder_of(tree)).with_suffix(".dds")


def format_of(texture):
    with open(texture, "rb") as file:
        return file.read(88)[84:]


def nvcompress():
    """Debian's program as a command: the installed one, or one that is only unpacked."""
    if program := shutil.which("nvcompress"):
        return [program]
    library = next(inputs.debian_package("libnvtt2").rglob("libnvtt.so.*")).parent
    return ["env", f"LD_LIBRARY_PATH={library}", inputs.debian_package("libnvtt-bin") / "usr/bin/nvcompress"]


def peers(tree, textures):
    """`textures`: image → the texture that zab made of it."""
    formats = {image: DXT[format_of(texture)] for image, texture in textures.items()}
    for name, options in ("nvcompress", []), ("nvcompress -fast", ["-fast"]):
        yield PEER(name, tree, [*nvcompress(), "-nocuda", *options], lambda i, t: [formats[i][0], i, t])
    # Its own threads stand in each other's way when several processes run, so it gets one.
    # Distributions differ in which of the names are there; a plain `convert` may be another program.
    if magick := shutil.which("convert-im6") or shutil.which("magick"):
        for name, cluster_fit in ("ImageMagick", "false"), ("ImageMagick cluster-fit", "true"):
            yield PEER(name, tree, ["env", "MAGICK_THREAD_LIMIT=1", magick, "-define", f"dds:cluster-fit={cluster_fit}"],
                       lambda i, t: ["-define", f"dds:compression={formats[i][1]}", i, "-auto-orient", t])
    else:
        print("left out: ImageMagick (it is not installed)", file=sys.stderr)


ORDER = ["zab", "nvcompress", "zab, own encoders", "ImageMagick cluster-fit",
         "zab, fastest", "nvcompress -fast", "zab, own encoders, fastest", "ImageMagick"]


def measure_tree(name, options):
    tree = inputs.tree(name, options.sample)
    others = OTHERS()
    ours = [ZAB("zab", options.zab, tree, "highest"), ZAB("zab, fastest", options.zab, tree, "fastest"),
            ZAB("zab, own encoders", options.zab, tree, "own"),
            ZAB("zab, own encoders, fastest", options.zab, tree, "own-fastest")]
    # The first build says which format each image gets, and brings the images into the system's file cache.
    ours[1].build(1)
    textures = {image: ours[1].texture(image, tree) for image in tree.images}
    opaque = {image for image, texture in textures.items() if format_of(texture) == b"DXT1"}
    rows = sorted(ours + list(peers(tree, textures)), key=lambda row: ORDER.index(row.name))

    costs = {}
    for processes in dict.fromkeys((os.cpu_count(), 1)):
        costs[processes] = interleaved({row.name: lambda row=row: row.build(processes) for row in rows},
                                        options.runs)
    rows = [row for row in rows if row.name in costs[1]]

    table = []
    figures = {}
    for row in rows:
        made = {image: row.texture(image, tree) for image in tree.images}
        held = {image: quality.exchanged(image) if isinstance(row, ZAB) else image for image in tree.images}
        of_opaque = quality.pooled(options.zab, [(held[i], made[i]) for i in tree.images if i in opaque])
        of_others = quality.pooled(options.zab, [(held[i], made[i]) for i in tree.images if i not in opaque])
        size = sum(texture.stat().st_size for texture in made.values())
        alone = median(costs[1][row.name])
        psnrs = [f"{of_opaque[0]:.2f}" if of_opaque else "–"]
        psnrs += [f"{value:.2f}" for value in of_others] if of_others else ["–", "–"]
        table.append([row.name, report.seconds(alone.wall), report.wall(costs[os.cpu_count()].get(row.name)),
                      report.seconds(alone.processor), report.mebibytes(alone.peak_bytes),
                      report.mebibytes(size), *psnrs])
        figures[row.name] = alone.processor, of_opaque[0] if of_opaque else None
    sample = [(quality.exchanged(image), rows[0].texture(image, tree))
              for image in tree.images[:: max(1, len(tree.images) // 10)]]
    quality.check_against_openimageio(options.zab, sample)
    heads = ["", "wall, 1 process", f"wall, {os.cpu_count()}", "processor", "peak", "size", "RGB, opaque",
             "RGB, others", "alpha"]
    kinds = f"{len(opaque)} opaque (DXT1), {len(tree.images) - len(opaque)} with alpha (DXT5)"
    said = f"{tree.described()}; {kinds}. {measured(options.runs, others)}"
    ratios.keep(name, figures)
    return {f"main-{name}": f"{said}\n\n{report.table(heads, table)}"}


def measurements():
    for name in inputs.SOURCES:
        yield f"main-{name}", lambda options, name=name: measure_tree(name, options)

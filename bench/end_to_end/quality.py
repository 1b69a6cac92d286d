"""The error of textures against their sources, pooled over many: mean square errors of the largest levels, weighted by
texels, as PSNR. `zab compare` measures; a sample of its answers is held against OpenImageIO's, which reads both files
with code of its own."""

import json
import math
import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from end_to_end.inputs import CACHE, sides

# Decoders round the colours between a block's endpoints differently, by one step of 8 bits.
LARGEST_DISAGREEMENT_DB = 0.3


def mean_square_errors(zab, source, texture):
    """Of the colours together and of alpha, in steps of 8 bits."""
    done = subprocess.run([zab, "compare", "--json", source, texture], capture_output=True, text=True, check=True)
    channels = json.loads(done.stdout)
    return channels["rgb"]["mse"], channels["alpha"]["mse"]


def colour_type(png):
    with open(png, "rb") as file:
        return file.read(26)[25]


def exchanged(source):
    """What zab's texture of a source is to be held against: the source itself, or for a PNG with colours a copy with
    red and blue exchanged, since zab leaves a PNG's channels in their order. None where there is no program to make it."""
    if source.suffix != ".png" or colour_type(source) in (0, 4):
        return source
    copy = CACHE / "exchanged" / source.relative_to(CACHE)
    if not copy.exists():
        if not shutil.which("oiiotool"):
            return None
        copy.parent.mkdir(parents=True, exist_ok=True)
        has_alpha = colour_type(source) == 6 or b"tRNS" in source.read_bytes()
        subprocess.run(["oiiotool", "--no-autopremult", source, "--ch", "B,G,R,A" if has_alpha else "B,G,R", "-o", copy],
                       check=True, stdout=subprocess.DEVNULL)
    return copy


def psnr(mse):
    return 10 * math.log10(255 * 255 / mse) if mse > 0 else math.inf


def pooled(zab, pairs):
    """The PSNR of colours and of alpha over all (source, texture) pairs; None of none."""
    if not pairs or any(source is None for source, _ in pairs):
        return None
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        errors = list(pool.map(lambda pair: mean_square_errors(zab, *pair), pairs))
    texels = [math.prod(sides(source)) for source, _ in pairs]
    return tuple(psnr(sum(e[i] * t for e, t in zip(errors, texels)) / sum(texels)) for i in (0, 1))


def check_against_openimageio(zab, pairs):
    """Warns where the two disagree about the colours. True when all agree, None when OpenImageIO is not there."""
    if not shutil.which("oiiotool"):
        return None
    agree = True
    for source, texture in pairs:
        if source is None or source.suffix == ".png" and colour_type(source) in (0, 4):
            continue
        done = subprocess.run(["oiiotool", "--no-autopremult", source, "--ch", "R,G,B", texture, "--ch", "R,G,B",
                               "--diff"], capture_output=True, text=True)
        found = re.search(r"Peak SNR = ([0-9.]+)", done.stdout)
        theirs = math.inf if "PASS" in done.stdout else float(found[1]) if found else math.nan
        ours = psnr(mean_square_errors(zab, source, texture)[0])
        if not (theirs == ours or abs(theirs - ours) < LARGEST_DISAGREEMENT_DB):
            print(f"zab compare says {ours:.2f} dB and oiiotool {theirs:.2f} dB of {texture}", file=sys.stderr)
            agree = False
    return agree

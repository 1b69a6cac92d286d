"""The short table of the README: how much less processor time zab takes than a peer for the same images, and how much
closer to them its textures are. It is made of the figures that the other measurements leave."""

import json

from end_to_end import inputs, report

RESULTS = inputs.CACHE / "results.json"
TREES = list(inputs.SOURCES)

# What is set against what: zab's row, the peer's row.
PAIRS = [("zab, fastest", "nvcompress -fast"), ("zab, own encoders", "nvcompress"),
         ("zab, own encoders", "ImageMagick cluster-fit"), ("zab, own encoders, fastest", "ImageMagick")]
BC7_PAIRS = [("zab", "bc7enc -u4"), ("zab", "bc7enc -u6")]


def kept():
    return json.loads(RESULTS.read_text()) if RESULTS.exists() else {}


def keep(name, figures):
    """`figures`: row → (processor seconds for the same texels, PSNR)."""
    RESULTS.write_text(json.dumps(kept() | {name: figures}))


def cell(figures, ours, theirs):
    """"3.1 ×, +0.40 dB": so many times less processor time, and so much better."""
    if not figures or ours not in figures or theirs not in figures:
        return "–"
    (our_time, our_psnr), (their_time, their_psnr) = figures[ours], figures[theirs]
    text = f"{their_time / our_time:.2g} ×"
    return text if our_psnr is None or their_psnr is None else f"{text}, {our_psnr - their_psnr:+.2f} dB"


def table(figures):
    rows = [[f"{ours} / `{theirs}`", *(cell(figures.get(tree), ours, theirs) for tree in TREES)]
            for ours, theirs in PAIRS]
    rows += [[f"{ours}, BC7 / `{theirs}`", cell(figures.get("bc7"), ours, theirs), *("–" for _ in TREES[1:])]
             for ours, theirs in BC7_PAIRS]
    return report.table(["", *TREES], rows)


def measurements():
    yield "ratios", lambda options: {"ratios": table(kept())}

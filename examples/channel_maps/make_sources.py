#!/usr/bin/env python3
"""Makes this project's sources: for each kind of channel-packed map a folder of small images as artists paint them.

Usage: make_sources.py [RAW_DATA_FOLDER]        by default the one beside this script

Every picture is made of tileable value noise, the same on every machine.
"""

import math
import pathlib
import struct
import sys

SIDE = 64


def hashed(x, y, seed):
    value = (x * 374761393 + y * 668265263 + seed * 1442695041) & 0xFFFFFFFF
    value = ((value ^ (value >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((value ^ (value >> 16)) & 0xFFFF) / 65535


def noise(x, y, cells, seed):
    """Smooth values in 0...1 that repeat after SIDE texels, with `cells` random values a side."""
    u, v = x * cells / SIDE, y * cells / SIDE
    i, j = int(u), int(v)
    s, t = u - i, v - j
    s, t = s * s * (3 - 2 * s), t * t * (3 - 2 * t)

    def corner(a, b):
        return hashed((i + a) % cells, (j + b) % cells, seed)

    top = corner(0, 0) * (1 - s) + corner(1, 0) * s
    bottom = corner(0, 1) * (1 - s) + corner(1, 1) * s
    return top * (1 - t) + bottom * t


def rock(x, y, seed=1):
    return (4 * noise(x, y, 4, seed) + 2 * noise(x, y, 9, seed + 1) + noise(x, y, 21, seed + 2)) / 7


def slope(height, x, y):
    """How far a height field rises to the right and down."""
    return (height((x + 1) % SIDE, y) - height((x - 1) % SIDE, y), height(x, (y + 1) % SIDE) - height(x, (y - 1) % SIDE))


def curvature(height, x, y):
    around = sum(height((x + a) % SIDE, (y + b) % SIDE) for a, b in ((1, 0), (-1, 0), (0, 1), (0, -1)))
    return 0.5 + 2 * (4 * height(x, y) - around)


def plates(x, y):
    """1 on the plates of an armour, 0 in the seams between them; rows are shifted like bricks."""
    row = y // 16
    return 0.0 if y % 16 < 2 or (x + 8 * (row % 2)) % 16 < 2 else 1.0


def emblem(x, y):
    distance = math.hypot(x - 31.5, y - 31.5)
    return 1.0 if 14 < distance < 22 or distance < 6 else 0.0


def leaf(x, y):
    """The height of a round bush: 0 outside."""
    rise = 1 - (math.hypot(x - 31.5, y - 31.5) / 28) ** 2
    return math.sqrt(rise) * (0.8 + 0.2 * noise(x, y, 13, 7)) if rise > 0 else 0.0


def stripes(x, y, count, seed):
    return 0.5 + 0.5 * math.sin(2 * math.pi * (count * x / SIDE + 0.6 * noise(x, y, 5, seed)))


def byte(value):
    return min(255, max(0, round(255 * value)))


def grey_tga(value):
    """An uncompressed grey TGA, the bottom row first as most programs write them."""
    rows = (bytes(byte(value(x, y)) for x in range(SIDE)) for y in reversed(range(SIDE)))
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 3, 0, 0, 0, 0, 0, SIDE, SIDE, 8, 0) + b"".join(rows)


def colour_tga(colour):
    """The same with 24 bits; colour(x, y) is red, green, blue in 0...1."""
    rows = (bytes(byte(c) for x in range(SIDE) for c in reversed(colour(x, y))) for y in reversed(range(SIDE)))
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, SIDE, SIDE, 24, 0) + b"".join(rows)


def grey_tif(value):
    """One uncompressed strip of 8-bit grey."""
    texels = bytes(byte(value(x, y)) for y in range(SIDE) for x in range(SIDE))
    short, long = 3, 4
    tags = [
        (256, short, SIDE),
        (257, short, SIDE),
        (258, short, 8),
        (259, short, 1),
        (262, short, 1),
        (273, long, 8),
        (277, short, 1),
        (278, short, SIDE),
        (279, long, len(texels)),
    ]
    entries = b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in tags)
    return (
        struct.pack("<2sHI", b"II", 42, 8 + len(texels))
        + texels
        + struct.pack("<H", len(tags))
        + entries
        + struct.pack("<I", 0)
    )


def normal_of(height, strength):
    def colour(x, y):
        right, down = slope(height, x, y)
        length = math.sqrt((strength * right) ** 2 + (strength * down) ** 2 + 1)
        return (0.5 - 0.5 * strength * right / length, 0.5 + 0.5 * strength * down / length, 0.5 + 0.5 / length)

    return colour


SOURCES = {
    "billboard/bush_billboard_normal.tga": colour_tga(normal_of(leaf, 4)),
    "billboard/bush_billboard_displacement.tga": grey_tga(leaf),
    "curvature/statue_curvature.tga": grey_tga(lambda x, y: curvature(rock, x, y)),
    "curvature/statue_translucency.tga": grey_tga(lambda x, y: 0.3 + 0.6 * noise(x, y, 3, 11)),
    "gloss/shield_gloss.tga": grey_tga(lambda x, y: 0.35 + 0.4 * plates(x, y) + 0.2 * rock(x, y)),
    "gloss/shield_factionmask.tga": grey_tga(emblem),
    "material/armour_smoothness.tga": grey_tga(lambda x, y: 0.2 + 0.6 * plates(x, y) * (0.7 + 0.3 * rock(x, y, 5))),
    "material/armour_metalness.tga": grey_tga(plates),
    "material/armour_factionmask.tga": grey_tga(emblem),
    "masks/banner_mask1.tga": grey_tga(emblem),
    "masks/banner_mask2.tga": grey_tga(lambda x, y: stripes(x, y, 4, 21)),
    "masks/banner_mask3.tga": grey_tga(lambda x, y: rock(x, y, 31)),
    "masks/banner_mask4.tga": grey_tga(lambda x, y: 1 - rock(y, x, 41)),
    "masks/tunic_mask1.tga": grey_tga(lambda x, y: stripes(y, x, 3, 22)),
    "masks/tunic_mask2.tga": grey_tga(lambda x, y: plates(y, x)),
    "colour_masks/cape_colormask.tga": grey_tga(lambda x, y: stripes(x, y, 2, 23)),
    "colour_masks/cape_colormask2.tga": grey_tga(lambda x, y: stripes(y, x, 5, 24)),
    "colour_masks/cape_colormask3.tga": grey_tga(emblem),
    "old/gloss/helmet_gloss.tga": grey_tga(lambda x, y: 0.5 + 0.5 * rock(x, y, 51)),
    "old/gloss/helmet_level.tga": grey_tga(lambda x, y: noise(x, y, 4, 52)),
    "old/gloss/helmet_factionmask.tga": grey_tga(emblem),
    "old/material/sword_smoothness.tga": grey_tga(lambda x, y: 0.4 + 0.5 * rock(x, y, 61)),
    "old/material/sword_metalness.tga": grey_tga(plates),
    "old/material/sword_factionmask.tga": grey_tga(lambda x, y: noise(x, y, 6, 62)),
    "old/colour_masks/horse_colormask.tga": grey_tga(lambda x, y: stripes(x, y, 3, 71)),
    "old/colour_masks/horse_colormask2.tga": grey_tga(lambda x, y: rock(x, y, 72)),
    "old/colour_masks/horse_colormask3.tga": grey_tga(emblem),
    "old/colour_masks/horse_colormask4.tga": grey_tga(lambda x, y: 0.25 + 0.5 * noise(x, y, 5, 73)),
    "old/masks/saddle_mask1.tga": grey_tga(plates),
    "old/masks/saddle_mask2.tga": grey_tga(lambda x, y: rock(x, y, 74)),
    "blend_maps/valley_deposition.tif": grey_tif(lambda x, y: 0.3 + 0.4 * rock(x, y, 81)),
    "blend_maps/valley_wear.tif": grey_tif(lambda x, y: 0.5 + 0.5 * curvature(lambda a, b: rock(a, b, 81), x, y)),
    "blend_maps/valley_flow.tif": grey_tif(lambda x, y: stripes(x, y, 6, 82)),
}


def main():
    raw = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "raw_data"
    for name, contents in SOURCES.items():
        path = raw / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Makes the source images of this example project, from formulas, so that they can be checked in small and explained.

Run it to get the very same files again; edit it to try other images. Only the standard library is needed.
"""
import math
import struct
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent / "raw_data"


def noise(x, y, seed=0):
    """A value in 0...1 that looks random and never changes."""
    n = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535.0


def smooth_noise(x, y, cell, size, seed=0):
    """Noise that varies over `cell` texels and repeats after `size`."""
    fx, fy = x / cell, y / cell
    ix, iy = math.floor(fx), math.floor(fy)
    tx, ty = fx - ix, fy - iy
    tx, ty = tx * tx * (3 - 2 * tx), ty * ty * (3 - 2 * ty)
    wrap = size // cell
    a, b = noise(ix % wrap, iy % wrap, seed), noise((ix + 1) % wrap, iy % wrap, seed)
    c, d = noise(ix % wrap, (iy + 1) % wrap, seed), noise((ix + 1) % wrap, (iy + 1) % wrap, seed)
    return (a * (1 - tx) + b * tx) * (1 - ty) + (c * (1 - tx) + d * tx) * ty


def byte(value):
    return max(0, min(255, int(value + 0.5)))


def write_tga(name, size, texel, alpha=False, run_length=False):
    """A true-colour TGA, bottom row first as most programs write it. `texel(x, y)` gives red, green, blue[, alpha]."""
    path = ROOT / name
    path.parent.mkdir(parents=True, exist_ok=True)
    depth = 32 if alpha else 24
    data = bytearray(struct.pack("<BBBHHBHHHHBB", 0, 0, 10 if run_length else 2, 0, 0, 0, 0, 0, size, size, depth,
                                 8 if alpha else 0))
    for y in reversed(range(size)):
        row = []
        for x in range(size):
            red, green, blue, *rest = (byte(v) for v in texel(x, y))
            row.append(bytes([blue, green, red, *rest]))
        data += encode_runs(row) if run_length else b"".join(row)
    path.write_bytes(data)


def encode_runs(row):
    out = bytearray()
    i = 0
    while i < len(row):
        run = 1
        while i + run < len(row) and run < 128 and row[i + run] == row[i]:
            run += 1
        if run > 1:
            out += bytes([127 + run]) + row[i]
            i += run
            continue
        start = i
        while i < len(row) and i - start < 128 and (i + 1 == len(row) or row[i + 1] != row[i]):
            i += 1
        out += bytes([i - start - 1]) + b"".join(row[start:i])
    return bytes(out)


def write_png(name, size, texel):
    path = ROOT / name
    path.parent.mkdir(parents=True, exist_ok=True)
    rows = b"".join(b"\0" + b"".join(bytes(byte(v) for v in texel(x, y)) for x in range(size)) for y in range(size))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) +
                     chunk(b"IEND", b""))


def brick_height(x, y, size):
    """1 on a brick, 0 in the mortar, rough in between."""
    row = y * 8 // size
    shifted = (x + (size // 8 if row % 2 else 0)) % size
    along, across = shifted % (size // 4), y % (size // 8)
    edge = min(along, size // 4 - 1 - along, across, size // 8 - 1 - across)
    return min(edge / 2.0, 1.0) * (0.75 + 0.25 * smooth_noise(x, y, 4, size, 1))


def brick(x, y, size=128):
    height = brick_height(x, y, size)
    row = y * 8 // size
    column = ((x + (size // 8 if row % 2 else 0)) % size) * 4 // size
    tint = 0.75 + 0.35 * noise(column, row, 5)
    grain = 0.85 + 0.3 * smooth_noise(x, y, 2, size, 2)
    mortar = 120 * grain
    return tuple(mortar * (1 - height) + c * tint * grain * height for c in (178, 82, 60))


def brick_normal(x, y, size=128):
    dx = brick_height((x + 1) % size, y, size) - brick_height((x - 1) % size, y, size)
    dy = brick_height(x, (y + 1) % size, size) - brick_height(x, (y - 1) % size, size)
    length = math.sqrt(dx * dx + dy * dy + 1)
    return 127.5 - 127.5 * dx / length, 127.5 + 127.5 * dy / length, 127.5 + 127.5 / length


def leaves(x, y, size=128):
    """A tuft of broad leaves: green with a vein, opaque inside, nothing outside."""
    for leaf in range(6):
        angle = leaf * 2 * math.pi / 6 + 0.3 * noise(leaf, 0, 7)
        px, py = x - size / 2, y - size / 2
        along = (px * math.cos(angle) + py * math.sin(angle)) / (size * 0.48)
        across = (-px * math.sin(angle) + py * math.cos(angle)) / (size * 0.48)
        if 0.03 < along < 1:
            width = 0.24 * math.sin(math.pi * along ** 1.3)
            if abs(across) < width:
                shade = 0.7 + 0.3 * (1 - abs(across) / width) + 0.2 * smooth_noise(x, y, 4, size, 3)
                return 40 * shade + (50 if abs(across) < 0.008 else 0), 140 * shade, 30 * shade, 255
    return 30, 90, 25, 0


def glass(x, y, size=64):
    streak = 0.5 + 0.5 * math.sin((x + y) * 2 * math.pi / size * 2)
    edge = min(x, y, size - 1 - x, size - 1 - y)
    return 150 + 60 * streak, 200 + 40 * streak, 220, 255 if edge < 3 else 60 + 90 * streak


def badge(x, y, size=64):
    distance = math.hypot(x - size / 2 + 0.5, y - size / 2 + 0.5)
    coverage = max(0.0, min(1.0, size / 2 - 2 - distance))
    ring = 0.6 < distance / (size / 2) < 0.8
    red, green, blue = (230, 180, 40) if ring else (190, 40, 40)
    return red, green, blue, 255 * coverage


def main():
    write_tga("walls/brick.tga", 128, brick)
    write_tga("walls/brick_normal.tga", 128, brick_normal)
    write_tga("plants/tuft.tga", 128, leaves, alpha=True, run_length=True)
    write_tga("windows/glass.tga", 64, glass, alpha=True)
    write_png("ui/badge.png", 64, badge)


if __name__ == "__main__":
    main()

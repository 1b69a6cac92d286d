#!/usr/bin/env python3
"""Makes this project's sources: the icons of a small game's screen, in sizes as they come, each a picture of one colour
with a soft edge.

Usage: make_sources.py [RAW_DATA_FOLDER]        by default the one beside this script
"""

import math
import pathlib
import struct
import sys

RED, GOLD, GREEN, BLUE, WHITE = (200, 50, 40), (230, 180, 50), (70, 160, 70), (60, 100, 190), (240, 240, 235)


def disc(u, v):
    return 0.9 - math.hypot(u, v)


def ring(u, v):
    return 0.2 - abs(math.hypot(u, v) - 0.68)


def box(u, v):
    return 0.85 - max(abs(u), abs(v))


def diamond(u, v):
    return 0.9 - abs(u) - abs(v)


def heart(u, v):
    x, y = 1.25 * u, 0.15 - 1.2 * v
    return x * x * y ** 3 - (x * x + y * y - 1) ** 3


def star(u, v):
    angle = math.atan2(u, -v) % (2 * math.pi / 5) - math.pi / 5
    return 0.5 - math.hypot(u, v) * math.cos(angle) + 0.45 * (abs(angle) - 0.3)


def cross(u, v):
    return max(0.28 - min(abs(u), abs(v)) - max(0, max(abs(u), abs(v)) - 0.85) * 9, -1)


def bar(u, v):
    return min(1 - abs(u), 0.7 - abs(v))


ICONS = {
    "heart": (64, 64, RED, heart),
    "shield": (64, 64, BLUE, diamond),
    "coin": (48, 48, GOLD, ring),
    "star": (48, 40, GOLD, star),
    "health_bar": (128, 16, RED, bar),
    "mana_bar": (128, 16, BLUE, bar),
    "scroll_bar": (16, 100, WHITE, bar),
    "medicine": (32, 32, RED, cross),
    "herb": (32, 32, GREEN, disc),
    "tile": (32, 32, WHITE, box),
    "dot": (16, 16, WHITE, disc),
    "marker": (16, 16, GREEN, diamond),
}


def tga(width, height, colour, shape):
    """32 bits, top row first, with run-length packets of whole rows where a row is of one colour."""
    body = b""
    for y in range(height):
        row = []
        for x in range(width):
            inside = shape((2 * x + 1) / width - 1, (2 * y + 1) / height - 1)
            alpha = min(max(inside * min(width, height) / 2 + 0.5, 0), 1)
            shade = 0.7 + 0.3 * (1 - y / height)
            red, green, blue = (int(value * shade) for value in colour)
            row.append(bytes([blue, green, red, int(alpha * 255 + 0.5)]))
        for start in range(0, width, 128):
            part = row[start:start + 128]
            if len(set(part)) == 1:
                body += bytes([127 + len(part)]) + part[0]
            else:
                body += bytes([len(part) - 1]) + b"".join(part)
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 10, 0, 0, 0, 0, 0, width, height, 32, 0x28) + body


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "raw_data"
    for name, (width, height, colour, shape) in ICONS.items():
        path = folder / "icons" / (name + ".tga")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(tga(width, height, colour, shape))


if __name__ == "__main__":
    main()

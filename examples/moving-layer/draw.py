#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws the pictures of the scene beside it: an evening, a glow and a pinwheel. Needs nothing but Python."""
import math
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from png import write_png

HERE = pathlib.Path(__file__).parent


def mix(a, b, t):
    t = min(max(t, 0), 1)
    return tuple(p + (q - p) * t for p, q in zip(a, b))


def ridge(x, base, waves):
    return base + sum(size * math.sin(x / length + start) for size, length, start in waves)


HILLS = [((0.42, 0.29, 0.44), 400, [(18, 70, 1), (7, 23, 0.3)]), ((0.27, 0.19, 0.35), 450, [(26, 95, 4), (6, 19, 2)]),
         ((0.13, 0.10, 0.22), 515, [(22, 120, 2.2), (4, 15, 1)])]


def evening(x, y):
    """A low sun behind three ridges."""
    colour = mix(mix((0.07, 0.10, 0.30), (0.55, 0.36, 0.55), y / 280), (1.0, 0.66, 0.38), (y - 200) / 220)
    distance = math.hypot(x - 350, y - 345)
    colour = mix(colour, (1.0, 0.86, 0.55), 0.7 * math.exp(-distance / 90))
    colour = mix(colour, (1.0, 0.95, 0.78), 42.5 - distance)
    for hill, base, waves in HILLS:
        top = ridge(x, base, waves)
        colour = mix(colour, mix(hill, (0.05, 0.04, 0.10), (y - top) / 260), y - top + 0.5)
    return colour


def glow(x, y):
    """Light that ends softly at the edge of its picture."""
    far = min(math.hypot(x - 64, y - 64) / 64, 1)
    return (1.0, 0.8 - 0.3 * far, 0.55 - 0.35 * far, (1 - far * far) ** 2)


COLOURS = [(0.93, 0.26, 0.22), (0.98, 0.78, 0.22), (0.16, 0.62, 0.75), (0.96, 0.94, 0.88)]


def blade(x, y):
    r, turn = math.hypot(x - 64, y - 64) / 63, (math.atan2(y - 64, x - 64) / math.tau) % 1
    if r < 0.1:
        return (0.20, 0.16, 0.24, 1)
    at = (turn + 0.16 * r) % 1 * 8
    part = at % 1
    if r > 0.62 + 0.38 * math.sin(math.pi * part) ** 0.7:
        return None
    return mix((0.1, 0.07, 0.15), COLOURS[int(at) % 4], 0.55 + 0.5 * part) + (1,)


def pinwheel(x, y):
    """Eight blades, the mean of sixteen points a pixel."""
    points = [blade(x + i / 4 - 0.375, y + j / 4 - 0.375) for i in range(4) for j in range(4)]
    inside = [p for p in points if p]
    if not inside:
        return (0, 0, 0, 0)
    return tuple(sum(p[c] for p in inside) / len(inside) for c in range(3)) + (len(inside) / 16,)


write_png(HERE / "evening.png", 512, 600, evening)
write_png(HERE / "glow.png", 128, 128, glow)
write_png(HERE / "pinwheel.png", 128, 128, pinwheel)

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws what the examples of effects need: how far off the parts of a portrait are, three masks, a dark ramp."""
import math
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from png import write_png

HERE = pathlib.Path(__file__).parent


def ellipse(x, y, cx, cy, rx, ry, soft):
    """1 inside, 0 outside, over so much of the radius."""
    return min(max((1 - math.hypot((x - cx) / rx, (y - cy) / ry)) / soft, 0), 1)


def depth(x, y):
    """Black is sharp: the head and the shoulders of the portrait."""
    near = max(ellipse(x, y, 262, 150, 118, 165, 0.2), ellipse(x, y, 262, 560, 310, 300, 0.2))
    return (1 - near,) * 3


def covers(amount):
    return (1, 1, 1, amount)


write_png(HERE / "depth.png", 512, 600, depth)
write_png(HERE / "head.png", 512, 600, lambda x, y: covers(ellipse(x, y, 262, 150, 105, 150, 0.02)))
write_png(HERE / "shoulders.png", 512, 600, lambda x, y: covers(ellipse(x, y, 262, 590, 260, 290, 0.02)))
write_png(HERE / "stripes.png", 512, 600, lambda x, y: covers(1 if y % 120 < 30 else 0))
write_png(HERE / "ramp.png", 512, 96, lambda x, y: (0.02 + 0.03 * x / 512,) * 3, bits=16)

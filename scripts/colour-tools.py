#!/usr/bin/env python3
"""Compares `qx convert` with transicc and tificc, and says how far apart they are.

The tools come with the Debian packages liblcms2-utils and libtiff-tools, and are asked for their exact forms. Between the
pairs below are converted:
- 1,000 colours by transicc, in floats, to the digits that it prints;
- TIFF of floats by tificc -c0 -w32, within 1e-6 and what 1e-6 of light makes where a curve is steep;
- TIFF of 8 bits by tificc -c0, equal but where the exact value lies within 0.01 of a half;
- TIFF of 16 bits by tificc -c0: files have 65,535 steps and a world 32,768, so that a result lies between the answers for
  all neighbours of its input, widened by 2 of 65535.
Ends with status 1 where something is farther off.
"""
from __future__ import annotations

import argparse
import itertools
import random
import shutil
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

PAIRS = [
    ("srgb", "display-p3"),
    ("display-p3", "srgb"),
    ("srgb", "rec2020"),
    ("gamma-2.2", "srgb"),
    ("srgb", "linear-rec2020"),
    ("rec709", "rec709-2.4"),
]
STEP = 1e-6


def tiff(path: Path, pixels: list[tuple[float, ...]], kind: str) -> None:
    """One row of RGB, of kind B, H or f."""
    bits, number = {"B": (8, 1), "H": (16, 1), "f": (32, 3)}[kind]
    data = struct.pack(f"<{3 * len(pixels)}{kind}", *(channel for pixel in pixels for channel in pixel))
    entries = [(256, 4, 1, len(pixels)), (257, 4, 1, 1), (258, 3, 3, 0), (259, 3, 1, 1), (262, 3, 1, 2), (273, 4, 1, 0),
               (277, 3, 1, 3), (278, 4, 1, 1), (279, 4, 1, len(data)), (284, 3, 1, 1), (339, 3, 3, 0)]
    behind = 8 + 2 + 12 * len(entries) + 4
    file = struct.pack("<2sHI", b"II", 42, 8) + struct.pack("<H", len(entries))
    for tag, form, count, value in entries:
        value = {258: behind, 339: behind + 6, 273: behind + 12}.get(tag, value)
        file += struct.pack("<HHII", tag, form, count, value)
    path.write_bytes(file + struct.pack("<I", 0) + struct.pack("<3H", *[bits] * 3) + struct.pack("<3H", *[number] * 3) + data)


def channels(path: Path) -> list[float]:
    """The channels of an uncompressed RGB TIFF, alpha left out."""
    file = path.read_bytes()
    order = "<" if file[:2] == b"II" else ">"
    (at,) = struct.unpack_from(order + "I", file, 4)
    (count,) = struct.unpack_from(order + "H", file, at)
    tags: dict[int, list[int]] = {}
    for i in range(count):
        tag, form, number, value = struct.unpack_from(order + "HHII", file, at + 2 + 12 * i)
        size = {3: 2, 4: 4}.get(form)
        if size is None:
            continue
        place = at + 2 + 12 * i + 8 if number * size <= 4 else value
        tags[tag] = list(struct.unpack_from(f"{order}{number}{'H' if size == 2 else 'I'}", file, place))
    data = b"".join(file[a:a + n] for a, n in zip(tags[273], tags[279]))
    kind = {8: "B", 16: "H", 32: "f"}[tags[258][0]]
    samples = tags[277][0]
    values = struct.unpack(f"{order}{len(data) // struct.calcsize(kind)}{kind}", data)
    return [value for i, value in enumerate(values) if i % samples < 3]


class Tools:
    def __init__(self, qx: str, folder: Path) -> None:
        self.qx, self.folder = qx, folder

    def run(self, *words: object, text: str = "") -> str:
        done = subprocess.run([str(word) for word in words], input=text, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise SystemExit(f"{' '.join(map(str, words))}: {done.stderr.strip()}")
        return done.stdout

    def profile(self, name: str) -> Path:
        path = self.folder / f"{name}.icc"
        if not path.exists():
            self.run(self.qx, "profile", name, "-o", path, "-q")
        return path

    def by_qx(self, pair: tuple[str, str], pixels: list[tuple[float, ...]], kind: str) -> list[float]:
        given, made = self.folder / "in.tif", self.folder / "qx.tif"
        tiff(given, pixels, kind)
        self.run(self.qx, "convert", given, "--from", pair[0], "--to", pair[1], "-q", "-o", made)
        return channels_of_any(made, self)

    def by_tificc(self, pair: tuple[str, str], pixels: list[tuple[float, ...]], kind: str) -> list[float]:
        given, made = self.folder / "in.tif", self.folder / "tificc.tif"
        tiff(given, pixels, kind)
        width = {"B": 8, "H": 16, "f": 32}[kind]
        self.run("tificc", "-c0", f"-w{width}", "-t1", "-i", self.profile(pair[0]), "-o", self.profile(pair[1]), given, made)
        return channels(made)

    def by_transicc(self, pair: tuple[str, str], pixels: list[tuple[float, ...]]) -> list[float]:
        lines = "".join(" ".join(f"{255 * channel:.10f}" for channel in pixel) + "\n" for pixel in pixels)
        out = self.run("transicc", "-n", "-c0", "-t1", "-i", self.profile(pair[0]), "-o", self.profile(pair[1]), text=lines)
        numbers = [float(word) for word in out.replace("\n", " ").split() if word.replace(".", "").replace("-", "").isdigit()]
        return [number / 255 for number in numbers]


def channels_of_any(path: Path, tools: Tools) -> list[float]:
    """What QX writes is compressed."""
    plain = path.with_suffix(".plain.tif")
    tools.run("tiffcp", "-c", "none", path, plain)
    return channels(plain)


def neighbour(pixel: tuple[float, ...], by: tuple[int, ...]) -> tuple[float, ...]:
    return tuple(min(65535, max(0, c + d)) / 65535 for c, d in zip(pixel, by))


def farthest(mine: list[float], other: list[float]) -> float:
    if len(mine) != len(other):
        raise SystemExit(f"{len(mine)} and {len(other)} values")
    return max(abs(a - b) for a, b in zip(mine, other))


def main() -> int:
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("qx", help="the command")
    options = arguments.parse_args()
    missing = [tool for tool in ("transicc", "tificc", "tiffcp") if shutil.which(tool) is None]
    if missing:
        raise SystemExit(f"not installed: {', '.join(missing)}")
    rng = random.Random(1)
    reals = [tuple(rng.random() for _ in range(3)) for _ in range(1000)]
    bytes_ = [tuple(rng.randrange(256) for _ in range(3)) for _ in range(20000)]
    words = [tuple(rng.randrange(65536) for _ in range(3)) for _ in range(20000)]
    bad = 0
    with tempfile.TemporaryDirectory() as folder:
        tools = Tools(options.qx, Path(folder))
        for pair in PAIRS:
            mine = tools.by_qx(pair, reals, "f")
            printed = farthest(mine, tools.by_transicc(pair, reals))
            exact = tools.by_tificc(pair, reals, "f")
            off = max(abs(a - b) / max(1, abs(b)) for a, b in zip(mine, exact))
            fine = tools.by_tificc(pair, [tuple(c / 255 for c in pixel) for pixel in bytes_], "f")
            eight = tools.by_qx(pair, bytes_, "B")
            codes = [min(255.0, max(0.0, b * 255)) for b in fine]
            other = [b for a, b in zip(eight, codes) if a != int(b + 0.5)]
            far = sum(1 for b in other if abs(b % 1 - 0.5) > 0.01)
            deep = tools.by_qx(pair, words, "H")
            ends = [tools.by_tificc(pair, [neighbour(pixel, by) for pixel in words], "f")
                    for by in itertools.product((-1, 1), repeat=3)]
            limits = [[min(65535.0, max(0.0, value * 65535)) for value in end] for end in ends]
            outside = sum(1 for a, *others in zip(deep, *limits) if not min(others) - 2 <= a <= max(others) + 2)
            print(f"{pair[0]:>12} to {pair[1]:<15} transicc {printed:.1e}  tificc floats {off:.1e}  "
                  f"8 bits {len(other) - far} near a half, {far} others  16 bits {outside} outside")
            bad += far + outside + (printed > 1e-4) + (off > 1e-4)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Lets every single allocation of some command lines of qx fail, one a run, and each start of a thread.

A run must end with status 1, one line on standard error that tells of memory and no file that is not whole, or with
status 0 and the very files of a run without failure. What crashes in a foreign library is counted apart. BUILD is a
folder with bin/qx and lib/libqx_fail_allocation.so, the library that lets an allocation fail and reports where. Ends
with status 1 when a run of qx itself is at fault.
"""
from __future__ import annotations

import argparse
import functools
import itertools
import re
import struct
import subprocess
import sys
import tempfile
import zlib
from collections import Counter, defaultdict
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

SECONDS = 20  # of one run; what takes longer hangs
BATCH = 16  # runs that are begun before the end is looked for

SCENE = """{"size": [24, 90], "rate": 24, "frames": [1, 2], "background": "opaque.png", "layers": [
  {"file": "p16.tif", "mode": "screen", "linear": 2.2, "opacity": 0.9},
  {"file": "p8.png", "mask": {"file": "p8.jpg", "kind": "luma"}, "shutter": {"angle": 180, "phase": -90, "matrices": 5},
   "effects": [{"effect": "blur", "radius": {"keys": [{"frame": 1, "value": 1}, {"frame": 2, "value": 3}]}},
    {"effect": "matte", "masks": [{"file": "p8.png", "kind": "luma", "feather": 4}]}, {"effect": "adjust", "hue": 40}],
   "transform": {"anchor": [12, 8], "rotate": 20,
    "translate": {"keys": [{"frame": 1, "value": [3, 4]}, {"frame": 2, "value": [12, 8]}]}}}]}"""

GROUP = """{"size": [24, 30], "frames": [1, 2], "layers": [
  {"name": "sky", "gradient": {"from": [0, 0], "to": [0, 30], "stops": [{"at": 0, "colour": [0, 0, 1]}, {"at": 1,
   "colour": [1, 0, 0]}]}},
  {"name": "pair", "opacity": 0.5, "layers": [{"solid": [1, 0, 0], "size": [9, 9]}, {"file": "p8.png", "at": [3, 3]}],
   "matte-layer": {"layer": "sky", "kind": "luma"}},
  {"text": "QX", "size": 12, "transform": {"translate": [4, 20]}}]}"""

# Pictures that the command lines read, made by the command itself from two.
INPUTS = [
    "comp opaque.png p8.png -o p8.jpg",
    "comp p8.png p8.png --at 3,2 -o p8.tif",
    "comp p8.png p8.png --at 3,2 --depth 16 -o p16.png",
    "comp p8.png p8.png --at 3,2 --depth 16 -o p16.tif",
    "comp p8.png p8.png --at 3,2 --depth 32 -o float.tif",
    "comp p8.png p8.png --at 3,2 --depth 32 -o float.exr",
    "comp p8.png p8.png --at 3,2 --depth 32 --half -o half.exr",
    "comp p8.png p8.png -o clip.1.png",
    "comp p8.png p8.png --at 1,1 -o clip.2.png",
]

KERNEL = "0 -1 0\n-1 5 -1\n0 -1 0\n"

# OUT/ is the folder of a run.
LINES = [
    "comp p8.png p8.png -j 1 -o OUT/png8.png",
    "comp p16.png p8.png --at 5,-3 --mode screen -j 2 -o OUT/png16.png",
    "comp p8.jpg p8.jpg --opacity 0.5 -j 2 -o OUT/jpg.jpg",
    "comp p8.tif p8.tif --mode multiply -j 2 -o OUT/tif8.tif",
    "comp p16.tif p16.tif --linear 2.2 -j 2 -o OUT/tif16.tif",
    "comp float.tif float.tif --mode add -j 2 -o OUT/float.tif",
    "comp float.exr float.exr --mode hue -j 2 -o OUT/float.exr",
    "comp half.exr half.exr --half -j 2 -o OUT/half.exr",
    "comp float.exr p16.tif --mask p8.png --mask-kind luma -j 2 -o OUT/masked.png",
    "comp p8.jpg float.tif --scale 0.4 --rotate 30 --at 4,4 --quality bicubic -j 2 -o OUT/placed.exr",
    "blur p8.png --radius 3 -j 2 -o OUT/gaussian.png",
    "blur float.tif --kind box --passes 3 --grow -j 2 -o OUT/box.tif",
    "blur p16.png --kind mean --map p8.jpg -j 2 -o OUT/mean.png",
    "blur p8.png --kind disc --radius 4 --gain 2 -j 2 -o OUT/disc.png",
    "convolve p8.png --kernel kernel.txt --normalise -j 2 -o OUT/convolved.png",
    "matte p8.png --feather 5 opaque.png --kind hue --op subtract --apply p16.png -j 2 -o OUT/cut.png",
    "adjust p8.png --hue 40 --chroma 0.5 -j 2 -o OUT/adjusted.png",
    "blend p8.png opaque.png --ratio 0.25 -j 2 -o OUT/between.png",
    "convert p16.png --depth 8 --dither --premultiply -j 2 -o OUT/dithered.png",
    "convert p16.png --from srgb --to display-p3 --depth 8 -j 2 -o OUT/p3.png",
    "convert p8.png --from rec709 --to linear-rec2020 -j 2 -o OUT/light.exr",
    "profile linear-display-p3 -o OUT/p3.icc",
    "comp opaque.png p8.png --effect shadow:offset=3,-2 --effect tint -j 2 -o OUT/effect.png",
    "comp opaque.png p16.tif --effect blur:radius=2 --effect shadow --depth 32 -j 2 -o OUT/effect.exr",
    "comp opaque.png p16.tif --profile display-p3 --space srgb --linear profile -j 2 -o OUT/space.png",
    "render scene.json --space background --linearize --to display-p3 --depth 32 -j 2 -o OUT/#.tif",
    "guess-alpha p8.png -j 2 -o OUT/repaired.png",
    "convert light.hdr --resize 12x -j 2 -o OUT/light.exr",
    "convert plain.bmp -j 2 -o OUT/plain.png",
    "convert half.exr:R -j 2 -o OUT/red.png",
    "convert turned.jpg --channels bgra --depth 16 -j 2 -o OUT/turned.png",
    "convert p8.png --flatten 1,0,0.5 --jpeg-quality 60 -j 2 -o OUT/flat.jpg",
    "sheet p8.png plain.bmp --label -j 2 -o OUT/sheet.png",
    "retime clip.#.png --in 1-2 --speed 0.5 --no-cache -j 2 -o OUT/#.png",
    "retime clip.#.png --in 1-2 --speed 0.2 --no-cache --shard 2/2 --resume --stats -j 2 -o OUT/#.tif",
    "flow clip.1.png clip.2.png -j 2 -o OUT/field.flo",
    "render scene.json -j 2 -o OUT/#.png",
    "render scene.json -j 2 --depth 16 -o OUT/#.tif",
    "render scene.json -j 2 --depth 32 -o OUT/#.exr",
    "render scene.json -j 2 -o OUT/#.jpg",
    "render group.json --resume -j 2 -o OUT/#.png",
]


def profile() -> bytes:
    """A small RGB profile, complete enough for the libraries that look at it; libpng refuses a very short one."""
    size = 516
    head = struct.pack(">I4xB3x4s4s4s12x4s28x3I", size, 4, b"mntr", b"RGB ", b"XYZ ", b"acsp", 0xF6D6, 0x10000, 0xD32D)
    return head.ljust(132, b"\0") + bytes(i * i * 73 >> 4 & 255 for i in range(132, size))


def png(has_alpha: bool) -> bytes:
    """A picture of 24 times 90 pixels, which are several blocks of OpenEXR, with a profile and a resolution."""
    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    width, height, channels = 24, 90, 4 if has_alpha else 3
    rows = [bytes((y + i) * i // 7 & 255 for i in range(4 * width) if i % 4 < channels) for y in range(height)]
    return b"\x89PNG\r\n\x1a\n" + b"".join([
        chunk(b"IHDR", struct.pack(">2I5B", width, height, 8, 6 if has_alpha else 2, 0, 0, 0)),
        chunk(b"iCCP", b"profile\0\0" + zlib.compress(profile())),
        chunk(b"pHYs", struct.pack(">2IB", 3000, 3000, 1)),
        chunk(b"IDAT", zlib.compress(b"".join(b"\0" + row for row in rows))),
        chunk(b"IEND", b""),
    ])


def bmp() -> bytes:
    """24 times 7 pixels of 24 bits."""
    pixels = bytes(i * 7 & 255 for i in range(24 * 3 * 7))
    return b"BM" + struct.pack("<IIIIiiHHIIiiII", 54 + len(pixels), 0, 54, 40, 24, 7, 1, 24, 0, 0, 2835, 2835, 0, 0) + pixels


def hdr() -> bytes:
    """24 times 9 pixels of light."""
    pixels = bytes(v for i in range(24 * 9) for v in (i + 30, 200 - i & 255, 40, 126 + i % 5))
    return b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 9 +X 24\n" + pixels


def turned(jpeg: bytes) -> bytes:
    """The same, to be seen a quarter turn on."""
    exif = b"Exif\0\0MM\0*" + struct.pack(">IHHHIHHI", 8, 1, 0x112, 3, 1, 6, 0, 0)
    return jpeg[:2] + b"\xff\xe1" + struct.pack(">H", len(exif) + 2) + exif + jpeg[2:]


class Outcome(NamedTuple):
    """What a run of the command left."""
    status: int | None  # of exit, or minus the number of the signal that ended it; None: ended by the limit of time
    said: str  # on standard error
    report: str  # of the failure that happened; empty when none did
    files: dict[str, bytes]  # in its output folder


class Room(NamedTuple):
    """Where command lines run: a build, and a folder of input pictures. Any number of runs at once."""
    build: Path
    inputs: Path

    def run(self, line: str, failure: dict[str, str]) -> Outcome:
        with tempfile.TemporaryDirectory(dir=self.inputs.parent) as folder:
            out, report = Path(folder, "out"), Path(folder, "report")
            out.mkdir()
            words = [self.build / "bin/qx", *line.replace("OUT/", f"{out}/").split(), "-q"]
            environment = {"LD_PRELOAD": str(self.build / "lib/libqx_fail_allocation.so"), "QX_FAIL_REPORT": str(report)}
            try:
                done = subprocess.run(words, cwd=self.inputs, env=environment | failure, timeout=SECONDS,
                                      capture_output=True, text=True, errors="replace")
                status, said = done.returncode, re.sub(r"^Fontconfig .*\n", "", done.stderr, flags=re.MULTILINE)
            except subprocess.TimeoutExpired:
                status, said = None, ""
            return Outcome(status, said, report.read_text() if report.exists() else "",
                           {path.name: path.read_bytes() for path in out.iterdir()})


# Modules whose frames tell nothing of the fault: they raise what others have caused.
MEANS = ("libqx_fail", "libc.so", "libstdc++", "libgcc_s", "ld-linux")
OURS = ("qx(", "libQX", "libqxmovie", "libqxtext")


def all_frames(report: str, headline: str) -> list[str]:
    lines = report.partition(headline)[2].partition("\n=")[0].splitlines()[1:]
    return [re.sub(r"^[^(]*/|\[.*", "", line) for line in lines]


def stack(report: str, headline: str) -> list[str]:
    """The frames of a stack that tell something, from the innermost on."""
    return [frame for frame in all_frames(report, headline) if not frame.startswith(MEANS)]


def is_loading(report: str) -> bool:
    """Whether memory failed the loader, or what libraries do as they are loaded: some end the process then."""
    return any(frame.startswith("ld-linux") for frame in all_frames(report, "= failed"))


@functools.cache
def named(frame: str) -> str:
    """library(function), or with the place in the library where the function has no name for others."""
    function = re.search(r"\((\w+)", frame)
    if not function:
        return frame
    demangled = subprocess.run(["c++filt", "-p", function[1]], capture_output=True, text=True).stdout.strip()
    return f"{frame[:function.start(1)]}{demangled})"


def place(frames: list[str]) -> str:
    return " < ".join(named(frame) for frame in frames[:3])


def judge(outcome: Outcome, clean: Outcome) -> tuple[str, str]:
    """The verdict, and of the last two what happened and where: untouched (nothing failed: the run is over), ok (the
    very files of a run without failure), refused (one line that says why, nothing that is not whole), foreign, OURS."""
    if outcome._replace(report="") == clean:
        return ("ok" if outcome.report else "untouched"), ""
    # A run of several files leaves those that were whole before the failure: all, where it comes in what is told of them.
    lacks = outcome.files.items() < clean.files.items() or 1 < len(clean.files) and outcome.files == clean.files
    if outcome.status == 1 and lacks and re.fullmatch(r"qx: .*memory.*\n", outcome.said):  # not that a file is damaged
        return "refused", ""

    happened = ["hangs" if outcome.status is None else f"status {outcome.status}"]
    happened += [f"{name} is wrong" if name in clean.files else f"leaves {name[:4]}"
                 for name, data in sorted(outcome.files.items()) if clean.files.get(name) != data]
    happened += [f"says {line}" for line in outcome.said.splitlines()[:1]]
    if outcome.report.startswith("= failed before main"):
        return "foreign", "before main"
    if is_loading(outcome.report):
        return "foreign", "while libraries are loaded"
    reason, crash = ", ".join(happened) + ": ", stack(outcome.report, "= crashed")
    if crash and outcome.status is not None and not crash[0].startswith(OURS):
        return "foreign", reason + place(crash)
    crashed = f"{place(crash)}, after a failure in " if crash else ""
    return "OURS", reason + crashed + place(stack(outcome.report, "= failed"))


def judged_runs(room: Room, line: str) -> Iterator[tuple[str, str, str]]:
    """Every failure in one command line: the verdict, the reason, and the run."""
    clean = room.run(line, {})
    if clean.status != 0 or not clean.files:
        yield "OURS", f"fails without failure: {clean.said}", f"qx {line}"
        return

    def judged(variable: str, number: int) -> tuple[str, str, str]:
        return (*judge(room.run(line, {variable: str(number)}), clean), f"{variable}={number} qx {line}")

    with ThreadPoolExecutor(2) as workers:
        for variable in ("QX_FAIL_ALLOCATION", "QX_FAIL_THREAD"):
            for first in itertools.count(1, BATCH):
                batch = list(workers.map(functools.partial(judged, variable), range(first, first + BATCH)))
                touched = [run for run in batch if run[0] != "untouched"]
                yield from touched
                if len(touched) < BATCH:
                    break


def tell(counts: Counter[str], name: str) -> None:
    numbers = counts.total(), *(counts[verdict] for verdict in ("ok", "refused", "foreign", "OURS"))
    print("{:6} {:6} {:8} {:8} {:5}  {}".format(*numbers, name), flush=True)


def make_inputs(room: Room) -> None:
    room.inputs.mkdir()
    (room.inputs / "p8.png").write_bytes(png(has_alpha=True))
    (room.inputs / "opaque.png").write_bytes(png(has_alpha=False))
    (room.inputs / "scene.json").write_text(SCENE)
    (room.inputs / "group.json").write_text(GROUP)
    (room.inputs / "kernel.txt").write_text(KERNEL)
    (room.inputs / "plain.bmp").write_bytes(bmp())
    (room.inputs / "light.hdr").write_bytes(hdr())
    for line in INPUTS:
        made = room.run(line, {})
        if made.status != 0:
            sys.exit(f"{line}: {made.said}")
    (room.inputs / "turned.jpg").write_bytes(turned((room.inputs / "p8.jpg").read_bytes()))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path, metavar="BUILD", help="folder of a built state, such as build/release")
    parser.add_argument("word", nargs="?", default="", metavar="WORD", help="only command lines that hold this text")
    arguments = parser.parse_args()
    total: Counter[str] = Counter()
    faults: defaultdict[str, list[str]] = defaultdict(list)
    with tempfile.TemporaryDirectory(prefix="qx_failures_") as folder:
        room = Room(arguments.build.resolve(), Path(folder, "in"))
        make_inputs(room)
        print("  runs     ok  refused  foreign  OURS")
        for line in (line for line in LINES if arguments.word in line):
            counts: Counter[str] = Counter()
            for verdict, reason, run in judged_runs(room, line):
                counts[verdict] += 1
                if reason:
                    faults[f"{verdict}: {reason}"].append(run)
            tell(counts, line)
            total += counts
    tell(total, "all")
    for reason, runs in sorted(faults.items()):
        print(f"{len(runs)} runs, such as {runs[0]}: {reason}")
    return 1 if total["OURS"] else 0


if __name__ == "__main__":
    sys.exit(main())

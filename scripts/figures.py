#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures what README says: the command beside the tools that a Debian user has, as Markdown.

usage: figures.py QX   (the command; peers that are not installed are left out)

Each line of the table is one job, done by each program from the same files to the same kind of file; the least of some
runs counts, in wall-clock time, and the most memory that its process had.
"""
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "examples"))
from png import write_png  # noqa: E402

RUNS = 5
STARTS = 40
FRAMES = 60


def picture(qx, path, width, height, alpha, seed):
    """Soft noise, so that no program has it easy, brought to its size by the command."""
    rng = random.Random(seed)
    small = pathlib.Path(path + ".small.png")
    edge = lambda x: min(1, x / 100)
    write_png(small, 160, 90, lambda x, _: tuple(rng.random() for _ in range(3)) + ((edge(x),) if alpha else ()))
    subprocess.run([qx, "convert", str(small), "--resize", f"{width}x{height}!", "-q", "-o", path], check=True)


def start(command):
    return subprocess.Popen(command, shell=isinstance(command, str), stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)


def run(command):
    """Seconds and processor seconds of a command."""
    begin = time.monotonic()
    process = start(command)
    _, status, used = os.wait4(process.pid, 0)
    if status != 0:
        raise SystemExit(f"{command}: failed")
    return time.monotonic() - begin, used.ru_utime + used.ru_stime


def memory(command):
    """Most megabytes of a command, of its one process: what the system counts begins with those of this program."""
    process = start(command)
    most = 0
    while process.poll() is None:
        try:
            with open(f"/proc/{process.pid}/status") as status:
                lines = dict(line.split(":", 1) for line in status)
            if lines["Name"].strip() not in ("python3", "sh"):
                most = max(most, int(lines.get("VmHWM", "0 kB").split()[0]))
        except (OSError, KeyError):
            pass
        time.sleep(0.0005)
    return most / 1024


def least(command, runs=RUNS):
    results = [run(command) for _ in range(runs)]
    return min(r[0] for r in results), min(r[1] for r in results)


def jobs(qx, folder):
    """(what, {program: command}), with None for a program that cannot do it in one run."""
    at = lambda name: os.path.join(folder, name)
    scene = at("scene.json")
    with open(scene, "w") as file:
        file.write('{"size": [1280, 720], "rate": 24, "frames": [1, %d], "background": "wide.png", "layers": [{"file": '
                   '"layer.png", "transform": {"translate": {"keys": [{"frame": 1, "value": [0, 0]}, {"frame": %d, '
                   '"value": [640, 240]}]}}}]}' % (FRAMES, FRAMES))
    loop = " && ".join(f"magick_or_convert {at('wide.png')} {at('layer.png')} -geometry +{i * 10}+{i * 4} -composite "
                       f"{at(f'm{i}.png')}" for i in range(FRAMES))
    magick = shutil.which("magick") or "convert"
    return [
        ("start-up (`--version`)",
         {"qx": [qx, "--version"], "convert": ["convert", "-version"], "ffmpeg": ["ffmpeg", "-version"],
          "gm": ["gm", "version"]}),
        ("over, 640 x 480 onto 640 x 480, PNG",
         {"qx": [qx, "comp", at("a.png"), at("b.png"), "-o", at("o.png")],
          "convert": ["convert", at("a.png"), at("b.png"), "-composite", at("o.png")],
          "ffmpeg": ["ffmpeg", "-y", "-i", at("a.png"), "-i", at("b.png"), "-filter_complex", "overlay=format=rgb",
                     at("o.png")],
          "gm": ["gm", "composite", at("b.png"), at("a.png"), at("o.png")]}),
        ("over, 3840 x 2160 onto 3840 x 2160, PNG",
         {"qx": [qx, "comp", at("A.png"), at("B.png"), "-o", at("o.png")],
          "convert": ["convert", at("A.png"), at("B.png"), "-composite", at("o.png")],
          "ffmpeg": ["ffmpeg", "-y", "-i", at("A.png"), "-i", at("B.png"), "-filter_complex", "overlay=format=rgb",
                     at("o.png")],
          "gm": ["gm", "composite", at("B.png"), at("A.png"), at("o.png")]}),
        (f"{FRAMES} frames of a moving layer, 1280 x 720, PNG",
         {"qx": [qx, "render", scene, "-o", at("f.####.png")],
          "convert": loop.replace("magick_or_convert", magick),
          "ffmpeg": f"ffmpeg -y -loop 1 -framerate 24 -i {at('wide.png')} -loop 1 -i {at('layer.png')} -filter_complex "
                    f"'overlay=x=n*10:y=n*4:format=rgb' -frames:v {FRAMES} {at('g.%04d.png')}",
          "gm": None}),
    ]


def cell(what, command):
    """Of one program: its time, and but for start-up its memory where it is one process."""
    if command is None:
        return ""
    if "start-up" in what:
        return f"{least(command, STARTS)[1] * 1000:.0f} ms of processor"
    seconds = f"{least(command, 2 if 'frames' in what else RUNS)[0]:.2f} s"
    return seconds if isinstance(command, str) else f"{seconds}, {memory(command):.0f} MB"


def main():
    qx = os.path.abspath(sys.argv[1])
    programs = ["qx"] + [p for p in ("convert", "gm", "ffmpeg") if shutil.which(p)]
    print("| job | " + " | ".join(f"`{p}`" for p in programs) + " |\n|---|" + "---|" * len(programs))
    with tempfile.TemporaryDirectory() as folder:
        for name, width, height, alpha in (("a.png", 640, 480, False), ("b.png", 640, 480, True),
                                           ("A.png", 3840, 2160, False), ("B.png", 3840, 2160, True),
                                           ("wide.png", 1280, 720, False), ("layer.png", 640, 480, True)):
            picture(qx, os.path.join(folder, name), width, height, alpha, len(name) + width)
        for what, commands in jobs(qx, folder):
            cells = [cell(what, commands.get(program)) for program in programs]
            print(f"| {what} | " + " | ".join(cells) + " |", flush=True)
    print(f"\n{os.cpu_count()} processors; least of some runs; each program with its own settings of PNG. `convert` is "
          "ImageMagick's, `gm` GraphicsMagick's.")


main()

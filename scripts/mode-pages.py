#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes a page a mode into docs/modes, with a swatch, from the list that the command tells.

usage: mode-pages.py QX FOLDER   (`make mode-pages` writes docs/modes)

A swatch shows an opaque layer on an opaque background: the layer rises from black to white to the right, the background to
the top; stripes of both have colours.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "examples"))
from png import write_png  # noqa: E402

SIDE = 128


def layer(x, y):
    v = x / SIDE
    return (v, v, v) if y % 32 < 16 else (v, 0.5, 1 - v)


def background(x, y):
    v = 1 - y / SIDE
    return (v, v, v) if x % 32 < 16 else (1 - v, v, 0.6)


def page(mode):
    name, words = mode["name"], mode["words"]
    lines = [f"# {name}", "", f"Mode {mode['number']}: {words}.", "", f"![{name}]({name}.png)", ""]
    if "formula" in mode:
        lines += ["An opaque layer of colour `s` on an opaque background of colour `d`, both from 0 to 1, gives", "",
                  f"    {mode['formula']}", ""]
    else:
        kinds = {"colour": "It looks at the three colours of a pixel together.",
                 "alpha": "It changes the alpha of what is below; colours stay.",
                 "placing": "It tells how the layer covers what is below.", "channel": ""}
        lines += [kinds[mode["kind"]], ""]
    names = ", ".join(f"`{alias}`" for alias in mode["aliases"]) or "none"
    lines += [f"Other names: {names}.", "", "```sh", f"qx comp background.png layer.png --mode {name} -o out.png", "```",
              "", "[All modes](README.md)", ""]
    return "\n".join(lines)


def index(modes):
    lines = ["# The 43 modes", "", "| number | name | | other names |", "|---|---|---|---|"]
    for mode in modes:
        names = ", ".join(mode["aliases"])
        lines.append(f"| {mode['number']} | [{mode['name']}]({mode['name']}.md) | {mode['words']} | {names} |")
    lines += ["", "Swatches: the layer rises from black to white to the right, the background to the top; stripes of both "
              "have colours.", "These pages are made by `make mode-pages` from the list of the command, `qx modes --list`.", ""]
    return "\n".join(lines)


def main():
    qx, folder = os.path.abspath(sys.argv[1]), sys.argv[2]
    os.makedirs(folder, exist_ok=True)
    modes = json.loads(subprocess.run([qx, "modes", "--list", "--json"], check=True, capture_output=True).stdout)
    with tempfile.TemporaryDirectory() as work:
        below, above, mask = (pathlib.Path(work, name) for name in ("d.png", "s.png", "m.png"))
        write_png(below, SIDE, SIDE, background)
        write_png(above, SIDE, SIDE, layer)
        write_png(mask, SIDE, SIDE, lambda x, _: (1, 1, 1, x / SIDE))
        for mode in modes:
            swatch = os.path.join(folder, mode["name"] + ".png")
            more = ["--mask", mask] if mode["name"] == "mask-crossfade" else []
            subprocess.run([qx, "comp", below, above, "--mode", mode["name"], *more, "-q", "-o", swatch], check=True)
            with open(os.path.join(folder, mode["name"] + ".md"), "w") as file:
                file.write(page(mode))
    with open(os.path.join(folder, "README.md"), "w") as file:
        file.write(index(modes))


main()

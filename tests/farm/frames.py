# SPDX-License-Identifier: Apache-2.0
"""The example that the tests of farms render, and whether its frames are those of a plain run."""
import pathlib
import shutil
import subprocess

SOURCES = pathlib.Path(__file__).resolve().parents[2]
SCENE = SOURCES / "examples" / "moving-layer" / "scene.json"
COUNT = 36
PATTERN = "f.##.png"


def new_folders(qx, folder):
    """A folder with the frames of a plain run, and one for those of a farm."""
    shutil.rmtree(folder, ignore_errors=True)
    plain, shared = folder / "plain", folder / "shared"
    for one in (plain, shared):
        one.mkdir(parents=True)
    subprocess.run([qx, "render", SCENE, "-q", "-o", plain / PATTERN], check=True)
    return plain, shared


def hashes(qx, folder):
    return subprocess.run([qx, "hash", *sorted(path.name for path in folder.glob("*.png"))], cwd=folder, check=True,
                          stdout=subprocess.PIPE, text=True).stdout


def check_same(qx, plain, shared):
    """Ends the program where files or values of the two folders differ."""
    names = [sorted(path.name for path in folder.iterdir()) for folder in (plain, shared)]
    if names[0] != names[1]:
        raise SystemExit(f"files {names[1]} in place of {names[0]}")
    if hashes(qx, plain) != hashes(qx, shared):
        raise SystemExit("values differ from a plain run")

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shares of the example as tasks of Dask on this machine, one worker killed midway: the frames are those of a plain run.

usage: dask_workers.py QX FOLDER   (`make test-farm`, which installs python3-distributed)
"""
import os
import pathlib
import signal
import subprocess
import sys
import time

from frames import PATTERN, SCENE, SOURCES, check_same, new_folders

PATIENCE = 120  # seconds


def worker_at_work(out):
    """The process that runs a render into this folder: the parent of one."""
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            words = (process / "cmdline").read_bytes().split(b"\0")
            if b"render" in words and os.fsencode(out) in words:
                return int((process / "stat").read_text().rsplit(")", 1)[1].split()[1])
        except OSError:
            pass  # it has ended
    return None


def main():
    qx, folder = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()
    plain, shared = new_folders(qx, folder)
    out = shared / PATTERN
    with subprocess.Popen([sys.executable, SOURCES / "scripts" / "farm" / "dask_render.py", "4", SCENE, out],
                          env={**os.environ, "QX": qx}, cwd=folder, stderr=subprocess.DEVNULL) as farm:
        end = time.monotonic() + PATIENCE
        while not any(shared.glob("f.*.png")) or (worker := worker_at_work(out)) is None:
            if farm.poll() is not None or time.monotonic() > end:
                raise SystemExit("dask_workers: no worker was seen at work")
            time.sleep(0.005)
        os.kill(worker, signal.SIGKILL)
        print(f"killed worker {worker} with {len(list(shared.glob('f.*.png')))} frames there", flush=True)
        if farm.wait(PATIENCE) != 0:
            raise SystemExit("dask_workers: the shares failed")
    check_same(qx, plain, shared)
    print("all frames are equal to a plain run")


main()

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A scene in shares as tasks of Dask, on a cluster or on this machine.

usage: dask_render.py N SCENE.json OUT.####.EXT [tcp://SCHEDULER:8786]

QX names the command. On a cluster, folders must be shared by the workers. A share that is lost with its worker is made again by
another, and keeps the frames that are there.
"""
import os
import subprocess
import sys

from dask.distributed import Client, as_completed


def render(share, shares, scene, out):
    done = subprocess.run([os.environ.get("QX", "qx"), "render", scene, "-o", out, "--shard", f"{share}/{shares}",
                           "--resume", "-q"], capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(done.stderr.strip())
    return share


def main():
    shares, scene, out = int(sys.argv[1]), os.path.abspath(sys.argv[2]), os.path.abspath(sys.argv[3])
    with Client(sys.argv[4] if len(sys.argv) > 4 else None) as client:
        tasks = [client.submit(render, share, shares, scene, out, retries=3, pure=False)
                 for share in range(1, shares + 1)]
        for task in as_completed(tasks):
            print(f"share {task.result()} of {shares} is done", flush=True)


if __name__ == "__main__":
    main()

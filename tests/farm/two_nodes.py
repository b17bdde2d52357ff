#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Two nodes of Slurm on this machine, one of them killed midway: the frames are those of a plain run, bit for bit.

usage: two_nodes.py QX FOLDER   (`make test-farm`, which installs slurm-wlm and munge)

Everything is private: munge and Slurm run as the user who called, with their sockets, keys and states in FOLDER, and listen on
the loopback alone. The example is submitted as an array of two tasks, one for each node. Once the second node has
made some frames, all of its processes are killed; the array is submitted again and what the dead node left is taken over.
"""
import getpass
import os
import pathlib
import signal
import socket
import subprocess
import sys
import time

from frames import COUNT, PATTERN, SCENE, SOURCES, check_same, new_folders

SCRIPT = SOURCES / "scripts" / "farm" / "slurm.sh"
NODES = ("qx1", "qx2")
PATIENCE = 120  # seconds that each step may take

CONFIGURATION = """
ClusterName=qx
SlurmctldHost={host}({address})
SlurmctldPort={ports[0]}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket
CommunicationParameters=NoInAddrAny,NoCtldInAddrAny
MpiDefault=none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_min_interval=0
KillWait=1
MessageTimeout=5
ReturnToService=0
SlurmctldTimeout=30
SlurmdTimeout=8
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool.%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.%n.pid
NodeName=qx1 NodeHostname={host} NodeAddr={address} Port={ports[1]} CPUs=1
NodeName=qx2 NodeHostname={host} NodeAddr={address} Port={ports[2]} CPUs=1
PartitionName=farm Nodes=qx1,qx2 Default=YES State=UP MaxTime=10
"""


def loopback():
    """The address that Slurm's daemons bind to, which is what the name of the machine says: of the loopback, or nothing runs."""
    address = socket.gethostbyname(socket.gethostname())
    if not address.startswith("127."):
        raise SystemExit(f"two_nodes: {socket.gethostname()} is {address}; give the name a loopback address in /etc/hosts")
    return address


def free_ports(address, count):
    """Numbers of ports that nobody listens on: all held open together, so that they differ."""
    held = [socket.create_server((address, 0)) for _ in range(count)]
    ports = [one.getsockname()[1] for one in held]
    for one in held:
        one.close()
    return ports


def wait_until(what, there):
    end = time.monotonic() + PATIENCE
    while not there():
        if time.monotonic() > end:
            raise SystemExit(f"two_nodes: {what}: not within {PATIENCE} s")
        time.sleep(0.02)


class Farm:
    """Authentication, controller and nodes, as long as the `with` of them lasts."""

    def __init__(self, folder):
        self.folder = folder
        self.daemons = {}
        self.environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf")}

    def start(self, name, *command):
        with open(self.folder / f"{name}.log", "ab") as log:
            self.daemons[name] = subprocess.Popen(command, env={**self.environment, "QX_TEST_NODE": name}, stdout=log, stderr=log)

    def __enter__(self):
        for name in ("munge", "state", *(f"spool.{node}" for node in NODES)):
            (self.folder / name).mkdir(mode=0o711)
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname().split(".")[0], user=getpass.getuser(), folder=self.folder, address=loopback(),
            ports=free_ports(loopback(), 3)))
        key = self.folder / "munge" / "key"
        key.touch(0o600)
        key.write_bytes(os.urandom(128))
        at = lambda what: f"{self.folder}/munge/{what}"
        self.start("munged", "munged", "--foreground", f"--key-file={key}", f"--socket={at('socket')}",
                   f"--pid-file={at('pid')}", f"--log-file={at('log')}", f"--seed-file={at('seed')}")
        wait_until("munge", lambda: (self.folder / "munge" / "socket").exists())
        self.start("slurmctld", "slurmctld", "-D", "-i")
        for node in NODES:
            self.start(node, "slurmd", "-D", "-N", node)
        wait_until("nodes", lambda: self.tell("sinfo", "-h", "-o", "%t %D").split() == ["idle", "2"])
        return self

    def __exit__(self, *_):
        for node in NODES:
            self.kill(node)
        for daemon in self.daemons.values():
            daemon.terminate()
            daemon.wait()

    def tell(self, *command):
        """What a command of Slurm prints; nothing while the controller is not there yet."""
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout

    def submit(self, qx, out, *options):
        """The number of the array that renders the scene."""
        command = ["sbatch", "--parsable", "--array=1-2", "--cpus-per-task=1", f"--output={self.folder}/task-%A_%a.log", *options,
                   str(SCRIPT), str(SCENE), str(out)]
        return subprocess.run(command, env={**self.environment, "QX": qx}, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()

    def cancel(self, job):
        subprocess.run(["scancel", job], env=self.environment, check=True)

    def states(self, job):
        """{task: state} of an array that the controller still knows."""
        return dict(line.split() for line in self.tell("squeue", "-h", "-r", "-t", "all", "-j", job, "-o", "%K %T").splitlines())

    def node_of(self, job, task):
        return self.tell("squeue", "-h", "-r", "-j", f"{job}_{task}", "-o", "%N").strip()

    def kill(self, node):
        """Every process of a node at once, as when its power fails: the daemon, its steps, and what they run."""
        marks = (f"QX_TEST_NODE={node}".encode(), f"SLURMD_NODENAME={node}".encode())
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if any(mark in (process / "environ").read_bytes().split(b"\0") for mark in marks):
                    os.kill(int(process.name), signal.SIGKILL)
            except OSError:
                pass  # another user's, or ended meanwhile


def render_with_a_death(qx, farm, shared):
    """Renders by an array whose second node dies, and by that array submitted again. Gives {frame left by the dead: its time}."""
    first = farm.submit(qx, shared / PATTERN)
    wait_until("frames of the second task", lambda: (shared / "f.06.png").exists())
    node = farm.node_of(first, 2)
    print(f"array {first}: killing {node} with {len(list(shared.glob('f.*.png')))} frames there", flush=True)
    farm.kill(node)
    wait_until("node to be seen as down", lambda: "down" in farm.tell("sinfo", "-h", "-n", node, "-o", "%t"))
    left = {path.name: path.stat().st_mtime_ns for path in shared.glob("f.*.png")}
    print(f"array {first}: {farm.states(first)}, {len(left)} frames", flush=True)
    if not COUNT // 2 < len(left) < COUNT:
        raise SystemExit(f"two_nodes: {len(left)} frames after the death of a node, which should be one share and a part")
    farm.cancel(first)
    again = farm.submit(qx, shared / PATTERN)
    wait_until("array submitted again", lambda: set(farm.states(again).values()) == {"COMPLETED"})
    print(f"array {again}: {farm.states(again)}", flush=True)
    return left


def main():
    qx, folder = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()
    plain, shared = new_folders(qx, folder)
    with Farm(folder) as farm:
        left = render_with_a_death(qx, farm, shared)
    if {name: (shared / name).stat().st_mtime_ns for name in left} != left:
        raise SystemExit("two_nodes: frames that were whole have been made again")
    check_same(qx, plain, shared)
    print(f"{len(left)} frames stayed, the others were made by the second array: all equal to a plain run")


main()

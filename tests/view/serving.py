"""qx view at work for tests: its process, requests as plain bytes, and PNG files by another hand."""
import json
import os
import re
import signal
import socket
import struct
import subprocess
import time
import zlib
from pathlib import Path

PATIENCE = 60  # seconds, for a build with sanitizers on a busy machine


class Answer:
    def __init__(self, raw):
        head, _, self.body = raw.partition(b"\r\n\r\n")
        first, *lines = head.decode("latin-1").split("\r\n")
        self.status = int(first.split()[1])
        self.headers = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in lines)}

    def json(self):
        return json.loads(self.body)

    def frame(self):
        """The facts that come with a frame."""
        return json.loads(self.headers["qx-frame"])


class View:
    """A run of `qx view` in a folder, ended with the block that has it."""

    def __init__(self, qx, folder, *arguments):
        environment = {**os.environ, "DISPLAY": "", "WAYLAND_DISPLAY": ""}
        self.process = subprocess.Popen([qx, "view", *arguments, "--no-open"], cwd=folder, env=environment,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()
        found = re.fullmatch(r"http://127\.0\.0\.1:(\d+)/([0-9a-f]{32,})/", self.address)
        if not found:
            raise AssertionError(f"no address: {self.address!r} {self.process.stderr.read()!r}")
        self.port, self.token = int(found[1]), found[2]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.end()
        self.process.stdout.close()
        self.process.stderr.close()

    def end(self, how=signal.SIGINT):
        """@return the seconds it took, the status, what was said"""
        begin = time.monotonic()
        self.process.send_signal(how)
        self.process.wait(PATIENCE)
        return time.monotonic() - begin, self.process.returncode, self.process.stderr.read()

    def send(self, raw):
        with socket.create_connection(("127.0.0.1", self.port), PATIENCE) as connection:
            connection.sendall(raw)
            parts = []
            while part := connection.recv(1 << 16):
                parts.append(part)
        return Answer(b"".join(parts))

    def ask(self, target, method="GET", host=None, headers=()):
        lines = [f"{method} {target} HTTP/1.1"]
        if host != "":
            lines.append(f"Host: {host or f'127.0.0.1:{self.port}'}")
        return self.send("\r\n".join([*lines, *headers, "", ""]).encode())

    def get(self, place, **more):
        return self.ask(f"/{self.token}/{place}", **more)

    def state(self, shown="0:1"):
        return self.get(f"state?shown={shown}").json()


def until(true, what, seconds=PATIENCE):
    """What `true` gives once that is something."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if found := true():
            return found
        time.sleep(0.05)
    raise AssertionError(f"waited in vain: {what}")


def write_png(path, width, height, pixel):
    """An opaque picture of 8 bits whose colours a function gives from their position."""
    rows = b"".join(b"\0" + b"".join(bytes(pixel(x, y)) for x in range(width)) for y in range(height))
    chunks = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)), (b"IDAT", zlib.compress(rows)),
              (b"IEND", b"")]
    coded = [struct.pack(">I", len(d)) + k + d + struct.pack(">I", zlib.crc32(k + d)) for k, d in chunks]
    Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(coded))


def read_png(data):
    """@return width, height, bits, rows of channels, of files of 8 bits without interlace"""
    width, height, bits, kind = struct.unpack(">IIBB", data[16:26])
    coded, at = b"", 8
    while at < len(data):
        length, = struct.unpack(">I", data[at:at + 4])
        if data[at + 4:at + 8] == b"IDAT":
            coded += data[at + 8:at + 8 + length]
        at += length + 12
    step = {2: 3, 6: 4}[kind]
    flat, rows, above = zlib.decompress(coded), [], bytes(width * step)
    for y in range(height):
        begin = y * (width * step + 1)
        above = unfilter(flat[begin], flat[begin + 1:begin + 1 + width * step], above, step)
        rows.append([tuple(above[i:i + step]) for i in range(0, width * step, step)])
    return width, height, bits, rows


def unfilter(kind, line, above, step):
    row = bytearray(line)
    for i, value in enumerate(row):
        left = row[i - step] if i >= step else 0
        corner = above[i - step] if i >= step else 0
        guess = left + above[i] - corner
        nearest = min((abs(guess - v), order, v) for order, v in enumerate((left, above[i], corner)))[2]
        row[i] = (value + (0, left, above[i], (left + above[i]) // 2, nearest)[kind]) & 255
    return bytes(row)

# SPDX-License-Identifier: Apache-2.0
"""PNG files from functions of a place. Needs nothing but Python."""
import struct
import zlib


def write_png(path, width, height, pixel, bits=8):
    """Pixels are tuples of 3 or 4 numbers from 0 to 1. Each row is stored as its difference to the one above."""
    above, rows, channels, full = None, bytearray(), 0, (1 << bits) - 1
    for y in range(height):
        row = bytearray()
        for x in range(width):
            colour = pixel(x + 0.5, y + 0.5)
            channels = len(colour)
            for c in colour:
                row += min(max(round(c * full), 0), full).to_bytes(bits // 8, "big")
        above = above or bytes(len(row))
        rows += b"\2" + bytes((a - b) & 255 for a, b in zip(row, above))
        above = row
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    head = struct.pack(">IIBBBBB", width, height, bits, 2 if channels == 3 else 6, 0, 0, 0)
    path.write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The library from Python by ctypes alone: a glow laid over a gradient, and what a fault says.

usage: qx.py FOLDER-OF-THE-LIBRARIES   (such as /usr/local/lib)
"""
import ctypes
import sys
from ctypes import POINTER, Structure, byref, c_float, c_int32, c_uint8, c_uint16, c_uint32, c_void_p

# Records as QX/QX_Effect.h has them.
class PixelFloat(Structure):
    _fields_ = [(name, c_float) for name in ("alpha", "red", "green", "blue")]

class Rect(Structure):
    _fields_ = [(name, c_int32) for name in ("left", "top", "right", "bottom")]

class World(Structure):
    _fields_ = [("reserved0", c_void_p), ("reserved1", c_void_p), ("world_flags", c_uint32), ("data", c_void_p),
                ("rowbytes", c_int32), ("width", c_int32), ("height", c_int32), ("extent_hint", Rect),
                ("platform_ref", c_void_p), ("ownership_mark", c_uint32), ("world", c_void_p),
                ("pix_aspect_num", c_uint32), ("pix_aspect_den", c_uint32), ("reserved2", c_void_p),
                ("origin_x", c_int32), ("origin_y", c_int32), ("reserved3", c_uint16), ("reserved4", c_uint16),
                ("reserved5", c_uint32)]

class CompositeMode(Structure):
    _fields_ = [("xfer", c_int32), ("rand_seed", c_int32), ("opacity", c_uint8), ("rgb_only", c_uint8),
                ("opacity16", c_uint16)]

FLOATS = int.from_bytes(b"vn32", "little")
SCREEN = 6


def main():
    folder = sys.argv[1]
    host = ctypes.CDLL(f"{folder}/libQXHost.so", mode=ctypes.RTLD_GLOBAL)
    qx = ctypes.CDLL(f"{folder}/libQX.so")
    qx.QXC_Version.restype = ctypes.c_char_p

    said = []
    report = ctypes.CFUNCTYPE(None, c_void_p, ctypes.c_char_p)(lambda _, text: said.append(text.decode()))
    host.QXHost_SetReports(report, None)
    host.QXHost_SetThreads(2)
    assert qx.QXC_Birth() == 0

    # Pixels stay in an array of ours; another world is the library's.
    width, height = 4, 2
    pixels = (PixelFloat * (width * height))()
    for y in range(height):
        for x in range(width):
            pixels[y * width + x] = PixelFloat(1, x / 4, y / 2, 0)
    plate, glow = World(), World()
    assert qx.QXC_WrapPixels(pixels, width, height, 16 * width, FLOATS, byref(plate)) == 0
    assert qx.QXC_NewWorld(2, 2, 1, FLOATS, byref(glow)) == 0
    assert qx.QXC_Fill(byref(PixelFloat(1, 0.5, 0.25, 1)), None, byref(glow)) == 0

    mode = CompositeMode(SCREEN, 0, 255, 0, 32768)
    assert qx.QXC_TransferRect(None, byref(Rect(0, 0, 2, 2)), byref(glow), byref(mode), None, 1, 0, byref(plate)) == 0
    for y in range(height):
        for x in range(width):
            red, green, blue = x / 4, y / 2, 0
            if 1 <= x <= 2:  # where the glow lies: 1 - (1 - s)(1 - d)
                red, green, blue = 1 - 0.5 * (1 - red), 1 - 0.75 * (1 - green), 1
            pixel = pixels[y * width + x]
            assert (pixel.red, pixel.green, pixel.blue) == (red, green, blue), (x, y)

    eight = World()
    assert qx.QXC_NewWorld(2, 2, 1, int.from_bytes(b"argb", "little"), byref(eight)) == 0
    code = qx.QXC_TransferRect(None, byref(Rect(0, 0, 2, 2)), byref(eight), byref(mode), None, 0, 0, byref(plate))
    print(f"QX {qx.QXC_Version().decode()}: screen is right; other depths give {code}: {said[-1] if said else ''}")

    for world in (glow, eight):
        assert qx.QXC_DisposeWorld(byref(world)) == 0
    assert qx.QXC_Death() == 0


main()

#!/usr/bin/env python3
"""Reads the pictures a keldo-run script saved and checks their grey levels
against the image rule, computed here from the graph's formula.

    python3 check_saved_images.py FOLDER

The script plotted 300*(x > 0.25) + 100 + 100*x with 64 points on [-0.5,
0.5] and saved it as saved.pgm, saved.png, saved.tif and saved.bmp. Pixel
(c, k), k counted from the top, shows sample row 63 - k, column c, at
x = c/64 - 0.5 (single precision): floor(v + 0.5) modulo 256 for v > 0.
"""
import sys

import numpy as np
from PIL import Image


def expected():
    x = (np.arange(64, dtype=np.float32) * np.float32(1 / 64) - np.float32(0.5)).astype(np.float32)
    v = np.where(x > 0.25, 300.0, 0.0).astype(np.float32) + np.float32(100) + np.float32(100) * x
    row = np.mod(np.floor(np.abs(v).astype(np.float64) + 0.5), 256).astype(np.uint8)
    row[v <= 0] = 0
    return np.tile(row, (64, 1))


def main():
    folder = sys.argv[1]
    want = expected()
    with open(folder + "/saved.pgm", "rb") as f:
        data = f.read()
    assert data.startswith(b"P5\n64 64\n255\n"), data[:16]
    pgm = np.frombuffer(data[len(b"P5\n64 64\n255\n"):], dtype=np.uint8).reshape(64, 64)
    assert (pgm == want).all(), (pgm[0, :8], want[0, :8])
    for name in ("saved.png", "saved.tif", "saved.bmp"):
        image = Image.open(folder + "/" + name)
        assert image.size == (64, 64), (name, image.size)
        rgb = np.asarray(image.convert("RGB"))
        for channel in range(3):
            assert (rgb[:, :, channel] == want).all(), (name, channel, rgb[0, :8, channel], want[0, :8])
    print("ok")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Writes two-dimensional form, data and image files byte by byte with
struct, for the loader tests. Run from this folder:

    python3 make_form2d_files.py

The samples follow simple formulas that the tests know by name (see
SAMPLES), so a test can check what the loaders make of a file without
trusting any writer of ours. Samples are indexed [row i][column j]; the
.kd2 file stores them with columns outermost.
"""
import math
import os
import struct

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "form2d")

SAMPLES = {
    "plane": lambda i, j: i + 0.5 * j,
    "wave": lambda i, j: math.sin(0.1 * i) * j,
    "grid": lambda i, j: 100 * i + j,
}


def i16(v):
    return struct.pack("<h", v)


def i32(v):
    return struct.pack("<i", v)


def f32(v):
    return struct.pack("<f", v)


def text(s):
    b = s.encode("cp1252")
    return i32(len(b)) + b


def graph_record(name, n, left, right, method, intensity, caption, threshold_text):
    step = (right - left) / n
    out = b"".join(f32(v) for v in (left, right, step, 1.0, left, right, left, right))
    out += method.encode() + intensity.encode() + f32(0.0) + i16(1)
    out += text(caption) + text(threshold_text)
    f = SAMPLES[name]
    for a in range(n + 1):  # columns outermost
        for b in range(n + 1):
            out += f32(f(b, a))
    return out


def kd2(path, n, graphs, sections, history=(), key="", cursor=(0, 0), remarks="", linreg=()):
    out = i16(2) + b"".join(f32(v) for v in (-1.0, 1.0, -1.0, 1.0, -1.0, 1.0))
    out += i32(len(graphs)) + i32(n) + b"L" + i16(0)
    for g in graphs:
        out += graph_record(*g)
    out += text(path) + i32(sections)
    if sections > 0:
        out += i32(len(history)) + b"".join(text(h) for h in history)
    if sections > 1:
        out += text(key)
    if sections > 2:
        out += i32(cursor[0]) + i32(cursor[1]) + text(remarks)
    if sections > 3:
        out += b"".join(i16(v) for v in linreg)
    with open(os.path.join(OUT, path), "wb") as f:
        f.write(out)


def kb2(path, n, left, right, method, name):
    out = i32(n) + f32(left) + f32(right) + method.encode()
    f = SAMPLES[name]
    for i in range(n + 1):
        for j in range(n + 1):
            out += f32(f(i, j))
    with open(os.path.join(OUT, path), "wb") as f_out:
        f_out.write(out)


def bmp24(path, width, height, pixel):
    """A plain 24-bit bottom-up bitmap; pixel(x, y) gives (r, g, b) with y
    counted from the top."""
    line = (3 * width + 3) & ~3
    data = b""
    for row in range(height):  # bottom line first
        y = height - 1 - row
        bytes_ = b"".join(bytes((b, g, r)) for r, g, b in (pixel(x, y) for x in range(width)))
        data += bytes_ + b"\0" * (line - 3 * width)
    header = b"BM" + i32(54 + len(data)) + i16(0) + i16(0) + i32(54)
    header += i32(40) + i32(width) + i32(height) + i16(1) + i16(24) + i32(0) + i32(len(data))
    header += i32(2835) + i32(2835) + i32(0) + i32(0)
    with open(os.path.join(OUT, path), "wb") as f:
        f.write(header + data)


def main():
    os.makedirs(OUT, exist_ok=True)
    kd2("sections1.kd2", 64,
        [("plane", 64, -0.5, 0.5, "G", "S", "plane", "0"), ("wave", 64, -2.0, 2.0, "C", "L", "wave", "0.5")],
        1, history=["x*y", "sin(x)"])
    kd2("sections4.kd2", 64, [("grid", 64, -1.0, 1.0, "T", "W", "grid", "0")], 4,
        history=["x+y"], key="FTran", cursor=(10, 20), remarks="two\r\nlines", linreg=[8])
    kb2("grid64.kb2", 64, -2.0, 2.0, "C", "grid")
    # A PGM as this program writes it, lines top first: line k holds
    # (7k + c) mod 256 at column c.
    n = 64
    body = bytes((7 * k + c) % 256 for k in range(n) for c in range(n))
    with open(os.path.join(OUT, "lines64.pgm"), "wb") as f:
        f.write(b"P5\n64 64\n255\n" + body)
    # The same with a comment line, which the narrow reader misreads.
    with open(os.path.join(OUT, "comment.pgm"), "wb") as f:
        f.write(b"P5\n# a comment\n64 64\n255\n" + body)
    # Colour bitmaps: the sample is the blue byte.
    bmp24("colour64.bmp", 64, 64, lambda x, y: (200, 100, (3 * x + 5 * y) % 256))
    # Side 65: AdjustValue gives 64 points, and 65 lines of 65 pixels fill
    # rows and columns 0 to 64, read without skipping the line padding.
    side65 = lambda x, y: (x % 256, y % 256, (x + 2 * y) % 256)
    bmp24("side65.bmp", 65, 65, side65)
    # What the form should hold: line i of 3 * 65 bytes read straight
    # through the padded pixel bytes, the first byte of each pixel.
    with open(os.path.join(OUT, "side65.bmp"), "rb") as f:
        pixels = f.read()[54:]
    with open(os.path.join(OUT, "side65_samples.tsv"), "w") as f:
        for i in range(65):
            row = []
            for j in range(65):
                at = i * 195 + 3 * j
                row.append(str(pixels[at] if at < len(pixels) else 0))
            f.write("\t".join(row) + "\n")
    bmp24("wide.bmp", 30, 20, lambda x, y: (0, 0, 0))


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Writes image_colours.tsv: the packed colour (red + 256 green + 65536 blue,
0 for black) of every sample of a small graph, N = 8, for each colour method,
intensity method, threshold and low-pass block side, computed from the rules
of the picture's colour map: linear levels floor(256 a / M) up to 255 (127 a
for grey +/-), log levels floor(ln(a / M) / ln(1 / 0.96)) + 256 within 0..255,
strict thresholds, and the lin-log method's two passes with the detail scale
found by testing the transposed sample.

Run: /usr/bin/python3 tests/data/make_image_colours.py > tests/data/image_colours.tsv
"""
import math
import numpy as np

N = 8


def sample(i, j):
    """The graph: quarter steps from -1.25 to 1.25, zeros among them."""
    return float(np.float32(((i * 9 + j) % 11 - 5) / 4.0))


def grey(m):
    return m + 256 * m + 65536 * m


def linear(a, mx, top):
    return int(min(top, math.floor((127.0 if top == 127 else 256.0) * a / mx)))


def logarithmic(a, mx):
    if a < 2.0 ** -256:
        return 0
    return int(min(255, max(0, math.floor(math.log(a / mx) / math.log(1 / 0.96)) + 256)))


def colour(method, log, v, mx, th):
    a = abs(v)
    active = a > th
    if method == "C":
        if not active or v == 0:
            return 0
        m = logarithmic(a, mx) if log else linear(a, mx, 255)
        return m if v > 0 else 65536 * m
    if method == "G":
        if not active or v <= 0:
            return 0
        return grey(logarithmic(a, mx) if log else linear(a, mx, 255))
    # grey (+/-)
    if not active:
        return grey(128)
    if not log:
        m = linear(a, mx, 127)
        return grey(128 + m) if v > 0 else grey(128 - m)
    m = logarithmic(a, mx)
    if v > 0:
        return grey(127 + m // 2)
    return grey(m // 2) if v < 0 else grey(m)


def picture(method, intensity, th, block):
    g = [[sample(i, j) for j in range(N + 1)] for i in range(N + 1)]
    mx = max(abs(v) for row in g for v in row) or 1.0
    out = [[0] * (N + 1) for _ in range(N + 1)]
    if intensity != "W":
        for i in range(N + 1):
            for j in range(N + 1):
                out[i][j] = colour(method, intensity == "L", g[i][j], mx, th)
        return out
    for i in range(min(block, N + 1)):
        for j in range(min(block, N + 1)):
            v = g[i][j]
            out[i][j] = grey(linear(abs(v), mx, 255)) if abs(v) > th and v > 0 else 0
    d = 0.0
    for i in range(N + 1):
        for j in range(N + 1):
            if i < block // 2 and j < block // 2:
                continue
            if abs(g[j][i]) > d:
                d = abs(g[i][j])
    d = d or 1.0
    for i in range(N + 1):
        for j in range(N + 1):
            if i < block and j < block:
                continue
            out[i][j] = colour(method, True, g[i][j], d, th)
    return out


def main():
    print("# method\tintensity\tthreshold\tblock\ti\tj\tcolour; written by make_image_colours.py")
    for method in "CGT":
        for intensity in "SLW":
            for th in (0.0, 0.25):
                for block in ((8, 4, 0) if intensity == "W" else (8,)):
                    out = picture(method, intensity, th, block)
                    for i in range(N + 1):
                        for j in range(N + 1):
                            print(f"{method}\t{intensity}\t{th}\t{block}\t{i}\t{j}\t{out[i][j]}")


main()

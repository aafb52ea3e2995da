#!/usr/bin/env python3
"""Writes median_image.tsv: a grey picture of 40 rows (y) and 32 columns (x)
with noise and a few lone bright and dark pixels, the two median filters
of it by the windows the image processor documents, and the error measures
between the picture and its plain median filter, over the whole picture and
over the rectangle x 5..20, y 8..30. Run from this folder:

    python3 make_median_image.py

The windows: interior pixels take the 3 by 3 block (scipy's
ndimage.median_filter of size 3 gives the same there, which this script
asserts); edge pixels the three values along the edge with the pixel in
the middle; corners the 2 by 2 corner block, the mean of its two middle
values. The adaptive filter keeps a pixel outside 0.9..1.1 times its
median. Results are rounded to a byte, halves upward.

Lines: "name<TAB>rows<TAB>cols<TAB>values..." for the matrices, row by row;
"name<TAB>value" for the measures.

It also writes median_graph.tsv: a graph of 65 by 65 samples in quarters,
negative and positive, with spikes, and its two median filters without
rounding (the two-dimensional form's "Denoise (median)" and "Denoise
(adaptive median)"); for a negative median the adaptive band runs from
1.1 to 0.9 times it.
"""
import os

import numpy as np
from scipy import ndimage

HERE = os.path.dirname(os.path.abspath(__file__))
ROWS, COLS = 40, 32
RECT = (5, 8, 20, 30)  # x1, y1, x2, y2


def picture():
    rng = np.random.default_rng(20261126)
    y, x = np.mgrid[0:ROWS, 0:COLS]
    base = 110 + 50 * np.sin(x / 5.0) * np.cos(y / 7.0) + rng.integers(-9, 10, size=(ROWS, COLS))
    img = np.clip(np.rint(base), 0, 255).astype(np.int64)
    for k in range(14):
        img[rng.integers(0, ROWS), rng.integers(0, COLS)] = 255 if k % 2 == 0 else 0
    return img


def window_median(img, r, c):
    rows, cols = img.shape
    top, bottom, left, right = r == 0, r == rows - 1, c == 0, c == cols - 1
    if (top or bottom) and (left or right):
        r0 = 0 if top else rows - 2
        c0 = 0 if left else cols - 2
        s = np.sort(img[r0:r0 + 2, c0:c0 + 2].ravel().astype(np.float64))
        return (s[1] + s[2]) / 2.0
    if top or bottom:
        return float(np.median(img[r, c - 1:c + 2]))
    if left or right:
        return float(np.median(img[r - 1:r + 2, c]))
    return float(np.median(img[r - 1:r + 2, c - 1:c + 2]))


def adaptive_value(centre, m):
    if m >= 0:
        return m if 0.9 * m <= centre <= 1.1 * m else centre
    return m if 1.1 * m <= centre <= 0.9 * m else centre


def filtered(img, adaptive, rounded=True):
    out = np.zeros(img.shape, dtype=np.int64 if rounded else np.float64)
    for r in range(img.shape[0]):
        for c in range(img.shape[1]):
            m = window_median(img, r, c)
            v = adaptive_value(float(img[r, c]), m) if adaptive else m
            out[r, c] = int(np.floor(v + 0.5)) if rounded else v
    return out


def graph():
    rng = np.random.default_rng(65)
    i, j = np.mgrid[0:65, 0:65]
    g = np.round(4 * (40 * np.sin(j / 6.0) * np.cos(i / 4.0) + rng.normal(0, 3, size=(65, 65)))) / 4
    for k in range(20):
        g[rng.integers(0, 65), rng.integers(0, 65)] = 90.0 if k % 2 == 0 else -90.0
    return g


def measures(a, b, prefix):
    a = a.astype(np.float64)
    b = b.astype(np.float64)
    d = a - b
    mse = np.mean(d * d)
    return [
        (prefix + "sup", np.max(np.abs(d))),
        (prefix + "mse", mse),
        (prefix + "rms", np.sqrt(mse)),
        (prefix + "psnr", 10 * np.log10(255.0 ** 2 / mse)),
        (prefix + "snr", 10 * np.log10(np.mean(a * a) / mse)),
    ]


def main():
    img = picture()
    plain = filtered(img, False)
    adaptive = filtered(img, True)
    reference = ndimage.median_filter(img, size=3)
    assert np.array_equal(plain[1:-1, 1:-1], reference[1:-1, 1:-1])
    x1, y1, x2, y2 = RECT
    rows = [("input", img), ("median", plain), ("adaptive", adaptive), ("scipy", reference)]
    with open(os.path.join(HERE, "median_image.tsv"), "w") as f:
        for name, m in rows:
            f.write("\t".join([name, str(m.shape[0]), str(m.shape[1])] + [str(int(v)) for v in m.ravel()]) + "\n")
        for name, v in measures(img, plain, "") + measures(img[y1:y2 + 1, x1:x2 + 1], plain[y1:y2 + 1, x1:x2 + 1],
                                                             "roi_"):
            f.write("%s\t%.17g\n" % (name, v))
    g = graph()
    with open(os.path.join(HERE, "median_graph.tsv"), "w") as f:
        for name, m in [("input", g), ("median", filtered(g, False, False)), ("adaptive", filtered(g, True, False))]:
            f.write("\t".join([name, "65", "65"] + ["%.17g" % v for v in m.ravel()]) + "\n")


if __name__ == "__main__":
    main()

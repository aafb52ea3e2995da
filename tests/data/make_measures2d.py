#!/usr/bin/env python3
"""Writes two .kb2 graphs of side 64 over [-2, 2] and, with numpy, the
measures the two-dimensional form's analysis commands should report for
them, over the whole square and over the window of one zoom. Run from
this folder:

    python3 make_measures2d.py

The zoom is the one the tests ask for: column 20, row 40 on an unzoomed
graph, which halves the window around x = -0.75, y = 0.5, giving
x in [-1.75, 0.25] and y in [-0.5, 1.5]. A sample at x = j*h + a counts
when xl - h/2 <= x <= xr + h/2, and the same in y.
"""
import math
import os
import struct

import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))
N, A, B = 64, -2.0, 2.0
H = (B - A) / N


def f_sample(i, j):
    return math.sin(0.3 * i) * math.cos(0.2 * j) + 0.01 * (i - j)


def g_sample(i, j):
    return 0.5 * math.cos(0.1 * i * j / 8) - 0.02 * i


def matrix(f):
    return np.array([[f(i, j) for j in range(N + 1)] for i in range(N + 1)], dtype=np.float32)


def write_kb2(name, m):
    out = struct.pack("<iff", N, A, B) + b"G"
    out += m.astype("<f4").tobytes()
    with open(os.path.join(HERE, "form2d", name), "wb") as f:
        f.write(out)


def window(lo, hi):
    ks = [k for k in range(N + 1) if lo - H / 2 <= k * H + A <= hi + H / 2]
    return ks[0], ks[-1]


def measures(tag, f, g, xl, xr, yl, yh, rows):
    j0, j1 = window(xl, xr)
    i0, i1 = window(yl, yh)
    F = f.astype(np.float64)[i0:i1 + 1, j0:j1 + 1]
    G = g.astype(np.float64)[i0:i1 + 1, j0:j1 + 1]
    # The power norms and the scalar product stop at row and column N-1.
    ie, je = min(i1, N - 1) - i0 + 1, min(j1, N - 1) - j0 + 1

    def sup(m):
        return np.abs(m).max()

    def var(m):
        return sup(m) + (np.abs(np.diff(m, axis=1)).sum() + np.abs(np.diff(m, axis=0)).sum()) / N

    def power(m, p):
        return (H * H * (np.abs(m[:ie, :je]) ** p).sum()) ** (1.0 / p)

    D = F - G
    w = np.ones_like(F)
    w[0, :] *= 0.5
    w[-1, :] *= 0.5
    w[:, 0] *= 0.5
    w[:, -1] *= 0.5
    v = F.ravel()
    nz = v[v != 0]
    energy = (v * v).sum()
    dim = math.exp(-2 * (nz * nz * np.log(np.abs(nz))).sum() / energy) * energy
    rows += [
        (tag, "sup", sup(F)), (tag, "var", var(F)), (tag, "power2", power(F, 2)), (tag, "power3", power(F, 3)),
        (tag, "normalized2", power(F, 2) / math.sqrt((B - A) ** 2)),
        (tag, "diffsup", sup(D)), (tag, "diffvar", var(D)), (tag, "diffpower2", power(D, 2)),
        (tag, "relpower2", power(D, 2) / power(F, 2)),
        (tag, "snr", 10 * math.log10((F * F).sum() / (D * D).sum())),
        (tag, "integral", H * H * (w * F).sum()),
        (tag, "scalar", H * H * (F[:ie, :je] * G[:ie, :je]).sum()),
        (tag, "max", v.max()), (tag, "min", v.min()), (tag, "mean", v.mean()), (tag, "variance", v.var(ddof=1)),
        (tag, "stddev", v.std(ddof=1)), (tag, "energy", energy), (tag, "count", float(v.size)), (tag, "dim", dim),
    ]


def main():
    f, g = matrix(f_sample), matrix(g_sample)
    write_kb2("measure_f64.kb2", f)
    write_kb2("measure_g64.kb2", g)
    rows = []
    measures("whole", f, g, A, B, A, B, rows)
    measures("zoom", f, g, -1.75, 0.25, -0.5, 1.5, rows)
    with open(os.path.join(HERE, "measures2d.tsv"), "w") as out:
        out.write("# window\tmeasure\tvalue (made by make_measures2d.py)\n")
        for tag, name, value in rows:
            out.write("%s\t%s\t%.17g\n" % (tag, name, value))


if __name__ == "__main__":
    main()

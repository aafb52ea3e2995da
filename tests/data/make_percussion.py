#!/usr/bin/python3
"""Expected pulse trains and scalogram settings for percussion_test.

A spectrum of rows 0..R and columns 1..C holds random complex entries from a
fixed seed, with bursts of power in a few columns the way drum hits make
them. With n the power of two at or above C (at least 64), each column's
mean power over rows 1..R is e[c-1] = (1/R) sum (re^2 + im^2), e is 0 from
index C to n, the mean is m = sum_{i=0}^{n-1} e[i] / n, and the train is
train[0] = e[0], train[i] = 1 if e[i] > m else 0 for i = 1..n.

Settings, with pi = 3.14159265358979 and s = sqrt(pi) * 4 * T for a train of
n intervals lasting T whose pulse rate is p: w = 1/s, f = s/p,
u = log2(n^2 / f) computed as ln(n^2 / f) / ln 2, o = trunc(u - 1.5) plus 1
when u - 1.5 is not whole, at least 1; voices = 256 // o.

Writes percussion.tsv:
  per spectrum "spectrum R C N", lines "cell R C RE IM", "mean M",
  "train V0 V1 .. VN", "pulses COUNT BEST" (the pulses, runs of samples
  equal to 1, and the fewest samples between the end of one and the start of
  the next, or after the last to the train's end; -1 for none);
  per settings case "settings N T P W F O VOICES".
Numbers are written with repr, so they read back to the same double.
"""
import math
import os

import numpy as np

PI = 3.14159265358979


def spectrum_case(out, rng, rows, cols, bursts):
    re = rng.standard_normal((rows + 1, cols))
    im = rng.standard_normal((rows + 1, cols))
    for c in bursts:
        re[:, c - 1] *= 6.0
        im[:, c - 1] *= 6.0
    # Row 0 is left out of the power; a large row 0 shows that it is.
    re[0, :] = 1000.0
    n = 64
    while n < cols and n < 65536:
        n *= 2
    e = np.zeros(n + 1)
    for c in range(1, cols + 1):
        total = 0.0
        for r in range(1, rows + 1):
            total += re[r, c - 1] ** 2 + im[r, c - 1] ** 2
        e[c - 1] = (1.0 / rows) * total
    m = 0.0
    for i in range(n):
        m += (1.0 / n) * e[i]
    train = [e[0]] + [1.0 if e[i] > m else 0.0 for i in range(1, n + 1)]
    out.write(f"spectrum {rows} {cols} {n}\n")
    for r in range(rows + 1):
        for c in range(1, cols + 1):
            out.write(f"cell {r} {c} {float(re[r, c - 1])!r} {float(im[r, c - 1])!r}\n")
    out.write(f"mean {m!r}\n")
    out.write("train " + " ".join(repr(float(v)) for v in train) + "\n")
    count, best = pulses(train)
    out.write(f"pulses {count} {best}\n")


def pulses(train):
    # Runs of ones, each [start, end) with end the index of the 0 after it.
    runs = []
    i = 0
    while i < len(train):
        if train[i] == 1.0:
            start = i
            while i < len(train) and train[i] != 0.0:
                i += 1
            runs.append((start, i))
        else:
            i += 1
    gaps = [b[0] - a[1] for a, b in zip(runs, runs[1:])]
    if runs and runs[-1][1] < len(train):
        gaps.append(len(train) - runs[-1][1])
    return len(runs), min(gaps) if gaps else -1


def settings_case(out, n, duration, rate):
    s = math.sqrt(PI) * 4 * duration
    w = 1 / s
    f = s / rate
    u = math.log(n * n / f) / math.log(2)
    v = u - 1.5
    o = math.trunc(v) + (0 if v == math.trunc(v) else 1)
    o = max(o, 1)
    out.write(f"settings {n} {duration!r} {rate!r} {w!r} {f!r} {o} {256 // o}\n")


def main():
    rng = np.random.default_rng(20240521)
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "percussion.tsv")
    with open(path, "w") as out:
        # 40 columns in a train of 64: the mean is divided by 64.
        spectrum_case(out, rng, 4, 40, [3, 7, 8, 15, 23, 31, 39])
        # 129 columns (8192 points, a step of 64) in a train of 256.
        spectrum_case(out, rng, 8, 129, [1, 2, 10, 18, 26, 34, 42, 50, 58, 66, 100, 129])
        # A spectrogram of 8192 points at 8000 Hz, step 32: 257 columns, n = 512,
        # T = 512 * 32 / 8000; pulses 3 samples apart: p = 4 * 32 / 8000.
        settings_case(out, 512, 512 * 32 / 8000, 4 * 32 / 8000)
        # No pulses: the rate is 1.
        settings_case(out, 64, 64 * 16 / 8000, 1.0)
        settings_case(out, 1024, 1024 * 8 / 44100, 9 * 8 / 44100)
        # u = 5.5 exactly: u - 1.5 is whole, so it is not rounded up.
        settings_case(out, 64, 1.0, 0.07833213358221874)
        # A long train at a slow rate: u is negative, o is 1.
        settings_case(out, 64, 10000.0, 1.0)


if __name__ == "__main__":
    main()

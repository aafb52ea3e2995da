#!/usr/bin/python3
"""Expected short-time Fourier transforms for spectrogram_test.

The signal sig[0..N], N = 1024, is a chirp plus a sine plus a little noise
from a fixed seed. For a window of length W and a step, column c = 0..N/step
takes the frame B[i] = P[c*step - W/2 + i] * w[i], i = 0..W, of the signal
padded with zeros on both sides, replaces B[0] by (B[W] + B[0]) / 2, and
transforms B[0..W-1] by numpy.fft.rfft with no scaling. The system's kernel
uses exp(+2 pi i j k / W), numpy's exp(-...), so the imaginary parts are
written negated. Windows, with h = W/2, v = (i - h)/h and pi = 3.14159265358979:
Blackman 0.5 cos(pi v) + 0.42 + 0.08 cos(2 pi v), Gauss exp(-4.5 v^2),
Hamming 0.54 + 0.46 cos(pi v), hanning 0.5 cos(pi v) + 0.5, Boxcar 1.

The noise estimate: for columns 1..20, |Im| of rows H/2+1 .. 3H/4 (H = W/2)
sorted, the mean of the two middle values / 0.6745 / sqrt(H) / the window's
factor (hanning 0.65, Hamming 0.61, Boxcar 1, else 0.55), summed and
divided by 20.

Writes spectrogram.tsv:
  "signal N" and N+1 lines of sig[j];
  per case "case WINDOW W STEP NCOLS NROWS SCALE" (SCALE the largest |Z|),
  "sums SRE SIM SRE2 SIM2" over every cell, lines "cell R C RE IM" (C from 1),
  and, when there are at least 20 columns, "sigma VALUE".
"""
import numpy as np

N = 1024
PI = 3.14159265358979
FACTORS = {"Blackman": 0.55, "Gauss": 0.55, "Hamming": 0.61, "hanning": 0.65, "Boxcar": 1.0}


def signal():
    rng = np.random.default_rng(20240917)
    t = np.arange(N + 1) / N
    return np.sin(2 * np.pi * (20 * t + 150 * t * t)) + 0.5 * np.sin(2 * np.pi * 200 * t) + 0.05 * rng.standard_normal(N + 1)


def window(name, w):
    h = w // 2
    v = (np.arange(w + 1) - h) / h
    if name == "Blackman":
        return 0.5 * np.cos(PI * v) + 0.42 + 0.08 * np.cos(2 * PI * v)
    if name == "Gauss":
        return np.exp(-18.0 / 4 * v * v)
    if name == "Hamming":
        return 0.54 + 0.46 * np.cos(PI * v)
    if name == "hanning":
        return 0.5 * np.cos(PI * v) + 0.5
    return np.ones(w + 1)


def spectrogram(sig, name, w, step):
    ncols = N // step + 1
    padded = np.concatenate([np.zeros(w), sig, np.zeros(w)])
    win = window(name, w)
    re = np.empty((w // 2 + 1, ncols))
    im = np.empty_like(re)
    for c in range(ncols):
        start = w + c * step - w // 2
        b = padded[start:start + w + 1] * win
        b[0] = (b[w] + b[0]) / 2
        z = np.fft.rfft(b[:w])
        re[:, c] = z.real
        im[:, c] = -z.imag
    return re, im


def sigma(im, name):
    h = im.shape[0] - 1
    total = 0.0
    for c in range(20):
        values = np.sort(np.abs(im[h // 2 + 1:3 * h // 4 + 1, c]))
        k = len(values)
        total += (values[(k - 1) // 2] + values[k // 2]) / 2 / 0.6745 / np.sqrt(h) / FACTORS[name]
    level = total / 20
    return level if level > 0 else 1.0


def main():
    sig = signal()
    lines = [f"signal {N}"] + [repr(float(v)) for v in sig]
    for name in ["Blackman", "Gauss", "Hamming", "hanning", "Boxcar"]:
        for w in (64, 256):
            for step in (16, w):
                re, im = spectrogram(sig, name, w, step)
                nrows, ncols = w // 2, re.shape[1]
                scale = float(np.max(np.hypot(re, im)))
                lines.append(f"case {name} {w} {step} {ncols} {nrows} {scale!r}")
                lines.append("sums " + " ".join(repr(float(s)) for s in
                                                (re.sum(), im.sum(), (re * re).sum(), (im * im).sum())))
                cols = sorted({1, 2, 3, (ncols + 1) // 2, ncols - 1, ncols})
                rows = sorted({r for r in range(nrows + 1) if r % 8 == 0} | {1, 2, nrows - 1, nrows})
                for r in rows:
                    for c in cols:
                        lines.append(f"cell {r} {c} {float(re[r, c - 1])!r} {float(im[r, c - 1])!r}")
                if ncols >= 20:
                    lines.append(f"sigma {sigma(im, name)!r}")
    with open(__file__.replace("make_spectrogram.py", "spectrogram.tsv"), "w") as out:
        out.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()

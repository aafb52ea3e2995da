#!/usr/bin/python3
"""Expected grey levels and inversions for scalogram_view_test.

The matrices come from make_scalogram.py's direct sums (its samples,
convolve and low_pass), so every case's rows are computed without an FFT;
the levels and inversions below are evaluated from those same matrices.

Levels (one per cell, rows 0..nscales, columns 0..N, row by row), with
a = |z| (the modulus for the complex wavelet) and M the reference: the
largest a over rows 1..nscales in the global modes (1 when all are 0), the
row's largest a in the local modes (1 for a row of zeros).
  real, log     c = 1/ln(1/0.96), L = c ln(a/M); 128 for a = 0 or L < -256;
                t = trunc(L + 256) in 0..255; t//2 + 127 for z > 0, t//2 for
                z < 0
  real, linear  t = min(127, trunc(a*127/M)); 128 + t, 128 - t or 128
  complex, log  255 for a = 0; L = c ln(a/M); 255 for L < -255; else
                trunc(-L) in 0..255
  complex, linear  255 - trunc(a*256/M) in 0..255 (255 for a = 0)
  phase         theta the angle of (re, im) in four quadrants (pi/2 signs
                for re = 0, 0 for the origin); 128 for theta = 0, else
                128 +- min(127, trunc(|theta|*127/pi)), pi = 3.14159265358979
Modes: 0 log global, 1 linear global, 2 log local, 3 linear local.

Inversions, in numpy's FFT. With F+ x = sum_j x[j] exp(+2 pi i j k/N) =
conj(fft(x)) and F- Z = sum_k Z[k] exp(-2 pi i j k/N) (Z Hermitian),
L = b - a, dx = L/N, rows swapped back by half a period, Y = F+ of a row:
  1 superposition  W = F+(g w_r), g = sqrt(s), c = g/L^2: Den += |W|^2,
                   Sum += c W Y; C = max Den[0..N/2]
  2 with scaling   also phi from Den and C (zeros, then for k = 0..N/2 stop
                   at the first C - Den[k] < 0.001 C, else phi[k] = phi[N-k]
                   = sqrt(C - Den[k])), Sum += phi Y0 / L^2
                   result = F-(dx Sum / C)
  complex          Sum += c (Wc Yc - Ws Ys), Den_c and Den_s apart,
                   C = max Den_c + max Den_s, each part's row 0 with its own
                   phi from its own Den and constant
  3 damped trig    W = F+(w_r), P = Y/dx; where |P| > 0 and
                   dx^2 |W|^2 > level/sqrt(s): Sum += P / W, Count += 1;
                   level = 0.01 max_k dx^2 |W_1[k]|^2 (over both parts for
                   the complex wavelet, each part its own estimate);
                   result = F-(Sum / (N^2 Count)), 0 where Count = 0
The end entry N runs through the same steps with the samples w[N], row[N]
and phi[N] in place of spectra, and takes the factor N^2 of the two
transforms it skips.

Writes scalogram_view.tsv: per case
  "case NAME N A B OCTAVES VOICES WIDTH FREQ TYPE", "signal" and sig[0..N],
  "re R"/"im R" and each matrix row, then for a level case "maximum" (the
  global reference), "levels MODE" (real) or "magnitude MODE" and
  "phase MODE" (complex) with all cells; for an inversion case
  "invert METHOD" and result[0..N].
"""
import math
import os
import sys

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import make_scalogram as ms  # noqa: E402

PI = 3.14159265358979
PER_NEPER = 1.0 / math.log(1.0 / 0.96)


def matrices(sig, n, a, b, o, v, w, f, kind):
    """Rows 0..o*v by direct sums: re (and im for the complex wavelet)."""
    scales = [2.0 ** ((r - 1) / v) for r in range(1, o * v + 1)]
    parts = [3, 4] if kind == 5 else [kind]
    out = []
    for part in parts:
        waves = [ms.samples(n, a, b, f, r, v, part, w) for r in range(1, o * v + 1)]
        rows = [ms.low_pass(sig, waves, scales, a, b)]
        rows += [ms.convolve(sig, wave, a, b) for wave in waves]
        out.append(np.array(rows))
    return out


def reference(mags, local):
    if local:
        return [m.max() if m.max() > 0 else 1.0 for m in mags]
    g = mags[1:].max()
    return [g if g > 0 else 1.0] * len(mags)


def real_level(z, m, linear):
    a = abs(z)
    if linear:
        t = min(127, math.trunc(a * 127 / m))
        return 128 + t if z > 0 else 128 - t if z < 0 else 128
    if a == 0:
        return 128
    lev = PER_NEPER * math.log(a / m)
    if lev < -256:
        return 128
    t = int(min(255.0, max(0.0, math.trunc(lev + 256))))
    return t // 2 + 127 if z > 0 else t // 2


def magnitude_level(a, m, linear):
    if linear:
        t = 0 if a == 0 else int(min(255.0, max(0.0, math.trunc(a * 256 / m))))
        return 255 - t
    if a == 0:
        return 255
    lev = PER_NEPER * math.log(a / m)
    if lev < -255:
        return 255
    return int(min(255.0, max(0.0, math.trunc(-lev))))


def phase_level(re, im):
    if re == 0:
        theta = PI / 2 if im > 0 else -PI / 2 if im < 0 else 0.0
    else:
        theta = math.atan(im / re)
        if re < 0:
            theta = theta + PI if im >= 0 else theta - PI
    if theta == 0:
        return 128
    steps = min(127, math.trunc(abs(theta) * 127 / PI))
    return 128 + steps if theta > 0 else 128 - steps


def real_levels(re, mode):
    linear, local = mode in (1, 3), mode in (2, 3)
    refs = reference(np.abs(re), local)
    return [real_level(z, refs[r], linear) for r in range(len(re)) for z in re[r]]


def complex_levels(re, im, mode):
    linear, local = mode in (1, 3), mode in (2, 3)
    mods = np.sqrt(re * re + im * im)
    refs = reference(mods, local)
    mag = [magnitude_level(mods[r][c], refs[r], linear) for r in range(len(re)) for c in range(re.shape[1])]
    pha = [phase_level(re[r][c], im[r][c]) for r in range(len(re)) for c in range(re.shape[1])]
    return mag, pha


# --- inversions -------------------------------------------------------------

def fplus(x):
    """sum_j x[j] exp(+2 pi i j k / N), k = 0..N/2, for real x[0..N-1]."""
    return np.conj(np.fft.rfft(x))


def fminus(z, n):
    """sum_k Z[k] exp(-2 pi i j k / N) over the Hermitian Z of half z."""
    return n * np.fft.irfft(np.conj(z), n)


def row_spectrum(row):
    n = len(row) - 1
    return fplus(np.roll(row[:n], n // 2))


def scale_transform(den, c, n):
    """phi[0..N/2] and phi[N] (= phi[0]) from the half accumulator."""
    phi = np.zeros(n // 2 + 1)
    for k in range(n // 2 + 1):
        e = c - den[k]
        if e < 0.001 * c:
            break
        phi[k] = math.sqrt(abs(e))
    return phi, phi[0]


def superposition(mats, sig, setup, parts, scaling):
    n, a, b, o, v, w, f, _ = setup
    length = b - a
    dx = length / n
    total = np.zeros(n // 2 + 1, complex)
    total_end = 0.0
    dens = []
    for part, mat, sign in zip(parts, mats, (1.0, -1.0)):
        den = np.zeros(n // 2 + 1)
        den_end = 0.0
        for r in range(1, o * v + 1):
            s = 2.0 ** ((r - 1) / v)
            g = math.sqrt(s)
            c = g / length ** 2
            wave = ms.samples(n, a, b, f, r, v, part, w) * g
            spectrum = fplus(wave[:n])
            den += np.abs(spectrum) ** 2
            den_end += wave[n] ** 2
            total += sign * c * spectrum * row_spectrum(mat[r])
            total_end += sign * c * wave[n] * mat[r][n]
        dens.append(den)
    constants = [d.max() for d in dens]
    big_c = sum(constants)
    if scaling:
        for den, const, mat in zip(dens, constants, mats):
            phi, phi_end = scale_transform(den, const, n)
            total += phi * row_spectrum(mat[0]) / length ** 2
            total_end += phi_end * mat[0][n] / length ** 2
    if big_c == 0:
        return np.zeros(n + 1)
    out = np.empty(n + 1)
    out[:n] = fminus(dx * total / big_c, n)
    out[n] = n * n * dx * total_end / big_c
    return out


def damped_trig(mats, setup, parts):
    n, a, b, o, v, w, f, _ = setup
    dx = (b - a) / n
    level = 0.01 * max((dx * dx * np.abs(fplus(ms.samples(n, a, b, f, 1, v, p, w)[:n])) ** 2).max() for p in parts)
    total = np.zeros(n // 2 + 1, complex)
    count = np.zeros(n // 2 + 1)
    total_end = 0.0
    count_end = 0
    for r in range(1, o * v + 1):
        s = 2.0 ** ((r - 1) / v)
        limit = level / math.sqrt(s)
        for part, mat in zip(parts, mats):
            wave = ms.samples(n, a, b, f, r, v, part, w)
            spectrum = fplus(wave[:n])
            p = row_spectrum(mat[r]) / dx
            d = np.abs(spectrum) ** 2
            use = (np.abs(p) ** 2 != 0) & (dx * dx * d > limit)
            total[use] += p[use] * np.conj(spectrum[use]) / d[use]
            count[use] += 1
            p_end = mat[r][n] / dx
            if p_end != 0 and dx * dx * wave[n] ** 2 > limit:
                total_end += p_end / wave[n]
                count_end += 1
    estimate = np.where(count > 0, total / (n * n * np.maximum(count, 1)), 0)
    out = np.empty(n + 1)
    out[:n] = fminus(estimate, n)
    out[n] = total_end / count_end if count_end else 0.0
    return out


def line(label, values):
    return label + " " + " ".join(repr(float(x)) for x in values) + "\n"


def smooth(n):
    j = np.arange(n + 1)
    return np.sin(2 * np.pi * 5 * j / n) + 0.5 * np.cos(2 * np.pi * 12 * j / n)


LEVEL_CASES = [
    # name, N, a, b, octaves, voices, width, freq, type, seed; a cell set to 0
    ("levels-real", 64, 0.0, 2.0, 2, 2, 0.25, 1.0, 1, 21),
    ("levels-complex", 64, -1.0, 1.0, 2, 2, 0.3, 2.0, 5, 22),
]

INVERSION_CASES = [
    # name, N, a, b, octaves, voices, width, freq, type, signal
    ("hat", 128, 0.0, 8.0, 4, 2, 1.0, 1.0, 1, "noisy"),
    ("haar", 128, 0.0, 2.0, 3, 1, 0.5, 1.0, 2, "noisy"),
    ("gabor", 128, -2.0, 2.0, 3, 2, 1.0, 1.0, 5, "noisy"),
    ("smooth", 128, 0.0, 8.0, 4, 4, 1.0, 1.0, 1, "smooth"),
    ("constant", 256, 0.0, 16.0, 4, 4, 1.0, 1.0, 1, "constant"),
    ("no-low-pass", 128, 0.0, 8.0, 2, 2, 1.0, 0.01, 3, "noisy"),
]


def header(name, n, a, b, o, v, w, f, kind):
    return f"case {name} {n} {a!r} {b!r} {o} {v} {w!r} {f!r} {kind}\n"


def write_matrices(out, mats):
    for label, mat in zip(("re", "im"), mats):
        for r, row in enumerate(mat):
            out.append(line(f"{label} {r}", row))


def main():
    out = []
    for name, n, a, b, o, v, w, f, kind, seed in LEVEL_CASES:
        sig = ms.signal(n, seed)
        mats = matrices(sig, n, a, b, o, v, w, f, kind)
        for mat in mats:
            mat[1][3] = 0.0  # a zero cell inside a scale row
        out.append(header(name, n, a, b, o, v, w, f, kind))
        out.append(line("signal", sig))
        write_matrices(out, mats)
        if kind == 5:
            mods = np.sqrt(mats[0] ** 2 + mats[1] ** 2)
            out.append(line("maximum", [reference(mods, False)[0]]))
            for mode in range(4):
                mag, pha = complex_levels(mats[0], mats[1], mode)
                out.append(line(f"magnitude {mode}", mag))
                out.append(line(f"phase {mode}", pha))
        else:
            out.append(line("maximum", [reference(np.abs(mats[0]), False)[0]]))
            for mode in range(4):
                out.append(line(f"levels {mode}", real_levels(mats[0], mode)))
    for name, n, a, b, o, v, w, f, kind, shape in INVERSION_CASES:
        sig = {"noisy": lambda: ms.signal(n, 31), "smooth": lambda: smooth(n),
               "constant": lambda: np.full(n + 1, 1.5)}[shape]()
        mats = matrices(sig, n, a, b, o, v, w, f, kind)
        setup = (n, a, b, o, v, w, f, kind)
        parts = [3, 4] if kind == 5 else [kind]
        out.append(header(name, n, a, b, o, v, w, f, kind))
        out.append(line("signal", sig))
        write_matrices(out, mats)
        out.append(line("invert 1", superposition(mats, sig, setup, parts, False)))
        out.append(line("invert 2", superposition(mats, sig, setup, parts, True)))
        out.append(line("invert 3", damped_trig(mats, setup, parts)))
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scalogram_view.tsv")
    with open(path, "w") as fh:
        fh.writelines(out)


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Expected scalogram rows for scalogram_test, by direct sums.

For each case: a signal sig[0..N] on [a, b], dx = (b - a)/N, octaves o and
voices v (nscales = o*v), width w, frequency f and a wavelet type 1..5.
Row r >= 1 has the scale s = 2^((r-1)/v), q = sqrt(s), and the wavelet
samples w[i] at t = a + i*dx, i = 0..N, centre C = b/2 when a >= 0 and 0
when a < 0, pi = 3.14159265358979:
  1 Mexican hat  c = 4.57565215012204 w^2, u = (C - t) s, g = pi u^2:
                 (1 - 2g/c) (2 pi sqrt(c) q) exp(-g/c)
  2 Haar         u = (t - C) s / w, A = q/sqrt(w): +A on -0.5 < u < 0,
                 -A on 0 < u < 0.5, else 0 (and 0 at u = 0)
  3 Gabor cosine u = (C - t) s / w: exp(-pi u^2) q cos(2 pi f u) / w
  4 Gabor sine   the same with sin
  5 complex      the cosine part in the real rows, the sine part in the
                 imaginary ones.
The row is the circular convolution by a direct double loop (no FFT),
  conv[j] = (b - a) * sum_{m=0}^{N-1} sig[m] w[(j - m) mod N],
turned by half a period: row[c] = conv[(c + N/2) mod N] for c < N, and
row[N] = dx * sig[N] * w[N].

Row 0, the low pass: S[k] = sum_r s |W_r[k]|^2 with W_r = numpy.fft.fft of
w_r[0..N-1]; c the largest |S[i]| for i = 10..N/8 (0 when there is none);
phi[0..N] = 0, then for k = 0..N/2, e = c - S[k], stop at the first
e < 0.001 c, else phi[k] = phi[N-k] = sqrt(|e|). The kernel is the inverse
DFT of phi[0..N-1] (real, phi being even), and row 0 is its direct circular
convolution with the signal as above, row0[N] = dx * sig[N] * phi[N].

Writes scalogram.tsv: per case a line
  "case NAME N A B OCTAVES VOICES WIDTH FREQ TYPE",
  "signal" and sig[0..N] on one line, for every row r = 0..nscales "re R"
  (and for type 5 "im R") and its N+1 values, and for r >= 1 "wave R" and
  the samples (the cosine part for type 5).
"""
import os

import numpy as np

PI = 3.14159265358979
HAT = 4.57565215012204


def signal(n, seed):
    rng = np.random.default_rng(seed)
    t = np.arange(n + 1) / n
    return np.sin(2 * np.pi * (3 * t + 10 * t * t)) + 0.3 * np.cos(2 * np.pi * 17 * t) + 0.1 * rng.standard_normal(n + 1)


def samples(n, a, b, f, r, v, kind, w):
    dx = (b - a) / n
    centre = b / 2 if a >= 0 else 0.0
    s = 2.0 ** ((r - 1) / v)
    q = np.sqrt(s)
    t = a + np.arange(n + 1) * dx
    if kind == 1:
        c = HAT * (w * w)
        u = (centre - t) * s
        g = PI * (u * u)
        return (1 - 2 * g / c) * (2 * PI * np.sqrt(c) * q) * np.exp(-g / c)
    if kind == 2:
        u = (t - centre) * s / w
        amp = q / np.sqrt(w)
        out = np.zeros(n + 1)
        out[(u > -0.5) & (u < 0)] = amp
        out[(u > 0) & (u < 0.5)] = -amp
        return out
    u = (centre - t) * s / w
    env = np.exp(-PI * (u * u)) * q
    if kind in (3, 5):
        return env * np.cos(2 * PI * f * u) / w
    return env * np.sin(2 * PI * f * u) / w


def convolve(sig, kern, a, b):
    n = len(sig) - 1
    conv = np.zeros(n)
    for j in range(n):
        acc = 0.0
        for m in range(n):
            acc += sig[m] * kern[(j - m) % n]
        conv[j] = (b - a) * acc
    row = np.empty(n + 1)
    row[:n] = np.roll(conv, -(n // 2))
    row[n] = (b - a) / n * sig[n] * kern[n]
    return row


def low_pass(sig, waves, scales, a, b):
    n = len(sig) - 1
    S = np.zeros(n)
    for wave, s in zip(waves, scales):
        S += s * np.abs(np.fft.fft(wave[:n])) ** 2
    ks = range(10, n // 8 + 1)
    c = max((abs(S[i]) for i in ks), default=0.0)
    phi = np.zeros(n + 1)
    for k in range(n // 2 + 1):
        e = c - S[k]
        if e < 0.001 * c:
            break
        phi[k] = phi[n - k] = np.sqrt(abs(e))
    kern = np.empty(n + 1)
    kern[:n] = np.fft.ifft(phi[:n]).real
    kern[n] = phi[n]
    return convolve(sig, kern, a, b)


def line(label, values):
    return label + " " + " ".join(repr(float(x)) for x in values) + "\n"


CASES = [
    # name, N, a, b, octaves, voices, width, freq, seed
    ("mid", 128, 0.0, 2.0, 3, 2, 0.25, 1.5, 11),
    ("negative", 64, -1.5, 0.5, 2, 3, 0.3, 2.0, 12),
    ("offset", 128, 0.25, 2.25, 2, 2, 0.2, 1.0, 13),
]


def main():
    out = []
    for name, n, a, b, o, v, w, f, seed in CASES:
        sig = signal(n, seed)
        for kind in (1, 2, 3, 4, 5):
            out.append(f"case {name} {n} {a!r} {b!r} {o} {v} {w!r} {f!r} {kind}\n")
            out.append(line("signal", sig))
            scales = [2.0 ** ((r - 1) / v) for r in range(1, o * v + 1)]
            parts = [3, 4] if kind == 5 else [kind]
            for label, part in zip(("re", "im"), parts):
                waves = [samples(n, a, b, f, r, v, part, w) for r in range(1, o * v + 1)]
                out.append(line(f"{label} 0", low_pass(sig, waves, scales, a, b)))
                for r, wave in enumerate(waves, start=1):
                    out.append(line(f"{label} {r}", convolve(sig, wave, a, b)))
                    if label == "re":
                        out.append(line(f"wave {r}", wave))
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scalogram.tsv")
    with open(path, "w") as fh:
        fh.writelines(out)


if __name__ == "__main__":
    main()

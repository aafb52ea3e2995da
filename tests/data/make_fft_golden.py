#!/usr/bin/env python3
"""Reference spectra of N = 65536 points from numpy and scipy, for the
kernel tests. Run from this folder: python3 make_fft_golden.py

Signals (j = 0 .. N-1): x[j] = sin(0.37 j) + 0.25 cos(0.011 j^2),
y[j] = cos(0.29 j) - 0.5 sin(0.013 j).

Columns, for every 61st index k and the last one:
  k, real FFT of x (positive exponent, as the kernels), its imaginary part,
  complex FFT of x + i y (positive exponent) real and imaginary,
  sum_{j=1}^{N-1} x[j] sin(pi j k / N), sum_{j=0}^{N-1} x[j] cos(pi j k / N).
numpy's FFT has the negative exponent: the positive one is N * ifft.
"""
import os

import numpy as np
import scipy.fft

N = 65536
j = np.arange(N, dtype=np.float64)
x = np.sin(0.37 * j) + 0.25 * np.cos(0.011 * j * j)
y = np.cos(0.29 * j) - 0.5 * np.sin(0.013 * j)

real = np.fft.ifft(x) * N
complex_ = np.fft.ifft(x + 1j * y) * N
# DST-I over the N-1 inner points: 2 sum x[n] sin(pi (k) n / N) at k = 1..N-1.
dst = np.zeros(N + 1)
dst[1:N] = scipy.fft.dst(x[1:N], type=1) / 2
# DCT-I over N+1 points with x[N] = 0: x0 + 2 sum ... ; ours is half of it plus x0/2.
ext = np.concatenate([x, [0.0]])
dct = (scipy.fft.dct(ext, type=1) + x[0]) / 2

rows = list(range(0, N, 61)) + [N - 1]
path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "fft_golden_65536.tsv")
with open(path, "w") as f:
    f.write("# k\treal_re\treal_im\tcomplex_re\tcomplex_im\tsine\tcosine\n")
    for k in rows:
        f.write("%d\t%.17g\t%.17g\t%.17g\t%.17g\t%.17g\t%.17g\n" % (
            k, real[k].real, real[k].imag, complex_[k].real, complex_[k].imag, dst[k], dct[k]))

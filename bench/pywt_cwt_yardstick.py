#!/usr/bin/env python3
"""Times PyWavelets' continuous wavelet transform on the cases of
bench_scalogram and writes the results as Google Benchmark JSON, with names
ending in /yardstick, so that bench/compare.sh prints them beside ours.

    python3 pywt_cwt_yardstick.py OUT.json

The signal of 65536 points on [0, 16] (dx = 1/4096), 8 octaves of 16 voices:
row r = 1..128 has the scale s = 2^((r-1)/16), and the wavelet, in samples,
is stretched by width / (dx * s). pywt.cwt with method="fft" on one thread:
"cmor" with bandwidth 1/pi and centre frequency 1 is exp(-pi u^2) exp(2 pi i u),
the complex Gabor wavelet of width 1 and frequency 1, at the scales 4096 / s;
"mexh", (1 - x^2) exp(-x^2/2), is the Mexican hat of width 1 with
x = u sqrt(2 pi / 4.57565215012204), at the scales 4096 / (1.17183 s).
"""
import json
import os
import sys

for var in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[var] = "1"

import numpy as np  # noqa: E402
import pywt  # noqa: E402
from yardstick_timing import median_time  # noqa: E402

N, OCTAVES, VOICES = 65536, 8, 16
DX = 16.0 / N
HAT_STRETCH = np.sqrt(2 * np.pi / 4.57565215012204)


def signal():
    i = np.arange(N + 1, dtype=np.float64)
    return (np.sin(0.01 * i + 1e-6 * i * i) + 0.1 * np.cos(0.37 * i))[:N]



def main():
    x = signal()
    s = 2.0 ** (np.arange(OCTAVES * VOICES) / VOICES)
    gabor = 1.0 / (DX * s)
    hat = 1.0 / (HAT_STRETCH * DX * s)
    cases = [
        ("GaborComplex", lambda: pywt.cwt(x, gabor, "cmor%.17g-1.0" % (1 / np.pi), method="fft")),
        ("MexicanHat", lambda: pywt.cwt(x, hat, "mexh", method="fft")),
    ]
    out = {"benchmarks": []}
    for name, fn in cases:
        fn()
        seconds = median_time(fn, 5)
        out["benchmarks"].append({"name": "BM_Scalogram/%s/yardstick" % name, "run_type": "iteration",
                                  "real_time": seconds * 1e3, "time_unit": "ms"})
    with open(sys.argv[1], "w") as f:
        json.dump(out, f)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Times SciPy's short-time Fourier transform on the case of
bench_spectrogram and writes the results as Google Benchmark JSON, with
names ending in /yardstick, so that bench/compare.sh prints them beside ours.

    python3 scipy_stft_yardstick.py OUT.json

scipy.signal.stft of 65536 points with a Hamming window of 1024 points and a
hop of 256 (noverlap 768), zeros added at both ends as ours does, and
scipy.signal.istft of its result with the same settings.
"""
import json
import sys

import numpy as np
from scipy import signal as sps
from yardstick_timing import median_time

N, WINDOW, STEP = 65536, 1024, 256


def signal():
    i = np.arange(N + 1, dtype=np.float64)
    return np.sin(0.01 * i + 1e-6 * i * i) + 0.1 * np.cos(0.37 * i)



def main():
    x = signal()
    settings = dict(window="hamming", nperseg=WINDOW, noverlap=WINDOW - STEP)
    stft = lambda: sps.stft(x, boundary="zeros", padded=True, **settings)
    _, _, z = stft()
    istft = lambda: sps.istft(z, **settings)
    istft()
    out = {"benchmarks": []}
    for name, fn in (("Compute", stft), ("Invert", istft)):
        seconds = median_time(fn, 21)
        out["benchmarks"].append({"name": "BM_Spectrogram/%s/yardstick" % name, "run_type": "iteration",
                                  "real_time": seconds * 1e6, "time_unit": "us"})
    with open(sys.argv[1], "w") as f:
        json.dump(out, f)


if __name__ == "__main__":
    main()

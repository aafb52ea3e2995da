#!/usr/bin/env python3
"""Times the Python module against PyWavelets on the same arrays in the
same run, call overhead included, and writes Google Benchmark JSON with
names ending in /ours and /yardstick, so that bench/compare.sh prints them
side by side.

    PYTHONPATH=build/python python3 bench/python/module_bench.py OUT.json

Cases: a 65536-point Daubechies 4 transform over all 16 levels (pywt db2,
mode periodization), and a 512 by 512 CDF 9/7 transform over 5 levels (our
image processor's lifting 9/7 on a float image; pywt bior4.4, periodization).
"""
import json
import sys
import time
import warnings

import numpy as np
import pywt

import keldo


def median_time(fn, repeats=21):
    fn()
    times = []
    for _ in range(repeats):
        start = time.perf_counter()
        fn()
        times.append(time.perf_counter() - start)
    times.sort()
    return times[len(times) // 2]


def main():
    warnings.simplefilter("ignore")
    n = 65536
    i = np.arange(n + 1, dtype=np.float64)
    x = (np.sin(0.01 * i) + 0.1 * np.cos(0.37 * i))[:n]
    r = np.arange(512)[:, None]
    c = np.arange(512)[None, :]
    image = (128 + 60 * np.sin(0.013 * r * 3 + 0.007 * c) + 30 * np.cos(0.0011 * r * c)).astype(np.float32)
    cases = [
        ("BM_Python/Daub4_65536", lambda: keldo.wavelet_transform(x, 1, 16),
         lambda: pywt.wavedec(x, "db2", mode="periodization", level=16)),
        ("BM_Python/CDF97_512_5", lambda: keldo.image_transform(image, 5, "Daub 9/7"),
         lambda: pywt.wavedec2(image, "bior4.4", mode="periodization", level=5)),
    ]
    out = {"benchmarks": []}
    for name, ours, yardstick in cases:
        for side, fn in (("ours", ours), ("yardstick", yardstick)):
            t = median_time(fn)
            out["benchmarks"].append({"name": f"{name}/{side}", "run_name": f"{name}/{side}", "run_type": "iteration",
                                      "iterations": 1, "real_time": t * 1e6, "cpu_time": t * 1e6,
                                      "time_unit": "us"})
            print(f"{name}/{side}: {t * 1e3:.3f} ms", file=sys.stderr)
    with open(sys.argv[1], "w") as f:
        json.dump(out, f, indent=1)


if __name__ == "__main__":
    main()

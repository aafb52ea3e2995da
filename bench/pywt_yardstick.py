#!/usr/bin/env python3
"""Times PyWavelets on the cases of bench_wavelet and writes the results as
Google Benchmark JSON, with names ending in /yardstick, so that
bench/compare.sh prints them beside ours.

    python3 pywt_yardstick.py OUT.json

wavedec with mode "periodization" over all levels (the level warnings of
PyWavelets are silenced), the full packet tree by WaveletPacket, and
wavedec2 on the images of bench_transform2d.
"""
import json
import sys
import time
import warnings

import numpy as np
import pywt

N = 65536


def signal():
    i = np.arange(N + 1, dtype=np.float64)
    return (np.sin(0.01 * i) + 0.1 * np.cos(0.37 * i))[:N]


def best_time(fn, repeats=15):
    times = []
    for _ in range(repeats):
        start = time.perf_counter()
        fn()
        times.append(time.perf_counter() - start)
    times.sort()
    return times[len(times) // 2]  # the median


def main():
    warnings.simplefilter("ignore")
    x = signal()
    cases = [
        ("Daub4", lambda: pywt.wavedec(x, "db2", mode="periodization", level=16)),
        ("Daub20", lambda: pywt.wavedec(x, "db10", mode="periodization", level=16)),
        ("Coif30", lambda: pywt.wavedec(x, "coif5", mode="periodization", level=16)),
        ("CDF97", lambda: pywt.wavedec(x, "bior4.4", mode="periodization", level=14)),
        ("PacketTreeDaub4", lambda: pywt.WaveletPacket(x, "db2", mode="periodization", maxlevel=16).get_level(16)),
    ]
    # The two-dimensional cases of bench_transform2d, on float32 images.
    def image(n):
        i = np.arange(n + 1)[:, None]
        j = np.arange(n + 1)[None, :]
        return (np.sin(0.013 * i * 3 + 0.007 * j) + 0.25 * np.cos(0.0011 * i * j)).astype(np.float32)[:n, :n]
    small, large = image(512), image(2048)
    cases2d = [
        ("CDF97_512_5", lambda: pywt.wavedec2(small, "bior4.4", mode="periodization", level=5)),
        ("Daub4_2048_all", lambda: pywt.wavedec2(large, "db2", mode="periodization", level=11)),
    ]
    out = {"benchmarks": []}
    for name, fn in cases2d:
        fn()
        seconds = best_time(fn, 5)
        out["benchmarks"].append({"name": "BM_Wavelet2D/%s/yardstick" % name, "run_type": "iteration",
                                  "real_time": seconds * 1e3, "time_unit": "ms"})
    for name, fn in cases:
        fn()
        seconds = best_time(fn, 5 if name.startswith("Packet") else 15)
        out["benchmarks"].append({"name": "BM_Wavelet/%s/yardstick" % name, "run_type": "iteration",
                                  "real_time": seconds * 1e6, "time_unit": "us"})
    with open(sys.argv[1], "w") as f:
        json.dump(out, f)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Times scikit-image's wavelet denoiser and SciPy's median filter on the
pictures of bench_denoise2d and writes Google Benchmark JSON, with names
ending in /yardstick, so that bench/compare.sh prints them beside ours:

    python3 denoise2d_yardstick.py IMAGES OUT.json

IMAGES is the folder bench/denoise2d_images.py wrote. For each picture and
noise level:
- skimage.restoration.denoise_wavelet on the noisy picture as floats in
  0..1, wavelet db2, soft thresholding, the noise estimated from the data
  (sigma=None, rescale_sigma=True), its default levels, by BayesShrink and by
  VisuShrink; the result times 255, rounded and clipped to bytes;
- scipy.ndimage.median_filter with a 3 by 3 window.
The times are the medians of five runs, conversions included, by the wall
clock and by the process's processor time (which a loaded machine disturbs
less); the counter is the PSNR against the clean picture (peak 255). BayesShrink's figures are
written again beside each of our wavelet methods, and the median filter's
beside each of our median filters, so that every row of ours has its
yardstick; the three also stand alone.
"""
import json
import math
import os
import sys
import time

import numpy as np
from codec_images import read_pgm

IMAGES = ("camera", "astronaut")
SIGMAS = (10, 20, 30)
WAVELET_METHODS = ("SureShrink", "SureShrinkSoft", "TAWS", "CompressDenoise", "CompressDenoiseMinRate",
                   "Form2DAveraged")
MEDIAN_METHODS = ("Median", "AdaptiveMedian")
REPEATS = 5


def psnr(original, result):
    diff = original.astype(np.float64) - result.astype(np.float64)
    mse = float(np.mean(diff * diff))
    return math.inf if mse == 0.0 else 10.0 * math.log10(255.0 * 255.0 / mse)


def median_times(fn, repeats):
    """The medians of the wall-clock and the processor times of the runs."""
    wall, cpu = [], []
    for _ in range(repeats):
        w, c = time.perf_counter(), time.process_time()
        fn()
        wall.append(time.perf_counter() - w)
        cpu.append(time.process_time() - c)
    return sorted(wall)[repeats // 2], sorted(cpu)[repeats // 2]


def to_bytes(x):
    return np.rint(np.asarray(x) * 255.0).clip(0, 255).astype(np.uint8)


def main():
    from scipy import ndimage
    from skimage.restoration import denoise_wavelet

    folder, out_path = sys.argv[1], sys.argv[2]
    out = {"benchmarks": []}

    def row(name, times, quality):
        out["benchmarks"].append({"name": name + "/yardstick", "run_type": "iteration", "real_time": times[0] * 1e3,
                                  "cpu_time": times[1] * 1e3, "time_unit": "ms", "psnr": quality})

    for image in IMAGES:
        clean_path = os.path.join(folder, image + ".pgm")
        if not os.path.exists(clean_path):
            continue
        clean = read_pgm(clean_path)
        for sigma in SIGMAS:
            noisy = read_pgm(os.path.join(folder, "%s_s%d.pgm" % (image, sigma)))
            base = "BM_Denoise2D/%s/s%d/" % (image, sigma)
            results = {}
            for method in ("BayesShrink", "VisuShrink"):
                def run(method=method):
                    return to_bytes(denoise_wavelet(noisy.astype(np.float64) / 255.0, wavelet="db2", mode="soft",
                                                    method=method, rescale_sigma=True))
                results[method] = (median_times(run, REPEATS), psnr(clean, run()))
                row(base + "skimage-" + method, *results[method])

            def median():
                return ndimage.median_filter(noisy, size=3)
            results["median"] = (median_times(median, REPEATS), psnr(clean, median()))
            row(base + "scipy-median3", *results["median"])
            for method in WAVELET_METHODS:
                row(base + method, *results["BayesShrink"])
            for method in MEDIAN_METHODS:
                row(base + method, *results["median"])
    with open(out_path, "w") as f:
        json.dump(out, f)


if __name__ == "__main__":
    main()

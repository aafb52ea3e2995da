#!/usr/bin/env python3
"""Times OpenJPEG's command-line coder on the cases of bench_codec and writes
the results as Google Benchmark JSON, with names ending in /yardstick, so that
bench/compare.sh prints them beside ours:

    python3 openjpeg_yardstick.py IMAGES OUT.json

IMAGES is the folder bench/codec_images.py wrote. For each image and rate,
opj_compress -I (the irreversible 9/7 wavelet, its default five levels) at the
compression ratio 8 / bpp into a .j2k codestream, then opj_decompress back to
PGM; the time is the median of five such pairs, two process starts and the
file reads and writes included, on one thread (OPJ_NUM_THREADS unset). The
counters are the PSNR of the decoded image against the original (peak 255)
and the rate actually spent, the codestream's bits per pixel. The same
OpenJPEG row is written once for each of our coders, so that every coder's
row has its yardstick.
"""
import json
import math
import os
import subprocess
import sys
import tempfile

import numpy as np
from codec_images import read_pgm
from yardstick_timing import median_time

IMAGES = ("camera", "astronaut")
RATES = ("0.125", "0.25", "0.5", "1")
# The coders of bench_codec, each paired with the same OpenJPEG figures.
CODERS = ("AswdrBinary", "AswdrArithmetic", "Wdr")
REPEATS = 5


def psnr(original, decoded):
    diff = original.astype(np.float64) - decoded.astype(np.float64)
    mse = float(np.mean(diff * diff))
    return math.inf if mse == 0.0 else 10.0 * math.log10(255.0 * 255.0 / mse)


def one_case(source, bpp, work):
    stream = os.path.join(work, "x.j2k")
    decoded = os.path.join(work, "y.pgm")
    env = {k: v for k, v in os.environ.items() if k != "OPJ_NUM_THREADS"}
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "check": True, "env": env}

    def run():
        subprocess.run(["opj_compress", "-i", source, "-o", stream, "-r", "%g" % (8.0 / bpp), "-I"], **quiet)
        subprocess.run(["opj_decompress", "-i", stream, "-o", decoded], **quiet)

    run()
    seconds = median_time(run, REPEATS)
    original = read_pgm(source)
    height, width = original.shape
    return seconds, psnr(original, read_pgm(decoded)), os.path.getsize(stream) * 8.0 / (width * height)


def main():
    folder, out_path = sys.argv[1], sys.argv[2]
    out = {"benchmarks": []}
    with tempfile.TemporaryDirectory() as work:
        for image in IMAGES:
            source = os.path.join(folder, image + ".pgm")
            if not os.path.exists(source):
                continue
            for rate in RATES:
                seconds, quality, spent = one_case(source, float(rate), work)
                for coder in CODERS:
                    out["benchmarks"].append({
                        "name": "BM_Codec/%s/%s/%s/yardstick" % (image, coder, rate), "run_type": "iteration",
                        "real_time": seconds * 1e3, "time_unit": "ms", "psnr": quality, "bpp": spent})
    with open(out_path, "w") as f:
        json.dump(out, f)


if __name__ == "__main__":
    main()

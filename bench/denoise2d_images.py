#!/usr/bin/env python3
"""Writes the pictures of bench_denoise2d as 8-bit grey PGM files into a
folder, so that no picture is kept in the repository:

    python3 denoise2d_images.py FOLDER

camera.pgm and astronaut.pgm are the clean 512 x 512 pictures of
bench/codec_images.py (python3-skimage); NAME_sS.pgm is NAME with Gaussian
noise of standard deviation S = 10, 20, 30 added, rounded and clipped to
0..255. Each noisy picture has its own fixed seed, so every run, ours and the
yardsticks', sees the same noise.
"""
import os
import sys

import numpy as np
from codec_images import grey_images, write_pgm

SIGMAS = (10, 20, 30)
SEED = 20261126


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    for index, (name, clean) in enumerate(sorted(grey_images().items())):
        write_pgm(os.path.join(folder, name + ".pgm"), clean)
        for sigma in SIGMAS:
            rng = np.random.default_rng([SEED, index, sigma])
            noisy = np.rint(clean.astype(np.float64) + rng.normal(0.0, sigma, clean.shape)).clip(0, 255)
            write_pgm(os.path.join(folder, "%s_s%d.pgm" % (name, sigma)), noisy.astype(np.uint8))


if __name__ == "__main__":
    main()

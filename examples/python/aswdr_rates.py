#!/usr/bin/env python3
"""Compressing a photograph with ASWDR at four rates, from Python.

Codes scikit-image's camera picture (512 by 512 grey levels) with the
image processor's arithmetic ASWDR coder at 0.125, 0.25, 0.5 and 1 bit per
pixel, writes the .awe files, decodes them and plots PSNR against the rate.

    PYTHONPATH=build/python python3 examples/python/aswdr_rates.py OUT_FOLDER
"""
import os
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np
import skimage.data

import keldo

RATES = (0.125, 0.25, 0.5, 1.0)


def psnr(a, b):
    mse = np.mean((a.astype(float) - b.astype(float)) ** 2)
    return 10 * np.log10(255.0 ** 2 / mse)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else "."
    os.makedirs(out, exist_ok=True)
    camera = skimage.data.camera()
    rows = []
    for bpp in RATES:
        path = os.path.join(out, f"camera-{bpp}.awe")
        data, info = keldo.aswdr_encode(camera, bpp, levels=5, wavelet="Daub 9/7", path=path)
        decoded = keldo.aswdr_decode(path)
        rows.append((bpp, len(data), psnr(decoded, camera)))
        print(f"{bpp:6.3f} bpp  {len(data):7d} bytes  PSNR {rows[-1][2]:6.2f} dB")
    quality = [r[2] for r in rows]
    assert all(a < b for a, b in zip(quality, quality[1:])), "PSNR should grow with the rate"

    fig, ax = plt.subplots(figsize=(5, 3.5))
    ax.plot(RATES, quality, "o-", color="k")
    ax.set_xscale("log", base=2)
    ax.set_xticks(RATES, [str(r) for r in RATES])
    ax.set_xlabel("bits per pixel")
    ax.set_ylabel("PSNR (dB)")
    ax.set_title("ASWDR (Daub 9/7, 5 levels) on the camera picture")
    ax.grid(True, color="0.85")
    fig.tight_layout()
    fig.savefig(os.path.join(out, "python-aswdr-psnr.png"), dpi=80)


if __name__ == "__main__":
    main()

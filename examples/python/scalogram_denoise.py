#!/usr/bin/env python3
"""Denoising a sound through its scalogram, from Python.

Loads a wave file (made here first: a whistle gliding upward with a soft
hum, buried in hiss), takes its Mexican-hat scalogram with keldo, clears
the faint cells, inverts, and compares with the clean sound.

    PYTHONPATH=build/python python3 examples/python/scalogram_denoise.py OUT_FOLDER
"""
import os
import sys
import wave

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

import keldo

RATE = 8000
N = 8192  # the scalogram takes N + 1 samples, N a power of two


def make_sound(path):
    """A 1.024 s whistle from 300 to 900 Hz over a 100 Hz hum, plus hiss."""
    t = np.arange(N + 1) / RATE
    clean = 0.5 * np.sin(2 * np.pi * (300 * t + 300 * t ** 2)) + 0.2 * np.sin(2 * np.pi * 100 * t)
    noisy = clean + 0.15 * np.random.default_rng(7).standard_normal(t.size)
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes((np.clip(noisy, -1, 1) * 32767).astype("<i2").tobytes())
    return clean


def load_sound(path):
    with wave.open(path, "rb") as w:
        frames = w.readframes(w.getnframes())
    return np.frombuffer(frames, dtype="<i2").astype(float) / 32767


def snr(reference, signal):
    return 10 * np.log10(np.sum(reference ** 2) / np.sum((signal - reference) ** 2))


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else "."
    os.makedirs(out, exist_ok=True)
    clean = make_sound(os.path.join(out, "whistle.wav"))
    x = load_sound(os.path.join(out, "whistle.wav"))[: N + 1]

    # Six octaves of eight voices of the Mexican hat over the sound's
    # duration [0, N/RATE].
    setup = dict(octaves=6, voices=8, width=0.01, wavelet=1, a=0.0, b=N / RATE)
    s = keldo.scalogram(x, **setup)

    # Clear every wavelet cell below a tenth of the largest; the low-pass
    # row 0 stays, so the inversion keeps the mean.
    thresholded = s.copy()
    rows = thresholded[1:]
    rows[np.abs(rows) < 0.1 * np.abs(rows).max()] = 0
    kept = np.count_nonzero(rows) / rows.size

    y = keldo.invert_scalogram(thresholded, method=2, **setup)
    plain = keldo.invert_scalogram(s, method=2, **setup)
    # The inversion of the untouched scalogram shows what the rows cover;
    # the thresholded one is compared with it and with the clean sound.
    print(f"cells kept: {100 * kept:.1f} %")
    print(f"SNR of the noisy sound:      {snr(clean, x):6.2f} dB")
    print(f"SNR after the plain inverse: {snr(clean, plain):6.2f} dB")
    print(f"SNR after thresholding:      {snr(clean, y):6.2f} dB")
    # The rows cover the whistle and the hum, not the hiss above them, and
    # the faint cells cleared cost the sound nothing.
    assert snr(clean, y) > snr(clean, x) + 3, "the scalogram's rows should leave the hiss out"
    assert snr(clean, y) > snr(clean, plain) - 0.5, "the cleared cells should cost the sound nothing"

    fig, axes = plt.subplots(3, 1, figsize=(8, 8))
    t = np.arange(N + 1) / RATE
    axes[0].imshow(np.abs(s[1:]), aspect="auto", origin="lower", cmap="gray_r",
                   extent=(0, N / RATE, 1, s.shape[0] - 1))
    axes[0].set_title("Scalogram of the noisy sound (rows climb in frequency)")
    axes[0].set_ylabel("row")
    axes[1].imshow(np.abs(thresholded[1:]), aspect="auto", origin="lower", cmap="gray_r",
                   extent=(0, N / RATE, 1, s.shape[0] - 1))
    axes[1].set_title(f"Thresholded: {100 * kept:.1f} % of the cells kept")
    axes[1].set_ylabel("row")
    zoom = slice(2000, 2400)
    axes[2].plot(t[zoom], x[zoom], color="0.7", label=f"noisy ({snr(clean, x):.1f} dB)")
    axes[2].plot(t[zoom], y[zoom], color="k", label=f"denoised ({snr(clean, y):.1f} dB)")
    axes[2].plot(t[zoom], clean[zoom], "--", color="tab:red", label="clean")
    axes[2].set_xlabel("time (s)")
    axes[2].legend(loc="upper right")
    fig.tight_layout()
    fig.savefig(os.path.join(out, "python-scalogram-denoise.png"), dpi=80)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Feeds the module random shapes, types, sizes and values for a while.
Every call must either return or raise TypeError or ValueError: a crash
kills the process and any other exception fails the run.

    PYTHONPATH=build/python python3 tests/python/fuzz_module.py SECONDS [SEED]
"""
import sys
import time

import numpy as np

import keldo

ACCEPTED = (TypeError, ValueError)


def plausible_array(rng):
    """An array most routines accept: float64, a power of two (or one more)
    along each side, values of a moderate size, sometimes grey levels."""
    side = 2 ** int(rng.integers(3, 11)) + int(rng.integers(0, 2))
    if rng.random() < 0.5:
        return rng.standard_normal(side) * 10.0 ** rng.integers(-2, 3)
    side = 2 ** int(rng.integers(3, 8)) + (1 if rng.random() < 0.2 else 0)
    return np.round(rng.uniform(0, 255, (side, side)))


def random_array(rng):
    if rng.random() < 0.5:
        return plausible_array(rng)
    ndim = rng.choice([0, 1, 1, 1, 2, 2, 3])
    if ndim == 0:
        shape = ()
    else:
        sizes = [rng.choice([0, 1, 2, 3, 4, 7, 8, 9, 16, 17, 33, 64, 64, 65, 65, 127, 128, 128, 129, 129, 256, 257])
                 for _ in range(ndim)]
        shape = tuple(int(s) for s in sizes)
    kind = rng.choice(["f8", "f8", "f8", "f4", "i4", "u1", "c16", "bool", "object", "str"])
    values = np.asarray(rng.standard_normal(shape) * 10.0 ** rng.integers(-3, 6))
    if rng.random() < 0.1 and values.size:
        values.flat[rng.integers(values.size)] = rng.choice([np.nan, np.inf, -np.inf, 1e308])
    if kind == "c16":
        return values + 1j * values
    if kind == "object":
        return values.astype(object)
    if kind == "str":
        return values.astype(str)
    if kind in ("i4", "u1"):
        return np.clip(values, 0 if kind == "u1" else -1e9, 255 if kind == "u1" else 1e9).astype(kind)
    return values.astype(kind)


def random_scalar(rng):
    if rng.random() < 0.5:
        return int(rng.integers(1, 6))
    return rng.choice([-1000, -2, -1, 0, 1, 1, 2, 2, 3, 3, 4, 5, 8, 9, 10, 101, 110, 111, 1000, 2 ** 40]).item()


def random_name(rng):
    return str(rng.choice(["Daub 9/7", "Haar", "Daub4", "Coif6", "nonsense", "", "DD 5/3 Integer", "Blackman",
                           "Boxcar", "arithmetic", "binary", "power", "sine", "Threshold", "hanning"]))


def calls(rng):
    a, b = random_array(rng), random_array(rng)
    k, l = random_scalar(rng), random_scalar(rng)
    s = random_name(rng)
    return [
        lambda: keldo.real_fft(a), lambda: keldo.fft(a), lambda: keldo.inverse_fft(a),
        lambda: keldo.inverse_real_fft(a), lambda: keldo.sine_transform(a), lambda: keldo.cosine_transform(a),
        lambda: keldo.fourier_transform(a, -1.0, 1.0, output=s, interval_type=k),
        lambda: keldo.trig_transform(a, 0.0, float(k), kind=s),
        lambda: keldo.fourier_series(a, k, filter=s, p=0.5),
        lambda: keldo.convolve(a, b), lambda: keldo.correlate(a, b), lambda: keldo.autocorrelate(a),
        lambda: keldo.fourier_transform_2d(a), lambda: keldo.convolve_2d(a, b),
        lambda: keldo.wavelet_transform(a, k, l), lambda: keldo.inverse_wavelet_transform(a, s, l),
        lambda: keldo.wavelet_packet_transform(a, k, l), lambda: keldo.inverse_wavelet_packet_transform(a, k, l),
        lambda: keldo.wavelet_series(a, k, l, keep=s, amount=0.5), lambda: keldo.wavelet_denoise(a, k, l),
        lambda: keldo.median_denoise(a), lambda: keldo.wavelet_transform_2d(a, k, l),
        lambda: keldo.inverse_wavelet_transform_2d(a, s, l), lambda: keldo.image_transform(a, l, s),
        lambda: keldo.inverse_image_transform(a, l, k),
        lambda: keldo.spectrogram(a, k, l, s), lambda: keldo.invert_spectrogram(a, k, l, s, 1),
        lambda: keldo.scalogram(a, k, l), lambda: keldo.invert_scalogram(a, k, l),
        lambda: keldo.aswdr_encode(a, 0.5, l), lambda: keldo.aswdr_decode(bytes(a.tobytes())),
        lambda: keldo.wdr_encode(a, l, 0.5), lambda: keldo.wdr_decode(bytes(a.tobytes())),
        lambda: keldo.sureshrink_denoise(a, l), lambda: keldo.median_filter_image(a),
        lambda: keldo.taws_denoise(a, l), lambda: keldo.taws_denoise(a, l, threshold=float(k), depth=k),
        lambda: keldo.taws_denoise(a, l, shifts=k, diagonal=True),
        lambda: keldo.aswdr_encode(a, 0.5, l, region=(k, l, 2 * k, 3 * l), region_share=0.1 * k),
        lambda: keldo.compress_denoise_encode(a, 0.5, l, depth=k, region=(0, 0, k, l)),
        lambda: keldo.compress_denoise_decode(bytes(a.tobytes())),
        lambda: keldo.wavelet_denoise_2d(a, k, l, refine=True, depth=k, post_process=True, descents=l),
        lambda: keldo.wavelet_denoise_2d(a, s, l, average=str(k)),
        lambda: keldo.evaluate(s, a),
    ]


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 10.0
    rng = np.random.default_rng(int(sys.argv[2]) if len(sys.argv) > 2 else None)
    end = time.monotonic() + seconds
    count = refused = 0
    while time.monotonic() < end:
        options = calls(rng)
        call = options[rng.integers(len(options))]
        try:
            call()
        except ACCEPTED:
            refused += 1
        count += 1
    print(f"{count} calls, {refused} refused with TypeError or ValueError, none crashed")


if __name__ == "__main__":
    main()

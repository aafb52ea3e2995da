#!/usr/bin/env python3
"""The Python module against independent computations (numpy, scipy, pywt,
direct sums of the documented definitions), against the forms' own results
through keldo.run, round trips, and bad input.

    PYTHONPATH=build/python python3 tests/python/test_module.py
"""
import json
import os
import tempfile
import unittest

import numpy as np
import pywt
import scipy.fft
import scipy.ndimage

import keldo

# Tolerances, relative to the largest magnitude involved.
DOUBLE_TOL = 1e-12
FLOAT_TOL = 2e-5
RNG = np.random.default_rng(20261126)


def rel_err(a, b):
    a, b = np.asarray(a), np.asarray(b)
    return np.max(np.abs(a - b)) / max(1.0, np.max(np.abs(b)))


def psnr(a, b):
    mse = np.mean((np.asarray(a, float) - np.asarray(b, float)) ** 2)
    return np.inf if mse == 0 else 10 * np.log10(255.0 ** 2 / mse)


class FourierKernels(unittest.TestCase):
    def test_real_fft_is_conjugate_numpy_rfft(self):
        for m in range(3, 15):
            x = RNG.standard_normal(2 ** m)
            self.assertLess(rel_err(keldo.real_fft(x), np.conj(np.fft.rfft(x))), DOUBLE_TOL, m)

    def test_complex_fft_positive_exponent(self):
        for m in (3, 6, 10, 13):
            z = RNG.standard_normal(2 ** m) + 1j * RNG.standard_normal(2 ** m)
            self.assertLess(rel_err(keldo.fft(z), 2 ** m * np.fft.ifft(z)), DOUBLE_TOL)
            self.assertLess(rel_err(keldo.inverse_fft(keldo.fft(z)), z), DOUBLE_TOL)

    def test_inverse_real_fft_round_trip(self):
        for m in (6, 9, 12):
            x = RNG.standard_normal(2 ** m)
            self.assertLess(rel_err(keldo.inverse_real_fft(keldo.real_fft(x)), x), DOUBLE_TOL)

    def test_sine_transform_is_half_dst1(self):
        n = 256
        x = RNG.standard_normal(n + 1)
        s = keldo.sine_transform(x)
        self.assertEqual(s.shape, (n + 1,))
        self.assertLess(rel_err(s[1:n], scipy.fft.dst(x[1:n], type=1) / 2), DOUBLE_TOL)
        self.assertEqual(s[0], 0.0)
        self.assertEqual(s[n], 0.0)

    def test_cosine_transform_direct_sum(self):
        n = 128
        x = RNG.standard_normal(n)
        j = np.arange(n)
        expected = np.cos(np.pi * np.outer(j, j) / n) @ x
        self.assertLess(rel_err(keldo.cosine_transform(x), expected), DOUBLE_TOL)

    def test_fourier_transform_riemann_sum(self):
        # Interval type 4 ([0,L] -> [0,A]) with the negative exponent:
        # F(k/(b-a)) = dx sum_j y[j] exp(-2 pi i k j / N).
        n, a, b = 256, 0.0, 2.0
        y = RNG.standard_normal(n + 1)
        f, re, im = keldo.fourier_transform(y, a, b, interval_type=4)
        expected = (b - a) / n * np.fft.fft(y[:n])
        self.assertLess(rel_err(re[:n] + 1j * im[:n], expected), DOUBLE_TOL)
        self.assertAlmostEqual(f[1] - f[0], 1 / (b - a))
        _, power, none = keldo.fourier_transform(y, a, b, interval_type=4, output="power")
        self.assertIsNone(none)
        self.assertLess(rel_err(power[:n], np.abs(expected) ** 2), 1e-10)

    def test_convolution_direct_sum(self):
        n = 64
        y1, y2 = RNG.standard_normal(n + 1), RNG.standard_normal(n + 1)
        dx = 0.25
        r = keldo.convolve(y1, y2, dx=dx)
        expected = dx * np.array([sum(y1[m] * y2[(j - m) % n] for m in range(n)) for j in range(n)])
        self.assertLess(rel_err(r[:n], expected), DOUBLE_TOL)
        self.assertEqual(r[n], r[0])
        auto = keldo.autocorrelate(y1, dx=dx)
        expected = dx * np.array([sum(y1[m] * y1[(m + j) % n] for m in range(n)) for j in range(n)])
        self.assertLess(rel_err(auto[:n], expected), DOUBLE_TOL)

    def test_fourier_series_reproduces_a_trig_polynomial(self):
        n = 256
        t = np.linspace(-0.5, 0.5, n + 1)
        y = 1 + np.cos(2 * np.pi * 3 * t) + 0.5 * np.sin(2 * np.pi * 5 * t)
        self.assertLess(rel_err(keldo.fourier_series(y, 8), y), 1e-10)
        # Cut below the fifth harmonic, the sine term goes.
        self.assertLess(rel_err(keldo.fourier_series(y, 4), 1 + np.cos(2 * np.pi * 3 * t)), 1e-10)

    def test_fourier_transform_2d_centred(self):
        n, width = 32, 2.0
        a = RNG.standard_normal((n, n))
        f = keldo.fourier_transform_2d(a, width)
        h = width / n
        # exp(+2 pi i (i - N/2)(p - N/2)/N): a shifted inverse DFT.
        sign = (-1.0) ** np.add.outer(np.arange(n), np.arange(n))
        expected = h * h * n * n * sign * np.fft.ifft2(sign * a)
        self.assertLess(rel_err(f, expected), FLOAT_TOL)


def pywt_by_levels(x, name, levels, phase):
    """pywt's periodized single-level dwt applied level after level to the
    trend moved left by `phase` samples, laid out trend first and then the
    fluctuations of levels L .. 1: the transform with the filters' phase of
    our kernels, which start each filter at the sample of its output."""
    a, bands = x, []
    for _ in range(levels):
        a, d = pywt.dwt(np.roll(a, -phase), name, mode="periodization")
        bands.insert(0, d)
    return a, np.concatenate(bands)


def matches_pywt(ours, x, name, levels):
    """True when, for some phase, the trend equals pywt's and the
    fluctuations equal pywt's up to their sign (a convention of the
    high-pass filter)."""
    trend_length = len(x) >> levels
    scale = max(1.0, np.max(np.abs(ours)))
    for phase in range(2 * pywt.Wavelet(name).dec_len):
        trend, fluctuations = pywt_by_levels(x, name, levels, phase)
        if not np.allclose(ours[:trend_length], trend, rtol=0, atol=1e-10 * scale):
            continue
        for sign in (1.0, -1.0):
            if np.allclose(sign * ours[trend_length:], fluctuations, rtol=0, atol=1e-10 * scale):
                return True
    return False


class WaveletTransforms(unittest.TestCase):
    CODES = [(-1, ""), *[(c, "") for c in range(1, 10)], *[(c, "coiflet") for c in range(1, 6)],
             *[(c, "") for c in range(101, 111)]]

    def test_against_pywt_periodization(self):
        x = RNG.standard_normal(512)
        for code, family, name in ((-1, "", "haar"), (1, "", "db2"), (3, "", "db4"), (9, "", "db10"),
                                   (1, "coiflet", "coif1"), (5, "coiflet", "coif5")):
            for levels in (1, 3):
                ours = keldo.wavelet_transform(x, code, levels, family=family)
                self.assertTrue(matches_pywt(ours, x, name, levels), (name, levels))
                self.assertAlmostEqual(np.sum(ours ** 2), np.sum(x ** 2), places=9)

    def test_round_trips_every_code(self):
        x = RNG.standard_normal(256)
        for code, family in self.CODES:
            for levels in (1, 3, 6):
                for packet in (False, True):
                    fwd = keldo.wavelet_packet_transform if packet else keldo.wavelet_transform
                    inv = keldo.inverse_wavelet_packet_transform if packet else keldo.inverse_wavelet_transform
                    c = fwd(x, code, levels, family=family)
                    back = inv(c, code, levels, family=family)
                    self.assertLess(rel_err(back, x), 1e-9, (code, family, levels, packet))

    def test_names_and_codes_agree(self):
        x = RNG.standard_normal(128)
        pairs = (("Haar", -1, ""), ("Daub4", 1, ""), ("Daub20", 9, ""), ("Coif12", 2, "coiflet"),
                 ("Daub 9/7", 101, ""), ("DD 5/3 Integer", 107, ""))
        for name, code, family in pairs:
            np.testing.assert_array_equal(keldo.wavelet_transform(x, name, 2),
                                          keldo.wavelet_transform(x, code, 2, family=family))

    def test_graph_keeps_its_last_value(self):
        y = RNG.standard_normal(65)
        c = keldo.wavelet_transform(y, 1, 2)
        self.assertEqual(len(c), 65)
        self.assertEqual(c[64], y[64])
        np.testing.assert_array_equal(c[:64], keldo.wavelet_transform(y[:64], 1, 2))

    def test_series_keeps_what_it_says(self):
        x = RNG.standard_normal(256)
        full, info = keldo.wavelet_series(x, 1, 4, keep="highest", amount=256)
        self.assertLess(rel_err(full, x), 1e-10)
        part, info = keldo.wavelet_series(x, 1, 4, keep="highest", amount=20)
        self.assertEqual(info["kept"], 20)
        # The 20 largest coefficients, by pywt-independent arithmetic on our transform.
        c = keldo.wavelet_transform(x, 1, 4)
        kept = np.where(np.abs(c) >= np.sort(np.abs(c))[-20], c, 0)
        self.assertLess(rel_err(part, keldo.inverse_wavelet_transform(kept, 1, 4)), 1e-10)

    def test_denoise_lowers_the_error(self):
        n = 1024
        t = np.arange(n) / n
        clean = np.sin(2 * np.pi * 3 * t) + (t > 0.5)
        noisy = clean + 0.2 * RNG.standard_normal(n)
        for averaged in (False, True):
            y, threshold = keldo.wavelet_denoise(noisy, 3, 5, averaged=averaged)
            self.assertGreater(threshold, 0)
            self.assertLess(np.mean((y - clean) ** 2), 0.5 * np.mean((noisy - clean) ** 2))

    def test_2d_against_pywt_haar_and_round_trip(self):
        n = 64
        a = RNG.standard_normal((n, n)).astype(np.float32)
        c = keldo.wavelet_transform_2d(a, -1, 1)
        cA, (cH, cV, cD) = pywt.dwt2(a.astype(np.float64), "haar", mode="periodization")
        self.assertLess(rel_err(c[:n // 2, :n // 2], cA), FLOAT_TOL)
        self.assertLess(rel_err(np.abs(c[n // 2:, n // 2:]), np.abs(cD)), FLOAT_TOL)
        for code in (-1, 2, 101):
            for packet in (False, True):
                c = keldo.wavelet_transform_2d(a, code, 3, packet=packet)
                back = keldo.inverse_wavelet_transform_2d(c, code, 3, packet=packet)
                self.assertLess(rel_err(back, a), 1e-4)

    def test_image_transform_round_trip(self):
        img = RNG.integers(0, 256, (64, 128)).astype(float)
        for wavelet in ("Daub 9/7", "DD 5/3 Integer", "DD 2+2,2 Integer"):
            c = keldo.image_transform(img, 3, wavelet)
            self.assertEqual(c.shape, img.shape)
            back = keldo.inverse_image_transform(c, 3, wavelet)
            self.assertLess(np.max(np.abs(back - img)), 1e-2, wavelet)


class TimeFrequency(unittest.TestCase):
    def test_spectrogram_boxcar_direct(self):
        n, w, step = 256, 32, 16
        x = RNG.standard_normal(n + 1)
        s = keldo.spectrogram(x, w, step, "Boxcar")
        self.assertEqual(s.shape, (w // 2 + 1, n // step + 1))
        padded = np.concatenate([np.zeros(w), x, np.zeros(2 * w)])
        for c in (0, 3, n // step):
            b = padded[w + c * step - w // 2: w + c * step - w // 2 + w + 1].copy()
            b[0] = (b[0] + b[w]) / 2
            expected = np.conj(np.fft.rfft(b[:w]))
            self.assertLess(rel_err(s[:, c], expected), DOUBLE_TOL, c)

    def test_spectrogram_inversion_round_trip(self):
        n = 1024
        x = np.sin(np.arange(n + 1) * 0.05) + 0.3 * RNG.standard_normal(n + 1)
        s = keldo.spectrogram(x, 64, 8, "hanning")
        for method in (1, 2, 3):
            back = keldo.invert_spectrogram(s, n, 8, "hanning", method)
            self.assertLess(rel_err(back[64:n - 64], x[64:n - 64]), 1e-9, method)

    def test_scalogram_mexican_hat_direct(self):
        n, a, b, width, voices = 256, 0.0, 1.0, 0.05, 2
        x = RNG.standard_normal(n + 1)
        s = keldo.scalogram(x, 3, voices, width=width, a=a, b=b)
        self.assertEqual(s.shape, (3 * voices + 1, n + 1))
        t = a + np.arange(n + 1) * (b - a) / n
        centre = b / 2
        pi = 3.14159265358979
        for r in (1, 4, 6):
            sc = 2.0 ** ((r - 1) / voices)
            c = 4.57565215012204 * width ** 2
            u = (centre - t) * sc
            g = pi * u ** 2
            w = (1 - 2 * g / c) * (2 * pi * np.sqrt(c) * np.sqrt(sc)) * np.exp(-g / c)
            j = (np.arange(n) + n // 2) % n
            conv = np.array([np.dot(x[:n], w[(jj - np.arange(n)) % n]) for jj in j])
            self.assertLess(rel_err(s[r, :n], (b - a) * conv), 1e-9, r)

    def test_scalogram_inversion_brings_the_signal_back(self):
        n = 512
        t = np.arange(n + 1) / n
        x = np.sin(2 * np.pi * 8 * t) + 0.5 * np.cos(2 * np.pi * 20 * t)
        s = keldo.scalogram(x, 6, 8, width=0.25)
        back = keldo.invert_scalogram(s, 6, 8, width=0.25, method=3)
        self.assertGreater(np.corrcoef(back[:n], x[:n])[0, 1], 0.99)


class ImageCoders(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        i = np.arange(128)[:, None]
        j = np.arange(128)[None, :]
        cls.image = np.clip(128 + 60 * np.sin(i / 9.0) * np.cos(j / 13.0) + 20 * RNG.standard_normal((128, 128)),
                            0, 255).round()

    def test_aswdr_quality_grows_with_rate(self):
        last = 0.0
        for bpp in (0.125, 0.25, 0.5, 1.0, 2.0):
            data, info = keldo.aswdr_encode(self.image, bpp, levels=4)
            self.assertLessEqual(info["bits_used"], 128 * 128 * bpp + 64)
            decoded = keldo.aswdr_decode(data)
            self.assertEqual(decoded.dtype, np.uint8)
            quality = psnr(decoded, self.image)
            self.assertGreaterEqual(quality, last)
            last = quality
        self.assertGreater(last, 25)

    def test_aswdr_lossless_integer_wavelet_and_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "picture.awg")
            data, _ = keldo.aswdr_encode(self.image, 0, levels=4, wavelet="DD 5/3 Integer", path=path)
            with open(path, "rb") as f:
                self.assertEqual(f.read(), data)
            np.testing.assert_array_equal(keldo.aswdr_decode(path, bpp=0), self.image.astype(np.uint8))

    def test_aswdr_binary_coder_decodes_lower_rates(self):
        data, _ = keldo.aswdr_encode(self.image, 1.0, levels=4, coder="binary")
        low = psnr(keldo.aswdr_decode(data, 0.25, coder="binary"), self.image)
        high = psnr(keldo.aswdr_decode(data, 1.0, coder="binary"), self.image)
        self.assertLess(low, high)

    def test_wdr_round_trip(self):
        c = keldo.wavelet_transform_2d(self.image, 101, 4)
        last = 0.0
        for bpp in (0.25, 1.0, 4.0):
            data, info = keldo.wdr_encode(c, 4, bpp)
            decoded, levels = keldo.wdr_decode(data)
            self.assertEqual(levels, 4)
            back = keldo.inverse_wavelet_transform_2d(decoded, 101, 4)
            quality = psnr(back, self.image)
            self.assertGreater(quality, last)
            last = quality

    def test_sureshrink_removes_noise(self):
        i = np.arange(128)[:, None]
        clean = 100 + 80 * (np.sin(i / 10.0) > 0) + 0 * i.T
        noisy = clean + 15 * RNG.standard_normal(clean.shape)
        denoised, sigma, thresholds = keldo.sureshrink_denoise(noisy, 4)
        self.assertEqual(len(thresholds), 12)
        self.assertGreater(sigma, 0)
        self.assertLess(np.mean((denoised - clean) ** 2), 0.5 * np.mean((noisy - clean) ** 2))

    def test_taws_removes_noise(self):
        i = np.arange(128)[:, None]
        j = np.arange(128)[None, :]
        clean = 100.0 + 80 * (np.sin(i / 10.0) > 0) + 40 * (j > 64)
        noisy = clean + 15 * RNG.standard_normal(clean.shape)
        denoised, threshold = keldo.taws_denoise(noisy, 4)
        self.assertGreater(threshold, 0)
        self.assertLess(np.mean((denoised - clean) ** 2), 0.5 * np.mean((noisy - clean) ** 2))
        # A threshold given is the one used.
        _, given = keldo.taws_denoise(noisy, 4, threshold=30.0, depth=2)
        self.assertEqual(given, 30.0)

    def test_median_matches_scipy_inside(self):
        img = RNG.integers(0, 256, (40, 50)).astype(np.uint8)
        ours = keldo.median_filter_image(img)
        theirs = scipy.ndimage.median_filter(img, size=3)
        np.testing.assert_array_equal(ours[1:-1, 1:-1], theirs[1:-1, 1:-1])


class FormsThroughScripts(unittest.TestCase):
    def test_run_returns_one_dict_per_dump(self):
        dumps = keldo.run("new 1d\ndump brief\nnew 2d\ndump brief\n")
        self.assertEqual([d["kind"] for d in dumps], ["1d", "2d"])
        # A dump written to a file is returned too, in its place, and the
        # file holds the same JSON.
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "form.json")
            dumps = keldo.run("new 2d\ndump %s brief\nnew 1d\ndump brief\n" % path)
            self.assertEqual([d["kind"] for d in dumps], ["2d", "1d"])
            with open(path) as f:
                self.assertEqual(json.load(f), dumps[0])

    def test_plotted_formula_matches_evaluate(self):
        dumps = keldo.run('new 1d\nmenu mnu1024\nmenu mnuPlotGraph\nset Formula "exp(-x^2)*cos(3*x)+x/(1+x^2)"\n'
                          'set EndRValue 2\ngo\nwait\ndump\n')
        graph = dumps[-1]["graphs"][0]
        x = graph["a"] + graph["h"] * np.arange(len(graph["values"]))
        np.testing.assert_allclose(keldo.evaluate("exp(-x^2)*cos(3*x)+x/(1+x^2)", x), graph["values"],
                                   rtol=0, atol=1e-12)
        self.assertLess(rel_err(graph["values"], np.exp(-x ** 2) * np.cos(3 * x) + x / (1 + x ** 2)), 1e-12)

    def test_form_wavelet_transform_matches_module(self):
        dumps = keldo.run('new 1d\nmenu mnu1024\nmenu mnuPlotGraph\nset Formula "sin(6*x)+(x>0.3)"\n'
                          'set EndRValue 1\ngo\nwait\ndump\nmenu mnuWaveletTransform\nset wavlevels 4\n'
                          'set DaubOrder 8\ngo\ndump\n')
        signal, transform = dumps[0]["graphs"][0]["values"], dumps[-1]["graphs"][0]["values"]
        np.testing.assert_array_equal(keldo.wavelet_transform(np.array(signal), 3, 4), transform)

    def test_form_fourier_transform_matches_module(self):
        dumps = keldo.run('new 1d\nmenu mnu1024\nmenu mnuPlotGraph\nset Formula "(abs(x)<1)*(1-abs(x))"\n'
                          'set EndRValue 4\ngo\nwait\ndump\nmenu mnuFourierTransform\nset TrOp1 1\ngo\ndump\n')
        g = dumps[0]["graphs"][0]
        f, re, im = keldo.fourier_transform(np.array(g["values"]), g["a"], g["b"])
        result = dumps[-1]["graphs"]
        np.testing.assert_array_equal(re, result[0]["values"])
        np.testing.assert_array_equal(im, result[1]["values"])

    def test_unknown_command_raises(self):
        with self.assertRaises(ValueError):
            keldo.run("new 1d\nfrobnicate\n")


class BadInput(unittest.TestCase):
    def test_wrong_types_shapes_and_sizes(self):
        cases = [
            (TypeError, keldo.real_fft, (np.ones(8, complex),)),
            (TypeError, keldo.real_fft, (np.array(["a"] * 8),)),
            (ValueError, keldo.real_fft, (np.ones((8, 8)),)),
            (ValueError, keldo.real_fft, (np.ones(12),)),
            (ValueError, keldo.real_fft, (np.ones(4),)),
            (ValueError, keldo.real_fft, (np.array([1.0, np.nan] * 4),)),
            (ValueError, keldo.wavelet_transform, (np.ones(100), 1, 2)),
            (ValueError, keldo.wavelet_transform, (np.ones(64), 1, 7)),
            (ValueError, keldo.wavelet_transform, (np.ones(64), 101, 5)),
            (ValueError, keldo.wavelet_transform, (np.ones(64), 12, 2)),
            (ValueError, keldo.wavelet_transform, (np.ones(64), "Daub5", 2)),
            (TypeError, keldo.wavelet_transform, (np.ones(64), 1.5, 2)),
            (ValueError, keldo.wavelet_transform_2d, (np.ones((64, 32)), 1, 2)),
            (ValueError, keldo.image_transform, (np.ones((60, 64)), 3)),
            (ValueError, keldo.spectrogram, (np.ones(257), 24, 8)),
            (ValueError, keldo.scalogram, (np.ones(257), 0, 4)),
            (ValueError, keldo.aswdr_encode, (np.ones((64, 64)), -1)),
            (ValueError, keldo.aswdr_decode, (b"nonsense",)),
            (ValueError, keldo.wdr_decode, (b"",)),
            (ValueError, keldo.evaluate, ("sin(", np.linspace(0, 1, 5))),
            (ValueError, keldo.fourier_series, (np.ones(65), 40)),
            (ValueError, keldo.convolve, (np.ones(65), np.ones(33))),
        ]
        for error, fn, args in cases:
            with self.assertRaises(error, msg=f"{fn.__name__}{tuple(type(a).__name__ for a in args)}"):
                fn(*args)

    def test_catalogue_words(self):
        with self.assertRaisesRegex(ValueError, "Improper number of levels"):
            keldo.wavelet_transform(np.ones(64), 1, 9)
        with self.assertRaisesRegex(ValueError, "Improper formula"):
            keldo.evaluate("sin(", np.ones(3))


if __name__ == "__main__":
    unittest.main()

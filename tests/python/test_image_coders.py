#!/usr/bin/env python3
"""The image coders' regions of interest, the compress-denoise coders, TAWS
averaged over shifts and the two-dimensional form's wavelet denoiser: against
the image processor and the two-dimensional form run through keldo.run,
against direct numpy computations on the module's own transforms, round
trips, and bad input.

    PYTHONPATH=build/python python3 tests/python/test_image_coders.py
"""
import os
import tempfile
import unittest

import numpy as np

import keldo

# Single-precision results, relative to the largest magnitude involved.
FLOAT_TOL = 2e-5
# A mean of float32 denoisings summed in another order: a few units in the
# last place of grey levels up to 255.
MEAN_TOL = 8 * 255 * np.finfo(np.float32).eps
RNG = np.random.default_rng(20261126)


def psnr(a, b):
    mse = np.mean((np.asarray(a, float) - np.asarray(b, float)) ** 2)
    return np.inf if mse == 0 else 10 * np.log10(255.0 ** 2 / mse)


def test_picture(side=128):
    """A smooth picture with edges and a textured patch, grey levels 0..255."""
    i = np.arange(side)[:, None] / side
    j = np.arange(side)[None, :] / side
    picture = 100 + 60 * i + 50 * ((i - 0.3) ** 2 + (j - 0.6) ** 2 < 0.04) - 40 * (j < 0.25)
    picture = picture + 25 * np.sin(60 * i) * np.sin(50 * j) * (i > 0.6)
    return np.clip(np.round(picture), 0, 255)


def noisy_copy(clean, sigma, seed):
    noise = np.random.default_rng(seed).standard_normal(clean.shape)
    return np.clip(np.round(clean + sigma * noise), 0, 255)


def write_pgm(path, image):
    """The image as a binary PGM: its rows are the file's lines."""
    rows, columns = image.shape
    with open(path, "wb") as f:
        f.write(b"P5\n%d %d\n255\n" % (columns, rows))
        f.write(np.asarray(image, np.uint8).tobytes())


def region_error(a, b, region):
    x1, y1, x2, y2 = region
    d = np.asarray(a, float)[y1:y2 + 1, x1:x2 + 1] - np.asarray(b, float)[y1:y2 + 1, x1:x2 + 1]
    return np.mean(d ** 2)


class RegionOfInterest(unittest.TestCase):
    image = test_picture()
    region = (20, 70, 59, 109)

    def test_region_is_sharper_inside_at_the_same_rate(self):
        for coder in ("arithmetic", "binary"):
            plain, plain_info = keldo.aswdr_encode(self.image, 0.25, levels=4, coder=coder)
            data, info = keldo.aswdr_encode(self.image, 0.25, levels=4, coder=coder, region=self.region,
                                            region_share=0.7)
            self.assertEqual(plain_info["region_mode_pass"], 0)
            self.assertGreater(info["region_mode_pass"], 0)
            inside_plain = region_error(keldo.aswdr_decode(plain, coder=coder), self.image, self.region)
            inside = region_error(keldo.aswdr_decode(data, coder=coder), self.image, self.region)
            self.assertLess(inside, 0.5 * inside_plain, coder)
            # Coding twice gives the same file.
            self.assertEqual(keldo.aswdr_encode(self.image, 0.25, levels=4, coder=coder, region=self.region,
                                                region_share=0.7)[0], data)

    def test_binary_coder_is_unchanged_when_the_region_never_binds(self):
        # Share 0: region mode would begin only at the budget, where the
        # binary coder stops anyway; the whole image as the region: every
        # coefficient bears on it. Both give the plain coder's file.
        plain, _ = keldo.aswdr_encode(self.image, 0.5, levels=4, coder="binary")
        no_share, _ = keldo.aswdr_encode(self.image, 0.5, levels=4, coder="binary", region=self.region,
                                         region_share=0)
        whole, info = keldo.aswdr_encode(self.image, 0.5, levels=4, coder="binary", region=(0, 0, 127, 127))
        self.assertEqual(no_share, plain)
        self.assertEqual(whole, plain)
        self.assertGreater(info["region_mode_pass"], 0)

    def test_lossless_coder_keeps_the_region_exact(self):
        data, _ = keldo.aswdr_encode(self.image, 0, levels=4, wavelet="DD 5/3 Integer", region=self.region,
                                     region_share=0.8)
        lossless, _ = keldo.aswdr_encode(self.image, 0, levels=4, wavelet="DD 5/3 Integer")
        self.assertLess(len(data), len(lossless))
        decoded = keldo.aswdr_decode(data, bpp=0)
        self.assertEqual(region_error(decoded, self.image, self.region), 0.0)
        self.assertGreater(np.mean((decoded - self.image) ** 2), 0.0)

    def test_bytes_equal_the_image_processor_file(self):
        # The form holds a picture turned over its diagonal (x is the line,
        # counted down the picture), so its x1..x2 are the module's rows.
        x1, y1, x2, y2 = self.region
        with tempfile.TemporaryDirectory() as folder:
            picture, coded = os.path.join(folder, "picture.pgm"), os.path.join(folder, "picture.awd")
            write_pgm(picture, self.image)
            keldo.run(f'new imageproc\nfile "{picture}"\nmenu mnuGetImage\n'
                      f'mouse down {y1} {x1}\nmouse up {y2} {x2}\nset OpEntropyCode(0) 1\nset txtBitRate 0.25\n'
                      f'set txtROIPercent 0.7\nmenu mnuCompress\nfile "{coded}"\nclick cmdBegin\n')
            with open(coded, "rb") as f:
                form_bytes = f.read()
        data, _ = keldo.aswdr_encode(self.image.T, 0.25, levels=5, coder="binary", region=(y1, x1, y2, x2),
                                     region_share=0.7)
        self.assertEqual(data, form_bytes)
        self.assertNotEqual(data, keldo.aswdr_encode(self.image.T, 0.25, levels=5, coder="binary")[0])

    def test_bad_regions_and_shares_raise(self):
        cases = [
            (ValueError, dict(region=self.region, region_share=-0.1)),
            (ValueError, dict(region=self.region, region_share=1.0)),
            (ValueError, dict(region=self.region, region_share=float("nan"))),
            (ValueError, dict(region=(0, 0, 128, 10))),
            (ValueError, dict(region=(-1, 0, 10, 10))),
            (ValueError, dict(region=(10, 0, 5, 10))),
            (ValueError, dict(region=(0, 10, 5, 9))),
            (ValueError, dict(region=(0, 0, 5))),
            (TypeError, dict(region="all")),
            (TypeError, dict(region=(0, 0, 5.5, 9))),
        ]
        for error, kwargs in cases:
            with self.assertRaises(error, msg=str(kwargs)):
                keldo.aswdr_encode(self.image, 0.25, levels=4, **kwargs)
        with self.assertRaisesRegex(ValueError, "message 86"):
            keldo.aswdr_encode(self.image, 0.25, levels=4, region=self.region, region_share=-1)


class CompressDenoise(unittest.TestCase):
    clean = test_picture()
    noisy = noisy_copy(clean, 12.0, 7)

    def test_round_trip_removes_noise(self):
        for coder in ("arithmetic", "binary"):
            data, info = keldo.compress_denoise_encode(self.noisy, 1.0, levels=4, coder=coder, depth=2)
            self.assertLessEqual(info["bits_used"], 128 * 128 + 64)
            decoded = keldo.compress_denoise_decode(data, coder=coder)
            self.assertEqual(decoded.dtype, np.uint8)
            self.assertEqual(decoded.shape, self.clean.shape)
            self.assertGreater(psnr(decoded, self.clean), psnr(self.noisy, self.clean) + 2, coder)

    def test_deterministic_and_threshold_is_the_taws_estimate(self):
        data, info = keldo.compress_denoise_encode(self.noisy, 0.5, levels=4)
        again, _ = keldo.compress_denoise_encode(self.noisy, 0.5, levels=4)
        self.assertEqual(data, again)
        _, threshold = keldo.taws_denoise(self.noisy, 4)
        self.assertEqual(info["threshold"], threshold)
        # The plain coder's file at the same rate is another file.
        self.assertNotEqual(data, keldo.aswdr_encode(self.noisy, 0.5, levels=4)[0])

    def test_bytes_equal_the_image_processor_file(self):
        with tempfile.TemporaryDirectory() as folder:
            picture, coded = os.path.join(folder, "noisy.pgm"), os.path.join(folder, "noisy.acd")
            write_pgm(picture, self.noisy)
            keldo.run(f'new imageproc\nfile "{picture}"\nmenu mnuGetImage\nset OpEntropyCode(3) 1\n'
                      f'set txtBitRate 0.5\nset txtDepth 2\nset txtDescentPower 3\nmenu mnuCompress\n'
                      f'file "{coded}"\nclick cmdBegin\n')
            with open(coded, "rb") as f:
                form_bytes = f.read()
        data, _ = keldo.compress_denoise_encode(self.noisy.T, 0.5, levels=5, depth=2, descent=3)
        self.assertEqual(data, form_bytes)

    def test_region_and_file(self):
        # At a low rate the region is sharper and the rest coarser than
        # without it.
        region = (10, 20, 60, 90)
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "noisy.bcd")
            data, info = keldo.compress_denoise_encode(self.noisy, 0.03, levels=4, coder="binary", region=region,
                                                       region_share=0.9, path=path)
            with open(path, "rb") as f:
                self.assertEqual(f.read(), data)
            decoded = keldo.compress_denoise_decode(path, coder="binary")
            np.testing.assert_array_equal(decoded, keldo.compress_denoise_decode(data, coder="binary"))
        self.assertNotIn("region_mode_pass", info)
        plain, _ = keldo.compress_denoise_encode(self.noisy, 0.03, levels=4, coder="binary")
        plain_decoded = keldo.compress_denoise_decode(plain, coder="binary")
        self.assertLess(region_error(decoded, self.clean, region), region_error(plain_decoded, self.clean, region))
        self.assertGreater(np.mean((decoded - self.clean) ** 2), np.mean((plain_decoded - self.clean) ** 2))

    def test_bad_input_raises(self):
        with self.assertRaisesRegex(ValueError, "message 85"):
            keldo.compress_denoise_decode(b"nonsense bytes of no file")
        with self.assertRaisesRegex(ValueError, "message 85"):
            keldo.compress_denoise_decode(b"")
        with self.assertRaisesRegex(ValueError, "message 32"):
            keldo.compress_denoise_encode(self.noisy, 0.5, levels=4, path="/nonexistent-folder/noisy.acd")
        with self.assertRaisesRegex(ValueError, "message 84"):
            keldo.compress_denoise_encode(self.noisy, -1, levels=4)
        cases = [
            (ValueError, (self.noisy, 0), {}),
            (ValueError, (self.noisy, 0.5), dict(depth=0)),
            (ValueError, (self.noisy, 0.5), dict(depth=26)),
            (ValueError, (self.noisy, 0.5), dict(descent=0.0)),
            (ValueError, (self.noisy, 0.5), dict(coder="huffman")),
            (ValueError, (self.noisy + 300, 0.5), {}),
            (ValueError, (self.noisy[:100], 0.5), {}),
            (ValueError, (self.noisy, 0.5), dict(region=(0, 0, 200, 5))),
            (TypeError, (np.array([["a"] * 8] * 8), 0.5), {}),
        ]
        for error, args, kwargs in cases:
            with self.assertRaises(error, msg=str(kwargs)):
                keldo.compress_denoise_encode(*args, **kwargs)
        with self.assertRaises(TypeError):
            keldo.compress_denoise_decode(3.5)
        with self.assertRaises(ValueError):
            keldo.compress_denoise_decode(keldo.compress_denoise_encode(self.noisy, 0.5, levels=4)[0], bpp=0)


class TawsAveraging(unittest.TestCase):
    clean = test_picture(64)
    noisy = noisy_copy(clean, 15.0, 11)

    def reference_mean(self, pairs, **options):
        """The mean over the shifts of the picture moved i columns right and
        j rows down, denoised, moved back; summed in single precision in the
        order the pairs come."""
        total = np.zeros(self.noisy.shape, np.float32)
        for i, j in pairs:
            denoised, _ = keldo.taws_denoise(np.roll(self.noisy, (j, i), axis=(0, 1)), **options)
            total += np.roll(denoised, (-j, -i), axis=(0, 1)).astype(np.float32)
        return total / np.float32(len(pairs))

    def test_one_shift_is_the_plain_denoiser(self):
        plain, t = keldo.taws_denoise(self.noisy, 3)
        same, t1 = keldo.taws_denoise(self.noisy, 3, shifts=1, diagonal=False)
        np.testing.assert_array_equal(same, plain)
        self.assertEqual(t1, t)

    def test_shifts_average_the_shifted_denoisings(self):
        options = dict(levels=3, threshold=40.0, depth=2)
        mean, _ = keldo.taws_denoise(self.noisy, shifts=2, **options)
        reference = self.reference_mean([(i, j) for j in range(2) for i in range(2)], **options)
        np.testing.assert_allclose(mean, reference, rtol=0, atol=MEAN_TOL)
        diagonal, _ = keldo.taws_denoise(self.noisy, shifts=4, diagonal=True, **options)
        reference = self.reference_mean([(k, k) for k in range(4)], **options)
        np.testing.assert_allclose(diagonal, reference, rtol=0, atol=MEAN_TOL)
        # One shift with the diagonal form is the unshifted picture alone.
        single, _ = keldo.taws_denoise(self.noisy, shifts=1, diagonal=True, **options)
        np.testing.assert_array_equal(single, keldo.taws_denoise(self.noisy, **options)[0])

    def test_estimate_is_the_unshifted_pictures_and_averaging_helps(self):
        plain, t = keldo.taws_denoise(self.noisy, 3)
        mean, t4 = keldo.taws_denoise(self.noisy, 3, shifts=4)
        self.assertEqual(t4, t)
        self.assertLess(np.mean((mean - self.clean) ** 2), np.mean((plain - self.clean) ** 2))

    def test_bad_shifts_raise(self):
        for shifts in (0, 3, 32, -2):
            with self.assertRaises(ValueError, msg=shifts):
                keldo.taws_denoise(self.noisy, 3, shifts=shifts)
        with self.assertRaises(TypeError):
            keldo.taws_denoise(self.noisy, 3, shifts="4")


class WaveletDenoise2D(unittest.TestCase):
    n = 64
    clean = test_picture(n + 1)
    noisy = noisy_copy(clean, 10.0, 5)

    def hard_threshold(self, a, code, levels, t):
        """Every fluctuation below t cleared on the module's own transform."""
        c = keldo.wavelet_transform_2d(a, code, levels)
        trend = self.n >> levels
        inside = np.zeros(c.shape, bool)
        inside[:self.n, :self.n] = True
        inside[:trend, :trend] = False
        c[inside & (np.abs(c) < t)] = 0
        return keldo.inverse_wavelet_transform_2d(c, code, levels)

    def test_plain_case_is_hard_thresholding(self):
        for code, levels in ((1, 3), (3, 4), (-1, 2), (101, 3)):
            denoised, t, sigma = keldo.wavelet_denoise_2d(self.noisy, code, levels, threshold=25.0)
            self.assertEqual(t, 25.0)
            self.assertIsNone(sigma)
            expected = self.hard_threshold(self.noisy, code, levels, 25.0)
            np.testing.assert_allclose(denoised, expected, rtol=0, atol=FLOAT_TOL * 255)
            # Row N and column N are carried through.
            np.testing.assert_array_equal(denoised[self.n], self.noisy[self.n])
            np.testing.assert_array_equal(denoised[:, self.n], self.noisy[:, self.n])
        # An N by N matrix gives the same N by N part.
        square, _, _ = keldo.wavelet_denoise_2d(self.noisy[:self.n, :self.n], 1, 3, threshold=25.0)
        whole, _, _ = keldo.wavelet_denoise_2d(self.noisy, 1, 3, threshold=25.0)
        self.assertEqual(square.shape, (self.n, self.n))
        np.testing.assert_array_equal(square, whole[:self.n, :self.n])

    def test_result_equals_the_forms_denoise(self):
        formula = "110+70*x+60*((x-.18)^2+(y-.2)^2<.1)+30*SIN(40*x)*SIN(30*y)"
        dumps = keldo.run(f'new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula "{formula}"\ngo\n'
                          'menu mnuDenoiseWavelet\nset wavlevels 3\nset chkDenoise(2) 1\nset AvgType 2D\n'
                          'set chkDenoise(1) 1\nset chkDenoise(5) 1\ngo\ndump\n')
        form = dumps[-1]
        source, result = (np.array(g["values"], float) for g in form["graphs"][:2])
        controls = form["controls"]
        depth, descents = int(controls["txtDepth"]["text"]), int(controls["txtDescents"]["text"])
        denoised, t, sigma = keldo.wavelet_denoise_2d(source, 1, 3, refine=True, depth=depth, average="2D",
                                                      quantize=True, descents=descents)
        self.assertAlmostEqual(t, float(controls["txtDenoiseThreshold"]["text"]), places=4)
        self.assertGreater(sigma, 0)
        np.testing.assert_array_equal(denoised, result)

    def test_auto_threshold_and_averaging(self):
        _, t, sigma = keldo.wavelet_denoise_2d(self.noisy, 1, 3)
        self.assertAlmostEqual(t, 2 * sigma * np.sqrt(2 * np.log(self.n)), places=9)
        self.assertLess(abs(sigma - 10.0), 3.0)
        _, t_snr, _ = keldo.wavelet_denoise_2d(self.noisy, 1, 3, high_snr=True)
        self.assertAlmostEqual(t_snr, sigma * np.sqrt(4 * np.log(self.n)), places=9)
        _, t0, _ = keldo.wavelet_denoise_2d(self.noisy, 1, 3, descents=0)
        self.assertAlmostEqual(t0, sigma * np.sqrt(2 * np.log(self.n)), places=9)
        # Daubechies 8 estimates from itself; a coiflet and Haar from
        # Daubechies 4.
        sigma8 = keldo.wavelet_denoise_2d(self.noisy, 3, 3)[2]
        self.assertNotEqual(sigma8, sigma)
        self.assertEqual(keldo.wavelet_denoise_2d(self.noisy, 1, 3, family="coiflet")[2], sigma)
        self.assertEqual(keldo.wavelet_denoise_2d(self.noisy, -1, 3)[2], sigma)
        # At the threshold for no descents, averaging over 4 by 4 shifts
        # roughly halves the error of the plain denoiser.
        plain, _, _ = keldo.wavelet_denoise_2d(self.noisy, 1, 3, threshold=t0)
        averaged, _, _ = keldo.wavelet_denoise_2d(self.noisy, 1, 3, threshold=t0, average="4")
        inner = np.s_[:self.n, :self.n]
        self.assertLess(np.mean((averaged[inner] - self.clean[inner]) ** 2),
                        np.mean((plain[inner] - self.clean[inner]) ** 2))
        self.assertLess(np.mean((plain[inner] - self.clean[inner]) ** 2),
                        np.mean((self.noisy[inner] - self.clean[inner]) ** 2))
        quantized, _, _ = keldo.wavelet_denoise_2d(self.noisy * 2 - 100, 1, 3, quantize=True)
        self.assertTrue(np.all(quantized == np.round(quantized)))
        self.assertEqual((quantized.min(), quantized.max()), (0.0, 255.0))

    def test_bad_arguments_raise(self):
        with self.assertRaisesRegex(ValueError, "message 11"):
            keldo.wavelet_denoise_2d(self.noisy, 1, 3, threshold=-1.0)
        with self.assertRaisesRegex(ValueError, "message 10"):
            keldo.wavelet_denoise_2d(self.noisy, 1, 3, threshold=float("inf"))
        with self.assertRaisesRegex(ValueError, "message 21"):
            keldo.wavelet_denoise_2d(self.noisy, 1, 9)
        cases = [
            (ValueError, (self.noisy, 1, 3), dict(average="3")),
            (ValueError, (self.noisy, 1, 3), dict(average="4d ")),
            (TypeError, (self.noisy, 1, 3), dict(average=4)),
            (TypeError, (self.noisy, 1, 3), dict(threshold="20")),
            (ValueError, (self.noisy[:, :60], 1, 3), {}),
            (ValueError, (np.ones((48, 48)), 1, 3), {}),
            (ValueError, (self.noisy, 12, 3), {}),
            (TypeError, (self.noisy + 0j, 1, 3), {}),
        ]
        for error, args, kwargs in cases:
            with self.assertRaises(error, msg=str(kwargs)):
                keldo.wavelet_denoise_2d(*args, **kwargs)


if __name__ == "__main__":
    unittest.main()

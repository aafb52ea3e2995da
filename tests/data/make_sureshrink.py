#!/usr/bin/python3
"""Expected SureShrink thresholds of a few bands, for image_denoise_test.

For a band c of n values and a noise level sigma, x = |c| / sigma. Stein's
unbiased risk estimate of soft thresholding at t is evaluated directly at
every candidate t = x_k (no recursion):

    SURE(t) = n - 2 #{ |x| <= t } + sum min(|x|, t)^2

The least value over the candidates in ascending order (the first one on a
tie) is taken when it is below n, the risk of keeping the band (t = 0);
otherwise t = 0. The band is sparse when sum(x^2)/n - 1 <= (ln n)^1.5/sqrt(n),
and then the universal threshold sqrt(2 ln n) is used instead. The threshold
is that value times sigma.

Also the noise level of the finest diagonal block of a plane: the median of
|c| (numpy's, the mean of the two middle values for an even count) / 0.6745.

Writes sureshrink.tsv, one case a line, tab-separated:
  band  NAME  sigma  n  sureT  sparse  threshold  v1 ... vn
  sigma NAME  width  height  expected  v(0,0) v(1,0) ... (row-major, x along a row)
Values are float32 numbers written with 9 significant digits.
"""
import numpy as np

rng = np.random.default_rng(20261126)


def sure(band, sigma):
    x = np.abs(band.astype(np.float64)) / sigma
    n = len(x)
    xs = np.sort(x)
    risks = np.array([n - 2 * np.sum(x <= t) + np.sum(np.minimum(x, t) ** 2) for t in xs])
    k = int(np.argmin(risks))
    sure_t = xs[k] if risks[k] < n else 0.0
    sparse = np.sum(x ** 2) / n - 1 <= np.log(n) ** 1.5 / np.sqrt(n)
    t = (np.sqrt(2 * np.log(n)) if sparse else sure_t) * sigma
    return sure_t, bool(sparse), max(t, 0.0)


def f32(v):
    return np.float32(v)


lines = []


def band_case(name, values, sigma):
    values = values.astype(np.float32)
    sure_t, sparse, t = sure(values, sigma)
    cells = ["band", name, repr(float(sigma)), str(len(values)), "%.17g" % sure_t, "1" if sparse else "0", "%.17g" % t]
    cells += ["%.9g" % v for v in values]
    lines.append("\t".join(cells))


# A few strong coefficients among noise: not sparse, the risk picks a threshold.
v = rng.normal(0, 2.0, 64)
v[:10] += rng.choice([-1, 1], 10) * rng.uniform(8, 30, 10)
band_case("strong64", v, 2.0)
# Pure noise of the stated level: sparse, the universal threshold.
band_case("noise256", rng.normal(0, 1.5, 256), 1.5)
# A heavy-tailed band: Laplace values, not sparse.
band_case("laplace100", rng.laplace(0, 3.0, 100), 1.0)
# A larger band of an image-like mix.
v = rng.normal(0, 10.0, 1024)
v[rng.choice(1024, 200, replace=False)] += rng.normal(0, 60.0, 200)
band_case("mix1024", v, 10.0)
# Every value large: no candidate beats keeping the band, threshold 0.
band_case("large16", rng.choice([-1, 1], 16) * rng.uniform(50, 80, 16), 1.0)


def sigma_case(name, w, h):
    plane = rng.normal(0, 7.0, (h, w)).astype(np.float32)
    block = np.abs(plane[h // 2:, w // 2:].astype(np.float64))
    expected = np.median(block) / 0.6745
    cells = ["sigma", name, str(w), str(h), "%.17g" % expected] + ["%.9g" % v for v in plane.ravel()]
    lines.append("\t".join(cells))


sigma_case("even8x8", 8, 8)      # 16 values: the mean of the two middle ones
sigma_case("odd6x10", 6, 10)     # 15 values: the middle one

with open("sureshrink.tsv", "w") as out:
    out.write("\n".join(lines) + "\n")

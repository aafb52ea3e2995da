#!/usr/bin/python3
"""Expected one-level two-dimensional wavelet transforms for wavelet2d_test.

Rows first, then columns; each vector of n values goes to n/2 trend values
followed by n/2 fluctuation values.
- Daubechies 4 with periodic wrap: a[k] = sum_j h[j] x[(2k+j) mod n],
  d[k] = sum_j g[j] x[(2k+j) mod n], g[j] = (-1)^j h[3-j], h from its closed form.
- CDF 9/7 by lifting on the whole-sample symmetric extension
  x[-k] = x[k], x[n-1+k] = x[n-1-k]: predict -1.586134342, update -0.05298011854,
  predict 0.8829111, update 0.44350687, evens times 1.1496044, odds divided by it.

Writes wavelet2d.tsv: blocks headed "case N name", then N*N lines "i j input output".
"""
import numpy as np

s3 = np.sqrt(3.0)
H = np.array([1 + s3, 3 + s3, 3 - s3, 1 - s3]) / (4 * np.sqrt(2.0))
G = np.array([(-1) ** j * H[3 - j] for j in range(4)])


def daub4(x):
    n = len(x)
    a = [sum(H[j] * x[(2 * k + j) % n] for j in range(4)) for k in range(n // 2)]
    d = [sum(G[j] * x[(2 * k + j) % n] for j in range(4)) for k in range(n // 2)]
    return np.array(a + d)


def cdf97(x):
    n = len(x)
    m = 8
    e = np.empty(n + 2 * m)
    for i in range(-m, n + m):
        k = i
        while k < 0 or k > n - 1:
            k = -k if k < 0 else 2 * (n - 1) - k
        e[i + m] = x[k]
    idx = np.arange(-m, n + m)
    even = (idx % 2) == 0
    def step(target_even, c):
        src = e.copy()
        for p in range(1, len(e) - 1):
            if even[p] == target_even:
                e[p] += c * (src[p - 1] + src[p + 1])
    step(False, -1.586134342)
    step(True, -0.05298011854)
    step(False, 0.8829111)
    step(True, 0.44350687)
    k = 1.1496044
    e[even] *= k
    e[~even] /= k
    inner = e[m:m + n]
    return np.concatenate([inner[0::2], inner[1::2]])


def level(a, f):
    rows = np.array([f(r) for r in a])
    return np.array([f(c) for c in rows.T]).T


rng = np.random.default_rng(97)
lines = []
for n in (16, 32):
    x = rng.uniform(-1, 1, (n, n)).astype(np.float32).astype(np.float64)
    for name, f in (("daub4", daub4), ("cdf97", cdf97)):
        y = level(x, f)
        lines.append(f"case {n} {name}")
        for i in range(n):
            for j in range(n):
                lines.append(f"{i} {j} {x[i, j]!r} {y[i, j]!r}")
with open(__file__.replace("make_wavelet2d.py", "wavelet2d.tsv"), "w") as out:
    out.write("\n".join(lines) + "\n")

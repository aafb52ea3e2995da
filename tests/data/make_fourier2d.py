#!/usr/bin/python3
"""Expected two-dimensional Fourier transforms for fourier2d_test.

F[p][q] = h^2 sum_{i,j<N} (a + i b)[i][j] exp(+2 pi i ((i-N/2)(p-N/2) + (j-N/2)(q-N/2))/N),
h = W/N, computed in double precision by numpy as h^2 N^2 fftshift(ifft2(ifftshift(a + i b))).
Inputs are float32 values drawn from a fixed seed.

Writes fourier2d.tsv: blocks headed "case N W kind" (kind real or complex),
then N*N lines "i j a b Fre Fim".
"""
import numpy as np

rng = np.random.default_rng(20261125)
lines = []
for n, w, kind in [(8, 1.0, "real"), (16, 2.5, "complex"), (64, 1.0, "real"), (64, 3.0, "complex")]:
    a = rng.uniform(-1, 1, (n, n)).astype(np.float32)
    b = rng.uniform(-1, 1, (n, n)).astype(np.float32) if kind == "complex" else np.zeros((n, n), np.float32)
    z = a.astype(np.float64) + 1j * b.astype(np.float64)
    h = w / n
    f = h * h * n * n * np.fft.fftshift(np.fft.ifft2(np.fft.ifftshift(z)))
    lines.append(f"case {n} {w!r} {kind}")
    for i in range(n):
        for j in range(n):
            lines.append(f"{i} {j} {float(a[i, j])!r} {float(b[i, j])!r} {f[i, j].real!r} {f[i, j].imag!r}")
with open(__file__.replace("make_fourier2d.py", "fourier2d.tsv"), "w") as out:
    out.write("\n".join(lines) + "\n")

#include "fourier/fft.h"

#include <cmath>
#include <utility>

namespace keldo::fourier {
namespace {

// sin(pi k / N) for 1 <= k < N/2, from the table at half index: an even k
// reads it, an odd k averages its neighbours over cos(pi / N).
inline double HalfAngleSine(const double* s, int k, double reciprocal) {
  return (k & 1) == 0 ? s[k / 2] : (s[(k - 1) / 2] + s[(k + 1) / 2]) * reciprocal;
}

// One butterfly: the rotated value (v, w) against element j.
inline void Butterfly(double* x, double* y, int j, int r, double v, double w) {
  x[r] = x[j] - v;
  y[r] = y[j] - w;
  x[j] += v;
  y[j] += w;
}

}  // namespace

void BuildTrigTables(int n, int m, double* s, double* t, double& c) {
  const int quarter = n / 4;
  s[0] = 0.0;
  s[quarter] = 1.0;
  c = 0.0;
  int h = quarter;
  int count = 1;
  for (int round = 0; round < m - 2; ++round) {
    // sin(a) = (sin(a - b) + sin(a + b)) / (2 cos(b)), with c = 2 cos(b).
    c = std::sqrt(c + 2.0);
    const int g = h;
    h = g / 2;
    int i = g / 2;
    for (int k = 0; k < count; ++k) {
      s[i] = (s[i + h] + s[i - h]) / c;
      i += g;
    }
    count *= 2;
  }
  t[0] = 0.0;
  t[quarter] = 1.0;
  // tan(x / 2) = (1 - cos x) / sin x.
  for (int k = 1; k < quarter; ++k) t[k] = (1.0 - s[quarter - k]) / s[k];
}

void BitReversePair(double* x, double* y, int n, int m) {
  // j runs through the bit-reversed counter of i; each pair swaps once.
  int j = 0;
  for (int i = 0; i < n - 1; ++i) {
    if (i < j) {
      std::swap(x[i], x[j]);
      std::swap(y[i], y[j]);
    }
    int bit = n >> 1;
    while (j & bit) {
      j ^= bit;
      bit >>= 1;
    }
    j |= bit;
  }
  (void)m;
}

void ComplexFFTCore(double* x, double* y, const double* s, const double* t, int n, int stride) {
  for (int j = 0; j < n; j += 2) {
    const double x0 = x[j], x1 = x[j + 1], y0 = y[j], y1 = y[j + 1];
    x[j] = x0 + x1;
    x[j + 1] = x0 - x1;
    y[j] = y0 + y1;
    y[j + 1] = y0 - y1;
  }
  int d = 2;
  int groups = n / 2;
  int tstep = stride * (n / 2);
  while (d < n) {
    groups /= 2;
    tstep /= 2;
    const int q = d / 2;
    const int blockStep = 2 * d;
    // The trivial twiddles: 1 and +i.
    for (int j = 0; j < groups * blockStep; j += blockStep) {
      const double a0 = x[j + d], b0 = y[j + d];
      Butterfly(x, y, j, j + d, a0, b0);
      const int p = j + q, r = j + d + q;
      const double a = x[r], b = y[r];
      x[r] = x[p] + b;
      y[r] = y[p] - a;
      x[p] -= b;
      y[p] += a;
    }
    for (int k = 1; k < q; ++k) {
      const double sk = s[k * tstep], tk = t[k * tstep];
      for (int j = 0; j < groups * blockStep; j += blockStep) {
        // Rotation by theta = pi k / d in three shears.
        int r = j + k + d;
        double u = y[r] + tk * x[r];
        double v = x[r] - sk * u;
        double w = u + tk * v;
        Butterfly(x, y, j + k, r, v, w);
        // The mirror pair, at theta + pi / 2.
        const int p = j + k + q;
        r = p + d;
        u = x[r] - tk * y[r];
        v = -y[r] - sk * u;
        w = u + tk * v;
        Butterfly(x, y, p, r, v, w);
      }
    }
    d *= 2;
  }
}

void RealFFT(int n, double* x, double* y, const double* s, const double* t, int mHalf) {
  const int h = n / 2, q = n / 4;
  for (int k = 0; k < h; ++k) {
    y[k] = x[2 * k + 1];
    x[k] = x[2 * k];
  }
  BitReversePair(x, y, h, mHalf);
  ComplexFFTCore(x, y, s, t, h, 2);
  for (int k = 1; k < q; ++k) {
    const double sk = s[k], tk = t[k];
    double d = x[k] - x[h - k], a = y[h - k] + y[k];
    double u = d * tk + a, v = d - u * sk;
    x[n - k] = (x[h - k] + x[k] + (v * tk + u)) / 2;
    y[n - k] = (y[h - k] - y[k] + v) / 2;
    const int e = q + k;
    d = x[e] - x[h - e];
    a = y[h - e] + y[e];
    u = d - a * tk;
    v = -a - u * sk;
    x[n - e] = (x[h - e] + x[e] + (v * tk + u)) / 2;
    y[n - e] = (y[h - e] - y[e] + v) / 2;
  }
  x[n - q] = x[q];
  y[n - q] = -y[q];
  for (int k = 1; k < h; ++k) {
    x[k] = x[n - k];
    y[k] = -y[n - k];
  }
  x[h] = x[0] - y[0];
  x[0] = x[0] + y[0];
  y[0] = 0.0;
  y[h] = 0.0;
}

void RealInverseFFT(int n, int mOffset, double* x, double* y, const double* s, const double* t) {
  const int h = n / 2, q = n / 4;
  const double x0 = x[0], xh = x[h];
  double alternating = 0.0, plain = 0.0;
  for (int k = 1; k < h; ++k) {
    alternating += (k & 1) ? -x[k] : x[k];
    plain += x[k];
  }
  const double atHalf = x0 + xh + 2 * alternating;
  const double atZero = x0 + xh + 2 * plain;
  double e = x0;
  for (int j = 1; j < q; ++j) e += (x[q - j] - x[q + j]) * s[j];
  y[0] = 0.0;
  double accumulated = 0.0;
  for (int k = 1; k < q; ++k) {
    const double sk = s[k];
    const double p = (x[h - k] + x[k]) / 2, g = x[k] - x[h - k];
    x[k] = p - g * sk;
    x[h - k] = p + g * sk;
    const double w = (y[k] - y[h - k]) / 2, r = (y[h - k] + y[k]) * sk;
    y[k] = r + w;
    y[h - k] = r - w;
    accumulated += r;
  }
  const double f = y[q] + accumulated;
  y[q] *= 2;
  BitReversePair(x, y, h, mOffset + 5);
  ComplexFFTCore(x, y, s, t, h, 2);
  for (int k = 1; k < q; ++k) {
    x[h + k] = y[k] - y[h - k];
    x[n - k] = y[h - k] + y[k];
  }
  y[1] = 2 * e;
  for (int k = 1; k < q; ++k) {
    y[2 * k] = x[h - k] + x[k];
    y[2 * k + 1] = x[h + k] + y[2 * k - 1];
    x[h + k] = x[h - k] - x[k];
  }
  x[1] = 2 * f;
  for (int k = 1; k < q; ++k) {
    x[2 * k] = x[h + k];
    x[2 * k + 1] = x[n - k] + x[2 * k - 1];
  }
  x[0] = atZero;
  double sign = xh;
  for (int k = 1; k < h; ++k) {
    sign = -sign;
    const double v = sign - x0 + y[k];
    x[n - k] = v - x[k];
    x[k] = v + x[k];
  }
  x[h] = atHalf;
}

void SineTransformCore(int n, double* x, double* y, const double* s, const double* t, int mOffset, double c) {
  const int h = n / 2;
  const double reciprocal = 1.0 / std::sqrt(c + 2.0);
  x[0] = 0.0;
  double acc = 0.0, sign = -1.0;
  for (int k = 1; k < h; ++k) {
    const double g = (x[k] - x[n - k]) / 2;
    const double r = HalfAngleSine(s, k, reciprocal) * (x[n - k] + x[k]);
    x[k] = r + g;
    sign = -sign;
    acc += sign * r;
    x[n - k] = r - g;
  }
  const double z = acc - x[h];
  x[h] = 2 * x[h];
  RealFFT(n, x, y, s, t, mOffset + 5);
  x[n - 1] = z;
  x[0] = 0.0;
  x[n] = 0.0;
  for (int k = h - 1; k >= 1; --k) {
    x[2 * k - 1] = x[2 * k + 1] - x[k];
    x[2 * k] = y[k];
  }
}

void CosineTransformCore(int n, double* x, double* y, const double* s, const double* t, int mOffset, double c) {
  const int h = n / 2;
  const double reciprocal = 1.0 / std::sqrt(c + 2.0);
  double acc = x[0];
  for (int k = 1; k < h; ++k) {
    const double term = HalfAngleSine(s, k, reciprocal) * (x[h - k] - x[h + k]);
    acc += (k & 1) ? -term : term;
  }
  for (int k = 1; k < h; ++k) {
    const double w = HalfAngleSine(s, k, reciprocal);
    const double p = (x[n - k] + x[k]) / 2, g = x[k] - x[n - k];
    x[k] = p - g * w;
    x[n - k] = p + g * w;
  }
  RealFFT(n, x, y, s, t, mOffset + 5);
  x[n - 1] = acc;
  for (int k = h - 1; k >= 1; --k) {
    x[2 * k] = x[k];
    x[2 * k - 1] = x[2 * k + 1] - y[k];
  }
}

void SwapHalves(int n, double* a) {
  const int h = n / 2;
  for (int k = 0; k < h; ++k) std::swap(a[k], a[k + h]);
}

TrigTables::TrigTables(int size) : n(size) {
  while ((1 << m) < n) ++m;
  sine.assign(static_cast<std::size_t>(n / 4 + 4), 0.0);
  tan.assign(static_cast<std::size_t>(n / 4 + 4), 0.0);
  BuildTrigTables(n, m, sine.data(), tan.data(), cosConstant);
}

}  // namespace keldo::fourier

#include "fourier/fourier2d.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/pace.h"
#include "fourier/fft.h"
#include "fourier/transforms.h"

namespace keldo::fourier {
namespace {

// Exchanges the halves of every row and of every column of the N by N part:
// the quadrants trade places diagonally.
void QuadrantSwap(int n, const Plane& a) {
  const int h = n / 2;
  for (int i = 0; i < h; ++i) {
    float* low = a.Row(i);
    float* high = a.Row(i + h);
    for (int j = 0; j < h; ++j) {
      std::swap(low[j], high[j + h]);
      std::swap(low[j + h], high[j]);
    }
  }
}

void Scale(int n, const Plane& a, float factor) {
  for (int i = 0; i < n; ++i) {
    float* row = a.Row(i);
    for (int j = 0; j < n; ++j) row[j] *= factor;
  }
}

// A batch of up to kFFTBatch columns, interleaved for the batch kernel.
struct ColumnBatch {
  explicit ColumnBatch(int n)
      : x(static_cast<std::size_t>(n) * kFFTBatch, 0.0f), y(static_cast<std::size_t>(n) * kFFTBatch, 0.0f) {}
  std::vector<float> x, y;

  // Columns j0..j0+g-1 over rows 0..N-1; the other lanes keep what they hold.
  void Gather(int n, const Plane& re, const Plane& im, int j0, int g) {
    for (int i = 0; i < n; ++i) {
      std::copy_n(re.Row(i) + j0, g, x.data() + static_cast<std::size_t>(i) * kFFTBatch);
      std::copy_n(im.Row(i) + j0, g, y.data() + static_cast<std::size_t>(i) * kFFTBatch);
    }
  }
  void Transform(int n, const FloatTrigTables& t) { ComplexFFTBatch(x.data(), y.data(), t.sine.data(), t.tan.data(), n); }
  // Value i of the batch's column c to row (i + shift) mod N, column j0 + c,
  // multiplied by scale.
  void Scatter(int n, const Plane& re, const Plane& im, int j0, int g, int shift, float scale) const {
    for (int i = 0; i < n; ++i) {
      float* to = re.Row((i + shift) % n) + j0;
      float* toY = im.Row((i + shift) % n) + j0;
      const float* fx = x.data() + static_cast<std::size_t>(i) * kFFTBatch;
      const float* fy = y.data() + static_cast<std::size_t>(i) * kFFTBatch;
      for (int c = 0; c < g; ++c) {
        to[c] = fx[c] * scale;
        toY[c] = fy[c] * scale;
      }
    }
  }
};

// Transforms columns first..last-1 over rows 0..N-1 in place, kFFTBatch
// columns at a time in the lanes of the batch kernel, each value then
// multiplied by `scale`.
void ColumnPass(int n, const FloatTrigTables& t, const Plane& re, const Plane& im, int first, int last, float scale) {
  ColumnBatch batch(n);
  for (int j0 = first; j0 < last; j0 += kFFTBatch) {
    const int g = std::min(kFFTBatch, last - j0);
    batch.Gather(n, re, im, j0, g);
    batch.Transform(n, t);
    batch.Scatter(n, re, im, j0, g, 0, scale);
    Pace();
  }
}

// The column pass with the output exchanges folded in: columns j and
// j + N/2 are transformed together and written back to each other's place,
// each with its halves exchanged.
void CentredColumnPass(int n, const FloatTrigTables& t, const Plane& re, const Plane& im, float scale) {
  const int h = n / 2;
  ColumnBatch low(n), high(n);
  for (int j0 = 0; j0 < h; j0 += kFFTBatch) {
    const int g = std::min(kFFTBatch, h - j0);
    low.Gather(n, re, im, j0, g);
    high.Gather(n, re, im, j0 + h, g);
    low.Transform(n, t);
    high.Transform(n, t);
    low.Scatter(n, re, im, j0 + h, g, h, scale);
    high.Scatter(n, re, im, j0, g, h, scale);
    Pace();
  }
}

// The complex kernel's row pass with the input exchanges folded in: rows i
// and i + N/2 trade places (the exchange of every column's halves) and each
// has its halves exchanged, while both are in the cache; then both are
// transformed and scaled.
// Rows go through the batched transform too, kFFTBatch at a time: the
// rows of a batch are laid side by side (element j of row c at
// j * kFFTBatch + c), each lane coming out bit for bit as its row alone.
void TransformRows(int n, const FloatTrigTables& t, const Plane& re, const Plane& im, const int* rows, int g,
                   float scale, ColumnBatch& batch) {
  for (int c = 0; c < g; ++c) {
    const float* x = re.Row(rows[c]);
    const float* y = im.Row(rows[c]);
    for (int j = 0; j < n; ++j) {
      batch.x[static_cast<std::size_t>(j) * kFFTBatch + static_cast<std::size_t>(c)] = x[j];
      batch.y[static_cast<std::size_t>(j) * kFFTBatch + static_cast<std::size_t>(c)] = y[j];
    }
  }
  batch.Transform(n, t);
  for (int c = 0; c < g; ++c) {
    float* x = re.Row(rows[c]);
    float* y = im.Row(rows[c]);
    for (int j = 0; j < n; ++j) {
      x[j] = batch.x[static_cast<std::size_t>(j) * kFFTBatch + static_cast<std::size_t>(c)] * scale;
      y[j] = batch.y[static_cast<std::size_t>(j) * kFFTBatch + static_cast<std::size_t>(c)] * scale;
    }
  }
}

void CentredRowPass(int n, const FloatTrigTables& t, const Plane& re, const Plane& im, float scale) {
  const int h = n / 2;
  ColumnBatch batch(n);
  for (int i0 = 0; i0 < h; i0 += kFFTBatch) {
    const int g = std::min(kFFTBatch, h - i0);
    int low[kFFTBatch], high[kFFTBatch];
    for (int c = 0; c < g; ++c) {
      const int i = i0 + c;
      low[c] = i;
      high[c] = i + h;
      float* rows[4] = {re.Row(i), re.Row(i + h), im.Row(i), im.Row(i + h)};
      for (int k = 0; k < 2; ++k) {
        float* a = rows[2 * k];
        float* b = rows[2 * k + 1];
        for (int j = 0; j < h; ++j) {
          std::swap(a[j], b[j + h]);
          std::swap(a[j + h], b[j]);
        }
      }
    }
    TransformRows(n, t, re, im, low, g, scale, batch);
    TransformRows(n, t, re, im, high, g, scale, batch);
    for (int c = 0; c < g; ++c) PaceRow(2 * (i0 + c) + 1);
  }
}

void CopyPlane(int n, const Plane& from, float* to, std::size_t stride) {
  for (int i = 0; i <= n; ++i) std::copy(from.Row(i), from.Row(i) + n + 1, to + static_cast<std::size_t>(i) * stride);
}

// The profiles of the weighting filters on u in 0..1; `parameter` is the
// damping power of "Diffusion".
double Profile(const std::string& name, double u, double parameter) {
  if (name == "hanning") return (1 + std::cos(kProgramPi * u)) / 2;
  if (name == "Hamming") return 0.54 + 0.46 * std::cos(kProgramPi * u);
  if (name == "Cesaro") return 1 - u;
  if (name == "Blackman") return 0.42 + 0.5 * std::cos(kProgramPi * u) + 0.08 * std::cos(2 * kProgramPi * u);
  return std::exp(-parameter * u * u);  // "Diffusion"
}

// u = a / limit, taken as 0 at a limit of 0 (only the centre is left then).
double Ratio(double a, double limit) { return limit > 0 ? a / limit : 0.0; }

}  // namespace

void Fourier2DComplex(int n, float width, const Plane& re, const Plane& im) {
  const FloatTrigTables t(n);
  const float h = width / static_cast<float>(n);
  // The exchanges of halves before and after each pass travel with the
  // passes: the same values meet the same butterflies.
  CentredRowPass(n, t, re, im, h);
  CentredColumnPass(n, t, re, im, h);
}

void Fourier2DReal(int n, float width, const Plane& re, const Plane& im) {
  const FloatTrigTables t(n);
  const float h = width / static_cast<float>(n);
  QuadrantSwap(n, re);
  for (int i = 0; i < n; ++i) {
    RealFFT(n, re.Row(i), im.Row(i), t.sine.data(), t.tan.data(), t.m - 1);
    PaceRow(i);
  }
  // Columns 0..N/2 by transform, the others by F[-p][-q] = conj F[p][q].
  ColumnPass(n, t, re, im, 0, n / 2 + 1, 1.0f);
  for (int i = 0; i < n; ++i) {
    const int mirror = i == 0 ? 0 : n - i;
    float* x = re.Row(i);
    float* y = im.Row(i);
    const float* mx = re.Row(mirror);
    const float* my = im.Row(mirror);
    for (int j = n / 2 + 1; j < n; ++j) {
      x[j] = mx[n - j];
      y[j] = -my[n - j];
    }
  }
  const float h2 = h * h;
  Scale(n, re, h2);
  Scale(n, im, h2);
  QuadrantSwap(n, re);
  QuadrantSwap(n, im);
}

void WrapEdges(int n, const Plane& a) {
  std::copy(a.Row(0), a.Row(0) + n, a.Row(n));
  for (int i = 0; i <= n; ++i) a.At(i, n) = a.At(i, 0);
}

const std::vector<std::string>& Filter2DNames() {
  static const std::vector<std::string> kNames = {"hanning",  "Hamming",   "Cesaro",
                                                  "Blackman", "Diffusion", "Diffraction"};
  return kNames;
}

int FREQFILT(const std::string& name, int n, const Plane& re, const Plane& im, double limit1, double limit2,
             bool rectangular, double right, double left, double parameter, int& message) {
  message = 0;
  const auto& names = Filter2DNames();
  if (std::find(names.begin(), names.end(), name) == names.end()) return kFilterStop;
  if ((name == "Diffusion" || name == "Diffraction") && !(parameter >= 0)) {
    message = 8;
    return kFilterStop;
  }
  const int centre = n / 2;
  if (name == "Diffraction") {
    const double piOverWidth = kProgramPi / (right - left);
    const double t = parameter * piOverWidth * piOverWidth;
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) {
        const double r = i - centre, c = j - centre;
        const double angle = t * (r * r + c * c);
        const double cr = std::cos(angle), ci = std::sin(angle);
        const double a = re.At(i, j), b = im.At(i, j);
        re.At(i, j) = static_cast<float>(a * cr - b * ci);
        im.At(i, j) = static_cast<float>(a * ci + b * cr);
      }
    return kFilterDiffraction;
  }
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) {
      const double r = std::abs(centre - i), c = std::abs(centre - j);
      double weight;
      if (rectangular) {
        if (r > limit2 || c > limit1) continue;
        weight = Profile(name, Ratio(c, limit1), parameter) * Profile(name, Ratio(r, limit2), parameter);
      } else {
        const double d = r * r + c * c;
        if (d > limit1) continue;
        weight = Profile(name, std::sqrt(Ratio(d, limit1)), parameter);
      }
      re.At(i, j) = static_cast<float>(re.At(i, j) * weight);
      im.At(i, j) = static_cast<float>(im.At(i, j) * weight);
    }
  return 0;
}

bool FourierSeries2D(int n, const Plane& source, const Series2DSetup& s, std::vector<float>& out,
                     std::size_t stride, int& message) {
  message = 0;
  const std::size_t size = stride * static_cast<std::size_t>(n + 1);
  out.assign(size, 0.0f);
  std::vector<float> imag(size, 0.0f);
  CopyPlane(n, source, out.data(), stride);
  const Plane re{out.data(), stride}, im{imag.data(), stride};
  Fourier2DReal(n, 1.0f, re, im);
  WrapEdges(n, re);
  WrapEdges(n, im);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) im.At(i, j) = -im.At(i, j);
  const int centre = n / 2;
  int code = 0;
  if (s.sum == Series2DSetup::Sum::Spherical) {
    const double limit = static_cast<double>(s.harmonic) * s.harmonic;
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) {
        const double r = centre - i, c = centre - j;
        if (r * r + c * c > limit) re.At(i, j) = im.At(i, j) = 0.0f;
      }
    if (!s.filter.empty())
      code = FREQFILT(s.filter, n, re, im, limit, limit, false, s.right, s.left, s.parameter, message);
  } else if (s.sum == Series2DSetup::Sum::Rectangular) {
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j)
        if (std::abs(centre - j) > s.columnLimit || std::abs(centre - i) > s.rowLimit) re.At(i, j) = im.At(i, j) = 0.0f;
    if (!s.filter.empty())
      code = FREQFILT(s.filter, n, re, im, s.columnLimit, s.rowLimit, true, s.right, s.left, s.parameter, message);
  }
  if (code == kFilterStop) return false;
  Fourier2DComplex(n, static_cast<float>(n), re, im);
  WrapEdges(n, re);
  if (code == kFilterDiffraction) {
    WrapEdges(n, im);
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) re.At(i, j) = re.At(i, j) * re.At(i, j) + im.At(i, j) * im.At(i, j);
  }
  return true;
}

void Convolution2D(int n, float width, const Plane& f, const Plane& g, bool correlation, std::vector<float>& out,
                   std::size_t stride) {
  const std::size_t size = stride * static_cast<std::size_t>(n + 1);
  out.assign(size, 0.0f);
  std::vector<float> imag(size, 0.0f);
  CopyPlane(n, f, out.data(), stride);
  CopyPlane(n, g, imag.data(), stride);
  const Plane re{out.data(), stride}, im{imag.data(), stride};
  // One transform of f + i g holds both spectra; a frequency and its mirror
  // take them apart. The product stored is conj(F G), or F conj(G) for the
  // correlation, since the second pass again runs with the positive
  // exponent: the results are sum f(u) g(x - u) and sum f(u) g(u + x).
  Fourier2DComplex(n, width, re, im);
  WrapEdges(n, re);
  WrapEdges(n, im);
  const auto pair = [&](int i, int j) {
    const int i2 = n - i, j2 = n - j;
    const float p1 = re.At(i, j), q1 = im.At(i, j), r1 = re.At(i2, j2), s1 = im.At(i2, j2);
    float real, imaginary;
    if (correlation) {
      real = (p1 * s1 + q1 * r1) / 2;
      imaginary = (p1 * p1 + q1 * q1 - r1 * r1 - s1 * s1) / 4;
    } else {
      real = (p1 * q1 + r1 * s1) / 2;
      imaginary = (p1 * p1 + s1 * s1 - q1 * q1 - r1 * r1) / 4;
    }
    re.At(i, j) = real;
    im.At(i, j) = imaginary;
    re.At(i2, j2) = real;
    im.At(i2, j2) = -imaginary;
  };
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j < n / 2; ++j) pair(i, j);
  for (int i = 0; i <= n / 2; ++i) pair(i, n / 2);
  Fourier2DComplex(n, static_cast<float>(n) / width, re, im);
  WrapEdges(n, re);
}

void AutoCorrelation2D(int n, float width, const Plane& f, std::vector<float>& out, std::size_t stride) {
  const std::size_t size = stride * static_cast<std::size_t>(n + 1);
  out.assign(size, 0.0f);
  std::vector<float> imag(size, 0.0f);
  CopyPlane(n, f, out.data(), stride);
  const Plane re{out.data(), stride}, im{imag.data(), stride};
  Fourier2DReal(n, width, re, im);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      re.At(i, j) = re.At(i, j) * re.At(i, j) + im.At(i, j) * im.At(i, j);
      im.At(i, j) = 0.0f;
    }
  Fourier2DComplex(n, static_cast<float>(n) / width, re, im);
  WrapEdges(n, re);
}

double SumOfSquares2D(int n, const Plane& a) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) sum += static_cast<double>(a.At(i, j)) * a.At(i, j);
  return sum;
}

}  // namespace keldo::fourier

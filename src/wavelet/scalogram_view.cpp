#include "wavelet/scalogram_view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <span>

#include "fourier/fft.h"

namespace keldo::wavelet {
namespace {

using fourier::MagnitudeMode;

// Log levels of amplitude: each level 0.96 of the next.
const double kScalLevelsPerNeper = 1.0 / std::log(1.0 / 0.96);

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

bool IsLocal(MagnitudeMode mode) { return mode == MagnitudeMode::LogLocal || mode == MagnitudeMode::LinearLocal; }
bool IsLinear(MagnitudeMode mode) { return mode == MagnitudeMode::LinearGlobal || mode == MagnitudeMode::LinearLocal; }

double Modulus(double re, double im) { return std::sqrt(re * re + im * im); }

// The largest value(cell) over rows first..nscales, 1 when none is above 0.
template <typename Value>
double LargestFrom(const Scalogram& s, int first, Value value) {
  double largest = 0.0;
  for (std::size_t cell = s.Offset(first); cell < s.shape.Cells(); ++cell) largest = std::max(largest, value(cell));
  return largest > 0.0 ? largest : 1.0;
}

// The reference of each row 0..nscales: `global` in the global modes, the
// row's largest value(cell) in the local ones (1 for a row of zeros).
template <typename Value>
std::vector<double> RowReferences(const Scalogram& s, MagnitudeMode mode, double global, Value value) {
  std::vector<double> reference(Index(s.shape.nscales) + 1, global);
  if (!IsLocal(mode)) return reference;
  for (int r = 0; r <= s.shape.nscales; ++r) {
    double largest = 0.0;
    for (std::size_t cell = s.Offset(r); cell < s.Offset(r + 1); ++cell) largest = std::max(largest, value(cell));
    reference[Index(r)] = largest > 0.0 ? largest : 1.0;
  }
  return reference;
}

std::int16_t SignedLogLevel(double z, double reference) {
  const double a = std::fabs(z);
  if (a == 0.0) return 128;
  const double level = kScalLevelsPerNeper * std::log(a / reference);
  if (level < -256) return 128;
  const int t = static_cast<int>(std::clamp(std::trunc(level + 256), 0.0, 255.0));
  return static_cast<std::int16_t>(z > 0 ? t / 2 + 127 : t / 2);
}

std::int16_t SignedLinearLevel(double z, double reference) {
  const int t = static_cast<int>(std::min(127.0, std::trunc(std::fabs(z) * 127 / reference)));
  return static_cast<std::int16_t>(z > 0 ? 128 + t : z < 0 ? 128 - t : 128);
}

// ---------------------------------------------------------------------------
// Inversion.

// Where a row's wavelet samples come from: the real wavelet of the setup,
// or one part of the complex Gabor wavelet.
enum class RowSamples { Real, Cosine, Sine };

// The working arrays of one inversion: FFT arrays of n + 5 entries, the
// accumulators over the entries 0..n (only 0..n/2 and n are used: the
// spectra are of real sequences, their upper half mirrors the lower).
struct InversionWork {
  explicit InversionWork(int size)
      : n(size),
        tables(size),
        y(Index(size) + 5, 0.0),
        yi(Index(size) + 5, 0.0),
        w(Index(size) + 5, 0.0),
        wi(Index(size) + 5, 0.0),
        zero(Index(size) + 1, 0.0),
        sum(Index(size) + 1, 0.0),
        sumI(Index(size) + 1, 0.0),
        den(Index(size) + 1, 0.0),
        den2(Index(size) + 1, 0.0),
        count(Index(size) + 1, 0.0),
        phi(Index(size) + 1, 0.0) {}
  int n = 0;
  fourier::TrigTables tables;
  fourier::KernelVector<double> y, yi, w, wi;
  std::vector<double> zero, sum, sumI, den, den2, count, phi;
};

// f(k) for the half spectrum k = 0..n/2 and the end entry n.
template <typename F>
void ForEachEntry(int n, F f) {
  for (int k = 0; k <= n / 2; ++k) f(Index(k));
  f(Index(n));
}

// F+ of data[0..n-1] in place, the imaginary part into `im`; data[n] is
// kept and im[n] = 0.
void SpectrumInPlace(InversionWork& work, double* data, double* im) {
  const double end = data[work.n];
  fourier::RealFFT(work.n, data, im, work.tables.sine.data(), work.tables.tan.data(), work.tables.m - 1);
  data[work.n] = end;
  im[work.n] = 0.0;
}

// Y, Yi: a row with its halves exchanged back, then F+; Y[n] = row[n].
void RowSpectrum(std::span<const double> row, InversionWork& work) {
  std::copy(row.begin(), row.end(), work.y.begin());
  fourier::SwapHalves(work.n, work.y.data());
  SpectrumInPlace(work, work.y.data(), work.yi.data());
}

// W, Wi: F+ of row r's wavelet samples times `weight`; W[n] is the
// weighted end sample.
void WaveletSpectrum(const ScalogramSetup& setup, int r, RowSamples kind, double weight, InversionWork& work) {
  const int n = work.n;
  const double dx = (setup.b - setup.a) / n;
  double* w = work.w.data();
  if (kind == RowSamples::Real)
    RealWaveletValues(n, w, setup.a, setup.b, dx, setup.freq, r, setup.voices, setup.wavelet, setup.width);
  else
    ComplexWaveletValues(n, w, setup.a, setup.b, dx, setup.freq, r, setup.voices, setup.width,
                         kind == RowSamples::Cosine ? WaveletPart::Cosine : WaveletPart::Sine);
  for (int i = 0; i <= n; ++i) w[i] *= weight;
  SpectrumInPlace(work, w, work.wi.data());
}

void AddPower(const InversionWork& work, double* den) {
  ForEachEntry(work.n, [&](std::size_t k) { den[k] += work.w[k] * work.w[k] + work.wi[k] * work.wi[k]; });
}

// Sum + i SumI += sign c (w + i wi)(Y + i Yi).
void AddProduct(InversionWork& work, const double* w, const double* wi, double c, double sign) {
  ForEachEntry(work.n, [&](std::size_t k) {
    const double y = work.y[k], yi = work.yi[k];
    work.sum[k] += sign * (w[k] * (y * c) - wi[k] * (yi * c));
    work.sumI[k] += sign * (w[k] * (yi * c) + wi[k] * (y * c));
  });
}

// F- of the half spectrum Sum, SumI into result[0..n-1]; result[n] is the
// end entry times n^2, the factor of the two transforms it skips.
std::vector<double> SpectrumToSignal(InversionWork& work) {
  const int n = work.n;
  for (int k = 0; k <= n / 2; ++k) {
    work.y[Index(k)] = work.sum[Index(k)];
    work.yi[Index(k)] = work.sumI[Index(k)];
  }
  fourier::RealInverseFFT(n, work.tables.m - 6, work.y.data(), work.yi.data(), work.tables.sine.data(),
                          work.tables.tan.data());
  std::vector<double> signal(work.y.begin(), work.y.begin() + n);
  signal.push_back(work.sum[Index(n)] * (static_cast<double>(n) * n));
  return signal;
}

bool IsPowerOfTwo(int n) { return n > 0 && (n & (n - 1)) == 0; }

bool CanInvert(const Scalogram& s, const ScalogramSetup& setup, bool complex) {
  const int n = s.shape.n;
  if (n < 64 || !IsPowerOfTwo(n) || s.shape.nscales < 0 || setup.voices < 1 || !(setup.b != setup.a)) return false;
  const std::size_t cells = s.shape.Cells();
  return s.re.size() == cells && (!complex || s.im.size() == cells);
}

// Runs `invert` on fresh working arrays; the result replaces `result` only
// when it is whole.
template <typename Invert>
bool WithWork(const Scalogram& s, const ScalogramSetup& setup, bool complex, std::vector<double>& result,
              Invert invert) {
  if (!CanInvert(s, setup, complex)) return false;
  try {
    InversionWork work(s.shape.n);
    std::vector<double> signal = invert(work);
    result.swap(signal);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Step 5: every entry times dx / C; 0 for a divisor of 0 (no wavelet has
// any spectrum, and so neither has any row).
void ScaleByWaveConstant(InversionWork& work, double dx, double c) {
  ForEachEntry(work.n, [&](std::size_t k) {
    work.sum[k] = c > 0.0 ? dx * work.sum[k] / c : 0.0;
    work.sumI[k] = c > 0.0 ? dx * work.sumI[k] / c : 0.0;
  });
}

// Row 0 of one matrix through the low-pass spectrum made from `den` and the
// constant `c`, with the weight of g = 1.
void AddLowPass(std::span<const double> row0, const double* den, double c, double c0, InversionWork& work) {
  CreateScaleTransform(work.n, c, work.phi.data(), den);
  RowSpectrum(row0, work);
  AddProduct(work, work.phi.data(), work.zero.data(), c0, 1.0);
}

std::vector<double> Superposition(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                                  InversionWork& work) {
  const int n = work.n;
  const double length = setup.b - setup.a, dx = length / n;
  for (int r = 1; r <= s.shape.nscales; ++r) {
    const double g = std::sqrt(ScaleOfRow(r, setup.voices));
    const double c = g / (length * length);
    WaveletSpectrum(setup, r, RowSamples::Real, g, work);
    AddPower(work, work.den.data());
    RowSpectrum(s.RealRow(r), work);
    AddProduct(work, work.w.data(), work.wi.data(), c, 1.0);
  }
  const double constant = GetWaveConstant(n, work.den.data());
  if (method == ScalInversion::WithScaling)
    AddLowPass(s.RealRow(0), work.den.data(), constant, 1.0 / (length * length), work);
  ScaleByWaveConstant(work, dx, constant);
  return SpectrumToSignal(work);
}

// The complex rows: the real part of the complex product, c (Wc Yc -
// Ws Ys), and each part's power in its own accumulator.
std::vector<double> SuperpositionComp(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                                      InversionWork& work) {
  const int n = work.n;
  const double length = setup.b - setup.a, dx = length / n;
  for (int r = 1; r <= s.shape.nscales; ++r) {
    const double g = std::sqrt(ScaleOfRow(r, setup.voices));
    const double c = g / (length * length);
    WaveletSpectrum(setup, r, RowSamples::Cosine, g, work);
    AddPower(work, work.den.data());
    RowSpectrum(s.RealRow(r), work);
    AddProduct(work, work.w.data(), work.wi.data(), c, 1.0);
    WaveletSpectrum(setup, r, RowSamples::Sine, g, work);
    AddPower(work, work.den2.data());
    RowSpectrum(s.ImagRow(r), work);
    AddProduct(work, work.w.data(), work.wi.data(), c, -1.0);
  }
  const double cosine = GetWaveConstant(n, work.den.data());
  const double sine = GetWaveConstant(n, work.den2.data());
  if (method == ScalInversion::WithScaling) {
    const double c0 = 1.0 / (length * length);
    AddLowPass(s.RealRow(0), work.den.data(), cosine, c0, work);
    AddLowPass(s.ImagRow(0), work.den2.data(), sine, c0, work);
  }
  ScaleByWaveConstant(work, dx, cosine + sine);
  return SpectrumToSignal(work);
}

// The largest dx^2 |W|^2 of row 1 over k = 0..n/2, over the given parts.
double TrigPeak(const ScalogramSetup& setup, std::span<const RowSamples> kinds, InversionWork& work) {
  const double dx = (setup.b - setup.a) / work.n;
  double peak = 0.0;
  for (RowSamples kind : kinds) {
    WaveletSpectrum(setup, 1, kind, 1.0, work);
    for (int k = 0; k <= work.n / 2; ++k) {
      const double d = work.w[Index(k)] * work.w[Index(k)] + work.wi[Index(k)] * work.wi[Index(k)];
      peak = std::max(peak, dx * dx * d);
    }
  }
  return peak;
}

// One row's estimate (p + i q) / W with (p, q) = Y / dx, wherever the row
// has data and dx^2 |W|^2 is above the row's limit.
void AddEstimate(InversionWork& work, double dx, double limit) {
  ForEachEntry(work.n, [&](std::size_t k) {
    const double p = work.y[k] / dx, q = work.yi[k] / dx;
    if (p * p + q * q == 0.0) return;
    const double w = work.w[k], wi = work.wi[k];
    const double d = w * w + wi * wi;
    if (!(dx * dx * d > limit)) return;
    work.sum[k] += (p * w + q * wi) / d;
    work.sumI[k] += (q * w - p * wi) / d;
    work.count[k] += 1.0;
  });
}

// The damped trigonometric method over the rows of the given parts (the
// real matrix for Real and Cosine, the imaginary one for Sine).
std::vector<double> TrigMethod(const Scalogram& s, const ScalogramSetup& setup, std::span<const RowSamples> kinds,
                               InversionWork& work) {
  const int n = work.n;
  const double dx = (setup.b - setup.a) / n;
  const double level = kTrigLevelFraction * TrigPeak(setup, kinds, work);
  for (int r = 1; r <= s.shape.nscales; ++r) {
    const double limit = level / std::sqrt(ScaleOfRow(r, setup.voices));
    for (RowSamples kind : kinds) {
      WaveletSpectrum(setup, r, kind, 1.0, work);
      RowSpectrum(kind == RowSamples::Sine ? s.ImagRow(r) : s.RealRow(r), work);
      AddEstimate(work, dx, limit);
    }
  }
  const double factor = 1.0 / (static_cast<double>(n) * n);
  ForEachEntry(n, [&](std::size_t k) {
    if (work.count[k] == 0.0) return;
    work.sum[k] = work.sum[k] * factor / work.count[k];
    work.sumI[k] = work.sumI[k] * factor / work.count[k];
  });
  return SpectrumToSignal(work);
}

}  // namespace

double FAbsMax(const Scalogram& s) {
  return LargestFrom(s, 1, [&](std::size_t cell) { return std::fabs(s.re[cell]); });
}

double FAbsMaxComp(const Scalogram& s) {
  return LargestFrom(s, 1, [&](std::size_t cell) { return Modulus(s.re[cell], s.im[cell]); });
}

void GetScalGrImageArray(const Scalogram& s, MagnitudeMode mode, std::vector<std::int16_t>& levels, double& maximum) {
  maximum = FAbsMax(s);
  const auto value = [&](std::size_t cell) { return std::fabs(s.re[cell]); };
  const std::vector<double> reference = RowReferences(s, mode, maximum, value);
  const bool linear = IsLinear(mode);
  levels.assign(s.shape.Cells(), 128);
  for (int r = 0; r <= s.shape.nscales; ++r) {
    const double m = reference[Index(r)];
    for (std::size_t cell = s.Offset(r); cell < s.Offset(r + 1); ++cell)
      levels[cell] = linear ? SignedLinearLevel(s.re[cell], m) : SignedLogLevel(s.re[cell], m);
  }
}

void GetScalGrImageArrayComp(const Scalogram& s, MagnitudeMode mode, std::vector<std::int16_t>& magnitude,
                             std::vector<std::int16_t>& phase, double& maximum) {
  maximum = FAbsMaxComp(s);
  const auto value = [&](std::size_t cell) { return Modulus(s.re[cell], s.im[cell]); };
  const std::vector<double> reference = RowReferences(s, mode, maximum, value);
  const bool linear = IsLinear(mode);
  magnitude.assign(s.shape.Cells(), 255);
  phase.assign(s.shape.Cells(), 128);
  for (int r = 0; r <= s.shape.nscales; ++r) {
    const double m = reference[Index(r)];
    for (std::size_t cell = s.Offset(r); cell < s.Offset(r + 1); ++cell) {
      const double a = value(cell);
      magnitude[cell] = linear ? static_cast<std::int16_t>(255 - fourier::MagnitudeLinearLevel(a, m))
                               : fourier::MagnitudeLogLevel(a, m, kScalLevelsPerNeper);
      phase[cell] = fourier::PhaseLevel(s.re[cell], s.im[cell]);
    }
  }
}

void ThresholdScalogram(Scalogram& s, double value) {
  const std::size_t cells = s.shape.Cells();
  for (std::size_t cell = 0; cell < cells; ++cell) {
    if (s.complex) {
      if (Modulus(s.re[cell], s.im[cell]) < value) s.re[cell] = s.im[cell] = 0.0;
    } else if (std::fabs(s.re[cell]) < value) {
      s.re[cell] = 0.0;
    }
  }
}

double GetWaveConstant(int n, const double* den) { return *std::max_element(den, den + n / 2 + 1); }

bool InvertScalogram(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                     std::vector<double>& result) {
  if (s.complex) return InvertScalogramComp(s, setup, method, result);
  if (method == ScalInversion::DampedTrig) return InvertScalogramTrigMethod(s, setup, result);
  return WithWork(s, setup, false, result, [&](InversionWork& work) { return Superposition(s, setup, method, work); });
}

bool InvertScalogramComp(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                         std::vector<double>& result) {
  if (method == ScalInversion::DampedTrig) return InvertScalogramCompTrigMethod(s, setup, result);
  return WithWork(s, setup, true, result,
                  [&](InversionWork& work) { return SuperpositionComp(s, setup, method, work); });
}

bool InvertScalogramTrigMethod(const Scalogram& s, const ScalogramSetup& setup, std::vector<double>& result) {
  static constexpr RowSamples kinds[] = {RowSamples::Real};
  return WithWork(s, setup, false, result, [&](InversionWork& work) { return TrigMethod(s, setup, kinds, work); });
}

bool InvertScalogramCompTrigMethod(const Scalogram& s, const ScalogramSetup& setup, std::vector<double>& result) {
  static constexpr RowSamples kinds[] = {RowSamples::Cosine, RowSamples::Sine};
  return WithWork(s, setup, true, result, [&](InversionWork& work) { return TrigMethod(s, setup, kinds, work); });
}

}  // namespace keldo::wavelet

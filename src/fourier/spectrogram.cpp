#include "fourier/spectrogram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>

#include "common/number_text.h"
#include "fourier/fft.h"
#include "fourier/series.h"
#include "fourier/transforms.h"

namespace keldo::fourier {
namespace {

// What each window is called in the list, what the Gabor noise estimate
// divides by, and the threshold factor the denoise formula starts with.
struct WindowRow {
  SpecWindow kind;
  std::string_view name;
  double noiseFactor;
  std::string_view thresholdFactor;
};
constexpr std::array<WindowRow, 5> kWindows{{
    {SpecWindow::Blackman, "Blackman", 0.55, ".55*sqr(2log("},
    {SpecWindow::Gauss, "Gauss", 0.55, ".55*sqr(2log("},
    {SpecWindow::Hamming, "Hamming", 0.61, ".63*sqr(2log("},
    {SpecWindow::Hanning, "hanning", 0.65, ".61*sqr(2log("},
    {SpecWindow::Boxcar, "Boxcar", 1.0, "sqr(2log("},
}};

const WindowRow& RowOf(SpecWindow kind) {
  for (const WindowRow& row : kWindows)
    if (row.kind == kind) return row;
  return kWindows.back();
}

int ExponentOf(int n) {
  int m = 0;
  while ((1 << m) < n) ++m;
  return m;
}

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

// Log levels of the squared magnitude: each level 0.92 of the one before.
const double kLevelsPerNeper = 1.0 / std::log(1.0 / 0.92);

// The arctangent of y/x, 0 for a zero real part; the caller places the
// quadrant.
double SafeAtn(double y, double x) { return x == 0.0 ? 0.0 : std::atan(y / x); }

// The working arrays of one computation, sized once: the padded signal (or
// the overlap sums of an inversion), the frame pair the FFT works in, the
// window and the tables.
struct FrameWork {
  explicit FrameWork(int winlen)
      : m(ExponentOf(winlen)),
        x(Index(winlen) + 5, 0.0),
        y(Index(winlen) + 5, 0.0),
        window(Index(winlen) + 1, 0.0),
        sine(Index(winlen / 4 + 4), 0.0),
        tan(Index(winlen / 4 + 4), 0.0) {
    double cosConstant = 0.0;
    BuildTrigTables(winlen, m, sine.data(), tan.data(), cosConstant);
  }
  int m;
  KernelVector<double> x, y;
  std::vector<double> window, sine, tan;
};

// Columns transformed before their rows are written out, so that each row
// of the matrices takes a short contiguous run rather than one scattered
// entry per column.
constexpr int kColumnBlock = 8;

// The columns c0 .. c0 + count - 1 (0-based) of the spectrogram: each frame
// windowed from the padded signal (padded[k] is sig[k - winlen]), its wrapped
// end averaged into B[0], one real FFT, rows 0..nrows kept in `block`: row
// r of column c0 + k at r * kColumnBlock + k, so that each row of the
// matrices is written from one contiguous run.
void TransformColumns(const double* padded, const SpectrogramShape& s, int c0, int count, FrameWork& w,
                      double* blockRe, double* blockIm) {
  const int winlen = s.winlen;
  const std::size_t rows = Index(s.nrows) + 1;
  for (int k = 0; k < count; ++k) {
    // Frame offset -W/2 + c*step, shifted by the W zeros before sig[0].
    const double* p = padded + (winlen / 2 + (c0 + k) * s.step);
    double* b = w.x.data();
    for (int i = 0; i <= winlen; ++i) b[i] = p[i] * w.window[Index(i)];
    b[0] = (b[winlen] + b[0]) / 2;
    RealFFT(winlen, b, w.y.data(), w.sine.data(), w.tan.data(), w.m - 1);
    const double* y = w.y.data();
    for (std::size_t r = 0; r < rows; ++r) {
      blockRe[r * kColumnBlock + Index(k)] = b[r];
      blockIm[r * kColumnBlock + Index(k)] = y[r];
    }
  }
}

void StoreColumns(const double* blockRe, const double* blockIm, int c0, int count, Spectrum& spectrum) {
  const std::size_t ncols = Index(spectrum.shape.ncols);
  const std::size_t rows = Index(spectrum.shape.nrows) + 1;
  for (std::size_t r = 0; r < rows; ++r) {
    double* re = spectrum.re.data() + r * ncols + Index(c0);
    double* im = spectrum.im.data() + r * ncols + Index(c0);
    std::copy(blockRe + r * kColumnBlock, blockRe + r * kColumnBlock + count, re);
    std::copy(blockIm + r * kColumnBlock, blockIm + r * kColumnBlock + count, im);
  }
}

// The largest p of each column; a column of zeros takes 1.
std::vector<double> ColumnReferences(const Spectrum& spectrum) {
  const std::size_t ncols = Index(spectrum.shape.ncols);
  std::vector<double> reference(ncols, 0.0);
  for (std::size_t cell = 0; cell < spectrum.re.size(); ++cell) {
    const double p = spectrum.re[cell] * spectrum.re[cell] + spectrum.im[cell] * spectrum.im[cell];
    double& m = reference[cell % ncols];
    m = std::max(m, p);
  }
  for (double& m : reference)
    if (m == 0.0) m = 1.0;
  return reference;
}

// Columns c0 .. c0 + count - 1 (0-based) read row by row into `block`,
// laid out as TransformColumns leaves it: the reverse of StoreColumns.
void LoadColumns(const Spectrum& spectrum, int c0, int count, double* blockRe, double* blockIm) {
  const std::size_t ncols = Index(spectrum.shape.ncols);
  const std::size_t rows = Index(spectrum.shape.nrows) + 1;
  for (std::size_t r = 0; r < rows; ++r) {
    const double* re = spectrum.re.data() + r * ncols + Index(c0);
    const double* im = spectrum.im.data() + r * ncols + Index(c0);
    std::copy(re, re + count, blockRe + r * kColumnBlock);
    std::copy(im, im + count, blockIm + r * kColumnBlock);
  }
}

// The frame times W of column k of a block, from its rows 0..W/2, into
// w.x[0..W-1]; w.x[W] stays 0.
void InverseColumn(const double* blockRe, const double* blockIm, int k, int winlen, FrameWork& w) {
  const std::size_t rows = Index(winlen / 2) + 1;
  for (std::size_t r = 0; r < rows; ++r) {
    w.x[r] = blockRe[r * kColumnBlock + Index(k)];
    w.y[r] = blockIm[r * kColumnBlock + Index(k)];
  }
  RealInverseFFT(winlen, w.m - 6, w.x.data(), w.y.data(), w.sine.data(), w.tan.data());
}

// Adds one frame into the overlap sums a and d, whose index 0 is the frame's
// first sample.
void AccumulateFrame(InversionMethod method, const FrameWork& w, int winlen, int first, int last, double* a,
                     double* d) {
  const double* x = w.x.data();
  const double* win = w.window.data();
  switch (method) {
    case InversionMethod::SummedFilters:
      for (int i = 0; i <= winlen; ++i) {
        a[i] += x[i];
        d[i] += win[i];
      }
      break;
    case InversionMethod::SumOfSquares:
      for (int i = 0; i <= winlen; ++i) {
        a[i] += x[i] * win[i];
        d[i] += win[i] * win[i];
      }
      break;
    case InversionMethod::EachFilter:
      for (int i = first; i <= last; ++i) {
        a[i] += x[i] / win[i];
        d[i] += 1;
      }
      break;
  }
}

}  // namespace

std::string_view SpecWindowName(SpecWindow window) { return RowOf(window).name; }

bool SpecWindowOfName(std::string_view name, SpecWindow& window) {
  for (const WindowRow& row : kWindows)
    if (row.name == name) {
      window = row.kind;
      return true;
    }
  return false;
}

void GetSpecFilter(int winlen, SpecWindow kind, double* window) {
  const double pi = kProgramPi;
  const double h = winlen / 2;
  for (int i = 0; i <= winlen; ++i) {
    const double v = (i - h) / h;
    double value = 1.0;
    switch (kind) {
      case SpecWindow::Blackman: value = 0.5 * std::cos(pi * v) + 0.42 + 0.08 * std::cos(2 * pi * v); break;
      case SpecWindow::Gauss: value = std::exp(-18.0 / 4 * v * v); break;
      case SpecWindow::Hamming: value = 0.54 + 0.46 * std::cos(pi * v); break;
      case SpecWindow::Hanning: value = 0.5 * std::cos(pi * v) + 0.5; break;
      case SpecWindow::Boxcar: value = 1.0; break;
    }
    window[i] = value;
  }
}

int FilterWidth(const double* window, int upper, int half) {
  int i = 0;
  while (i <= upper && window[i] < 0.1) ++i;
  return half - i;
}

bool ComputeSpectrograph(const double* sig, const SpectrogramShape& shape, SpecWindow kind, Spectrum& spectrum) {
  try {
    if (spectrum.re.size() != shape.Cells() || spectrum.im.size() != shape.Cells()) {
      spectrum.re.assign(shape.Cells(), 0.0);
      spectrum.im.assign(shape.Cells(), 0.0);
    }
    spectrum.shape = shape;
    const int winlen = shape.winlen;
    FrameWork work(winlen);
    GetSpecFilter(winlen, kind, work.window.data());
    // sig[0..n] with W zeros on either side.
    std::vector<double> padded(Index(shape.n) + 2 * Index(winlen) + 1, 0.0);
    std::copy(sig, sig + shape.n + 1, padded.begin() + winlen);
    const std::size_t blockSize = Index(kColumnBlock) * (Index(shape.nrows) + 1);
    std::vector<double> blockRe(blockSize), blockIm(blockSize);
    for (int c0 = 0; c0 < shape.ncols; c0 += kColumnBlock) {
      const int count = std::min(kColumnBlock, shape.ncols - c0);
      TransformColumns(padded.data(), shape, c0, count, work, blockRe.data(), blockIm.data());
      StoreColumns(blockRe.data(), blockIm.data(), c0, count, spectrum);
    }
    return true;
  } catch (const std::bad_alloc&) {
    spectrum.re = std::vector<double>();
    spectrum.im = std::vector<double>();
    spectrum.shape = SpectrogramShape{};
    return false;
  }
}

double FMAX(const Spectrum& spectrum) {
  double m = 0.0;
  for (std::size_t cell = 0; cell < spectrum.re.size(); ++cell)
    m = std::max(m, spectrum.re[cell] * spectrum.re[cell] + spectrum.im[cell] * spectrum.im[cell]);
  return m;
}

double Phase(double re, double im) {
  const double pi = kProgramPi;
  if (re == 0.0) return im > 0 ? pi / 2 : im < 0 ? -pi / 2 : 0.0;
  const double theta = SafeAtn(im, re);
  if (re > 0) return theta;
  return im >= 0 ? theta + pi : theta - pi;
}

std::int16_t MagnitudeLogLevel(double value, double reference, double levelsPerNeper) {
  if (value == 0.0) return 255;
  const double level = levelsPerNeper * std::log(value / reference);
  if (level < -255) return 255;
  return static_cast<std::int16_t>(std::clamp(std::trunc(-level), 0.0, 255.0));
}

std::int16_t MagnitudeLinearLevel(double value, double reference) {
  if (value == 0.0) return 0;
  return static_cast<std::int16_t>(std::clamp(std::trunc(value * 256 / reference), 0.0, 255.0));
}

std::int16_t PhaseLevel(double re, double im) {
  const double theta = Phase(re, im);
  if (theta == 0.0) return 128;
  const double steps = std::min(127.0, std::trunc(std::fabs(theta) * 127 / kProgramPi));
  return static_cast<std::int16_t>(theta > 0 ? 128 + steps : 128 - steps);
}

void GetImageArray(const Spectrum& spectrum, MagnitudeMode mode, std::vector<std::int16_t>& magnitude,
                   std::vector<std::int16_t>& phase, double& maximum) {
  const std::size_t cells = spectrum.re.size();
  const std::size_t ncols = Index(spectrum.shape.ncols);
  magnitude.assign(cells, 0);
  phase.assign(cells, 128);
  const bool local = mode == MagnitudeMode::LogLocal || mode == MagnitudeMode::LinearLocal;
  const bool linear = mode == MagnitudeMode::LinearGlobal || mode == MagnitudeMode::LinearLocal;
  std::vector<double> reference;
  double global = 0.0;
  if (local) {
    reference = ColumnReferences(spectrum);
    for (double m : reference) global = std::max(global, m);
  } else {
    global = FMAX(spectrum);
  }
  maximum = std::sqrt(global);
  for (std::size_t cell = 0; cell < cells; ++cell) {
    const double re = spectrum.re[cell], im = spectrum.im[cell];
    const double p = re * re + im * im;
    const double m = local ? reference[cell % ncols] : global;
    magnitude[cell] = linear ? static_cast<std::int16_t>(255 - MagnitudeLinearLevel(p, m))
                             : MagnitudeLogLevel(p, m, kLevelsPerNeper);
    phase[cell] = PhaseLevel(re, im);
  }
}

void ThresholdSpectrum(Spectrum& spectrum, double value) {
  for (std::size_t cell = 0; cell < spectrum.re.size(); ++cell) {
    double& re = spectrum.re[cell];
    double& im = spectrum.im[cell];
    if (std::sqrt(re * re + im * im) < value) {
      re = 0.0;
      im = 0.0;
    }
  }
}

bool InvertSpectrogram(const Spectrum& spectrum, SpecWindow kind, InversionMethod method, std::vector<double>& result) {
  const SpectrogramShape& s = spectrum.shape;
  const int winlen = s.winlen, half = winlen / 2;
  try {
    FrameWork work(winlen);
    GetSpecFilter(winlen, kind, work.window.data());
    // Method 3 takes the middle of each frame where the window is >= 0.1.
    const int width = FilterWidth(work.window.data(), winlen, half);
    const int first = half - width, last = half + width;
    // a and d hold indices -2h .. n + 2h; frame c starts at -h + c*step.
    std::vector<double> a(Index(s.n) + 2 * Index(winlen) + 1, 0.0), d(a.size(), 0.0);
    const std::size_t rows = Index(half) + 1;
    std::vector<double> blockRe(Index(kColumnBlock) * rows), blockIm(blockRe.size());
    for (int c0 = 0; c0 < s.ncols; c0 += kColumnBlock) {
      const int count = std::min(kColumnBlock, s.ncols - c0);
      LoadColumns(spectrum, c0, count, blockRe.data(), blockIm.data());
      for (int k = 0; k < count; ++k) {
        InverseColumn(blockRe.data(), blockIm.data(), k, winlen, work);
        const std::size_t start = Index(half + (c0 + k) * s.step);
        AccumulateFrame(method, work, winlen, first, last, a.data() + start, d.data() + start);
      }
    }
    for (int j = 0; j <= s.n; ++j)
      if (d[Index(j + winlen)] == 0.0) return false;
    result.resize(Index(s.n) + 1);
    for (int j = 0; j <= s.n; ++j) result[Index(j)] = a[Index(j + winlen)] / d[Index(j + winlen)] / winlen;
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

double GetStandardDeviation(const Spectrum& spectrum, SpecWindow kind) {
  const int h = spectrum.shape.nrows;
  const double factor = RowOf(kind).noiseFactor;
  const int columns = std::min(20, spectrum.shape.ncols);
  std::vector<double> keys;
  std::vector<int> idx;
  double sum = 0.0;
  for (int c = 1; c <= columns; ++c) {
    keys.clear();
    idx.clear();
    for (int r = h / 2 + 1; r <= 3 * h / 4; ++r) {
      keys.push_back(std::fabs(spectrum.Im(r, c)));
      idx.push_back(static_cast<int>(idx.size()));
    }
    if (keys.empty()) continue;
    ISORTD(keys, idx);
    const std::size_t count = keys.size();
    const double median = (keys[(count - 1) / 2] + keys[count / 2]) / 2;
    sum += median / 0.6745 / std::sqrt(static_cast<double>(h)) / factor;
  }
  const double level = sum / 20;
  return level > 0 ? level : 1.0;
}

// The numbers are written by PlainNumber (common/number_text.h), the plain
// form the forms use for a double: up to 15 significant digits, no leading
// blank, so 64 is "64" and 0.25 is "0.25".
std::string GaborDenoiseFormula(SpecWindow kind, double level, int nrows, int winlen) {
  std::string text = "(g1)(g1 > c)\\c=";
  text += RowOf(kind).thresholdFactor;
  text += PlainNumber(winlen) + "))";
  text += "*(" + PlainNumber(level) + ")*sqr(" + PlainNumber(nrows) + ")";
  text += "\\Rem To denoise, plot this function and then select Invert.";
  return text;
}

}  // namespace keldo::fourier

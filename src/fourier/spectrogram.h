#pragma once
// The short-time Fourier transform of a spectrogram: windowed pieces of a
// signal, one real FFT each, no scaling (an entry is a plain sum); the grey
// levels that show it; its inversion by three ways of undoing the window
// overlap; and the noise estimate of Gabor denoising.
//
// Shapes: a signal sig[0..N], N a power of two from 64 to 65536; a window
// length W (a power of two) and a step; ncols = N/step + 1 columns (integer
// division), nrows = W/2. A spectrum matrix has rows 0..nrows and columns
// 1..ncols, stored row by row: entry (r, c) at r * ncols + (c - 1).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace keldo::fourier {

// The windows in the order the window list shows them.
enum class SpecWindow { Blackman, Gauss, Hamming, Hanning, Boxcar };
// "Blackman", "Gauss", "Hamming", "hanning", "Boxcar".
std::string_view SpecWindowName(SpecWindow window);
// The window a list text names; false for another text.
bool SpecWindowOfName(std::string_view name, SpecWindow& window);

struct SpectrogramShape {
  int n = 0;       // signal intervals: sig[0..n]
  int winlen = 0;  // W
  int step = 0;
  int ncols = 0;   // n / step + 1
  int nrows = 0;   // W / 2
  static SpectrogramShape Of(int n, int winlen, int step) {
    return {n, winlen, step, n / step + 1, winlen / 2};
  }
  std::size_t Cells() const { return static_cast<std::size_t>(nrows + 1) * static_cast<std::size_t>(ncols); }
};

// The complex spectrum, rows 0..nrows by columns 1..ncols.
struct Spectrum {
  SpectrogramShape shape;
  std::vector<double> re, im;
  double& Re(int r, int c) { return re[static_cast<std::size_t>(r) * static_cast<std::size_t>(shape.ncols) + static_cast<std::size_t>(c - 1)]; }
  double& Im(int r, int c) { return im[static_cast<std::size_t>(r) * static_cast<std::size_t>(shape.ncols) + static_cast<std::size_t>(c - 1)]; }
  double Re(int r, int c) const { return re[static_cast<std::size_t>(r) * static_cast<std::size_t>(shape.ncols) + static_cast<std::size_t>(c - 1)]; }
  double Im(int r, int c) const { return im[static_cast<std::size_t>(r) * static_cast<std::size_t>(shape.ncols) + static_cast<std::size_t>(c - 1)]; }
};

// window[0..winlen], with h = winlen/2 and v = (i - h)/h:
//   Blackman 0.5 cos(pi v) + 0.42 + 0.08 cos(2 pi v)   Gauss exp(-18/4 v^2)
//   Hamming 0.54 + 0.46 cos(pi v)   hanning 0.5 cos(pi v) + 0.5   Boxcar 1
// (pi is the literal 3.14159265358979).
void GetSpecFilter(int winlen, SpecWindow kind, double* window);

// The half-width of a window: i is the first index from 0 up to `upper`
// whose value is not below 0.1; the result is half - i (half - upper - 1
// when no value is).
int FilterWidth(const double* window, int upper, int half);

// ComputeSpectrograph: for column c = 0..ncols-1 the window centred on
// sample c*step (off = -W/2 + c*step) over the signal padded with zeros on
// both sides, B[i] = P[off+i] * window[i] for i = 0..W, then
// B[0] = (B[W] + B[0])/2, one RealFFT of W points, rows 0..nrows stored in
// column c+1. `spectrum` keeps its allocation when the shape is unchanged.
// False when the memory cannot be had (the spectrum is then left empty).
bool ComputeSpectrograph(const double* sig, const SpectrogramShape& shape, SpecWindow kind, Spectrum& spectrum);

// The display levels, 16-bit, of the same shape as the spectrum.
enum class MagnitudeMode { LogGlobal = 0, LinearGlobal = 1, LogLocal = 2, LinearLocal = 3 };
// The largest re^2 + im^2 of the spectrum, from 0.
double FMAX(const Spectrum& spectrum);
// The angle of (re, im) in the four quadrants, in radians; SafeAtn guards a
// zero real part.
double Phase(double re, double im);
// One cell's levels, shared with the scalogram's complex display.
// MagnitudeLogLevel: 255 for a value of 0; otherwise L = levelsPerNeper *
// ln(value / reference), 255 when L is below -255, else trunc(-L) clamped to
// 0..255 (levelsPerNeper = 1 / ln(1 / ratio) makes each level `ratio` of
// the one before). MagnitudeLinearLevel: trunc(value * 256 / reference)
// clamped to 0..255, 0 for a value of 0 (a display inverts it, 255 minus
// it). PhaseLevel: 128 for theta = Phase(re, im) equal to 0, else 128 plus
// or minus min(127, trunc(|theta| * 127 / pi)) by the sign of theta.
std::int16_t MagnitudeLogLevel(double value, double reference, double levelsPerNeper);
std::int16_t MagnitudeLinearLevel(double value, double reference);
std::int16_t PhaseLevel(double re, double im);
// GetImageArray: magnitude levels 0..255 (log: 0.92 a level below the
// reference, 255 for a zero cell; linear: 255 - trunc(p * 256 / M), of the
// squared magnitude p) and phase levels 1..255 (128 for theta 0). The
// reference M is FMAX in the global modes and the column's largest p in the
// local ones (1 for a column of zeros). `maximum` becomes sqrt of FMAX, or
// in the local modes sqrt of the largest column reference (so 1 for a
// spectrum of zeros).
void GetImageArray(const Spectrum& spectrum, MagnitudeMode mode, std::vector<std::int16_t>& magnitude,
                   std::vector<std::int16_t>& phase, double& maximum);

// ThresholdSpectrogram's cells: re and im set to 0 where sqrt(re^2 + im^2)
// is below the value (the value is not negative; the caller checks).
void ThresholdSpectrum(Spectrum& spectrum, double value);

// The three inversions; result[0..n]. A zero divisor at some j (a window
// vanishing there) is a division fault: false, with the result untouched;
// so is a lack of memory for the work arrays.
enum class InversionMethod {
  SummedFilters = 1,   // "Division by summed filters": A += X, D += window
  SumOfSquares = 2,    // "Division by sum of filter squares": A += X window, D += window^2
  EachFilter = 3,      // "Division by each filter": where window >= 0.1, A += X / window, D += 1
};
bool InvertSpectrogram(const Spectrum& spectrum, SpecWindow kind, InversionMethod method, std::vector<double>& result);

// GetStandardDeviation: the noise level from |Im| of rows H/2+1 .. 3H/4 of
// the first 20 columns (median by ISORTD / 0.6745 / sqrt(H) / the window's
// factor), averaged over 20; 1 when not positive. A spectrum of fewer than
// 20 columns adds what it has and is still divided by 20.
double GetStandardDeviation(const Spectrum& spectrum, SpecWindow kind);
// DenoiseOption's formula text for a window, the estimated level, the
// number of rows and the window length:
// "(g1)(g1 > c)\c=" + factor expression + "*(" + level + ")*sqr(" + rows +
// ")\Rem To denoise, plot this function and then select Invert."
std::string GaborDenoiseFormula(SpecWindow kind, double level, int nrows, int winlen);

}  // namespace keldo::fourier

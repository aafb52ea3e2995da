#pragma once
// The continuous wavelet transform of a scalogram, on a dyadic grid of
// scales, by convolution in the frequency domain: one real FFT of the
// signal, then per scale one real FFT of the sampled wavelet, one complex
// product, one inverse FFT; and a low-pass row 0 that fills in the
// frequencies the wavelets leave out, so that the rows can be inverted.
//
// Shapes: a signal sig[0..N], N a power of two (at least 64), on [a, b] with
// dx = (b - a)/N; o octaves of v voices, nscales = o*v. A scalogram matrix
// has rows 0..nscales and columns 0..N, stored row by row: entry (r, c) at
// r * (N + 1) + c. Row r >= 1 belongs to the scale s(r) = 2^((r - 1)/v): a
// larger s is a narrower wavelet, so the rows climb in frequency.
//
// A row r >= 1 is, for column c = 0..N-1, with j = (c + N/2) mod N,
//   row[c] = dx * sum_{k=0}^{N-1} Z[k] W[k] exp(-2 pi i j k / N)
//          = (b - a) * sum_{m=0}^{N-1} sig[m] w[(j - m) mod N]
// (Z, W the unnormalized spectra of sig[0..N-1] and of the wavelet samples
// w[0..N-1]): the circular convolution, turned by half a period so that a
// wavelet centred mid-interval leaves the events where they are. Column N
// takes what the product step leaves in the FFTs' unused end entry:
// dx * sig[N] * w[N] (dx * sig[N] * Phi[N] in row 0).

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "fourier/fft.h"

namespace keldo::wavelet {

// The wavelets by their number in the list.
enum class ScalWavelet { MexicanHat = 1, Haar = 2, GaborCosine = 3, GaborSine = 4, GaborComplex = 5 };
// Which part of the complex Gabor wavelet ComplexWaveletValues samples.
enum class WaveletPart { Cosine = 1, Sine = 2 };

// The five texts of the wavelet list, in order: "1. Mexican hat (real)" ..
// "5. Gabor (complex)".
std::span<const std::string_view> ScalWaveletLabels();
// The wavelet of a list text, by the number it starts with; false when the
// text starts with no number from 1 to 5.
bool ScalWaveletOfLabel(std::string_view label, ScalWavelet& wavelet);
// Types 1-4 fill one matrix; type 5 fills a real and an imaginary one.
inline bool IsRealWavelet(ScalWavelet wavelet) { return wavelet != ScalWavelet::GaborComplex; }

// The fields of the side box, already evaluated, and the signal's interval.
struct ScalogramSetup {
  double a = 0.0, b = 1.0;  // the signal's interval
  int octaves = 1;          // o
  int voices = 1;           // v
  double width = 1.0;       // w
  double freq = 1.0;        // f, read by types 3-5 only
  ScalWavelet wavelet = ScalWavelet::MexicanHat;
};

struct ScalogramShape {
  int n = 0;        // signal intervals: sig[0..n], columns 0..n
  int nscales = 0;  // rows 0..nscales
  static ScalogramShape Of(int n, int octaves, int voices) { return {n, octaves * voices}; }
  std::size_t Columns() const { return static_cast<std::size_t>(n) + 1; }
  std::size_t Cells() const { return static_cast<std::size_t>(nscales + 1) * Columns(); }
  bool operator==(const ScalogramShape&) const = default;
};

// The matrices: `re` the real rows (every wavelet), `im` the imaginary rows
// (the complex Gabor wavelet only; a real computation leaves it alone, of
// whatever size it had). Each keeps its allocation while the shape stays
// the same.
struct ScalogramWork;

// The working arrays of the last computation into a Scalogram, kept for
// the next computation of the same size, so that a size allocates once. A
// copy starts without them; a move takes them along.
class ScalogramWorkSlot {
 public:
  ScalogramWorkSlot() = default;
  ScalogramWorkSlot(const ScalogramWorkSlot&) {}
  ScalogramWorkSlot& operator=(const ScalogramWorkSlot&) {
    work.reset();
    return *this;
  }
  ScalogramWorkSlot(ScalogramWorkSlot&&) noexcept = default;
  ScalogramWorkSlot& operator=(ScalogramWorkSlot&&) noexcept = default;
  std::shared_ptr<ScalogramWork> work;
};

struct Scalogram {
  ScalogramShape shape;
  bool complex = false;  // which computation filled the matrices last
  std::vector<double> re, im;
  ScalogramWorkSlot workSlot;
  std::span<double> RealRow(int r) { return {re.data() + Offset(r), shape.Columns()}; }
  std::span<double> ImagRow(int r) { return {im.data() + Offset(r), shape.Columns()}; }
  std::span<const double> RealRow(int r) const { return {re.data() + Offset(r), shape.Columns()}; }
  std::span<const double> ImagRow(int r) const { return {im.data() + Offset(r), shape.Columns()}; }
  double Re(int r, int c) const { return re[Offset(r) + static_cast<std::size_t>(c)]; }
  double Im(int r, int c) const { return im[Offset(r) + static_cast<std::size_t>(c)]; }
  std::size_t Offset(int r) const { return static_cast<std::size_t>(r) * shape.Columns(); }
};

// The checks of the side box before a computation, in this order: o below
// 1 (message 58), o of 257 or more (59), v below 1 (60), o*v of 257 or more
// (61), w not positive (62), and for a wavelet above 2, f not positive
// (63). The catalogue number of the first problem and the field to put the
// focus on; message 0 when all is well.
enum class ScalogramField { None, Octaves, Voices, Width, Freq };
struct ScalogramProblem {
  int message = 0;
  ScalogramField field = ScalogramField::None;
};
ScalogramProblem CheckScalogramParameters(int octaves, int voices, double width, double freq, ScalWavelet wavelet);

// s(r) = 2^((r - 1)/v), the quotient a real one.
double ScaleOfRow(int r, int voices);

// The wavelet of row r sampled at t[i] = a + i*dx, i = 0..n, into out[0..n].
// The centre C is b/2 when a >= 0 and 0 when a < 0; s = s(r), q = sqrt(s),
// pi = 3.14159265358979:
//   1 Mexican hat  c = 4.57565215012204 w^2, u = (C - t) s, g = pi u^2:
//                  (1 - 2g/c) (2 pi sqrt(c) q) exp(-g/c)
//   2 Haar         u = (t - C) s / w, A = q / sqrt(w): +A for -0.5 < u < 0,
//                  -A for 0 < u < 0.5, 0 elsewhere and at u = 0
//   3 Gabor cosine u = (C - t) s / w: exp(-pi u^2) q cos(2 pi f u) / w
//   4 Gabor sine   the same with sin
// f is not read for types 1 and 2. Type 5 samples as type 3 here; its two
// parts come from ComplexWaveletValues.
void RealWaveletValues(int n, double* out, double a, double b, double dx, double f, int r, int v, ScalWavelet type,
                       double w);
// The complex Gabor wavelet's cosine part (type 3's samples) or sine part
// (type 4's) of row r.
void ComplexWaveletValues(int n, double* out, double a, double b, double dx, double f, int r, int v, double w,
                          WaveletPart part);

// The low pass. FMAXWI: the largest |S[i]| for i = 10..n/8, 0 when that
// range is empty (n below 80). CreateScaleTransform: phi[0..n] all 0, then
// for k = 0..n/2, e = c - S[k]; at the first k with e < 0.001 c it stops,
// otherwise phi[k] = phi[n - k] = sqrt(|e|).
double FMAXWI(int n, const double* S);
void CreateScaleTransform(int n, double c, double* phi, const double* S);

// What the row callback answers, and how a computation ended. The callback
// is called after every fourth row (r = 4, 8, ...; for the complex wavelet
// once both parts of the row are done) with that row's number: it lets the
// user interface run and may ask to stop.
enum class ScalogramProgress { Continue, Stop };
enum class ScalogramStatus { Done, Stopped, NoMemory };
using ScalogramRowCallback = std::function<ScalogramProgress(int row)>;

// The signal's spectrum and the working arrays of one computation, made
// once for a size: the FFT tables, the spectrum X, Y of sig[0..n-1] with
// X[n] = sig[n] and Y[n] = 0 (the FFTs leave the end entry alone), two pairs
// of wavelet arrays, two accumulators and the low-pass spectrum. Throws
// std::bad_alloc when the memory cannot be had.
//
// The six arrays of n + 5 doubles (x, y and the wavelet arrays) lie in one
// block, each a few cache lines further from a multiple of 4 KiB than the
// one before: arrays allocated apart all began at the same place in a page,
// so that the elements of one index in every array competed for the same
// cache sets, which slowed the transforms and the products (the inverse
// transform of 65536 points took a tenth longer).
struct ScalogramWork {
  // The arrays and tables of size n, then (SetSignal) the spectrum of sig.
  explicit ScalogramWork(int n);
  ScalogramWork(const double* sig, int n);
  ScalogramWork(const ScalogramWork&) = delete;
  ScalogramWork& operator=(const ScalogramWork&) = delete;
  void SetSignal(const double* sig);
  int n = 0;
  fourier::TrigTables tables;
  fourier::KernelVector<double> block;
  std::span<double> x, y;
  std::span<double> wr, wi, wr2, wi2;
  // Lent to the forward transforms of the rows for the imaginary parts of
  // their half-length transform (see RealFFTLowerHalf).
  std::span<double> half;
  std::vector<double> sum, sum2, phi;
  // The exp, cos and sin of the first octave's samples, kept for the rows
  // of the octaves above (see OctaveSamples in scalogram.cpp), with the
  // first index each row kept.
  std::vector<double> octaveExp, octaveCos, octaveSin;
  std::vector<int> octaveFrom;
};

// ComputeRealScalogram (types 1-4) and ComputeComplexScalogram (type 5):
// the spectrum of sig[0..n] and its tables (ScalogramWork), then
// CreateTheRealScalogram or CreateTheComplexScalogram. `result` is resized
// to the shape only when that changes.
//
// Rows are written into `result` as they are made. On Stopped the rows
// reached hold new values and the others old ones: a form that keeps its
// former picture on a stop computes into a second Scalogram and swaps the
// two on Done (each keeps its allocation from one computation to the next).
// On NoMemory `result` is left empty.
ScalogramStatus ComputeRealScalogram(const double* sig, int n, const ScalogramSetup& setup,
                                     const ScalogramRowCallback& onRow, Scalogram& result);
ScalogramStatus ComputeComplexScalogram(const double* sig, int n, const ScalogramSetup& setup,
                                        const ScalogramRowCallback& onRow, Scalogram& result);

// The rows from a prepared ScalogramWork into a result already of the
// shape. Real: for r = 1..nscales, the sampled wavelet's RealFFT Wr, Wi;
// S[k] += s (Wr[k]^2 + Wi[k]^2); the product with the signal's spectrum
// times dx; RealInverseFFT; the halves exchanged; row r. Then row 0 from
// phi = CreateScaleTransform(FMAXWI(S), S) in place of the wavelet's
// spectrum. Complex: the same for the cosine part into `re` and the sine
// part into `im`, each with its own accumulator and low-pass row. On a grid
// mirrored about its middle sample the two parts of a row share one real
// transform of their sum, and their inverses fold the half spectrum into a
// half-length complex transform: the same sums, rounded another way
// (within 1e-12 of each row's largest value; see scalogram.cpp).
ScalogramStatus CreateTheRealScalogram(const ScalogramSetup& setup, ScalogramWork& work,
                                       const ScalogramRowCallback& onRow, Scalogram& result);
ScalogramStatus CreateTheComplexScalogram(const ScalogramSetup& setup, ScalogramWork& work,
                                          const ScalogramRowCallback& onRow, Scalogram& result);

}  // namespace keldo::wavelet

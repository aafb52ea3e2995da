#pragma once
// The Fourier kernels every command shares. Sizes are powers of two, N = 2^M.
// Arrays are plain doubles, real and imaginary parts apart, indexed from 0;
// callers allocate N + 5 entries. The kernels work in place, apply no
// normalization, and take every twiddle factor from two tables built with
// square roots alone; each rotation is three shears.
//
//   complex:  Z[k] = sum_j (X[j] + i Y[j]) exp(+2 pi i j k / N)
//   RealFFT:  the same for real X[0..N-1], all N values out
//   RealInverseFFT:  x[j] = sum_k Z[k] exp(-2 pi i j k / N) with
//             Z[N-k] = conj(Z[k]), from X, Y[0..N/2]
//   sine:     X[k] = sum_{j=1}^{N-1} x[j] sin(pi j k / N), k = 0..N
//   cosine:   X[k] = sum_{j=0}^{N-1} x[j] cos(pi j k / N), k = 0..N-1

#include <cstddef>
#include <new>
#include <vector>

namespace keldo::fourier {

// Memory for the kernels' working arrays: a 64-byte boundary, so that their
// vector steps never straddle two cache lines (at some sizes that makes a
// transform a third faster), and successive arrays at staggered places in
// their 4096-byte pages (AllocateKernelArray). The kernels walk the real and
// imaginary arrays at the same indices; two arrays allocated one after the
// other would start at nearly the same place in their pages, and then loads
// from one wait on stores to the other, which the processor first matches
// by the address bits within a page: large transforms took up to 15 per
// cent longer.
void* AllocateKernelArray(std::size_t bytes);
void FreeKernelArray(void* p);

template <typename T>
struct KernelAllocator {
  using value_type = T;
  KernelAllocator() = default;
  template <typename U>
  explicit KernelAllocator(const KernelAllocator<U>&) {}
  T* allocate(std::size_t n) {
    if (n > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(AllocateKernelArray(n * sizeof(T)));
  }
  void deallocate(T* p, std::size_t) { FreeKernelArray(p); }
  bool operator==(const KernelAllocator&) const { return true; }
};
template <typename T>
using KernelVector = std::vector<T, KernelAllocator<T>>;

// S[k] = sin(2 pi k / N) and T[k] = tan(pi k / N) for k = 0..N/4 (arrays of
// N/4 + 4), and c = 2 cos(2 pi / N). N at least 8.
void BuildTrigTables(int n, int m, double* sineTable, double* tanTable, double& cosConstant);

// The bit-reversal permutation of both arrays of length n = 2^m.
void BitReversePair(double* x, double* y, int n, int m);
void BitReversePair(float* x, float* y, int n, int m);

// Butterflies over bit-reversed data of length n; stride 1 when the tables
// were built for n, 2 when built for 2n. The single-precision version does
// the same operations in floats.
void ComplexFFTCore(double* x, double* y, const double* sineTable, const double* tanTable, int n, int stride);
void ComplexFFTCore(float* x, float* y, const float* sineTable, const float* tanTable, int n, int stride);

// BitReversePair then ComplexFFTCore with stride 1 (tables built for n),
// with the same result to the bit, the first butterflies done as the
// permutation goes: the data are passed over once less.
void ComplexFFT(double* x, double* y, const double* sineTable, const double* tanTable, int n, int m);
void ComplexFFT(float* x, float* y, const float* sineTable, const float* tanTable, int n, int m);

// The complex transform of h = N/2 points with the tables built for N
// (mHalf = M - 1): BitReversePair then ComplexFFTCore with stride 2, to the
// bit, by the kernels the real transforms use for their half-length
// transform inside.
void HalfLengthComplexFFT(double* x, double* y, const double* sineTable, const double* tanTable, int h, int mHalf);
// The same transform of the sequence z[2k] + i z[2k + 1] (k = 0..h-1), the
// pairs interleaved in one array, into (re, im), arrays apart from z: the
// same bits, by the passes the real transform uses for its half-length
// transform, whose permutation reads the pairs in place of splitting them
// first.
void HalfLengthComplexFFTOfPairs(const double* z, double* re, double* im, const double* sineTable,
                                 const double* tanTable, int h, int mHalf);

// Bit reversal and butterflies (tables built for n) of kFFTBatch complex
// sequences at once, interleaved: element i of sequence c at
// x[i * kFFTBatch + c]. Each sequence comes out bit for bit as
// BitReversePair and ComplexFFTCore would leave it alone.
constexpr int kFFTBatch = 8;
void ComplexFFTBatch(float* x, float* y, const float* sineTable, const float* tanTable, int n);

// Full spectrum of real x[0..N-1]; mHalf = M - 1. Y's input is ignored;
// Y[0] = Y[N/2] = 0 on output.
void RealFFT(int n, double* x, double* y, const double* sineTable, const double* tanTable, int mHalf);
void RealFFT(int n, float* x, float* y, const float* sineTable, const float* tanTable, int mHalf);
// RealFFT's X[0..N/2] and Y[0..N/2], to the bit, for callers that read no
// more (a real signal's spectrum above N/2 is the conjugate mirror): the
// entries above N/2 are left unspecified, which spares the large
// transforms half the stores of their last pass. A caller may lend an
// array of N/2 doubles apart from x and y, imagHalf, for the imaginary
// parts of the half-length transform inside, which otherwise sit in
// Y[N/2..N): exactly a multiple of 4096 bytes from its real parts in
// Y[0..N/2) from 1024 points up, the same place within their pages, where
// loads wait on the stores to the other half. Lent a quarter of a page
// away, the transform of 65536 points took 0.92 of the time with AVX-512
// and 0.97 without (4096 points: 0.92 and 0.84).
void RealFFTLowerHalf(int n, double* x, double* y, const double* sineTable, const double* tanTable, int mHalf,
                      double* imagHalf = nullptr);

// Real signal from a half spectrum X, Y[0..N/2]; mOffset = M - 6. Y is
// destroyed. Of RealFFT's output it gives N times the signal.
void RealInverseFFT(int n, int mOffset, double* x, double* y, const double* sineTable, const double* tanTable);
// The same with the halves exchanged on the way out: out[j] is the output
// at (j + N/2) mod N, j = 0..N-1 (RealInverseFFT then SwapHalves). out is
// an array apart from x and y; x is destroyed too.
void RealInverseFFTSwapped(int n, int mOffset, double* x, double* y, const double* sineTable,
                           const double* tanTable, double* out);
// Two such inverses of one size at once, (x1, y1) into out1 and (x2, y2)
// into out2, each with the bits it would have alone: their long chains of
// sums run side by side.
void RealInverseFFTSwappedPair(int n, int mOffset, double* x1, double* y1, double* out1, double* x2, double* y2,
                               double* out2, const double* sineTable, const double* tanTable);

// Sine transform of x (x[0] and x[N] ignored); X[0] = X[N] = 0 exactly. Y is
// scratch. mOffset = M - 6.
void SineTransformCore(int n, double* x, double* y, const double* sineTable, const double* tanTable, int mOffset,
                       double cosConstant);

// Cosine transform of x[0..N-1]; X[N] is left for the caller.
void CosineTransformCore(int n, double* x, double* y, const double* sineTable, const double* tanTable, int mOffset,
                         double cosConstant);

// Exchanges a[k] and a[k + N/2] for k = 0..N/2-1.
void SwapHalves(int n, double* a);

// Tables for one size, built once and kept by a caller.
struct TrigTables {
  explicit TrigTables(int n);
  int n = 0;
  int m = 0;
  std::vector<double> sine;
  std::vector<double> tan;
  double cosConstant = 0.0;
};

// The same tables rounded to single precision, for the float kernels.
struct FloatTrigTables {
  explicit FloatTrigTables(int n);
  int n = 0;
  int m = 0;
  std::vector<float> sine;
  std::vector<float> tan;
};

}  // namespace keldo::fourier

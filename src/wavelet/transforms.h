#pragma once
// Wavelet transforms of N = 2^M points, in place with periodic wrap-around:
// one level filters the first n points into trend and fluctuation values,
// interleaved, and a reordering puts the trend first. L levels leave the
// trend in X[0 .. N/2^L - 1], then the fluctuations of levels L .. 1.
//
// Order codes: -1 Haar; 1..9 Daubechies of order 2(code + 1) (or the least
// asymmetric ones for orders 8..20); 1..5 Coiflets of order 6 code; 101..110
// the biorthogonal lifting schemes.

#include <string>
#include <vector>

namespace keldo::wavelet {

struct Lanes8;

// Low-pass H and high-pass G = (-1)^k H[Lh - k] of one filter; Lh is the
// last index (length - 1).
struct FilterBank {
  std::vector<double> h, g;
  int lh = 0;
};

// The Haar filters (code -1) and the Daubechies rows; `symmetric` takes the
// least-asymmetric row for a code from 1 up. A code without a row gives the
// single-element default H = {0}.
FilterBank DaubechiesFilters(int code, bool symmetric);
// Coiflets of order 6 code, code 1..5.
FilterBank CoifletFilters(int code);
// The inverse pair: A[2m] = H[Lh-1-2m], A[2m+1] = G[Lh-1-2m],
// B[2m] = H[Lh-2m], B[2m+1] = G[Lh-2m].
void GetInvWCoeff(const FilterBank& bank, std::vector<double>& a, std::vector<double>& b);
void GetInvCOIFCoeff(const FilterBank& bank, std::vector<double>& a, std::vector<double>& b);

// One level on x[0..n-1], interleaved result; w is scratch of n values.
void WavTr(int n, int lh, double* x, double* w, const double* h, const double* g);
// Its inverse, on interleaved data.
void InvWavTr(int n, int lh, double* x, double* w, const double* a, const double* b);
// Interleaved to trend-then-fluctuation, and back; the Lanes8 forms on
// eight lines at once.
void Perm(int n, double* x, double* w);
void INVPERM(int n, double* x, double* w);
void Perm(int n, Lanes8* x, Lanes8* w);
void INVPERM(int n, Lanes8* x, Lanes8* w);
// Rotates x[0..n-1] right by shift mod n, and back.
void COIFPerm(int n, double* x, double* w, int shift);
void InvCOIFPerm(int n, double* x, double* w, int shift);

// One level of a lifting scheme (codes 101..110) on x[0..n-1], interleaved
// result; e is scratch of n + 43 values (indices -21 .. n + 21). x may be e
// itself: the line is then lifted where it lies, with no copy in or out.
void SymmWavTr(int n, int ext, double* e, double* x, int code);
void InvSymmWavTr(int n, int ext, double* e, double* x, int code);
// The same on eight lines at once (wavelet/lanes.h): each line gets exactly
// the values the double form gives it.
void SymmWavTr(int n, int ext, Lanes8* e, Lanes8* x, int code);
void InvSymmWavTr(int n, int ext, Lanes8* e, Lanes8* x, int code);
// The names of the lifting schemes, codes 101..110 in order.
const std::vector<std::string>& OtherWaveletNames();

// The multi-level transforms and their inverses (levels 1..M; the lifting
// codes need levels <= M - 2). m is the exponent of n.
void DAUBGEN(int code, bool symmetric, int n, double* x, int levels);
void INVDAUBGEN(int code, bool symmetric, int n, double* x, int m, int levels);
void CoifletTR(int code, int n, double* x, int levels);
void INVCoifletTR(int code, int n, double* x, int m, int levels);

// The full packet tree: every block of every level split again.
void DAUBGENWP(int code, bool symmetric, int n, double* x, int levels);
void INVDAUBGENWP(int code, bool symmetric, int n, double* x, int m, int levels);
void CoifletTrWP(int code, int n, double* x, int levels);
void InvCoifletTrWP(int code, int n, double* x, int m, int levels);

// One level at a time of a chosen transform, for callers that run it over
// many vectors (the rows and columns of a matrix): the filters and scratch
// are made once. `coiflet` selects CoifletTR's levels (coiflets and the
// lifting codes), otherwise DAUBGEN's (Daubechies and Haar). A level is that
// of the multi-level transforms: trend in the first half, fluctuation in the
// second.
class LevelSteps {
 public:
  LevelSteps(int code, bool symmetric, bool coiflet, int maxSize);
  void Forward(int size, double* x);
  void Inverse(int size, double* x);

 private:
  int code_;
  bool coiflet_;
  FilterBank bank_;
  std::vector<double> a_, b_;
  std::vector<double> w_, e_;
};

}  // namespace keldo::wavelet

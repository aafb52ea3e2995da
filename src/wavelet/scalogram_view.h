#pragma once
// What a scalogram form does with its matrices once they are computed: the
// grey levels that show them, the threshold that clears small cells, and
// three ways of turning the rows back into a signal. Shapes and row scales
// are those of wavelet/scalogram.h: rows 0..nscales (row 0 the low pass,
// row r >= 1 at the scale s(r) = 2^((r - 1)/v)), columns 0..N, row by row.

#include <cstdint>
#include <vector>

#include "fourier/spectrogram.h"
#include "wavelet/scalogram.h"

namespace keldo::wavelet {

// The largest |re| over rows 1..nscales, columns 0..N; 1 for an all-zero
// scalogram (row 0 is not looked at).
double FAbsMax(const Scalogram& s);
// The largest modulus sqrt(re^2 + im^2) over rows 1..nscales; 1 when all
// are zero.
double FAbsMaxComp(const Scalogram& s);

// Grey levels of a real scalogram, one per cell, in the layout of s.re
// (rows 0..nscales). The cells carry a sign, so 128 stands for zero. With
// a = |z| and M the reference (FAbsMax in the global modes, the row's
// largest |z| in the local ones, 1 for a row of zeros):
//   log    c = 1 / ln(1 / 0.96), L = c ln(a / M); 128 when a = 0 or L is
//          below -256; otherwise t = trunc(L + 256) clamped to 0..255, and
//          the level is t/2 + 127 for z > 0, t/2 for z < 0 (integer halves).
//   linear t = min(127, trunc(a * 127 / M)); 128 + t for z > 0, 128 - t for
//          z < 0, 128 for z = 0.
// Each log level is 0.96 of the next in amplitude (the spectrogram's 0.92
// is a step of squared magnitude). `maximum` gets FAbsMax in every mode:
// the form shows it as "Maximum = ".
void GetScalGrImageArray(const Scalogram& s, fourier::MagnitudeMode mode, std::vector<std::int16_t>& levels,
                         double& maximum);

// Levels of a complex scalogram, rows 0..nscales: the magnitude as the
// spectrogram's levels of the modulus a (fourier::MagnitudeLogLevel with
// each level 0.96 of the one before, 255 for a = 0 and below -255 levels;
// the linear levels 255 - trunc(a * 256 / M)), the reference M being
// FAbsMaxComp in the global modes and the row's largest modulus in the
// local ones (1 for a row of zeros); the phase as fourier::PhaseLevel of
// (re, im). `maximum` gets FAbsMaxComp in every mode.
void GetScalGrImageArrayComp(const Scalogram& s, fourier::MagnitudeMode mode, std::vector<std::int16_t>& magnitude,
                             std::vector<std::int16_t>& phase, double& maximum);

// Every cell of rows 0..nscales whose |re| (for a complex scalogram, whose
// modulus) is below `value` becomes 0, both parts for a complex one. The
// value is not negative; the caller checks.
void ThresholdScalogram(Scalogram& s, double value);

enum class ScalInversion {
  Superposition = 1,  // "Wavelet superposition"
  WithScaling = 2,    // "Wavelets and scaling functions"
  DampedTrig = 3,     // "Damped trigonometric"
};

// The signal result[0..N] rebuilt from the rows of `s` by `method`, the
// wavelet, octaves, voices, width, frequency and interval taken from
// `setup` (those that computed the rows); the real or complex path by
// s.complex, and DampedTrig to the trigonometric methods. False, with
// `result` untouched, when the memory cannot be had or the matrices do not
// have the scalogram's shape (N a power of two, at least 64). A divisor C
// of 0 (no wavelet sample of the setup is other than 0) gives zeros.
//
// Conventions: F+ is RealFFT, Z[k] = sum_j x[j] exp(+2 pi i j k / N), and
// F- is RealInverseFFT, x[j] = sum_k Z[k] exp(-2 pi i j k / N), so
// F- F+ = N. A row r >= 1 is, before its halves are exchanged,
// dx F-(X W_r) with X = F+ sig and W_r = F+ of its wavelet samples; a row's
// spectrum Y = F+ of the row with its halves exchanged back is therefore
// N dx X W_r.
//
// Wavelet superposition (InvertScalogram, real): per row r, W = F+ of the
// samples times g = sqrt(s(r)), Den[k] += |W[k]|^2, Sum[k] += c W[k] Y[k]
// with c = g / (b - a)^2. C = GetWaveConstant(Den). The spectrum dx Sum / C
// goes through F-. For an unmodified scalogram this is sig filtered by
// sum_r s W_r^2 / C: 1 where the wavelets cover, 0 at the mean. The
// product is W Y, not conj(W) Y, so a wavelet odd about the centre (Haar,
// Gabor sine: W_r^2 = -|W_r|^2) gives the covered band back negated.
//
// Wavelets and scaling functions: the same, and also the low-pass
// spectrum Phi = CreateScaleTransform(C, Den) with row 0: Sum[k] +=
// c0 Phi[k] Y0[k]. Row 0's c0 is 1 / (b - a)^2, the weight of g = 1: the
// low pass carries no scale, as in the forward transform, which puts Phi
// in without one. Den is the forward's accumulator S, so where FMAXWI(S)
// equals C the low pass and the wavelets add to C and the mean comes back.
//
// Complex path (InvertScalogramComp): the complex wavelet psi = psi_c +
// i psi_s and the complex row z = z_c + i z_s; Sum gains the spectrum of
// the real part of psi conv z, c (Wc Yc - Ws Ys), each part with its own
// spectra (Wc, Yc cosine, Ws, Ys sine). Den_c and Den_s are kept apart, as
// the forward keeps one accumulator per part, and the one divisor is C =
// GetWaveConstant(Den_c) + GetWaveConstant(Den_s). With scaling functions,
// each part's row 0 (its own low pass) adds c0 Phi_p Y0_p with Phi_p from
// Den_p and that part's constant.
//
// Damped trigonometric (InvertScalogramTrigMethod): per row, W without
// the weight, and (p, q) = Y / dx = N X W. Where p^2 + q^2 > 0 and
// dx^2 |W|^2 is above level / sqrt(s(r)), Sum += (p + i q) / W and
// Count += 1. Each such term is N X: every row is an estimate of the
// signal's spectrum where its wavelet is strong. Then Sum is multiplied by
// the final factor 1 / N^2 (the N of F+ on the signal and the N of F-) and
// divided by Count, and F- gives the signal back exactly at every
// frequency that some row reaches; the others (the mean, for a wavelet
// without one) come back 0. The level is 1/100 of the largest dx^2 |W|^2
// of row 1, the widest wavelet. dx |W_r| peaks near 1/sqrt(s(r)) times
// row 1's peak (samples of height sqrt(s), support shrinking as 1/s), so
// row r takes the frequencies where |W_r| is above s^(1/4)/10 of its own
// peak: a tenth of it in row 1, a fifth four octaves up, and the rows far
// above the sampling rate, whose samples no longer make a wavelet, not at
// all. The complex path does the same with the cosine rows and the sine
// rows each an estimate of its own, the level from the larger of the two
// row-1 peaks.
//
// End entry. The forward transform leaves column N the product of the end
// entries, dx sig[N] w[N] (dx sig[N] Phi[N] in row 0), which no FFT
// touches. The inverse treats entry N the same way: every step above runs
// on it as on any k (Y[N] is row[N], W[N] the weighted sample g w[N],
// Phi[N] = Phi[0]), and since both FFTs are skipped there, it takes their
// factor N^2: result[N] = N^2 times the value the steps leave. So
// result[N] = sig[N] (Den[N] + Phi[N] Phi'[N]) / C in the real
// superpositions (Phi' the forward's low pass, Phi'[N] = Phi'[0]),
// Den[N] being sum_r s w_r[N]^2 (about 0: the wavelets vanish at the
// interval's end; the low pass brings sig[N] back with scaling functions; the
// complex path has sum_r s (wc_r[N]^2 - ws_r[N]^2) for Den[N], the end
// samples being plain numbers), and sig[N] from the trigonometric method
// when some row passes its level there, 0 otherwise.
bool InvertScalogram(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                     std::vector<double>& result);
// The complex path of InvertScalogram (Superposition, WithScaling;
// DampedTrig goes to InvertScalogramCompTrigMethod).
bool InvertScalogramComp(const Scalogram& s, const ScalogramSetup& setup, ScalInversion method,
                         std::vector<double>& result);
// The damped trigonometric method on s.re alone, and on both parts.
bool InvertScalogramTrigMethod(const Scalogram& s, const ScalogramSetup& setup, std::vector<double>& result);
bool InvertScalogramCompTrigMethod(const Scalogram& s, const ScalogramSetup& setup, std::vector<double>& result);

// The wave constant C: the largest Den[k] for k = 0..n/2 (the spectrum's
// own half; the entries above mirror it and the end entry is a product of
// samples, not a spectral value).
double GetWaveConstant(int n, const double* den);

// The damped trigonometric level as a fraction of row 1's largest
// dx^2 |W|^2.
inline constexpr double kTrigLevelFraction = 0.01;

}  // namespace keldo::wavelet

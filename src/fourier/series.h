#pragma once
// Partial sums of Fourier, sine and cosine series of a sampled function,
// formed by truncating the discrete spectrum and transforming back, and the
// frequency filters that weigh or select the coefficients first.

#include <functional>
#include <string>
#include <vector>

namespace keldo::fourier {

enum class SeriesKind { Fourier = 1, Sine = 2, Cosine = 3 };

// The largest harmonic of a kind: N/2 for Fourier, N for sine and cosine.
int MaxHarmonic(SeriesKind kind, int n);

// The modified Bessel function of order 0, by the polynomial approximations
// of Abramowitz and Stegun 9.8.1 and 9.8.2.
double FMBESS(double x);

// The names of the frequency filters, in the order of their list.
const std::vector<std::string>& FrequencyFilterNames();

// Parameters a filter may read: p (FiltParam1), q (FiltParam2) and the right
// end b of the graph's interval.
struct FilterParameters {
  double p = 0.0;
  double q = 0.0;
  double b = 1.0;
};

// The weights w[0..H] of a weighting filter ("hanning" ... "FresnelSin");
// false for a name that is not one. The weights follow the formulas as
// written, so H = 0 makes u = k/H a division by zero: the weights are then
// not finite and the caller ends the command.
bool FilterWeights(const std::string& name, int h, const FilterParameters& params, std::vector<double>& w);

// Multiplies X[k] (and Y[k] for a Fourier series) by w[k], k = 0..H.
void ApplyWeights(SeriesKind kind, const std::vector<double>& w, double* x, double* y);

// Sorts keys descending by Shell's method (gaps 3h + 1), carrying idx;
// equal keys keep the order of their indices, which start in ascending
// order.
void ISORTD(std::vector<double>& keys, std::vector<int>& idx);

// What a coefficient-selecting filter reports: the text for FilterFormula
// and the number for TxtHarmonics (not written when empty).
struct SelectionReport {
  std::string formulaText;
  std::string harmonicsText;
};

// Keeps the H largest coefficients.
void FSerHighMag(SeriesKind kind, int n, int h, double* x, double* y);
// Keeps the fewest largest coefficients that hold the fraction e of the
// energy; false for a fraction outside [0, 1] (message 18).
bool FSerEnerPerc(SeriesKind kind, int n, double e, double* x, double* y, SelectionReport& report);
// Keeps the coefficients whose magnitude is at least t times the largest;
// false for t outside [0, 1] (message 19).
bool FSerThreshold(SeriesKind kind, int n, double t, double* x, double* y, SelectionReport& report);

// How a series command treats the coefficients before the partial sum.
struct SeriesFilter {
  enum class Mode { None, Weights, Selects, Diffraction } mode = Mode::None;
  // Weights: applied to the coefficients. Diffraction: the cosine-pass and
  // sine-pass weights.
  std::vector<double> weights, sineWeights;
  // Selects: runs on the coefficients and may report.
  std::function<bool(double* x, double* y, SelectionReport& report)> select;
};

struct SeriesResult {
  bool ok = true;
  std::vector<double> values;  // N+1
  SelectionReport report;
};

// The partial sum up to harmonic H (checked by the caller) of y[0..N].
// `averaged` is "Periodic, endpoint averaged".
SeriesResult FourierSeriesOf(int n, const double* y, SeriesKind kind, int h, bool averaged, const SeriesFilter& filter);

}  // namespace keldo::fourier

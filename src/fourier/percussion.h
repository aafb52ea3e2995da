#pragma once
// The percussion scalogram's arithmetic: a spectrogram's columns turned into
// a train of pulses, the shortest spacing of those pulses, and the scalogram
// settings that make that spacing show as a scale.
//
// Shapes: the spectrum of spectrogram.h (rows 0..R, columns 1..C); the train
// is the sample array of a one-dimensional graph, train[0..n] (n + 1
// samples), n = AssignPoints(C).

#include <vector>

#include "fourier/spectrogram.h"

namespace keldo::fourier {

// The point count n of a graph that holds `ncols` samples: the power of two
// at or above ncols, clamped into the graphs' range 64..65536.
int AssignPoints(int ncols);

// The train of pulses of a spectrum, n + 1 samples (n = AssignPoints of its
// column count; the C = 65537 columns of a step of 1 over 65536 points fill
// all of e[0..65536]; an n with C > n + 1 is refused with an empty result).
//
// With R = nrows and C = ncols:
//   e[c-1] = (1/R) * sum_{r=1..R} (re(r,c)^2 + im(r,c)^2)   c = 1..C
// (row 0, the zero frequency, is left out; e is 0 beyond the columns), and
// the mean m = sum_{i=0..n-1} (1/n) e[i], divided by n even where there are
// fewer than n columns. Then
//   train[i] = 1 if e[i] > m, else 0    for i = 1..n (equality gives 0),
//   train[0] = e[0], the first column's mean power, left as it is.
// So train[1..n] is the pulse train proper and sample 0 keeps a power; it
// is a pulse to PulseRate only if that power is exactly 1. A spectrum of
// equal columns with C = n has no sample above the mean: train[1..n] is all
// zero. `mean`, when given, receives m. A spectrum with R = 0 has no rows
// to average: every e is 0.
std::vector<double> PercussionTrain(const Spectrum& spectrum, int n, double* mean = nullptr);

struct PulseRateResult {
  double rate = 1.0;  // (best + 1) * step, or 1 where that is 0
  int pulses = 0;     // pulses begun in the train
  int best = -1;      // shortest spacing counted, in samples; -1 for none
};

// The shortest spacing of the pulses of `train`, scanned from sample 0.
// A pulse begins at a sample equal to 1 while outside a pulse, and ends at
// the next sample equal to 0 (that sample's index is the pulse's end); other
// values change nothing. Each pulse after the first measures the distance
// d = start - end of the previous pulse (the count of samples between
// them); after the scan, if the train ended outside a pulse and there was
// one, d = size - end of the last pulse counts too (the samples after it).
// A d of at least 1 that is below the best so far becomes the best.
// `best` starts at -1, "no spacing yet", which any counted d replaces; so a
// train with no pulse, or one pulse that runs to the end, keeps -1, its
// rate (best + 1) * step is 0, and the rate is 1. Two pulses with 3 samples
// between them (and no shorter spacing) give best = 3 and a rate of 4 steps.
PulseRateResult PulseRate(const std::vector<double>& train, double step);

struct PercussionSettings {
  int octaves = 1;
  int voices = 256;
  double width = 0.0;      // w
  double frequency = 0.0;  // f
};

// The scalogram settings for a train of n intervals lasting T = `duration`
// (n times the spectrogram's step in time, shape.step * dt) whose pulses
// come at `rate` (PulseRate's rate, in the same unit of time). With
// pi = 3.14159265358979 and s = sqrt(pi) * 4 * T:
//   w = 1 / s,  f = s / rate,  u = ln(n^2 / f) / ln 2,
//   o = trunc(u - 3/2), plus 1 when u - 3/2 is not whole, and at least 1,
//   voices = 256 / o (integer division; 0 when o is above 256).
// A u that is not finite (a duration or rate of 0) gives o = 1.
PercussionSettings PercussionScalogramSettings(int n, double duration, double rate);

}  // namespace keldo::fourier

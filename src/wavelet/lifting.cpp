// The biorthogonal wavelets by lifting on a symmetrically extended copy:
// CDF 9/7 ("Daub 9/7"), the Deslauriers-Dubuc family and integer variants.
// The steps are written once over the element type: a double, one line, or
// Lanes8, eight lines at once with the same operations on each.

#include <cmath>
#include <cstdlib>

#include "wavelet/lanes.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

constexpr double kA = -1.586134342, kB = -0.05298011854, kC = 0.8829110762, kD = 0.4435068522, kK = 1.149604398;

// Rounds to the nearest integer, ties to even.
template <typename E>
E R(const E& v) {
  return NearbyInt(v);
}

// Copies x[0..n-1] into e with the whole-sample symmetric extension of
// reach ext. An index the reflection sends outside 0..n-1 (n below ext + 1)
// is reflected again, so that every value comes from the array. With x the
// same array as e, the line stays where it is and only the margins are
// filled.
template <typename E>
void Extend(int n, int ext, E* e, const E* x) {
  const auto inside = [n](int i) {
    const int period = 2 * (n - 1);
    if (period <= 0) return 0;
    i = ((i % period) + period) % period;
    return i < n ? i : period - i;
  };
  if (e != x)
    for (int i = 0; i < n; ++i) e[i] = x[i];
  // The margin beyond the extension takes part in the sweeps but never
  // reaches the interior; it starts from zero.
  for (int i = ext + 1; i <= 21; ++i) e[-i] = E{};
  for (int i = n + ext; i <= n + 20; ++i) e[i] = E{};
  for (int i = 1; i <= ext; ++i) {
    e[-i] = x[inside(i)];
    e[n - 1 + i] = x[inside(n - 1 - i)];
  }
}

// One pass over the even positions -10, -8, .. n + 8, finished before the
// next pass starts.
template <typename Step>
void Sweep(int n, Step step) {
  for (int e = -10; e <= n + 8; e += 2) step(e, e + 1);
}

// The five passes of the 9/7 scheme in one sweep. Each pass still updates
// every position it would alone, and each update sees exactly the values it
// would see were the passes run one after another: the later passes trail
// the earlier ones by the two positions they read ahead.
template <typename T>
void Forward97(int n, T* E) {
  const int first = -10, last = n + 8;  // the even positions of every pass
  const auto evenIn = [&](int e) { return e >= first && e <= last; };
  for (int p = first; p <= last + 8; p += 2) {
    if (evenIn(p)) E[p + 1] += kA * (E[p] + E[p + 2]);
    if (evenIn(p)) E[p] += kB * (E[p - 1] + E[p + 1]);
    if (evenIn(p - 2)) E[p - 1] += kC * (E[p - 2] + E[p]);
    if (evenIn(p - 2)) E[p - 2] += kD * (E[p - 3] + E[p - 1]);
    if (evenIn(p - 4)) {
      E[p - 4] = E[p - 4] * kK;
      E[p - 3] = E[p - 3] / kK;
    }
  }
}

template <typename T>
void Forward(int n, T* E, int code) {
  const auto dd53 = [&] {
    Sweep(n, [&](int e, int o) { E[o] -= (E[e] + E[e + 2]) * 0.5; });
    Sweep(n, [&](int e, int) { E[e] += (E[e - 1] + E[e + 1]) * 0.25; });
  };
  const auto predict117 = [&] {
    Sweep(n, [&](int e, int o) { E[o] = E[o] - (E[e] + E[e + 2]) * 9 / 16 + (E[e - 2] + E[e + 4]) * 1 / 16; });
  };
  const auto integer53 = [&] {
    Sweep(n, [&](int e, int o) { E[o] -= R((E[e] + E[e + 2]) * 0.5); });
    Sweep(n, [&](int e, int) { E[e] += R((E[e - 1] + E[e + 1]) * 0.25); });
  };
  switch (code) {
    case 101: Forward97(n, E); break;
    case 102: dd53(); break;
    case 103:
      predict117();
      Sweep(n, [&](int e, int) { E[e] += (E[e - 1] + E[e + 1]) * 0.25; });
      break;
    case 104:
      Sweep(n, [&](int e, int o) {
        E[o] = E[o] - (E[e] + E[e + 2]) * 150 / 256 + (E[e - 2] + E[e + 4]) * 25 / 256 - (E[e - 4] + E[e + 6]) * 3 / 256;
      });
      Sweep(n, [&](int e, int) { E[e] += (E[e - 1] + E[e + 1]) * 0.25; });
      break;
    case 105:
      predict117();
      Sweep(n, [&](int e, int) { E[e] = E[e] + (E[e - 1] + E[e + 1]) * 9 / 32 - (E[e - 3] + E[e + 3]) * 1 / 32; });
      break;
    case 106:
      dd53();
      Sweep(n, [&](int e, int o) {
        E[o] = E[o] - (2 * E[e] - E[e - 2] - E[e + 2]) / 16 - (2 * E[e + 2] - E[e] - E[e + 4]) / 16;
      });
      break;
    case 107: integer53(); break;
    case 108:
      integer53();
      Sweep(n, [&](int e, int o) {
        E[o] -= R((2 * E[e + 2] - E[e] - E[e + 4]) / 16 + (2 * E[e] - E[e - 2] - E[e + 2]) / 16);
      });
      break;
    case 109:
      Sweep(n, [&](int e, int o) { E[o] -= R((E[e] + E[e + 2]) * 9 / 16 - (E[e - 2] + E[e + 4]) * 1 / 16); });
      Sweep(n, [&](int e, int) { E[e] += R((E[e - 1] + E[e + 1]) * 0.25); });
      break;
    case 110:
      Sweep(n, [&](int e, int o) { E[o] += R(kA * (E[e] + E[e + 2])); });
      Sweep(n, [&](int e, int) { E[e] += R(kB * (E[e - 1] + E[e + 1])); });
      Sweep(n, [&](int e, int o) { E[o] += R(kC * (E[e] + E[e + 2])); });
      Sweep(n, [&](int e, int) { E[e] += R(kD * (E[e - 1] + E[e + 1])); });
      break;
    default: break;
  }
}

// The passes of Forward undone from last to first, each with the opposite
// sign over the same sweep.
template <typename T>
void Backward(int n, T* E, int code) {
  const auto predict = [&](double f) { Sweep(n, [&](int e, int o) { E[o] -= f * (E[e] + E[e + 2]); }); };
  const auto update = [&](double f) { Sweep(n, [&](int e, int) { E[e] -= f * (E[e - 1] + E[e + 1]); }); };
  const auto dd53 = [&] {
    Sweep(n, [&](int e, int) { E[e] -= (E[e - 1] + E[e + 1]) * 0.25; });
    Sweep(n, [&](int e, int o) { E[o] += (E[e] + E[e + 2]) * 0.5; });
  };
  const auto predict117 = [&] {
    Sweep(n, [&](int e, int o) { E[o] = E[o] + (E[e] + E[e + 2]) * 9 / 16 - (E[e - 2] + E[e + 4]) * 1 / 16; });
  };
  const auto integer53 = [&] {
    Sweep(n, [&](int e, int) { E[e] -= R((E[e - 1] + E[e + 1]) * 0.25); });
    Sweep(n, [&](int e, int o) { E[o] += R((E[e] + E[e + 2]) * 0.5); });
  };
  switch (code) {
    case 101:
      Sweep(n, [&](int e, int o) {
        E[e] = E[e] / kK;
        E[o] = E[o] * kK;
      });
      update(kD);
      predict(kC);
      update(kB);
      predict(kA);
      break;
    case 102: dd53(); break;
    case 103:
      Sweep(n, [&](int e, int) { E[e] -= (E[e - 1] + E[e + 1]) * 0.25; });
      predict117();
      break;
    case 104:
      Sweep(n, [&](int e, int) { E[e] -= (E[e - 1] + E[e + 1]) * 0.25; });
      Sweep(n, [&](int e, int o) {
        E[o] = E[o] + (E[e] + E[e + 2]) * 150 / 256 - (E[e - 2] + E[e + 4]) * 25 / 256 + (E[e - 4] + E[e + 6]) * 3 / 256;
      });
      break;
    case 105:
      Sweep(n, [&](int e, int) { E[e] = E[e] - (E[e - 1] + E[e + 1]) * 9 / 32 + (E[e - 3] + E[e + 3]) * 1 / 32; });
      predict117();
      break;
    case 106:
      Sweep(n, [&](int e, int o) {
        E[o] = E[o] + (2 * E[e] - E[e - 2] - E[e + 2]) / 16 + (2 * E[e + 2] - E[e] - E[e + 4]) / 16;
      });
      dd53();
      break;
    case 107: integer53(); break;
    case 108:
      Sweep(n, [&](int e, int o) {
        E[o] += R((2 * E[e + 2] - E[e] - E[e + 4]) / 16 + (2 * E[e] - E[e - 2] - E[e + 2]) / 16);
      });
      integer53();
      break;
    case 109:
      Sweep(n, [&](int e, int) { E[e] -= R((E[e - 1] + E[e + 1]) * 0.25); });
      Sweep(n, [&](int e, int o) { E[o] += R((E[e] + E[e + 2]) * 9 / 16 - (E[e - 2] + E[e + 4]) * 1 / 16); });
      break;
    case 110:
      Sweep(n, [&](int e, int) { E[e] -= R(kD * (E[e - 1] + E[e + 1])); });
      Sweep(n, [&](int e, int o) { E[o] -= R(kC * (E[e] + E[e + 2])); });
      Sweep(n, [&](int e, int) { E[e] -= R(kB * (E[e - 1] + E[e + 1])); });
      Sweep(n, [&](int e, int o) { E[o] -= R(kA * (E[e] + E[e + 2])); });
      break;
    default: break;
  }
}

template <typename E>
void ForwardLine(int n, int ext, E* e, E* x, int code) {
  Extend(n, ext, e, x);
  Forward(n, e, code);
  if (x != e)
    for (int i = 0; i < n; ++i) x[i] = e[i];
}

template <typename E>
void InverseLine(int n, int ext, E* e, E* x, int code) {
  Extend(n, ext, e, x);
  Backward(n, e, code);
  if (x != e)
    for (int i = 0; i < n; ++i) x[i] = e[i];
}

// Eight lines at once through the processor's widest vectors: every step
// and every operation of Lanes8 inlined into a function built for them, so
// that an operation on eight lanes is one AVX-512 instruction or two AVX
// ones instead of four of SSE2. Each lane still does a double's operations
// one by one (no fused multiply-add), so every line keeps its bits.
__attribute__((target("avx512f"), flatten)) void ForwardLinesMany(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  ForwardLine(n, ext, e, x, code);
}
__attribute__((target("avx512f"), flatten)) void InverseLinesMany(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  InverseLine(n, ext, e, x, code);
}
__attribute__((target("avx"), flatten)) void ForwardLinesWide(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  ForwardLine(n, ext, e, x, code);
}
__attribute__((target("avx"), flatten)) void InverseLinesWide(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  InverseLine(n, ext, e, x, code);
}

// KELDO_NO_AVX512 (any value) keeps to four lanes, as the other kernels do.
enum class LaneWidth { Two, Four, Eight };
LaneWidth WidestLanes() {
  static const LaneWidth width = __builtin_cpu_supports("avx512f") && std::getenv("KELDO_NO_AVX512") == nullptr
                                     ? LaneWidth::Eight
                                 : __builtin_cpu_supports("avx") ? LaneWidth::Four
                                                                 : LaneWidth::Two;
  return width;
}

}  // namespace

void SymmWavTr(int n, int ext, double* e, double* x, int code) { ForwardLine(n, ext, e, x, code); }
void SymmWavTr(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  switch (WidestLanes()) {
    case LaneWidth::Eight: ForwardLinesMany(n, ext, e, x, code); break;
    case LaneWidth::Four: ForwardLinesWide(n, ext, e, x, code); break;
    case LaneWidth::Two: ForwardLine(n, ext, e, x, code); break;
  }
}
void InvSymmWavTr(int n, int ext, double* e, double* x, int code) { InverseLine(n, ext, e, x, code); }
void InvSymmWavTr(int n, int ext, Lanes8* e, Lanes8* x, int code) {
  switch (WidestLanes()) {
    case LaneWidth::Eight: InverseLinesMany(n, ext, e, x, code); break;
    case LaneWidth::Four: InverseLinesWide(n, ext, e, x, code); break;
    case LaneWidth::Two: InverseLine(n, ext, e, x, code); break;
  }
}

const std::vector<std::string>& OtherWaveletNames() {
  static const std::vector<std::string> kNames = {
      "Daub 9/7",          "DD 5/3 (2,2)",      "DD 11/7 (4,2)",   "DD 13/11 (6,2)",  "DD 13/7 (4,4)",
      "DD 5/9 (2+2,2)",    "DD 5/3 Integer",    "DD (2+2,2) Integer", "DD 11/7 Integer", "Daub 9/7 Integer"};
  return kNames;
}

}  // namespace keldo::wavelet

#include "formula/eval.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/random.h"

namespace keldo::formula {
namespace {

constexpr double kPi = 3.14159265358979;
constexpr double kRangDivisor = 0.577295008247164;
constexpr double kHalfPi = 1.570796326794895;

// The fault of a value that is not finite: a nan is an invalid call, an
// infinity an overflow.
int FaultOf(double value) { return std::isnan(value) ? kInvalidCall : kOverflow; }

// A single-precision uniform number in [0, 1).
double NextSingle(platform::Random* random) {
  if (random == nullptr) return 0.0;
  float r = static_cast<float>(random->Next());
  if (r >= 1.0f) r = std::nextafter(1.0f, 0.0f);
  return static_cast<double>(r);
}

// The places at which the operators of one group apply, given the order in
// which they apply by their first places 1..n: after each step the stack
// closes up, so a later operator's place falls by one for every earlier one
// that stood left of it. When the order is a permutation that count comes
// from a Fenwick tree; otherwise the places are lowered step by step.
void CompactedPlaces(const std::int32_t* order, int n, std::int32_t* places, std::vector<std::int32_t>& tree) {
  tree.assign(static_cast<std::size_t>(n) + 1, 0);
  bool permutation = true;
  for (int m = 0; m < n && permutation; ++m) {
    const std::int32_t o = order[m];
    if (o < 1 || o > n || tree[static_cast<std::size_t>(o)] != 0) permutation = false;
    else tree[static_cast<std::size_t>(o)] = 1;
  }
  if (!permutation) {
    for (int m = 0; m < n; ++m) places[m] = order[m];
    for (int m = 0; m < n; ++m)
      for (int k = m + 1; k < n; ++k)
        if (places[k] > places[m]) --places[k];
    return;
  }
  std::fill(tree.begin(), tree.end(), 0);
  for (int m = 0; m < n; ++m) {
    const std::int32_t o = order[m];
    int before = 0;
    for (std::int32_t i = o - 1; i > 0; i -= i & -i) before += tree[static_cast<std::size_t>(i)];
    places[m] = o - before;
    for (std::int32_t i = o; i <= n; i += i & -i) ++tree[static_cast<std::size_t>(i)];
  }
}

}  // namespace

const std::array<double, 71>& FactorialTable() {
  static const std::array<double, 71> kTable = [] {
    std::array<double, 71> t{};
    t[0] = 1.0;
    for (int n = 1; n <= 70; ++n) t[n] = n * t[n - 1];
    return t;
  }();
  return kTable;
}

double GFUNC1(double x, const GraphSlot& slot, int points) {
  const double a = slot.a, b = slot.b, h = slot.h;
  if (slot.values == nullptr || !(h > 0.0)) return 0.0;
  if (!(x >= a - h && x <= b + h)) return 0.0;  // outside, or not a number
  const double steps = std::floor((x - a) / h);
  if (steps >= points) return slot.values[points];
  const int k = steps < 1 ? 0 : static_cast<int>(steps);
  const double x0 = a + k * h;
  return ((x0 - x) / h + 1.0) * slot.values[k] + ((x - x0) / h) * slot.values[k + 1];
}

double GetRelVal(double value, double reference, double tolerance) {
  const double r = std::fabs(reference);
  if (r <= tolerance) return value;
  return value / r;
}

void Evaluator::Prepare() {
  std::size_t ops = 1, groups = 1;
  if (formula != nullptr && formula->program.size() > 3) {
    ops = static_cast<std::size_t>(std::max(0, formula->program[1])) + 1;
    groups = static_cast<std::size_t>(std::max(1, formula->program[3]));
  }
  stack_.assign(ops + 2, 0.0);
  opcodes_.assign(ops + 2, 0);
  order_.assign(ops + 2, 0);
  results_.assign(groups + 1, 0.0);
  previous_.assign(groups + 1, 0.0);
  tape_.clear();
  registers_.clear();
  LinkOrder();
  if (useTape) LinkTape();
}

void Evaluator::LinkOrder() {
  applied_.clear();
  if (formula == nullptr || formula->program.size() < 5) return;
  const std::vector<std::int32_t>& p = formula->program;
  std::vector<std::int32_t> places(p.size(), 0), tree;
  std::size_t read = 4;
  for (int level = p[2]; level >= 0; --level) {
    if (read >= p.size()) return;
    const std::int32_t groups = p[read++];
    for (std::int32_t g = 0; g < groups; ++g) {
      if (read + 2 > p.size()) return;
      const std::int32_t nOps = p[read];
      read += 2;
      // The first operand, the operator and operand pairs, then the order.
      if (nOps < 0 || p.size() - read < 1 + 3 * static_cast<std::size_t>(nOps)) return;
      read += 1 + 2 * static_cast<std::size_t>(nOps);
      CompactedPlaces(p.data() + read, nOps, places.data() + read, tree);
      read += static_cast<std::size_t>(nOps);
    }
  }
  applied_ = std::move(places);
}

namespace {
constexpr int kRegisterX = 1;
constexpr int kRegisterIndex = 2;  // 2..7: I J K N P Q
constexpr int kRegisterY = 8;      // the plane's y
constexpr int kRegisterGraph = 9;  // 9..12: the plane's G1..G4 at the point
constexpr int kFirstFreeRegister = 13;
}  // namespace

void Evaluator::LinkTape() {
  if (formula == nullptr || formula->program.size() < 5) return;
  const std::vector<std::int32_t>& p = formula->program;
  const std::vector<double>& pool = formula->pool;
  std::vector<Instruction> tape;
  std::vector<double> regs(kFirstFreeRegister, 0.0);
  std::vector<bool> constant(kFirstFreeRegister, false);
  const auto fresh = [&](double value) {
    regs.push_back(value);
    constant.push_back(false);
    return static_cast<std::int32_t>(regs.size() - 1);
  };
  bool readsIndex = false;
  std::size_t read = 4, next = 1;  // program word, pool entry
  const auto word = [&]() -> std::int32_t { return read < p.size() ? p[read++] : -1; };
  std::vector<std::int32_t> previous, current, positions, ops;
  bool sums = false;
  const int depth = p[2];
  for (int level = depth; level >= 0; --level) {
    const int groups = word();
    if (groups < 0) return;
    current.assign(static_cast<std::size_t>(groups), 0);
    std::size_t below = 0;
    for (int g = 0; g < groups; ++g) {
      const int nOps = word();
      const int fn = word();
      if (nOps < 0 || fn < 0 || fn > 33 || fn == 18) return;  // ACS keeps stale results: walk the program
      positions.clear();
      ops.assign(1, 0);
      for (int k = 0; k <= nOps; ++k) {
        if (k > 0) ops.push_back(word());
        const int code = word();
        std::int32_t reg;
        if (code == kOperandNumber) {
          const double c = next < pool.size() ? pool[next] : 0.0;
          reg = fresh(single ? static_cast<float>(c) : c);
          constant[static_cast<std::size_t>(reg)] = true;
          ++next;
        } else if (code == kOperandX) {
          reg = kRegisterX;
        } else if (single && code == kOperandY) {
          reg = kRegisterY;
        } else if (single && code >= kOperandGraph && code < kOperandGraph + 4) {
          reg = kRegisterGraph + (code - kOperandGraph);
        } else if (code == kOperandGroup) {
          if (below >= previous.size()) return;
          reg = previous[below++];
        } else if (code >= kOperandIndex && code < kOperandState) {
          reg = kRegisterIndex + (code - kOperandIndex);
          readsIndex = true;
        } else if (code >= kOperandState && code < kOperandSlot) {
          if (k > 0) return;  // a further operand of this kind keeps a stale entry
          reg = fresh(0.0);
          tape.push_back({kTapeState, 0, reg, code - kOperandState, 0});
        } else if (code >= kOperandSlot && code < kOperandGraph) {
          reg = fresh(0.0);
          tape.push_back({kTapeSlot, 0, reg, code - kOperandSlot, 0});
        } else {
          return;
        }
        positions.push_back(reg);
      }
      if (applied_.size() != p.size() || p.size() - read < static_cast<std::size_t>(nOps)) return;
      const std::size_t order = read;
      read += static_cast<std::size_t>(nOps);
      // The order of application, at the places worked out once.
      for (int m = 1; m <= nOps; ++m) {
        const int at = applied_[order + static_cast<std::size_t>(m) - 1];
        if (at < 1 || at > static_cast<int>(positions.size()) - 1) return;
        const std::int32_t dst = fresh(0.0);
        tape.push_back({ops[static_cast<std::size_t>(at)], 0, dst, positions[static_cast<std::size_t>(at - 1)],
                        positions[static_cast<std::size_t>(at)]});
        positions[static_cast<std::size_t>(at - 1)] = dst;
        positions.erase(positions.begin() + at);
        ops.erase(ops.begin() + at);
      }
      const std::int32_t value = positions[0];
      std::int32_t result = value;
      if (fn >= 22 && fn <= 27) {
        result = fresh(0.0);
        tape.push_back({kTapeSum, fn - 22, result, value, 0});
        sums = true;
      } else if (fn == 0) {
        if (nOps == 0) tape.push_back({kTapeCheck, 0, value, value, 0});
      } else {
        result = fresh(0.0);
        tape.push_back({kTapeFunction, fn, result, value, 0});
      }
      current[static_cast<std::size_t>(g)] = result;
    }
    previous = current;
  }
  if (previous.empty()) return;
  ShortenTape(tape, regs, constant);
  resultRegister_ = previous[0];
  tapeHasSums_ = sums;
  tapeReadsIndex_ = readsIndex;
  // Points are independent unless the tape draws random numbers or reads
  // earlier values; each register's lanes start with its value (constants
  // keep it, the rest are written before they are read).
  // A sum steps the same way for every point, so a block steps it once;
  // two sums over one index could leave a result from the point before,
  // and such a tape goes point by point.
  tapeBlocks_ = true;
  int sumsOver[6] = {};
  for (const Instruction& in : tape) {
    if (in.op == kTapeState || (in.op == kTapeFunction && (in.kind == 16 || in.kind == 19))) tapeBlocks_ = false;
    if (in.op == kTapeSum && ++sumsOver[in.kind] > 1) tapeBlocks_ = false;
  }
  lanes_.clear();
  if (tapeBlocks_) {
    lanes_.resize(regs.size() * kBlock);
    for (std::size_t r = 0; r < regs.size(); ++r)
      std::fill(lanes_.begin() + static_cast<std::ptrdiff_t>(r * kBlock),
                lanes_.begin() + static_cast<std::ptrdiff_t>((r + 1) * kBlock), regs[r]);
  }
  tape_ = std::move(tape);
  registers_ = std::move(regs);
}

void Evaluator::ShortenTape(std::vector<Instruction>& tape, std::vector<double>& regs,
                            const std::vector<bool>& constant) const {
  for (Instruction& in : tape) {
    // x / c with c = +-2^k is x * 2^-k: the same real number, rounded once.
    if (in.op == kOpDivide && constant[static_cast<std::size_t>(in.b)]) {
      const double c = regs[static_cast<std::size_t>(in.b)];
      int exponent = 0;
      const double fraction = std::frexp(c, &exponent);
      const double reciprocal = 1.0 / c;
      if (std::isfinite(c) && std::fabs(fraction) == 0.5 && std::isfinite(reciprocal) && reciprocal != 0.0 &&
          reciprocal * c == 1.0) {
        in.op = kTapeScale;
        regs.push_back(reciprocal);
        in.b = static_cast<std::int32_t>(regs.size() - 1);
      }
    }
    if (in.op == kOpPower && constant[static_cast<std::size_t>(in.b)]) {
      const double c = regs[static_cast<std::size_t>(in.b)];
      if (c == 2.0 || c == 3.0 || c == 4.0) {
        in.op = kTapePower;
        in.kind = static_cast<std::int32_t>(c);
      }
    }
  }
}

Evaluator::SumStep Evaluator::StepSum(int s, double value, long long& restarts, double& result) {
  if (s < 4) accumulator_[s] += value;
  else accumulator_[s] *= value;
  if (!std::isfinite(accumulator_[s])) {
    fault_ = FaultOf(accumulator_[s]);
    return SumStep::kFault;
  }
  const int upper = bounds[static_cast<std::size_t>(s) + 6];
  if (running_[s] < upper) {
    ++running_[s];
    if (restartBudget > 0 && ++restarts > restartBudget) {
      fault_ = kInvalidCall;
      return SumStep::kFault;
    }
    return SumStep::kRestart;
  }
  if (running_[s] != upper) return SumStep::kNothing;
  result = accumulator_[s];
  accumulator_[s] = s < 4 ? 0.0 : 1.0;
  running_[s] = bounds[static_cast<std::size_t>(s)];
  return SumStep::kDone;
}

double Evaluator::EvalTape(int index, double x) {
  return single ? RunTape<true>(index, x) : RunTape<false>(index, x);
}

template <bool kSingle>
double Evaluator::RunTape(int index, double x) {
  double* r = registers_.data();
  r[kRegisterX] = x;
  // The running sums matter only to a tape that sums, the indices only to
  // one that reads them.
  if (tapeHasSums_) {
    for (int s = 0; s < 6; ++s) {
      running_[s] = bounds[static_cast<std::size_t>(s)];
      accumulator_[s] = s < 4 ? 0.0 : 1.0;
      r[kRegisterIndex + s] = running_[s];
    }
  } else if (tapeReadsIndex_) {
    for (int s = 0; s < 6; ++s) r[kRegisterIndex + s] = bounds[static_cast<std::size_t>(s)];
  }
  const Instruction* const begin = tape_.data();
  const Instruction* const end = begin + tape_.size();
  long long restarts = 0;
  for (const Instruction* in = begin; in != end; ++in) {
    double v;
    switch (in->op) {
      case kOpNot: v = r[in->b] == 1.0 ? 0.0 : 1.0; break;
      case kOpOr: v = (r[in->a] == 1.0 || r[in->b] == 1.0) ? 1.0 : 0.0; break;
      case kOpAnd: v = (r[in->a] == 1.0 && r[in->b] == 1.0) ? 1.0 : 0.0; break;
      case kOpAtLeast: v = r[in->a] >= r[in->b] ? 1.0 : 0.0; break;
      case kOpAtMost: v = r[in->a] <= r[in->b] ? 1.0 : 0.0; break;
      case kOpNotEqual: v = r[in->a] != r[in->b] ? 1.0 : 0.0; break;
      case kOpEqual: v = r[in->a] == r[in->b] ? 1.0 : 0.0; break;
      case kOpGreater: v = r[in->a] > r[in->b] ? 1.0 : 0.0; break;
      case kOpLess: v = r[in->a] < r[in->b] ? 1.0 : 0.0; break;
      case kOpAdd: v = r[in->a] + r[in->b]; break;
      case kOpSubtract: v = r[in->a] - r[in->b]; break;
      case kOpMultiply: v = r[in->a] * r[in->b]; break;
      case kTapeScale: v = r[in->a] * r[in->b]; break;
      case kOpDivide:
        if (r[in->b] == 0.0) {
          fault_ = kDivisionByZero;
          return 0.0;
        }
        v = r[in->a] / r[in->b];
        break;
      case kOpPower:
      case kTapePower: {
        const double a = r[in->a], b = r[in->b];
        if (a == 0.0 && b < 0.0) {
          fault_ = kInvalidCall;
          return 0.0;
        }
        v = (a == 0.0 && b == 0.0) ? 1.0 : std::pow(a, b);
        break;
      }
      case kTapeFunction:
        r[in->dst] = Function(in->kind, r[in->a]);
        if (fault_ != kNoFault) return 0.0;
        continue;
      case kTapeCheck:
        if (!std::isfinite(r[in->a])) {
          fault_ = FaultOf(r[in->a]);
          return 0.0;
        }
        continue;
      case kTapeState: {
        const int k = in->a;
        if (formType == 1) {
          r[in->dst] = state != nullptr ? state[k] : 0.0;
        } else {
          const int at = index - order + k;
          r[in->dst] = (computed != nullptr && at >= 0 && at < computedSize) ? computed[at] : 0.0;
        }
        if (kSingle) r[in->dst] = static_cast<float>(r[in->dst]);
        continue;
      }
      case kTapeSlot:
        r[in->dst] = fSlots != nullptr ? fSlots[in->a] : 0.0;
        continue;
      default: {  // kTapeSum; an index above its bound has been routed to the walk
        const int s = in->kind;
        const SumStep step = StepSum(s, r[in->a], restarts, r[in->dst]);
        if (step == SumStep::kFault) return 0.0;
        r[kRegisterIndex + s] = running_[s];
        if (step == SumStep::kRestart) in = begin - 1;
        continue;
      }
    }
    if (kSingle) v = static_cast<float>(v);
    if (!std::isfinite(v)) {
      fault_ = FaultOf(v);
      return 0.0;
    }
    r[in->dst] = v;
  }
  return r[resultRegister_];
}

double Evaluator::Function(int fn, double x) {
  double r;
  // The plane's sinc, sign, RECT and BELL take a single-precision argument.
  if (single && (fn == 9 || fn == 10 || fn == 14 || fn == 28)) x = static_cast<float>(x);
  if (single && fn == 13) {
    // TANH from four exponentials.
    r = (std::exp(x) - std::exp(-x)) / (std::exp(x) + std::exp(-x));
    if (!std::isfinite(r)) {
      fault_ = FaultOf(r);
      return 0.0;
    }
    return r;
  }
  if (single && fn >= 29) return x;  // no graph functions in the plane
  switch (fn) {
    case 0: r = x; break;
    case 1: r = std::fabs(x); break;
    case 2: r = std::cos(x); break;
    case 3: r = std::sin(x); break;
    case 4: r = std::exp(x); break;
    case 5: r = std::sqrt(x); break;
    case 6: r = std::tan(x); break;
    case 7: r = std::atan(x); break;
    case 8:
      if (x <= 0.0) {
        fault_ = kInvalidCall;
        return 0.0;
      }
      r = std::log(x);
      break;
    case 9: r = x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x); break;
    case 10: r = x > 0.0 ? 1.0 : (x < 0.0 ? -1.0 : 0.0); break;
    case 11: r = (std::exp(x) - std::exp(-x)) * 0.5; break;
    case 12: r = (std::exp(x) + std::exp(-x)) * 0.5; break;
    case 13: {
      const double a = std::fabs(x);
      r = a == 0.0 ? 0.0 : -a * std::log(a) / std::log(2.0);
      break;
    }
    case 14: {
      const double a = std::fabs(x);
      r = a < 0.5 ? 1.0 : (a == 0.5 ? 0.5 : 0.0);
      break;
    }
    case 15: r = std::floor(x); break;
    case 16: {
      const double u = NextSingle(random);
      r = u + u - 1.0;
      break;
    }
    case 17: r = x <= 0.0 ? 1.0 : 0.0; break;
    case 19: {
      double s = 0.0;
      for (int k = 0; k < noiseTerms; ++k) {
        const double u = NextSingle(random);
        s += u + u - 1.0;
      }
      r = s / std::sqrt(static_cast<double>(noiseTerms)) / kRangDivisor;
      break;
    }
    // The plane's DELTA includes both ends of the step around 0.
    case 20: r = (-dx / 2.0 <= x && (single ? x <= dx / 2.0 : x < dx / 2.0)) ? 1.0 : 0.0; break;
    case 21: {
      const double n = std::nearbyint(x);
      if (!(n >= 0.0 && n <= 70.0)) {
        fault_ = kInvalidCall;
        return 0.0;
      }
      r = FactorialTable()[static_cast<std::size_t>(n)];
      break;
    }
    case 28: {
      const double a = std::fabs(x);
      if (a >= 0.75) {
        r = 0.0;
      } else if (a <= 0.25) {
        r = 1.0;
      } else {
        double b = 1.5 - 2.0 * a;
        for (int k = 0; k < 3; ++k) {
          const double s = std::sin(b * kHalfPi);
          b = s * s;
        }
        r = b;
      }
      break;
    }
    case 29: case 30: case 31: case 32: case 33:
      r = graphs == nullptr ? 0.0 : GFUNC1(x, graphs->entries[static_cast<std::size_t>(fn - 29)], graphs->points);
      break;
    default: r = x; break;
  }
  if (!std::isfinite(r)) {
    fault_ = FaultOf(r);
    return 0.0;
  }
  return r;
}

double Evaluator::Eval2(int column, int row, double x, double y) {
  fault_ = kNoFault;
  column_ = column;
  row_ = row;
  y_ = static_cast<float>(y);
  const double fx = static_cast<float>(x);
  double v;
  if (TapeRuns()) {
    double* r = registers_.data();
    r[kRegisterY] = y_;
    const std::size_t at = static_cast<std::size_t>(row) * planeStride + static_cast<std::size_t>(column);
    for (int g = 0; g < 4; ++g) r[kRegisterGraph + g] = planes[g] != nullptr ? planes[g][at] : 0.0;
    v = EvalTape(column, fx);
  } else {
    v = EvalProgram(column, fx);
  }
  return fault_ != kNoFault ? 0.0 : static_cast<double>(static_cast<float>(v));
}

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

// Whether every value is a finite number, in one pass that the compiler can
// do several lanes at a time.
bool AllFinite(const double* v, int count) {
  int bad = 0;
  for (int l = 0; l < count; ++l) bad |= !(std::fabs(v[l]) <= kLargest);
  return bad == 0;
}

// d = f(a, b) lane by lane; whether every result is a finite number.
template <typename F>
inline bool EachLane(double* d, const double* a, const double* b, int count, F f) {
  int bad = 0;
  for (int l = 0; l < count; ++l) {
    const double v = f(a[l], b[l]);
    d[l] = v;
    bad |= !(std::fabs(v) <= kLargest);
  }
  return bad == 0;
}

// x^n for n = 2, 3 or 4, lane by lane, the same double pow gives. The
// exact power is formed as the sum of two doubles (the product's rounding
// error recovered by a fused multiply-add) and rounded once. The library's
// pow lies within 0.54 of a unit in the last place of the exact power (its
// stated bound), so where the exact power is within 0.45 of a unit of the
// rounded product, no other double is near enough and pow returns that
// product. Elsewhere, near a midpoint between two doubles, at a power of two
// (whose lower neighbour is half a unit away) and for x outside 2^-200 to
// 2^200 (where the parts could leave the normal range), the lane calls pow.
// A processor without fused multiply-add would do it in software, slower
// than pow itself: there every lane calls pow.
template <int kN>
inline void SmallPower(double* d, const double* a, const double* b, int count) {
  static const bool fused = __builtin_cpu_supports("fma");
  if (!fused) {
    for (int l = 0; l < count; ++l) d[l] = std::pow(a[l], b[l]);
    return;
  }
  unsigned char sure[Evaluator::kBlock];
  for (int l = 0; l < count; ++l) {
    const double x = a[l];
    const double square = x * x, squareError = std::fma(x, x, -square);
    double hi = square, lo = squareError;
    if constexpr (kN == 3) {
      hi = x * square;
      lo = std::fma(x, square, -hi) + x * squareError;
    } else if constexpr (kN == 4) {
      hi = square * square;
      lo = std::fma(square, square, -hi) + 2.0 * square * squareError;
    }
    const double rounded = hi + lo;
    const double rest = (hi - rounded) + lo;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(rounded);
    const double unit = std::bit_cast<double>((bits & 0x7ff0000000000000ULL) - (52ULL << 52));
    const double size = std::fabs(x);
    sure[l] = (size >= 0x1p-200) & (size <= 0x1p200) & ((bits & 0x000fffffffffffffULL) != 0) &
              (std::fabs(rest) <= 0.45 * unit);
    d[l] = rounded;
  }
  for (int l = 0; l < count; ++l)
    if (!sure[l]) d[l] = std::pow(a[l], b[l]);
}

}  // namespace

__attribute__((target_clones("arch=x86-64-v3", "default"))) int Evaluator::RunBlock(int count, double* out) {
  double sums[6][kBlock];
  const auto setIndex = [&](int s, double value) {
    std::fill(Lane(kRegisterIndex + s), Lane(kRegisterIndex + s) + count, value);
  };
  if (tapeHasSums_) {
    for (int s = 0; s < 6; ++s) {
      running_[s] = bounds[static_cast<std::size_t>(s)];
      std::fill(sums[s], sums[s] + count, s < 4 ? 0.0 : 1.0);
      setIndex(s, running_[s]);
    }
  } else if (tapeReadsIndex_) {
    for (int s = 0; s < 6; ++s) setIndex(s, bounds[static_cast<std::size_t>(s)]);
  }
  long long restarts = 0;
  // Each point's first fault, as Eval would stop at it.
  int faults[kBlock] = {};
  bool faulted = false;
  const auto mark = [&](int l, int fault) {
    if (faults[l] == kNoFault) faults[l] = fault;
    faulted = true;
  };
  // Each point whose value in v is not a finite number meets that fault.
  const auto markNonFinite = [&](const double* v) {
    if (!AllFinite(v, count))
      for (int l = 0; l < count; ++l)
        if (!std::isfinite(v[l])) mark(l, FaultOf(v[l]));
  };
  const Instruction* const begin = tape_.data();
  const Instruction* const end = begin + tape_.size();
  for (const Instruction* at = begin; at != end; ++at) {
    const Instruction& in = *at;
    double* const d = Lane(in.dst);
    const double* const a = Lane(in.a);
    const double* const b = Lane(in.b);
    // A truth value, 0 or 1, is always finite.
    const auto truth = [&](auto test) {
      for (int l = 0; l < count; ++l) d[l] = test(a[l], b[l]) ? 1.0 : 0.0;
    };
    bool finite = true;
    switch (in.op) {
      case kOpNot: truth([](double, double q) { return !(q == 1.0); }); break;
      case kOpOr: truth([](double p, double q) { return p == 1.0 || q == 1.0; }); break;
      case kOpAnd: truth([](double p, double q) { return p == 1.0 && q == 1.0; }); break;
      case kOpAtLeast: truth([](double p, double q) { return p >= q; }); break;
      case kOpAtMost: truth([](double p, double q) { return p <= q; }); break;
      case kOpNotEqual: truth([](double p, double q) { return p != q; }); break;
      case kOpEqual: truth([](double p, double q) { return p == q; }); break;
      case kOpGreater: truth([](double p, double q) { return p > q; }); break;
      case kOpLess: truth([](double p, double q) { return p < q; }); break;
      case kOpAdd: finite = EachLane(d, a, b, count, [](double p, double q) { return p + q; }); break;
      case kOpSubtract: finite = EachLane(d, a, b, count, [](double p, double q) { return p - q; }); break;
      case kOpMultiply:
      case kTapeScale: finite = EachLane(d, a, b, count, [](double p, double q) { return p * q; }); break;
      case kOpDivide:
        for (int l = 0; l < count; ++l)
          if (b[l] == 0.0) mark(l, kDivisionByZero);
        finite = EachLane(d, a, b, count, [](double p, double q) { return p / q; });
        break;
      case kOpPower:
        for (int l = 0; l < count; ++l) {
          if (a[l] == 0.0 && b[l] < 0.0) {
            mark(l, kInvalidCall);
            d[l] = 0.0;
          } else {
            d[l] = (a[l] == 0.0 && b[l] == 0.0) ? 1.0 : std::pow(a[l], b[l]);
          }
        }
        finite = AllFinite(d, count);
        break;
      case kTapePower:
        switch (in.kind) {
          case 2: SmallPower<2>(d, a, b, count); break;
          case 3: SmallPower<3>(d, a, b, count); break;
          default: SmallPower<4>(d, a, b, count); break;
        }
        finite = AllFinite(d, count);
        break;
      case kTapeFunction: {
        // The common functions straight from the library, checked below as
        // Function checks them; the rest through Function, point by point.
        bool direct = true;
        switch (in.kind) {
          case 1: for (int l = 0; l < count; ++l) d[l] = std::fabs(a[l]); break;
          case 2: for (int l = 0; l < count; ++l) d[l] = std::cos(a[l]); break;
          case 3: for (int l = 0; l < count; ++l) d[l] = std::sin(a[l]); break;
          case 4: for (int l = 0; l < count; ++l) d[l] = std::exp(a[l]); break;
          case 5: for (int l = 0; l < count; ++l) d[l] = std::sqrt(a[l]); break;
          case 6: for (int l = 0; l < count; ++l) d[l] = std::tan(a[l]); break;
          case 7: for (int l = 0; l < count; ++l) d[l] = std::atan(a[l]); break;
          case 15: for (int l = 0; l < count; ++l) d[l] = std::floor(a[l]); break;
          default: direct = false;
        }
        if (direct) {
          // Function results stay as they are, in the plane too.
          markNonFinite(d);
          continue;
        }
        for (int l = 0; l < count; ++l) {
          // A point that has met its fault carries values no point by point
          // run would pass on; it is left out.
          if (faults[l] != kNoFault) {
            d[l] = 0.0;
            continue;
          }
          d[l] = Function(in.kind, a[l]);
          if (fault_ != kNoFault) {
            mark(l, fault_);
            fault_ = kNoFault;
          }
        }
        continue;
      }
      case kTapeCheck:
        markNonFinite(a);
        continue;
      case kTapeSlot:
        std::fill(d, d + count, fSlots != nullptr ? fSlots[in.a] : 0.0);
        continue;
      case kTapeSum: {
        // StepSum for every point at once: the index steps alike for all.
        const int s = in.kind;
        double* const sum = sums[s];
        for (int l = 0; l < count; ++l) sum[l] = s < 4 ? sum[l] + a[l] : sum[l] * a[l];
        markNonFinite(sum);
        const int upper = bounds[static_cast<std::size_t>(s) + 6];
        if (running_[s] < upper) {
          ++running_[s];
          if (restartBudget > 0 && ++restarts > restartBudget) {
            for (int l = 0; l < count; ++l) mark(l, kInvalidCall);
            at = end - 1;  // every point has its fault
            continue;
          }
          setIndex(s, running_[s]);
          at = begin - 1;
          continue;
        }
        // The index is at its upper bound (one sum per index never passes it).
        std::copy(sum, sum + count, d);
        std::fill(sum, sum + count, s < 4 ? 0.0 : 1.0);
        running_[s] = bounds[static_cast<std::size_t>(s)];
        setIndex(s, running_[s]);
        continue;
      }
      default:  // no other instruction is in a tape that runs in blocks
        continue;
    }
    // The plane keeps every result of an operator in single precision,
    // which may overflow where the double did not.
    if (single) {
      for (int l = 0; l < count; ++l) d[l] = static_cast<float>(d[l]);
      finite = AllFinite(d, count);
    }
    if (!finite) markNonFinite(d);
  }
  const double* const result = Lane(resultRegister_);
  for (int l = 0; l < count; ++l) {
    if (faulted && faults[l] != kNoFault) {
      fault_ = faults[l];
      out[l] = 0.0;
      return l;
    }
    out[l] = result[l];
  }
  return count;
}

int Evaluator::EvalRun(const double* x, int count, double* out) {
  fault_ = kNoFault;
  if (single || !RunsInBlocks()) return -1;
  for (int done = 0; done < count; done += kBlock) {
    const int size = std::min(kBlock, count - done);
    std::copy(x + done, x + done + size, Lane(kRegisterX));
    const int fine = RunBlock(size, out + done);
    if (fine < size) return done + fine;
  }
  return count;
}

int Evaluator::EvalRun2(int row, int firstColumn, const double* x, double y, int count, double* out) {
  fault_ = kNoFault;
  if (!single || !RunsInBlocks()) return -1;
  const double fy = static_cast<float>(y);
  for (int done = 0; done < count; done += kBlock) {
    const int size = std::min(kBlock, count - done);
    double* const lx = Lane(kRegisterX);
    for (int k = 0; k < size; ++k) lx[k] = static_cast<float>(x[done + k]);
    std::fill(Lane(kRegisterY), Lane(kRegisterY) + size, fy);
    const std::size_t at = static_cast<std::size_t>(row) * planeStride + static_cast<std::size_t>(firstColumn + done);
    for (int g = 0; g < 4; ++g) {
      double* const lg = Lane(kRegisterGraph + g);
      for (int k = 0; k < size; ++k) lg[k] = planes[g] != nullptr ? planes[g][at + static_cast<std::size_t>(k)] : 0.0;
    }
    const int fine = RunBlock(size, out + done);
    for (int k = 0; k < fine; ++k) out[done + k] = static_cast<float>(out[done + k]);
    if (fine < size) return done + fine;
  }
  return count;
}

bool Evaluator::TapeRuns() const {
  if (tape_.empty()) return false;
  if (tapeHasSums_)
    for (std::size_t s = 0; s < 6; ++s)
      if (bounds[s] > bounds[s + 6]) return false;
  return true;
}

bool Evaluator::Operand(int code, int index, double x, std::size_t& constant, double& v) const {
  const std::vector<double>& pool = formula->pool;
  if (code == kOperandNumber) {
    v = constant < pool.size() ? pool[constant] : 0.0;
    if (single) v = static_cast<float>(v);
    ++constant;
  } else if (code == kOperandX) {
    v = x;
  } else if (single && code == kOperandY) {
    v = y_;
  } else if (single && code >= kOperandGraph && code < kOperandGraph + 4) {
    const float* plane = planes[code - kOperandGraph];
    v = plane != nullptr ? plane[static_cast<std::size_t>(row_) * planeStride + static_cast<std::size_t>(column_)]
                         : 0.0;
  } else if (code < kOperandState) {
    v = running_[code - kOperandIndex];
  } else if (code < kOperandSlot) {
    const int k = code - kOperandState;
    if (formType == 1) {
      v = state != nullptr ? state[k] : 0.0;
    } else {
      const int at = index - order + k;
      v = (computed != nullptr && at >= 0 && at < computedSize) ? computed[at] : 0.0;
    }
    if (single) v = static_cast<float>(v);
  } else if (code < kOperandGraph) {
    v = fSlots != nullptr ? fSlots[code - kOperandSlot] : 0.0;
  } else {
    return false;
  }
  return true;
}

double Evaluator::Eval(int index, double x) {
  fault_ = kNoFault;
  if (TapeRuns()) return EvalTape(index, x);
  return EvalProgram(index, x);
}

double Evaluator::EvalProgram(int index, double x) {
  if (formula == nullptr || formula->program.size() < 5 || stack_.empty()) {
    fault_ = kInvalidCall;
    return 0.0;
  }
  const std::int32_t* p = formula->program.data();
  const int depth = p[2];
  for (int s = 0; s < 6; ++s) {
    running_[s] = bounds[static_cast<std::size_t>(s)];
    accumulator_[s] = s < 4 ? 0.0 : 1.0;
  }
  double* stack = stack_.data();
  std::int32_t* opcodes = opcodes_.data();
  std::int32_t* sequence = order_.data();
  double* results = results_.data();
  double* previous = previous_.data();
  const std::int32_t* applied = applied_.size() == formula->program.size() ? applied_.data() : nullptr;
  long long restarts = 0;

restart:
  std::size_t constant = 1;
  std::size_t read = 4;
  for (int level = depth; level >= 0; --level) {
    const int groups = p[read++];
    std::size_t below = 1;
    for (int g = 1; g <= groups; ++g) {
      const int nOps = p[read++];
      const int fn = p[read++];
      // The first operand.
      {
        const int code = p[read++];
        double v = 0.0;
        if (code == kOperandGroup) v = previous[below++];
        else Operand(code, index, x, constant, v);
        stack[1] = v;
      }
      // Operator and operand pairs. The state codes 9 to 18 have no case
      // here: the stack entry keeps what stood there.
      for (int k = 1; k <= nOps; ++k) {
        opcodes[k] = p[read++];
        const int code = p[read++];
        if (code == kOperandGroup) {
          stack[k + 1] = previous[below++];
        } else if (code < kOperandState || code >= kOperandSlot) {
          double v = 0.0;
          if (Operand(code, index, x, constant, v)) stack[k + 1] = v;
        }
      }
      // The operators' places in the compacted stack, worked out once when
      // the program could be read, else lowered here after each step.
      const std::int32_t* places = applied ? applied + read : nullptr;
      if (places == nullptr)
        for (int k = 1; k <= nOps; ++k) sequence[k] = p[read + static_cast<std::size_t>(k) - 1];
      read += static_cast<std::size_t>(nOps);
      // Apply the operators in their order, compacting the stack in place.
      for (int m = 1; m <= nOps; ++m) {
        const int at = places != nullptr ? places[m - 1] : sequence[m];
        const double a = stack[at];
        const double b = stack[at + 1];
        double r;
        switch (opcodes[at]) {
          case kOpNot: r = b == 1.0 ? 0.0 : 1.0; break;
          case kOpOr: r = (a == 1.0 || b == 1.0) ? 1.0 : 0.0; break;
          case kOpAnd: r = (a == 1.0 && b == 1.0) ? 1.0 : 0.0; break;
          case kOpAtLeast: r = a >= b ? 1.0 : 0.0; break;
          case kOpAtMost: r = a <= b ? 1.0 : 0.0; break;
          case kOpNotEqual: r = a != b ? 1.0 : 0.0; break;
          case kOpEqual: r = a == b ? 1.0 : 0.0; break;
          case kOpGreater: r = a > b ? 1.0 : 0.0; break;
          case kOpLess: r = a < b ? 1.0 : 0.0; break;
          case kOpAdd: r = a + b; break;
          case kOpSubtract: r = a - b; break;
          case kOpMultiply: r = a * b; break;
          case kOpDivide:
            if (b == 0.0) {
              fault_ = kDivisionByZero;
              return 0.0;
            }
            r = a / b;
            break;
          default:
            if (a == 0.0 && b < 0.0) {
              fault_ = kInvalidCall;
              return 0.0;
            }
            r = (a == 0.0 && b == 0.0) ? 1.0 : std::pow(a, b);
            break;
        }
        if (single) r = static_cast<float>(r);
        if (!std::isfinite(r)) {
          fault_ = FaultOf(r);
          return 0.0;
        }
        stack[at] = r;
        if (places == nullptr)
          for (int k = m + 1; k <= nOps; ++k)
            if (sequence[k] > at) --sequence[k];
        // Close up: the entries right of the operator move one place left.
        const int live = nOps - m + 1;
        if (at < live) {
          std::copy(opcodes + at + 1, opcodes + live + 1, opcodes + at);
          std::copy(stack + at + 2, stack + live + 2, stack + at + 1);
        }
      }
      // The enclosing function.
      const double v = stack[1];
      if (fn >= 22 && fn <= 27) {
        const SumStep step = StepSum(fn - 22, v, restarts, results[g]);
        if (step == SumStep::kFault) return 0.0;
        if (step == SumStep::kRestart) goto restart;
      } else if (fn == 18) {
        if (!single && abortField != nullptr && *abortField == -1000) return results[1];
      } else {
        results[g] = Function(fn, v);
        if (fault_ != kNoFault) return 0.0;
      }
    }
    for (int g = 1; g <= groups; ++g) previous[g] = results[g];
  }
  return results[1];
}

}  // namespace keldo::formula

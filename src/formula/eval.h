#pragma once
// The evaluation machine: runs a compiled formula for one abscissa. All
// arrays are sized once by Prepare, so Eval allocates nothing.

#include <array>
#include <cstdint>
#include <vector>

namespace keldo::platform {
class Random;
}

namespace keldo::formula {

// A compiled formula: the integer program and its constants, both indexed
// from 1 (entry 0 is unused).
struct CompiledFormula {
  std::vector<std::int32_t> program;
  std::vector<double> pool;
};

// One stored graph as G1( to G5( read it.
struct GraphSlot {
  const double* values = nullptr;  // points 0..N
  double a = 0.0, b = 0.0, h = 0.0;
};

struct GraphTable {
  std::array<GraphSlot, 5> entries{};
  int points = 0;
};

// Run-time faults, by the error numbers the callers test.
enum EvalFault : int { kNoFault = 0, kInvalidCall = 5, kOverflow = 6, kDivisionByZero = 11 };

// The binary opcodes, by priority.
enum BinaryOp : std::int32_t {
  kOpNot = 1, kOpOr, kOpAnd, kOpAtLeast, kOpAtMost, kOpNotEqual, kOpEqual,
  kOpGreater, kOpLess, kOpAdd, kOpSubtract, kOpMultiply, kOpDivide, kOpPower
};

// Operand codes of the program.
enum OperandCode : std::int32_t {
  kOperandNumber = 0, kOperandX = 1, kOperandGroup = 2, kOperandIndex = 3,  // 3..8 I J K N P Q
  kOperandState = 9,                                                         // 9..18 Y0..Y9
  kOperandSlot = 19,                                                         // 19..23 F0..F4
  kOperandGraph = 24,                                                        // 24..27 G1..G4 of the plane
  kOperandY = 10000                                                          // y of the plane
};

// 0! to 70!, built by v(n) = n v(n-1).
const std::array<double, 71>& FactorialTable();

// A stored graph read at any abscissa by linear interpolation.
double GFUNC1(double x, const GraphSlot& slot, int points);
// value / |reference|, or value alone when |reference| is not above tolerance.
double GetRelVal(double value, double reference, double tolerance);

class Evaluator {
 public:
  // What the program reads besides the abscissa. Set before Eval.
  const CompiledFormula* formula = nullptr;
  double dx = 0.0;
  int formType = 0;
  int order = 0;
  const double* computed = nullptr;  // values computed so far (form types other than 1)
  int computedSize = 0;
  const double* state = nullptr;     // Y0..Y10 of a differential equation
  const double* fSlots = nullptr;    // F slots 0..4
  std::array<int, 12> bounds{};      // lower bounds of I J K N P Q, then the upper bounds
  int noiseTerms = 144;
  platform::Random* random = nullptr;
  const GraphTable* graphs = nullptr;
  const int* abortField = nullptr;
  // A sum can restart the program without end; a positive budget caps the
  // restarts of one Eval and reports kInvalidCall beyond it. 0: no cap.
  long long restartBudget = 0;

  // Sizes the work arrays from words 1 and 3 of the program, and links the
  // program into a straight instruction tape when it can: the tape applies
  // the same operations to the same values in the same order, so it gives
  // the same results, faults and random draws, without walking the levels.
  void Prepare();
  // Off: always walk the program itself (tests compare the two).
  bool useTape = true;
  bool HasTape() const { return !tape_.empty(); }
  // Runs the program at point `index`, abscissa x. On a fault the result is
  // 0 and fault() says which.
  double Eval(int index, double x);

  // The plane (EVAL2): every stored value single precision, each binary
  // result rounded to it, functions computed in double, the result rounded.
  // Y loads y; G1 to G4 load the stored graphs' samples at (row, column);
  // opcode 13 is TANH and 18 tests nothing; computed values are those of the
  // present row, by column.
  bool single = false;
  const float* planes[4] = {nullptr, nullptr, nullptr, nullptr};  // rows of `planeStride` samples
  std::size_t planeStride = 0;
  double Eval2(int column, int row, double x, double y);
  int fault() const { return fault_; }

  // Runs `count` points at once, point k at abscissa x[k], with what Eval
  // would give point by point (the index of a point matters only to earlier
  // values, which such a formula does not read): each instruction of the
  // tape over a block of points, every point through the same operations.
  // Only for a formula whose points do not depend on one another: no random
  // draws, no earlier values, no two sums over one index. Returns how many
  // points came before the first fault (fault() then says which, and that
  // point's value is 0), count when there was none, or -1 when the formula
  // must go point by point. Each block's lanes are sized by Prepare.
  static constexpr int kBlock = 64;
  int EvalRun(const double* x, int count, double* out);
  // The same in the plane, for Eval2 at (firstColumn + k, row) with
  // abscissas x[k] and ordinate y.
  int EvalRun2(int row, int firstColumn, const double* x, double y, int count, double* out);
  bool RunsInBlocks() const { return tapeBlocks_ && TapeRuns(); }

 private:
  // The one-argument functions other than the sums, products and ACS.
  double Function(int fn, double x);
  double EvalProgram(int index, double x);
  // One pass of a sum or product s with the value of its group: restart the
  // program, done (the result in `result`, index and accumulator reset), a
  // fault, or nothing (the index already above its upper bound).
  enum class SumStep { kRestart, kDone, kFault, kNothing };
  SumStep StepSum(int s, double value, long long& restarts, double& result);
  double EvalTape(int index, double x);
  template <bool kSingle>
  double RunTape(int index, double x);
  // The tape serves this call: linked, and every sum's bounds in order.
  bool TapeRuns() const;
  void LinkTape();
  // Works out once, for every group, the place in the compacted stack at
  // which each of its operators applies (the walk would otherwise lower the
  // later places after each step). Left empty for a program it cannot read.
  void LinkOrder();

  // One instruction of the tape: 1 to 14 the binary opcodes, then the rest.
  // kTapeScale multiplies by the exact reciprocal of a power of two that
  // the program divides by: the same real number, so the same rounding.
  // kTapePower raises to the constant power 2, 3 or 4 (in `kind`): pow point
  // by point, products where they are sure to round as pow does in blocks.
  enum TapeOp : std::int32_t { kTapeFunction = 20, kTapeCheck, kTapeState, kTapeSlot, kTapeSum, kTapeScale, kTapePower };
  struct Instruction {
    std::int32_t op, kind, dst, a, b;
  };
  // Turns divisions by a power of two into multiplications and marks the
  // small constant powers.
  void ShortenTape(std::vector<Instruction>& tape, std::vector<double>& regs,
                   const std::vector<bool>& constant) const;
  std::vector<Instruction> tape_;
  std::vector<double> registers_;
  int resultRegister_ = 0;
  bool tapeHasSums_ = false;
  bool tapeReadsIndex_ = false;  // I J K N P Q
  bool tapeBlocks_ = false;      // the tape may run a block of points at once
  // kBlock lanes for every register of the tape, register by register.
  std::vector<double> lanes_;
  // One block of at most kBlock points whose abscissas (and in the plane
  // ordinates and samples) are in their lanes; the number before the first
  // fault.
  int RunBlock(int count, double* out);
  double* Lane(int reg) { return lanes_.data() + static_cast<std::ptrdiff_t>(reg) * kBlock; }
  std::vector<double> stack_, results_, previous_;
  std::vector<std::int32_t> opcodes_, order_;
  // By program word: at an operator's order word, its place in the
  // compacted stack when it applies.
  std::vector<std::int32_t> applied_;
  int fault_ = kNoFault;
  int running_[6] = {};
  double y_ = 0.0;
  int row_ = 0, column_ = 0;
  // The value of a program operand other than a group; false for codes that
  // leave the stack entry as it stands.
  bool Operand(int code, int index, double x, std::size_t& constant, double& v) const;
  double accumulator_[6] = {};
};

}  // namespace keldo::formula

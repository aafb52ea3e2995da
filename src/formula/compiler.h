#pragma once
// The formula compiler: the lexical passes, COMPILE, COMBG, VALUQ and VALU.
// It works on the formula fields of one form (FormulaState) and asks its
// host for what lies outside the language: the number of points, the graphs,
// the plot interval, prompts and messages.

#include <array>
#include <optional>
#include <string>

#include "formula/eval.h"

namespace keldo::platform {
class Random;
}

namespace keldo::formula {

// The formula fields of a form.
struct FormulaState {
  CompiledFormula compiled;
  int formType = 0;        // 0 plain, 1 differential equation, 2 recursive
  int order = 0;           // order of the differential equation
  int iterationMark = 0;
  std::array<int, 6> lower{};  // sum and product bounds of I J K N P Q
  std::array<int, 6> upper{};
  int noiseTerms = 144;
  char stateFlag = 'N';    // 'S' while sums are read, 'P' in a parameter prompt
  int valueFault = 0;      // -12 after VALU met a run-time error
  std::string valueText;   // the text VALU compiles
  std::array<double, 11> initialValues{};  // the equation's state Y0..Y10
  int sumCode = 0;         // internal code of a duplicated sum (TMSP)
  // The language of functions of x and y: Y is a variable, G1 to G4 are the
  // samples of the stored graphs at the point, and values are single
  // precision (see the two-dimensional passes in compiler.cpp).
  bool twoDimensional = false;
};

class FormulaHost {
 public:
  virtual ~FormulaHost() = default;
  virtual int FormulaPoints() const = 0;
  virtual int FormulaGraphCount() const = 0;
  // Length of the current plot interval, for H.
  virtual double FormulaIntervalLength() const = 0;
  // Shows an input box; nothing when it was cancelled.
  virtual std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) = 0;
  virtual void FormulaError(int number) = 0;
  virtual platform::Random* FormulaRandom() = 0;
  virtual const GraphTable* FormulaGraphs() = 0;
};

inline constexpr int kModeTyped = 0;
inline constexpr int kModeValue = 9794;
inline const std::string kErrorResult = "#Error";
inline const std::string kValueFailure = "N!N";

class Compiler {
 public:
  Compiler(FormulaState& state, FormulaHost& host) : s_(state), host_(host) {}

  // Compiles `typed` (mode 0) or the state's value text (mode 9794). The
  // command string comes back in `command`, "#Error" on failure.
  void COMPILE(int mode, const std::string& typed, std::string& command);
  // Compiles text as a bare value and evaluates it at X = 0 with step 0. A
  // run-time fault sets text to "N!N" and the value fault code to -12. A
  // failed compile is not tested: the program that stands is evaluated.
  double VALU(std::string& text);
  double VALU(const std::string& text) {
    std::string copy = text;
    return VALU(copy);
  }
  // The work VALU may spend on the sums of a number field, in program words
  // run: restarts times the program's length, at most 2,000,000 restarts.
  // Past it the value fails with "N!N".
  long long valueWorkBudget = 40000000;

  // Reads the initial values and order of a differential equation from the
  // command string.
  void GIVAL(std::string& error, const std::string& command);

  // The passes, in the order COMPILE runs them.
  static void RPRIMES(std::string& text);
  void CHSTAT(std::string& command);
  void FIRPASS(std::string& text);
  void RandomTerms(std::string& command);
  static void InsertLogicalTokens(std::string& text);
  static void DINEQ(std::string& text, bool twoDimensional = false);
  void PARVALI(std::string& text, std::string& command, bool& found);
  // False when the user cancelled or a letter cannot be asked for.
  bool PARVAL(std::string& text, const std::string& marks);
  void THRPASS(std::string& text);
  void FTHPAS(std::string& text);
  void SPTKN(std::string& text, const std::string& command, bool& failed, bool& allowP);
  void INSHV(std::string& text);
  // Turns the prepared text into the program; false when it is improper.
  bool COMBG(std::string text, bool allowP);
  // A number of the program text. The two-dimensional language turns the
  // marker "DDE" back into "E-", the other into "D-": the same number.
  static double VALUQ(std::string text, bool twoDimensional = false);

 private:
  void VSPTK(int index, int lo, int hi);
  void TMSP(int index) { s_.sumCode = index; }
  FormulaState& s_;
  FormulaHost& host_;
};

// Points an evaluator at the state's program and copies what it reads from
// the state: form type, order, equation state, bounds, noise terms.
void BindEvaluator(Evaluator& ev, const FormulaState& state);
// The twelve bounds of the state: lower bounds of I J K N P Q, then upper.
std::array<int, 12> BoundsOf(const FormulaState& state);

// The platform's number scan: a sign, digits with one point, an exponent
// marked E or D; 0 when there are no digits.
double ScanNumber(const std::string& text);
// Text of a double for splicing into a formula: 17 significant digits and no
// exponent sign that a pass would read as an operator.
std::string NumberForFormula(double value);

}  // namespace keldo::formula

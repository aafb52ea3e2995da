// The compiler's passes and their corners, each against a value worked out
// by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "formula/formula_text.h"
#include "formula_test_host.h"

namespace keldo {
namespace {

using formula::Compiler;
using formula::kErrorResult;
using testing::FormulaBench;

double Value(const std::string& formula, double x = 0.0, double dx = 0.01) {
  FormulaBench b;
  const std::string command = b.Compile(formula);
  EXPECT_NE(command, kErrorResult) << formula;
  int fault = 0;
  const double v = b.Eval(x, dx, &fault);
  EXPECT_EQ(fault, 0) << formula;
  return v;
}

bool Improper(const std::string& formula, int graphs = 0) {
  FormulaBench b;
  b.host.graphCount = graphs;
  return b.Compile(formula) == kErrorResult;
}

TEST(TextHelpers, ReplaceAllStartsAgainFromTheBeginning) {
  std::string t = "+--+";
  formula::ReplaceAll(t, "--", "+");
  EXPECT_EQ(t, "+++");
  formula::ReplaceAll(t, "++", "+");
  EXPECT_EQ(t, "+");
  std::string loop = "A";
  formula::ReplaceAll(loop, "A", "(A)");  // a replacement holding its find is swept once
  EXPECT_EQ(loop, "(A)");
}

TEST(TextHelpers, NextTokenNeedsAClosingSeparator) {
  std::size_t pos = 0;
  const std::string text = "A=2,3\\B";
  EXPECT_EQ(formula::NextToken(pos, text, "\\=,"), "A");
  EXPECT_EQ(formula::NextToken(pos, text, "\\=,"), "2");
  EXPECT_EQ(formula::NextToken(pos, text, "\\=,"), "3");
  EXPECT_EQ(formula::NextToken(pos, text, "\\=,"), "");  // B has no closing separator
  EXPECT_EQ(pos, 6u);
  EXPECT_EQ(formula::Filter("a1b2.c", "0123456789."), "12.");
}

TEST(Passes, PrimesBecomeDigits) {
  std::string t = "Y''+Y`+Y\"'";
  Compiler::RPRIMES(t);
  EXPECT_EQ(t, "Y2+Y1+Y3");
}

TEST(Passes, ChainedInequalitiesExpandPairwise) {
  std::string t = "1<X" + std::string(1, formula::ch::kAtMost) + "3";
  Compiler::DINEQ(t);
  EXPECT_EQ(t, "1<X&X" + std::string(1, formula::ch::kAtMost) + "3");
  std::string noChain = "A<B=C";
  Compiler::DINEQ(noChain);
  EXPECT_EQ(noChain, "A<B=C");
  std::string three = "1<X<2<3";
  Compiler::DINEQ(three);
  EXPECT_EQ(three, "1<X&X<2&2<3");
}

// The chain rule step by step as it is stated: rescan from every comparator
// and splice the doubled middle into the growing text.
std::string ChainsStepByStep(std::string text) {
  const auto isComparator = [](char c) {
    return c == formula::ch::kAtLeast || c == '<' || c == formula::ch::kAtMost || c == '>';
  };
  const std::string functions(formula::FunctionCharacters());
  for (std::size_t i = 0; i < text.size() && text.size() <= 20000; ++i) {
    if (!isComparator(text[i])) continue;
    int depth = 0;
    for (std::size_t j = i + 1; j < text.size(); ++j) {
      const char c = text[j];
      if (c == '(' || functions.find(c) != std::string::npos) ++depth;
      else if (c == ')' || c == formula::ch::kAnd) --depth;
      if (depth < 0) break;
      if (depth == 0 && isComparator(c)) {
        const std::string middle = text.substr(i + 1, j - i - 1);
        text = text.substr(0, i + 1) + middle + formula::ch::kAnd + middle + text.substr(j);
        break;
      }
    }
  }
  return text;
}

TEST(Passes, ChainedInequalitiesMatchTheStepByStepRule) {
  const std::string alphabet = std::string("()&<>X1S") + formula::ch::kAtMost + formula::ch::kAtLeast + formula::ch::kAbs;
  std::mt19937 draw(20261124);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const std::size_t length = 1 + draw() % 40;
    for (std::size_t k = 0; k < length; ++k) text.push_back(alphabet[draw() % alphabet.size()]);
    const std::string expected = ChainsStepByStep(text);
    std::string got = text;
    Compiler::DINEQ(got);
    EXPECT_EQ(got, expected) << text;
  }
}

TEST(Passes, NestedChainsDoubleAtEachLevelUpToTheLimit) {
  // A chain inside every group doubles the text at each level.
  for (int levels : {3, 9, 12, 13, 40}) {
    std::string text = "X";
    for (int level = 0; level < levels; ++level) text = "(1<" + text + "<2)";
    const std::string expected = ChainsStepByStep(text);
    Compiler::DINEQ(text);
    if (expected.size() > 20000) {
      EXPECT_GT(text.size(), 20000u) << levels;  // both leave a text the compiler refuses
    } else {
      EXPECT_EQ(text, expected) << levels;
    }
  }
}

TEST(Compile, AChainDoubledPastTheLimitIsImproper) {
  // A mistyped command string that substitutes a letter into itself, with a
  // chain in the value: the text doubles on every pass.
  const std::string typed = "A+B>=B\\A=BSX(\xF2" "G+\xF2" "2BSX<\xC8" "A";
  FormulaBench b;
  EXPECT_EQ(b.Compile(formula::FromAnsiText(typed)), kErrorResult);
  std::string value = formula::FromAnsiText(typed);
  b.compiler.VALU(value);
  EXPECT_EQ(value, formula::kValueFailure);
}

TEST(Compile, ParametersMultipliedByTheCommandStopAtTheLimit) {
  // The command names the letter A again and again, and A's value holds
  // many A: each substitution multiplies the text. It is refused as soon as
  // it passes the length limit, as the next pass would refuse it anyway.
  std::string typed = "A";
  for (int k = 0; k < 12; ++k) typed += "\\A=AAAAAAAA";
  FormulaBench b;
  EXPECT_EQ(b.Compile(typed), kErrorResult);
  std::string value = typed;
  b.compiler.VALU(value);
  EXPECT_EQ(value, formula::kValueFailure);
  // Below the limit the same substitution stands, one sweep per pass.
  FormulaBench small;
  std::string command = small.Compile("A\\A=2");
  EXPECT_NE(command, kErrorResult);
  EXPECT_EQ(small.Eval(0.0, 0.0), 2.0);
}

TEST(Values, ALongSumInANumberFieldGivesUpByItsWork) {
  FormulaBench b;
  std::string small = "SUMI(I)\\I=1,1000";
  EXPECT_EQ(b.compiler.VALU(small), 500500.0);
  // 1024 copies of I summed over a billion terms: far past the work bound.
  std::string wide = "SUMI(B)\\I=1,1000000000\\B=C+C+C+C,C=M+M+M+M,M=T+T+T+T,T=U+U+U+U,U=I+I+I+I";
  b.compiler.VALU(wide);
  EXPECT_EQ(wide, formula::kValueFailure);
  // A smaller bound gives up on a sum the default bound finishes.
  std::string medium = "SUMI(I)\\I=1,100000";
  b.compiler.valueWorkBudget = 1000;
  b.compiler.VALU(medium);
  EXPECT_EQ(medium, formula::kValueFailure);
}

TEST(Compile, EmptyFormulaIsZeroAndXIsZeroPlusX) {
  EXPECT_EQ(Value(""), 0.0);
  EXPECT_EQ(Value("   "), 0.0);
  EXPECT_EQ(Value("X", 0.25), 0.25);
  EXPECT_EQ(Value("x", -3.0), -3.0);
}

TEST(Compile, NumbersExponentsAndStars) {
  EXPECT_DOUBLE_EQ(Value("2E-3"), 0.002);
  EXPECT_DOUBLE_EQ(Value("2D-3"), 0.002);
  EXPECT_DOUBLE_EQ(Value("E^2"), std::pow(std::exp(1.0), 2.0));
  EXPECT_EQ(Value("2**3"), 6.0);
  EXPECT_EQ(Value("2^3^2"), 64.0);
  EXPECT_EQ(Value("1/2/4"), 0.125);
  EXPECT_EQ(Value("2*-3"), -3.0);
  EXPECT_EQ(Value("-X^2", 3.0), -9.0);
  EXPECT_EQ(Value("X^-2", 3.0), -1.0);  // X^0-2
  EXPECT_EQ(Value("5!"), 120.0);
}

TEST(Compile, PiIsTheFixedLiteralAndMultipliesByContact) {
  const double pi = 3.14159265358979;
  EXPECT_EQ(Value("PI"), pi);
  EXPECT_EQ(Value("2PI"), 2 * pi);
  EXPECT_EQ(Value("PIX", 2.0), pi * 2.0);
  EXPECT_EQ(Value("XPI", 2.0), 2.0 * pi);
  EXPECT_EQ(Value("\xC3\xA3"), pi);  // a typed code 227
}

TEST(Compile, TypedFunctionCharactersCallTheirFunction) {
  EXPECT_EQ(Value("S(X)", 0.5), std::sin(0.5));
  EXPECT_EQ(Value("SIN(X)", 0.5), Value("S(X)", 0.5));
  EXPECT_EQ(Value("?(X)", 0.5), std::tan(0.5));
  EXPECT_EQ(Value("ABS(X)+COS(X)", -0.5), 0.5 + std::cos(-0.5));
  EXPECT_EQ(Value("G(X)", 2.5), 2.0);
}

TEST(Compile, GraphReferencesNeedTheGraph) {
  EXPECT_TRUE(Improper("G2(X)", 1));
  EXPECT_FALSE(Improper("G1(X)", 1));
  EXPECT_TRUE(Improper("G1(X)", 0));
}

TEST(Compile, UnknownLettersReadAsZero) {
  FormulaBench b;
  EXPECT_NE(b.Compile("R+X"), kErrorResult);
  EXPECT_EQ(b.Eval(2.0, 0.1), 2.0);
  EXPECT_TRUE(b.host.errors.empty());
  EXPECT_TRUE(b.host.prompts.empty());
}

TEST(Compile, UnbalancedParenthesesAreImproper) {
  EXPECT_TRUE(Improper("(X"));
  EXPECT_TRUE(Improper("X)"));
  EXPECT_TRUE(Improper("SIN(X"));
  EXPECT_FALSE(Improper("((X))"));
}

TEST(Compile, TenNestedParenthesesStillCompile) {
  const std::string ten = "((((((((((X))))))))))";
  FormulaBench b;
  EXPECT_NE(b.Compile(ten), kErrorResult);
  EXPECT_EQ(b.state.compiled.program[2], 10);
}

TEST(Compile, ProgramLayoutOfASmallFormula) {
  FormulaBench b;
  ASSERT_NE(b.Compile("2+X*3"), kErrorResult);
  // One level, one group: 2 operators, fn 0, operands 2, X, 3; "*" before "+".
  const std::vector<std::int32_t> expected = {0, 2, 0, 1, 1, 2, 0, 0, 10, 1, 12, 0, 2, 1};
  EXPECT_EQ(b.state.compiled.program, expected);
  EXPECT_EQ(b.state.compiled.pool, (std::vector<double>{0.0, 2.0, 3.0}));
  FormulaBench nested;
  ASSERT_NE(nested.Compile("SIN(X)+1"), kErrorResult);
  const std::vector<std::int32_t> twoLevels = {0, 1, 1, 1,
                                               1, 0, 3, 1,          // level 1: SIN(X)
                                               1, 1, 0, 2, 10, 0, 1};  // level 0: ")" + 1
  EXPECT_EQ(nested.state.compiled.program, twoLevels);
}

TEST(Compile, AGroupOfThousandsOfOperatorsRunsTheSameOnTapeAndWalk) {
  // One flat group of 6,000 operators: the places at which its operators
  // apply in the closing-up stack are worked out once, and the walk and the
  // tape must both give the sum as written.
  std::string text = "0";
  double expected = 0.0;
  const double x = 0.5;
  for (int k = 1; k <= 1500; ++k) {
    text += (k % 3 == 0 ? "-" : "+") + std::to_string(k) + "*X^2/7";
    expected += (k % 3 == 0 ? -1.0 : 1.0) * k * x * x / 7.0;
  }
  FormulaBench b;
  ASSERT_NE(b.Compile(text), kErrorResult);
  EXPECT_EQ(b.state.compiled.program[1], 6000);
  double values[2];
  for (const bool tape : {false, true}) {
    formula::Evaluator ev;
    formula::BindEvaluator(ev, b.state);
    ev.useTape = tape;
    ev.Prepare();
    values[tape] = ev.Eval(0, x);
    EXPECT_EQ(ev.fault(), 0);
  }
  EXPECT_NEAR(values[0], expected, 1e-9 * std::fabs(expected));
  EXPECT_EQ(std::memcmp(&values[0], &values[1], sizeof(double)), 0);
}

TEST(Compile, FormulasWithFAreRefused) {
  EXPECT_TRUE(Improper("F+X"));
  FormulaBench b;
  EXPECT_EQ(b.compiler.VALU(std::string("F+2")), 2.0);  // F means nothing in a value
}

TEST(Compile, BarAndCode179AreImproper) {
  EXPECT_TRUE(Improper("X|2"));
  EXPECT_TRUE(Improper("X\xC2\xB3"));
}

TEST(Compile, RecursiveIsRefusedAndSetsTypeOne) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("X\\REC"), kErrorResult);
  EXPECT_EQ(b.state.formType, 1);
  EXPECT_EQ(b.Compile("X\\DIFF\\RECURSIVE"), kErrorResult);
}

TEST(Compile, CommandItemsAndRemarks) {
  EXPECT_EQ(Value("X\\Rem To denoise, plot this function and then select Invert.", 2.0), 2.0);
  FormulaBench b;
  EXPECT_NE(b.Compile("X\\DIFF\\PLAIN"), kErrorResult);
  EXPECT_EQ(b.state.formType, 0);
}

TEST(Parameters, CommandValuesSubstituteInPasses) {
  EXPECT_EQ(Value("A*B\\A=2\\B=A"), 4.0);
  EXPECT_EQ(Value("A*X\\A=2+3", 2.0), 10.0);
  EXPECT_EQ(Value("X^A\\A=-1", 4.0), 0.25);
  EXPECT_EQ(Value("Y+1\\Y=2"), 3.0);  // a plain formula takes Y from the command
  EXPECT_EQ(Value("A\\A=X<=1", 0.5), 1.0);  // comparators inside a value survive
}

TEST(Parameters, EndlessSubstitutionEndsAfterSixtyPasses) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("A\\A=B\\B=A"), kErrorResult);
  EXPECT_EQ(b.Compile("A\\A=A+1"), kErrorResult);
  EXPECT_TRUE(b.host.prompts.empty());
}

TEST(Parameters, MissingValuesArePromptedFor) {
  FormulaBench b;
  b.host.answers = {std::string("3"), std::string("4 0")};
  EXPECT_NE(b.Compile("A*X+B"), kErrorResult);
  ASSERT_EQ(b.host.prompts.size(), 2u);
  EXPECT_EQ(b.host.prompts[0], "Enter the value of a.|Parameter value needed.");
  EXPECT_EQ(b.host.prompts[1], "Enter the value of b.|Parameter value needed.");
  EXPECT_EQ(b.Eval(2.0, 0.1), 46.0);  // blanks are removed from an answer: 40
}

TEST(Parameters, CancelOrEmptyAnswerEndsTheCompile) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("A*X"), kErrorResult);  // nothing queued: cancelled
  b.host.answers = {std::string("")};
  EXPECT_EQ(b.Compile("A*X"), kErrorResult);
  b.host.answers = {std::string("\xC5\xB8")};  // U+0178
  EXPECT_EQ(b.Compile("A*X"), kErrorResult);
}

TEST(Parameters, PlainZWithoutValueIsImproperWithoutAPrompt) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("Z*X"), kErrorResult);
  EXPECT_TRUE(b.host.prompts.empty());
  EXPECT_EQ(Value("Z*X\\Z=3", 2.0), 6.0);
}

TEST(Parameters, PlainYWithoutValueAsksForZ) {
  FormulaBench b;
  b.host.answers = {std::string("1")};
  EXPECT_EQ(b.Compile("Y*X"), kErrorResult);  // the second prompt is cancelled
  ASSERT_GE(b.host.prompts.size(), 1u);
  EXPECT_EQ(b.host.prompts[0], "Enter the value of z.|Parameter value needed.");
}

TEST(Sums, BoundsComeFromTheCommand) {
  EXPECT_EQ(Value("SUMI(I)\\I=1,10"), 55.0);
  EXPECT_EQ(Value("SUMI(I)\\I=10,1"), 55.0);  // swapped
  EXPECT_EQ(Value("SUMI(SUMJ(I*J))\\I=1,3\\J=1,3"), 36.0);
  EXPECT_EQ(Value("PRODP(P)\\P=1,5"), 120.0);
  EXPECT_EQ(Value("SUMI(I*X)\\I=1,2+2", 2.0), 20.0);
  FormulaBench b;
  EXPECT_NE(b.Compile("SUMI(I)\\I=1,4"), kErrorResult);
  EXPECT_EQ(b.state.lower[0], 1);
  EXPECT_EQ(b.state.upper[0], 4);
}

TEST(Sums, OneIndexServesOneSum) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("SUMI(I)+SUMI(I^2)\\I=1,3"), kErrorResult);
  EXPECT_TRUE(b.host.errors.empty());
}

TEST(Sums, MissingBoundsReportTwelve) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("SUMI(X)"), kErrorResult);
  EXPECT_EQ(b.host.errors, std::vector<int>{12});
}

TEST(Sums, PWithoutProductIsImproper) {
  EXPECT_TRUE(Improper("P*X"));
  EXPECT_FALSE(Improper("PRODP(P)\\P=1,2"));
}

TEST(NoiseTerms, LimitsReportTheirMessages) {
  FormulaBench b;
  EXPECT_EQ(b.Compile("RANG(X)\\NOISETERMS=32001"), kErrorResult);
  EXPECT_EQ(b.Compile("RANG(X)\\NOISETERMS=0"), kErrorResult);
  EXPECT_EQ(b.host.errors, (std::vector<int>{44, 45}));
  EXPECT_NE(b.Compile("RANG(X)\\NOISETERMS=30001"), kErrorResult);
  EXPECT_EQ(b.state.noiseTerms, 30001);
  EXPECT_EQ(formula::FormulaState{}.noiseTerms, 144);
}

TEST(StepH, ExpandsToIntervalOverPoints) {
  FormulaBench b;
  b.host.points = 64;
  b.host.intervalLength = 2.0;
  ASSERT_NE(b.Compile("H"), kErrorResult);
  EXPECT_EQ(b.Eval(0, 0), 2.0 / 64);
  b.host.intervalLength = 1e-7;
  ASSERT_NE(b.Compile("H*1000"), kErrorResult);
  EXPECT_DOUBLE_EQ(b.Eval(0, 0), 1e-7 / 64 * 1000);
  ASSERT_NE(b.Compile("POINTS"), kErrorResult);
  EXPECT_EQ(b.Eval(0, 0), 64.0);
}

TEST(DifferentialEquations, YIsTheStateUnderDiff) {
  FormulaBench b;
  const std::string command = b.Compile("Y''+X*Y'\\DIFF");
  ASSERT_NE(command, kErrorResult);
  EXPECT_EQ(b.state.formType, 1);
  EXPECT_EQ(b.state.order, 3);
  b.state.initialValues = {0, 5, 7};
  EXPECT_EQ(b.Eval(2.0, 0.1), 7.0 + 2.0 * 5.0);
}

TEST(DifferentialEquations, GIVALReadsValuesAndOrder) {
  FormulaBench b;
  std::string command = b.Compile("-Y\\DIFF\\Y=1\\Y1=2\\ORDER=2");
  ASSERT_NE(command, kErrorResult);
  EXPECT_EQ(b.state.order, 1);
  std::string error = "N";
  b.compiler.GIVAL(error, command);
  EXPECT_EQ(b.state.order, 2);
  EXPECT_EQ(b.state.initialValues[0], 1.0);
  EXPECT_EQ(b.state.initialValues[1], 2.0);
}

TEST(DifferentialEquations, OrderBelowTheNeededIsRefused) {
  FormulaBench b;
  std::string command = b.Compile("-Y''\\DIFF\\ORDER=1");
  ASSERT_EQ(b.state.order, 3);
  std::string error = "N";
  b.compiler.GIVAL(error, command);
  EXPECT_EQ(b.state.order, 3);
  for (double v : b.state.initialValues) EXPECT_EQ(v, 0.0);
}

TEST(Values, VALUReportsFaultsAsNN) {
  FormulaBench b;
  std::string text = "1/0";
  b.compiler.VALU(text);
  EXPECT_EQ(text, "N!N");
  EXPECT_EQ(b.state.valueFault, -12);
  std::string fac = "FAC(71)";
  b.compiler.VALU(fac);
  EXPECT_EQ(fac, "N!N");
}

TEST(Values, AFailedCompileLeavesTheStaleValue) {
  FormulaBench b;
  EXPECT_EQ(b.compiler.VALU(std::string("7")), 7.0);
  std::string bad = "(3";
  EXPECT_EQ(b.compiler.VALU(bad), 7.0);
  EXPECT_EQ(bad, "(3");
  EXPECT_EQ(b.state.valueFault, 0);
}

TEST(Values, VALUQReadsNumbersAsTheNumberScanDoes) {
  EXPECT_EQ(Compiler::VALUQ("12.5"), 12.5);
  EXPECT_EQ(Compiler::VALUQ("1DDE2"), 0.01);
  EXPECT_EQ(Compiler::VALUQ("PI"), 3.14159265358979);
  EXPECT_EQ(Compiler::VALUQ(""), 0.0);
  EXPECT_EQ(Compiler::VALUQ("R"), 0.0);
  EXPECT_EQ(Compiler::VALUQ("1.2.3"), 1.2);
  EXPECT_EQ(Compiler::VALUQ("4!"), 24.0);
  EXPECT_EQ(Compiler::VALUQ("71!"), -1.0);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// Found by fuzzing: values that name other parameters doubled the text on
// every pass. The compile now ends, improper.
TEST(Parameters, SelfDoublingSubstitutionEnds) {
  testing::FormulaBench b;
  EXPECT_EQ(b.Compile("A+B\\A=B+B\\B=A+A"), formula::kErrorResult);
  std::string text = "A+B\\+B\\A=\xF2\xDF\xF2\xF2\xF2" "2A+BSX(\xC8" "A";
  b.compiler.VALU(text);  // returns within the pass limit
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// Found by fuzzing: nested chains of comparisons duplicate their middles
// inside each other. The expansion stops and the compile is improper.
TEST(Passes, ChainsThatOutgrowAnyFormulaEnd) {
  std::string nested = "X";
  for (int k = 0; k < 16; ++k) nested = "1<(" + nested + "<2<3)<4";
  testing::FormulaBench b;
  EXPECT_EQ(b.Compile(nested), formula::kErrorResult);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// Found by fuzzing: a value with a product over billions of terms. A number
// field answers "N!N" instead of hanging; a million terms still count.
TEST(Values, HugeSumsInAFieldFailInsteadOfHanging) {
  testing::FormulaBench b;
  std::string huge = "SUMI(1)\\I=1,1E9";
  b.compiler.VALU(huge);
  EXPECT_EQ(huge, "N!N");
  EXPECT_EQ(b.compiler.VALU(std::string("SUMI(1)\\I=1,1000000")), 1000000.0);
}

}  // namespace
}  // namespace keldo

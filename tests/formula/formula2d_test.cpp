// The plane dialect of the formula language: formulas of x and y against
// tests/data/formula2d_table.tsv, written by make_formula2d_table.py with
// numpy in single precision, and the rules that differ from one variable.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <vector>

#include "formula_test_host.h"

namespace keldo {
namespace {

using testing::FormulaBench;

// A bench compiling in the plane dialect on the grid of N = n.
struct PlaneBench : FormulaBench {
  explicit PlaneBench(int n = 8) {
    state.twoDimensional = true;
    state.noiseTerms = 64;
    host.points = n;
    host.intervalLength = 1.0;
  }
  formula::Evaluator Evaluator(double dx) {
    formula::Evaluator ev;
    formula::BindEvaluator(ev, state);
    ev.dx = dx;
    ev.Prepare();
    return ev;
  }
};

struct Expected {
  int i, j;
  float value;
};

std::map<std::string, std::vector<Expected>> ReadTable() {
  std::ifstream in(KELDO_TEST_DATA "/formula2d_table.tsv");
  std::map<std::string, std::vector<Expected>> table;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string field;
    while (std::getline(ss, field, '\t')) f.push_back(field);
    if (f.size() != 4) {
      ADD_FAILURE() << "bad line: " << line;
      continue;
    }
    table[f[0]].push_back({std::stoi(f[1]), std::stoi(f[2]), std::stof(f[3])});
  }
  return table;
}

TEST(PlaneFormulas, MatchSinglePrecisionNumpyOnTheGrid) {
  const auto table = ReadTable();
  ASSERT_GE(table.size(), 60u);
  // The stored graph G1 of the table: (i - j) / 8 at row i, column j.
  std::vector<float> g1(81);
  for (int i = 0; i <= 8; ++i)
    for (int j = 0; j <= 8; ++j) g1[static_cast<std::size_t>(i * 9 + j)] = static_cast<float>((i - j) / 8.0);
  for (const auto& [text, points] : table) {
    PlaneBench b;
    const std::string command = b.Compile(text);
    ASSERT_NE(command, formula::kErrorResult) << text;
    formula::Evaluator ev = b.Evaluator(1.0 / 8);
    ev.planes[0] = g1.data();
    ev.planeStride = 9;
    for (const Expected& e : points) {
      const float x = static_cast<float>(-0.5 + e.j / 8.0), y = static_cast<float>(-0.5 + e.i / 8.0);
      const float got = static_cast<float>(ev.Eval2(e.j, e.i, x, y));
      ASSERT_EQ(ev.fault(), formula::kNoFault) << text;
      std::uint32_t gotBits, wantBits;
      std::memcpy(&gotBits, &got, 4);
      std::memcpy(&wantBits, &e.value, 4);
      EXPECT_EQ(gotBits, wantBits) << text << " at row " << e.i << " column " << e.j << ": " << got << " vs "
                                   << e.value;
    }
  }
}

TEST(PlaneFormulas, TheLinkedTapeAgreesWithTheWalkBitForBit) {
  const auto table = ReadTable();
  std::vector<float> g1(81);
  for (std::size_t k = 0; k < g1.size(); ++k) g1[k] = static_cast<float>(k % 7) - 2.5f;
  int taped = 0;
  for (const auto& [text, points] : table) {
    PlaneBench b;
    ASSERT_NE(b.Compile(text), formula::kErrorResult) << text;
    formula::Evaluator fast = b.Evaluator(0.125), slow;
    formula::BindEvaluator(slow, b.state);
    slow.dx = 0.125;
    slow.useTape = false;
    slow.Prepare();
    taped += fast.HasTape();
    for (formula::Evaluator* ev : {&fast, &slow}) {
      ev->planes[0] = g1.data();
      ev->planeStride = 9;
    }
    for (const Expected& e : points) {
      const double x = -0.5 + e.j / 8.0, y = -0.5 + e.i / 8.0;
      const double v = fast.Eval2(e.j, e.i, x, y), w = slow.Eval2(e.j, e.i, x, y);
      ASSERT_EQ(fast.fault(), slow.fault()) << text;
      ASSERT_EQ(std::memcmp(&v, &w, sizeof v), 0) << text << ": " << v << " vs " << w;
    }
  }
  EXPECT_GT(taped, 60);  // the tape serves nearly every formula
}

// A row of the plane in blocks gives, column for column, what Eval2 gives
// by the walk, up to and with the first fault.
TEST(PlaneFormulas, RowsInBlocksAgreeWithTheWalkBitForBit) {
  const auto table = ReadTable();
  constexpr int kSide = 81;  // a row longer than a block, the last block short
  std::vector<float> g1(kSide * 3), g2(kSide * 3);
  for (std::size_t k = 0; k < g1.size(); ++k) {
    g1[k] = static_cast<float>(k % 7) - 2.5f;
    g2[k] = static_cast<float>(k % 5) * 1e30f;
  }
  int blocked = 0;
  for (const auto& [text, points] : table) {
    (void)points;
    PlaneBench b;
    ASSERT_NE(b.Compile(text), formula::kErrorResult) << text;
    formula::Evaluator fast = b.Evaluator(1.0 / 80), slow;
    formula::BindEvaluator(slow, b.state);
    slow.dx = 1.0 / 80;
    slow.useTape = false;
    slow.Prepare();
    for (formula::Evaluator* ev : {&fast, &slow}) {
      ev->planes[0] = g1.data();
      ev->planes[1] = g2.data();
      ev->planeStride = kSide;
    }
    std::vector<double> xs(kSide), out(kSide, -1.0);
    for (int j = 0; j < kSide; ++j) xs[static_cast<std::size_t>(j)] = -0.5 + j / 80.0;
    for (const int row : {0, 2}) {
      const double y = -0.5 + row / 80.0;
      const int fine = fast.EvalRun2(row, 0, xs.data(), y, kSide, out.data());
      if (!fast.RunsInBlocks()) {
        EXPECT_EQ(fine, -1) << text;
        break;
      }
      ++blocked;
      int expected = kSide;
      for (int j = 0; j < kSide; ++j) {
        const double w = slow.Eval2(j, row, xs[static_cast<std::size_t>(j)], y);
        if (slow.fault() != formula::kNoFault) {
          expected = j;
          EXPECT_EQ(fast.fault(), slow.fault()) << text;
          break;
        }
        const double v = out[static_cast<std::size_t>(j)];
        ASSERT_EQ(std::memcmp(&v, &w, sizeof v), 0) << text << " at column " << j << ": " << v << " vs " << w;
      }
      EXPECT_EQ(fine, expected) << text;
    }
  }
  EXPECT_GT(blocked, 100);
}

TEST(PlaneFormulas, GraphWordsAreSamplesOfTheStoredGraphsWhateverTheirCount) {
  PlaneBench b;
  b.host.graphCount = 1;  // G3 compiles all the same and reads its slot
  ASSERT_NE(b.Compile("G1+10*G3"), formula::kErrorResult);
  std::vector<float> g1(9 * 9), g3(9 * 9, 0.0f);
  for (std::size_t k = 0; k < g1.size(); ++k) g1[k] = static_cast<float>(k) * 0.5f;
  formula::Evaluator ev = b.Evaluator(0.125);
  ev.planes[0] = g1.data();
  ev.planes[2] = g3.data();
  ev.planeStride = 9;
  EXPECT_EQ(ev.Eval2(3, 2, 0.0, 0.0), g1[2 * 9 + 3]);
  g3[2 * 9 + 3] = 1.0f;
  EXPECT_EQ(ev.Eval2(3, 2, 0.0, 0.0), g1[2 * 9 + 3] + 10.0f);
  ev.planes[2] = nullptr;  // an empty slot reads 0
  EXPECT_EQ(ev.Eval2(3, 2, 0.0, 0.0), g1[2 * 9 + 3]);
}

TEST(PlaneFormulas, AGraphWordBeforeABracketIsNoCall) {
  // "G1(x)" is the sample times the bracket.
  PlaneBench b;
  ASSERT_NE(b.Compile("G1(x+1)"), formula::kErrorResult);
  std::vector<float> g1(81, 3.0f);
  formula::Evaluator ev = b.Evaluator(0.125);
  ev.planes[0] = g1.data();
  ev.planeStride = 9;
  EXPECT_EQ(ev.Eval2(0, 0, 0.5, 0.0), 4.5);
}

TEST(PlaneFormulas, YIsAVariableNotAParameter) {
  PlaneBench b;
  ASSERT_NE(b.Compile("y*2"), formula::kErrorResult);
  EXPECT_TRUE(b.host.prompts.empty());
  formula::Evaluator ev = b.Evaluator(0.125);
  EXPECT_EQ(ev.Eval2(0, 0, 0.0, 0.375), 0.75);
}

TEST(PlaneFormulas, ValuesOfNumberFieldsAreSinglePrecision) {
  PlaneBench b;
  EXPECT_EQ(b.compiler.VALU("0.1"), static_cast<double>(0.1f));
  EXPECT_EQ(b.compiler.VALU("1/3"), static_cast<double>(1.0f / 3.0f));
  FormulaBench one;
  EXPECT_EQ(one.compiler.VALU("1/3"), 1.0 / 3.0);
}

TEST(PlaneFormulas, EntrIsNoWordHereAndTanhIsNoneInOneVariable) {
  PlaneBench b;
  ASSERT_NE(b.Compile("tanh(x)"), formula::kErrorResult);
  formula::Evaluator ev = b.Evaluator(0.125);
  EXPECT_NEAR(ev.Eval2(0, 0, 0.5, 0.0), std::tanh(0.5), 1e-7);
}

TEST(PlaneFormulas, AResultBeyondSinglePrecisionOverflows) {
  PlaneBench b;
  ASSERT_NE(b.Compile("x*1E30*1E30"), formula::kErrorResult);
  formula::Evaluator ev = b.Evaluator(0.125);
  ev.Eval2(0, 0, 0.5, 0.0);
  EXPECT_EQ(ev.fault(), formula::kOverflow);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// A text whose parameters feed their own letters: the substitution doubles
// it pass by pass until the length limit refuses it, in either language.
// Texts the fuzzers found slow under the sanitizers: each grows pass by
// pass through a parameter that holds its own letter, with chained
// comparisons doubled on every pass, until the length limit refuses it.
TEST(PlaneFormulas, TextsGrownByTheirParametersAreRefusedInBothLanguages) {
  for (const char* seed : {"formula_compiler2/parameters_doubling_in_the_plane.txt",
                           "formula_compiler2/chain_grown_by_a_parameter_in_the_plane.txt",
                           "formula_compiler/chain_grown_by_a_parameter.txt"}) {
    std::ifstream in(std::string(KELDO_SOURCE_DIR "/fuzz/seeds/") + seed, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    ASSERT_FALSE(text.empty()) << seed;
    PlaneBench plane;
    EXPECT_EQ(plane.Compile(text), formula::kErrorResult) << seed;
    FormulaBench line;
    EXPECT_EQ(line.Compile(text), formula::kErrorResult) << seed;
  }
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// A sum over some 35 million terms, found slow by the plane fuzzer: the
// program compiles, and a restart budget ends its Eval with kInvalidCall
// instead of letting it run.
TEST(PlaneFormulas, ASumOfMillionsOfTermsIsCutByTheRestartBudget) {
  std::ifstream in(KELDO_SOURCE_DIR "/fuzz/seeds/formula_compiler2/a_sum_of_35_million_terms_in_the_plane.txt",
                   std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), {});
  ASSERT_FALSE(text.empty());
  // As the fuzzer's host: 64 points, two graphs, prompts answered "2".
  PlaneBench plane(64);
  plane.host.graphCount = 2;
  for (int k = 0; k < 3; ++k) plane.host.answers.push_back("2");
  ASSERT_NE(plane.Compile(text), formula::kErrorResult);
  EXPECT_EQ(plane.state.lower[5], -35716960);
  EXPECT_EQ(plane.state.upper[5], 0);
  formula::Evaluator ev = plane.Evaluator(0.125);
  ev.restartBudget = 1000;
  ev.Eval2(0, 8, -0.5, 0.5);
  EXPECT_EQ(ev.fault(), formula::kInvalidCall);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// A text of some 400 bytes whose parameters grow it into a program of tens
// of thousands of words, found slow by the fuzzer under the sanitizers: it
// compiles, and the linked tape agrees with the walk over it bit for bit.
// A seed of the formula fuzzer compiled as the fuzzer compiles it, on a form
// of 64 points with two graphs and its prompts answered 2 (the text taken as
// a value first when valueFirst), with an evaluator on the tape and one that
// walks the program.
struct SeedRun {
  FormulaBench line;
  formula::Evaluator fast, slow;
};

void PrepareSeed(SeedRun& run, const std::string& seed, bool valueFirst) {
  std::ifstream in(KELDO_SOURCE_DIR "/fuzz/seeds/formula_compiler/" + seed, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), {});
  ASSERT_FALSE(text.empty());
  static const double kGraph[65] = {1.0, 2.0, 3.0};
  FormulaBench& line = run.line;
  line.host.points = 64;
  line.host.graphCount = 2;
  line.host.graphs.points = 64;
  line.host.graphs.entries[0] = {kGraph, -0.5, 0.5, 1.0 / 64};
  line.host.graphs.entries[1] = {kGraph, 0.0, 1.0, 1.0 / 64};
  for (int k = 0; k < 3; ++k) line.host.answers.push_back("2");
  if (valueFirst) {
    std::string value = text;
    line.compiler.VALU(value);
  }
  ASSERT_NE(line.Compile(text), formula::kErrorResult);
  for (formula::Evaluator* ev : {&run.fast, &run.slow}) {
    formula::BindEvaluator(*ev, line.state);
    ev->dx = 1.0 / 64;
    ev->graphs = &line.host.graphs;
  }
  run.slow.useTape = false;
  run.fast.Prepare();
  run.slow.Prepare();
}

void ExpectTapeAndWalkAgree(const std::string& seed, std::size_t words) {
  SeedRun run;
  ASSERT_NO_FATAL_FAILURE(PrepareSeed(run, seed, false));
  EXPECT_GT(run.line.state.compiled.program.size(), words);
  for (double x : {-0.5, 0.25}) {
    const double f = run.fast.Eval(3, x), w = run.slow.Eval(3, x);
    EXPECT_EQ(run.fast.fault(), run.slow.fault());
    EXPECT_EQ(std::memcmp(&f, &w, sizeof f), 0) << f << " " << w;
  }
}

// A point of a block that has met its fault is not passed on to a function:
// here its value, not a number, would have gone to the graph lookup of
// G1(, which the walk never gives such a value.
TEST(Formulas, AFaultedPointOfABlockGoesNoFurther) {
  SeedRun run;
  ASSERT_NO_FATAL_FAILURE(PrepareSeed(run, "a_faulted_point_of_a_block_reading_a_graph", true));
  ASSERT_TRUE(run.fast.RunsInBlocks());
  std::vector<double> xs(70);
  for (std::size_t k = 0; k < xs.size(); ++k) xs[k] = -0.5 + static_cast<double>(k) / 64.0;
  const int fine = testing::ExpectRunAgreesWithWalk(run.fast, run.slow, xs, "the seed");
  EXPECT_LT(fine, 70);  // the formula does meet a fault
  // The graph lookup itself gives 0 for a value that is not a number.
  EXPECT_EQ(formula::GFUNC1(std::nan(""), run.line.host.graphs.entries[0], 64), 0.0);
}

TEST(Formulas, AProgramGrownToTensOfThousandsOfWordsRunsTheSameOnTapeAndWalk) {
  ExpectTapeAndWalkAgree("a_program_of_45000_words.txt", 40000);
  // A second one, whose compile is the slow part under the sanitizers.
  ExpectTapeAndWalkAgree("a_program_of_27000_words_slow_to_compile.txt", 25000);
}

}  // namespace
}  // namespace keldo

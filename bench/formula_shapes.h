#pragma once
// The formula shapes both formula benchmarks run: bench_formula times each
// point by point against muparser, bench_plot from Go to the drawn graph.

namespace keldo::bench {

struct FormulaShape {
  const char* name;
  const char* formula;
};

// The sixth reads stored graph 1, which each benchmark provides.
inline constexpr FormulaShape kFormulaShapes[] = {
    {"Polynomial", "3*X^4-2*X^3+X^2-5*X+7"},
    {"Trig", "SIN(X)*COS(2*X)+TAN(X/3)-ATN(X)+EXP(-X^2)"},
    {"Nested", "((((((X+1)*2-3)/4+5)*6-7)/8+9)*X)"},
    {"ChainedInequality", "-0.5<X<=0.5"},
    {"SumI", "SUMI(SIN(I*X)/I)\\I=1,20"},
    {"GraphReference", "EXP(-X^2/2)*G1(X)+SIN(3*X)"},
};

}  // namespace keldo::bench

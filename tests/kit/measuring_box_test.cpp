// The measuring box on a small form of the test's own, with a fake source
// whose measures are fixed numbers: the labels, the result text, and the
// overflow and division-by-zero reports.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/form_context.h"
#include "kit/measuring_box.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const MeasuringBoxStyle kOneVariable{"Graph:",
                                     {"Sup norm", "Var-Norm", "Power norm.  Power:"},
                                     "ChkNormalized",
                                     "Normalized",
                                     "",
                                     false,
                                     false,
                                     false,
                                     true,
                                     GraphNumberRules{},
                                     AnyBadNumber(1),
                                     "Remarks(1)"};

const MeasuringBoxStyle kTwoVariables{"Graph 1:",
                                      {"Sup-Norm", "Var-Norm", "Power Norm.  Power:"},
                                      "ChkNormalize",
                                      "Normalize",
                                      "Divides.",
                                      true,
                                      true,
                                      true,
                                      false,
                                      GraphNumberRules{},
                                      GraphNumberRules{},
                                      "txtStats"};

class BoxForm final : public Form {
 public:
  BoxForm(FormContext& context, const MeasuringBoxStyle& style) : Form(context, FormKind::Graph2) {
    controls_.Add("TxtAnGr1", ControlKind::Text, "1");
    controls_.Add("TxtGraphStat", ControlKind::Text, "1");
    controls_.Add(style.statisticsOutput, ControlKind::Text, "");
    AddMeasuringControls(controls_, style);
  }
  std::string Result() const { return controls().Text("AnalysisText"); }
};

// Graph k is the number in its field, read with the leading number alone;
// every measure returns the number set for it and notes what it was asked.
class FakeSource final : public MeasureSource {
 public:
  explicit FakeSource(BoxForm& form) : form_(form) {}
  int Graph(const std::string& field, const GraphNumberRules&) override {
    const int g = static_cast<int>(std::atof(form_.controls().Text(field).c_str())) - 1;
    log.push_back(field + " " + std::to_string(g));
    return g;
  }
  double Number(const std::string& text) override { return std::atof(text.c_str()); }
  bool Compatible(int, int) override {
    log.push_back("compatible");
    return compatible;
  }
  double Integral(int) override {
    textWhileMeasuring = form_.Result();
    return integral;
  }
  double ScalarProduct(int, int) override { return product; }
  double Norm(int g, int minus, MeasureNorm kind, double p) override {
    textWhileMeasuring = form_.Result();
    log.push_back("norm " + std::to_string(g) + " " + std::to_string(minus) + " " +
                  std::to_string(static_cast<int>(kind)) + " " + std::to_string(p));
    return norm;
  }
  double Normalized(int, double value, double) override { return value / 4; }
  double Relative(int, int, double difference, MeasureNorm, double, bool& divisionByZero) override {
    divisionByZero = base == 0;
    return divisionByZero ? 0 : difference / base;
  }
  std::string SignalToNoise(int g, int g2) override { return "SNR of " + std::to_string(g) + std::to_string(g2); }
  int Statistics(int, std::string& report) override {
    report = "Maximum = 1";
    return statistics;
  }

  std::vector<std::string> log;
  std::string textWhileMeasuring;
  bool compatible = true;
  double integral = 0.5, product = 0.25, norm = 3, base = 2;
  int statistics = 0;

 private:
  BoxForm& form_;
};

struct Box {
  explicit Box(const MeasuringBoxStyle& s) : style(s), form(t.frame, s), source(form) {}
  std::string Run(const std::string& title) {
    RunMeasure(form, source, title, style);
    return form.Result();
  }
  void Set(const std::string& name, const std::string& value) { form.controls().SetFromUser(name, value); }
  TestFrame t;
  const MeasuringBoxStyle& style;
  BoxForm form;
  FakeSource source;
};

TEST(MeasuringBox, LabelsTheMeasuresAndWritesTheirValues) {
  Box b(kOneVariable);
  EXPECT_EQ(b.Run("Integral"), "Integral\r\n0.5");
  EXPECT_EQ(b.Run("Scalar product"), "Scalar product\r\n0.25");
  b.Set("NormPower", "1.5");
  EXPECT_EQ(b.Run("Norm"), "1.5-Norm\r\n3");
  b.Set("ChkNormalized", "1");
  EXPECT_EQ(b.Run("Norm"), "Normalized 1.5-Norm\r\n0.75");
  b.Set("OptSupNorm", "1");
  EXPECT_EQ(b.Run("Norm"), "Sup-Norm\r\n3");  // only a power norm is normalized
  b.Set("OpVarNorm", "1");
  EXPECT_EQ(b.Run("Norm difference"), "Var-Norm difference\r\n3");
  b.Set("RelNorm", "1");
  EXPECT_EQ(b.Run("Norm difference"), "Relative Var-Norm difference\r\n1.5");
  EXPECT_TRUE(b.t.lines.empty());
}

TEST(MeasuringBox, ReadsTheSecondGraphForTwoGraphMeasuresOnly) {
  Box b(kOneVariable);
  b.form.controls().SetText("TxtAnGr2", "3");
  b.Run("Norm");
  b.Run("Norm difference");
  EXPECT_EQ(b.source.log, (std::vector<std::string>{"TxtAnGr1 0", "norm 0 -1 2 2.000000", "TxtAnGr1 0", "TxtAnGr2 2",
                                                    "compatible", "norm 0 2 2 2.000000"}));
}

TEST(MeasuringBox, ReportsADivisionByZeroOfARelativeDifference) {
  Box b(kOneVariable);
  b.Set("RelNorm", "1");
  b.source.base = 0;
  EXPECT_EQ(b.Run("Norm difference"), "Relative 2-Norm difference error.  Division by zero");
  b.Set("OptSupNorm", "1");
  EXPECT_EQ(b.Run("Norm difference"), "Relative Sup-Norm difference error.  Division by zero");
}

TEST(MeasuringBox, ReportsAnOverflowOfADifferenceAndWithTheStyleOfEveryMeasure) {
  Box one(kOneVariable);
  one.source.norm = kInfinity;
  one.source.integral = -kInfinity;
  EXPECT_EQ(one.Run("Norm difference"), "2-Norm difference error.  Overflow");
  one.Set("RelNorm", "1");
  one.source.base = 0.5;
  EXPECT_EQ(one.Run("Norm difference"), "Relative 2-Norm difference error.  Overflow");
  // The one-variable box writes what a plain measure gives, whatever it is.
  EXPECT_EQ(one.Run("Norm"), "2-Norm\r\nINF");
  EXPECT_EQ(one.Run("Integral"), "Integral\r\n-INF");

  Box two(kTwoVariables);
  two.source.norm = kInfinity;
  two.source.integral = std::nan("");
  EXPECT_EQ(two.Run("Norm"), "2-Norm error.  Overflow");
  EXPECT_EQ(two.Run("Integral"), "Integral error.  Overflow");
  two.Set("OpVarNorm", "1");
  EXPECT_EQ(two.Run("Norm difference"), "Var-Norm difference error.  Overflow");
}

TEST(MeasuringBox, TheTwoVariableStyleChecksTheGraphsShowsProgressAndGivesTheSNR) {
  Box b(kTwoVariables);
  b.source.compatible = false;
  b.form.controls().SetText("AnalysisText", "before");
  EXPECT_EQ(b.Run("Scalar product"), "before");
  EXPECT_EQ(b.Run("Integral"), "Integral\r\n0.5");  // one graph: nothing to check
  EXPECT_EQ(b.source.textWhileMeasuring, "Computing...");
  b.Run("Norm");
  EXPECT_EQ(b.source.textWhileMeasuring, "Computing.....");
  b.source.compatible = true;
  b.Set("OpSNR", "1");
  b.form.controls().SetText("TxtAnGr2", "2");
  EXPECT_EQ(b.Run("Norm difference"), "SNR of 01");
}

TEST(MeasuringBox, ABadGraphNumberLeavesTheResultAlone) {
  Box b(kOneVariable);
  b.form.controls().SetText("AnalysisText", "before");
  b.form.controls().SetText("TxtAnGr2", "0");
  EXPECT_EQ(b.Run("Scalar product"), "before");
  EXPECT_EQ(b.source.log, (std::vector<std::string>{"TxtAnGr1 0", "TxtAnGr2 -1"}));
}

TEST(MeasuringBox, ShowsTheFieldsOfEachMeasure) {
  Box b(kTwoVariables);
  ControlModel& c = b.form.controls();
  const auto visible = [&c](std::initializer_list<const char*> names) {
    std::string out;
    for (const char* name : names) out += c[name].visible ? "1" : "0";
    return out;
  };
  const auto fields = {"TxtAnGr2", "OptSupNorm", "NormPower", "OpSNR", "ChkNormalize", "RelNorm"};
  ShowMeasuringFields(c, "Norm difference", kTwoVariables);
  EXPECT_EQ(visible(fields), "111101");
  ShowMeasuringFields(c, "Scalar product", kTwoVariables);
  EXPECT_EQ(visible(fields), "100000");
  // The SNR belongs to a difference: a norm falls back on the power norm.
  b.Set("OpSNR", "1");
  ShowMeasuringFields(c, "Norm", kTwoVariables);
  EXPECT_EQ(visible(fields), "011010");
  EXPECT_EQ(c["OptPowerNorm"].value, 1);
  EXPECT_EQ(c["OpSNR"].value, 0);
  EXPECT_TRUE(c["AnalysisText"].visible);

  Box one(kOneVariable);
  ShowMeasuringFields(one.form.controls(), "Histogram", kOneVariable);
  EXPECT_FALSE(one.form.controls()["AnalysisText"].visible);
  EXPECT_FALSE(one.form.controls()["ChkNormalized"].visible);
  EXPECT_FALSE(one.form.controls().Has("OpSNR"));
}

TEST(MeasuringBox, StatisticsShowTheReportOrTheMessage) {
  Box b(kOneVariable);
  RunStatistics(b.form, b.source, kOneVariable);
  EXPECT_EQ(b.form.controls().Text("Remarks(1)"), "Maximum = 1");
  b.form.controls().SetText("Remarks(1)", "");
  b.source.statistics = 55;
  RunStatistics(b.form, b.source, kOneVariable);
  b.source.statistics = -1;
  RunStatistics(b.form, b.source, kOneVariable);
  EXPECT_EQ(b.form.controls().Text("Remarks(1)"), "");
  EXPECT_EQ(b.t.lines, std::vector<std::string>{"message 55: Error computing statistics."});
}

}  // namespace
}  // namespace keldo

// "Denoise (median)" and "Denoise (adaptive median)" of the two-dimensional
// form, through the analysis panel, on the graph of 65 by 65 samples that
// tests/data/make_median_image.py filtered with numpy.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "form2d/graph2_form.h"
#include "form2d_driver.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::NewForm;
using testing::Sample;
using testing::TestFrame;

std::map<std::string, std::vector<float>> GraphData() {
  std::map<std::string, std::vector<float>> out;
  std::ifstream in(KELDO_TEST_DATA "/median_graph.tsv");
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream words(line);
    std::string name;
    int rows = 0, cols = 0;
    words >> name >> rows >> cols;
    double v = 0;
    while (words >> v) out[name].push_back(static_cast<float>(v));
  }
  return out;
}

// A form of side 64 holding the test graph over [0, 64].
Graph2Form& FormWithGraph(TestFrame& t, const std::vector<float>& values) {
  Graph2Form& f = NewForm(t, 64);
  f.DisplayFunction(64, values.data(), 65, 0.0f, 64.0f, 1.0f);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  return f;
}

TEST(Graph2Median, BothEntriesMakeANewGraphOfNumpysValuesAndKeepTheSource) {
  const auto data = GraphData();
  ASSERT_EQ(data.at("input").size(), 65u * 65u);
  for (const auto& [menu, title, name] :
       {std::tuple{"mnuDenoiseMedian", "Denoise (median)", "median"},
        std::tuple{"mnuDenoiseAdaptiveMedian", "Denoise (adaptive median)", "adaptive"}}) {
    TestFrame t;
    Graph2Form& f = FormWithGraph(t, data.at("input"));
    ASSERT_TRUE(f.controls()[menu].enabled);
    f.RunMenu(menu);
    EXPECT_EQ(f.controls().Text("AnalysisLabel"), title);
    EXPECT_FALSE(f.controls()["TxtAnGr2"].visible);
    f.controls().SetText("TxtAnGr1", "1");
    ASSERT_TRUE(f.Go());
    ASSERT_EQ(f.NumGraphsPlotted(), 2) << name;
    const std::vector<float>& want = data.at(name);
    const std::vector<float>& source = data.at("input");
    for (int i = 0; i <= 64; ++i)
      for (int j = 0; j <= 64; ++j) {
        const std::size_t k = static_cast<std::size_t>(i) * 65 + static_cast<std::size_t>(j);
        ASSERT_EQ(Sample(f, 1, i, j), want[k]) << name << " " << i << " " << j;
        ASSERT_EQ(Sample(f, 0, i, j), source[k]);
      }
    EXPECT_EQ(f.GraphLeft(1), 0.0f);
    EXPECT_EQ(f.GraphRight(1), 64.0f);
    EXPECT_EQ(f.GraphStep(1), 1.0f);
    EXPECT_TRUE(t.lines.empty());
  }
}

TEST(Graph2Median, ABadGraphNumberIsReportedAndMakesNoGraph) {
  const auto data = GraphData();
  TestFrame t;
  Graph2Form& f = FormWithGraph(t, data.at("input"));
  f.RunMenu("mnuDenoiseMedian");
  f.controls().SetText("TxtAnGr1", "3");
  ASSERT_TRUE(f.Go());
  f.controls().SetText("TxtAnGr1", "0");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 1: Insufficient number of graphs.",
                                               "message 3: Improper graph specification."}));
}

TEST(Graph2Median, AConstantGraphComesBackTheSame) {
  TestFrame t;
  Graph2Form& f = FormWithGraph(t, std::vector<float>(65 * 65, -2.5f));
  f.RunMenu("mnuDenoiseAdaptiveMedian");
  f.controls().SetText("TxtAnGr1", "1");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 8)
    for (int j = 0; j <= 64; ++j) ASSERT_EQ(Sample(f, 1, i, j), -2.5f);
}

}  // namespace
}  // namespace keldo

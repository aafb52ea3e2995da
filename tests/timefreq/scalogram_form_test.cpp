// The scalogram form driven as a person would: from a one-dimensional
// form's Graph menu, through its boxes, to its file and the forms it makes.
// The rows themselves are checked against direct sums in the wavelet tests;
// here the form must hand the box's settings to that computation and keep
// what it gives.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "fourier/percussion.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "form1d_driver.h"
#include "test_frame.h"
#include "timefreq/scalogram_form.h"
#include "timefreq/spectrogram_form.h"
#include "wavelet/scalogram_view.h"

namespace keldo {
namespace {

using form1d::Graph1Form;
using testing::NewGraphForm;
using testing::Plot;
using testing::TestFrame;
using timefreq::ScalogramForm;
using timefreq::SpectrogramForm;

ScalogramForm& OpenScalogram(TestFrame& t, Graph1Form& f) {
  f.RunMenu("mnuScalogram");
  f.controls().SetText("TxtGraphStat", "1");
  EXPECT_TRUE(f.Go());
  ScalogramForm* s = FormAs<ScalogramForm>(t.frame.OpenForms().back());
  EXPECT_NE(s, nullptr);
  return *s;
}

void SetFields(ScalogramForm& s, const std::string& o, const std::string& v, const std::string& w,
               const std::string& freq, int wavelet) {
  ASSERT_TRUE(s.controls().SetFromUser("WavScgType", s.controls()["WavScgType"].items[wavelet - 1]));
  s.controls().SetText("txtScalogram(0)", o);
  s.controls().SetText("txtScalogram(1)", v);
  s.controls().SetText("txtScalogram(2)", w);
  s.controls().SetText("txtScalogram(3)", freq);
}

bool Compute(ScalogramForm& s, const std::string& o, const std::string& v, const std::string& w,
             const std::string& freq, int wavelet) {
  s.RunMenu("mnuScalogram");
  SetFields(s, o, v, w, freq, wavelet);
  s.Go();
  return s.Present();
}

// The same transform straight from the wavelet library.
wavelet::Scalogram Direct(const ScalogramForm& s, int o, int v, double w, double freq, int wavelet) {
  wavelet::ScalogramSetup setup;
  setup.a = s.Setup().a;
  setup.b = s.Setup().b;
  setup.octaves = o;
  setup.voices = v;
  setup.width = w;
  setup.freq = freq;
  setup.wavelet = static_cast<wavelet::ScalWavelet>(wavelet);
  wavelet::Scalogram out;
  const auto go = [](int) { return wavelet::ScalogramProgress::Continue; };
  if (wavelet == 5) wavelet::ComputeComplexScalogram(s.Signal().data(), s.Points(), setup, go, out);
  else wavelet::ComputeRealScalogram(s.Signal().data(), s.Points(), setup, go, out);
  return out;
}

const GraphSummary* GraphNamed(const std::vector<GraphSummary>& graphs, const std::string& name) {
  for (const GraphSummary& g : graphs)
    for (const GraphSummary::Field& field : g.fields)
      if (field.name == "name" && field.text == name) return &g;
  return nullptr;
}

TEST(ScalogramForm, AGraphOpensItsScalogramWithTheBoxAndTheFrameDefaults) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 256);
  Plot(f, "sin(40*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  EXPECT_EQ(s.Caption(), "Scalogram  1");
  EXPECT_EQ(t.frame.Current(), &s);
  EXPECT_TRUE(s.controls()["PicSideBox(0)"].visible);
  EXPECT_EQ(s.controls().Text("txtScalogram(0)"), "8");
  EXPECT_EQ(s.controls().Text("txtScalogram(1)"), "16");
  EXPECT_EQ(s.controls().Text("txtScalogram(2)"), "1");
  EXPECT_EQ(s.controls().Text("txtScalogram(3)"), "1");
  EXPECT_EQ(s.controls()["WavScgType"].items,
            (std::vector<std::string>{"1. Mexican hat (real)", "2. Haar (real)", "3. Gabor cosine (real)",
                                      "4. Gabor sine (real)", "5. Gabor (complex)"}));
  EXPECT_EQ(s.controls().Text("GoButton(3)"), "Compute");
  EXPECT_FALSE(s.Present());
  ASSERT_EQ(s.Signal().size(), 257u);
  EXPECT_EQ(s.Signal()[100], f.GraphValues(0)[100]);
}

TEST(ScalogramForm, TheFieldsAreCheckedInOrderWithTheirMessages) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 64);
  Plot(f, "x");
  ScalogramForm& s = OpenScalogram(t, f);
  struct Case {
    const char *o, *v, *w, *freq;
    int wavelet;
    const char* line;
    const char* focus;
  };
  const Case cases[] = {
      {"0", "1", "1", "1", 1, "message 58: Number of octaves must be at least 1.", "txtScalogram(0)"},
      {"257", "1", "1", "1", 1, "message 59: Number of octaves must be no more than 256.", "txtScalogram(0)"},
      {"2", "0", "-1", "1", 1, "message 60: Number of voices must be at least 1.", "txtScalogram(1)"},
      {"256", "2", "1", "1", 1, "message 61: Too many voices.", "txtScalogram(1)"},
      {"16", "17", "1", "1", 3, "message 61: Too many voices.", "txtScalogram(1)"},
      {"2", "2", "0", "0", 3, "message 62: Width must be positive.", "txtScalogram(2)"},
      {"2", "2", "1", "0", 3, "message 63: Freq. must be positive.", "txtScalogram(3)"},
      {"2", "2", "1", "-1", 5, "message 63: Freq. must be positive.", "txtScalogram(3)"},
      {"x+", "2", "1", "1", 1, "message 58: Number of octaves must be at least 1.", "txtScalogram(0)"},
  };
  for (const Case& c : cases) {
    t.lines.clear();
    EXPECT_FALSE(Compute(s, c.o, c.v, c.w, c.freq, c.wavelet)) << c.line;
    EXPECT_EQ(t.lines, std::vector<std::string>{c.line});
    EXPECT_EQ(FocusRequested(s.controls()), c.focus) << c.line;
  }
  // 256 octaves of one voice is allowed; the frequency is not read by the
  // Mexican hat and the Haar wavelet.
  t.lines.clear();
  EXPECT_TRUE(Compute(s, "256", "1", "1", "-5", 1));
  EXPECT_EQ(s.Matrices().shape.nscales, 256);
  EXPECT_TRUE(Compute(s, "2", "2", "1", "nonsense", 2));
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(s.controls().Text("GoButton(3)"), "Compute");
  EXPECT_EQ(s.controls().Text("LabStatus"), "");
}

TEST(ScalogramForm, EachWaveletGivesTheLibrarysRowsAndTheDumpShowsThem) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "sin(60*x)*exp(-x*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  for (int wavelet = 1; wavelet <= 5; ++wavelet) {
    ASSERT_TRUE(Compute(s, "3", "4", "0.5", "2", wavelet)) << wavelet;
    const wavelet::Scalogram direct = Direct(s, 3, 4, 0.5, 2, wavelet);
    EXPECT_EQ(s.Matrices().re, direct.re) << wavelet;
    const std::vector<GraphSummary> graphs = s.Graphs();
    const GraphSummary* real = GraphNamed(graphs, "real");
    ASSERT_NE(real, nullptr);
    EXPECT_EQ(real->rows, 13);
    EXPECT_EQ(real->values.size(), 13u * 129u);
    EXPECT_EQ(real->values, direct.re);
    const GraphSummary* imag = GraphNamed(graphs, "imag");
    if (wavelet == 5) {
      ASSERT_NE(imag, nullptr);
      EXPECT_EQ(imag->values, direct.im);
    } else {
      EXPECT_EQ(imag, nullptr);
    }
    const GraphSummary* display = GraphNamed(graphs, "display");
    ASSERT_NE(display, nullptr);
    EXPECT_EQ(display->values.size(), 13u * 129u);
    std::string waveletText;
    for (const GraphSummary::Field& field : real->fields)
      if (field.name == "wavelet") waveletText = field.text;
    EXPECT_EQ(waveletText, s.controls()["WavScgType"].items[static_cast<std::size_t>(wavelet - 1)]);
  }
  EXPECT_EQ(s.Modifications().All(), std::vector<std::string>{"B"});
}

TEST(ScalogramForm, TheDisplayOfARealScalogramPutsZeroAt128) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "0");
  ScalogramForm& s = OpenScalogram(t, f);
  for (int mode = 0; mode < 4; ++mode) {
    ASSERT_TRUE(Compute(s, "2", "2", "1", "1", 1));
    s.RunMenu("mnuDisplayStyle");
    ASSERT_TRUE(s.controls().SetFromUser("OpMag(" + std::to_string(mode) + ")", "1"));
    s.ControlChanged("OpMag(" + std::to_string(mode) + ")");
    const std::vector<GraphSummary> graphs = s.Graphs();
    const GraphSummary* display = GraphNamed(graphs, "display");
    ASSERT_NE(display, nullptr);
    ASSERT_EQ(display->values.size(), 3u * 5u * 129u / 3u);
    for (double level : display->values) ASSERT_EQ(level, 128.0) << mode;
  }
}

TEST(ScalogramForm, ThresholdsAreCheckedListedAndAboveTheMaximumEmptyThePicture) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "sin(60*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "3", "2", "0.5", "1", 1));
  s.RunMenu("mnuThreshold");
  const double maximum = wavelet::FAbsMax(s.Matrices());
  for (const auto& [text, line] : std::vector<std::pair<std::string, std::string>>{
           {"-1", "message 11: Threshold value cannot be negative."},
           {"log(-1)", "message 10: Error in specifying threshold value."}}) {
    t.lines.clear();
    s.controls().SetText("txtThreshold", text);
    s.Go();
    EXPECT_EQ(t.lines, std::vector<std::string>{line}) << text;
  }
  EXPECT_EQ(s.Modifications().All(), std::vector<std::string>{"B"});
  const std::string above = std::to_string(maximum * 1.01);
  s.controls().SetText("txtThreshold", above);
  ASSERT_TRUE(s.Go());
  const wavelet::Scalogram& m = s.Matrices();
  for (int r = 1; r <= m.shape.nscales; ++r)
    for (int c = 0; c <= m.shape.n; ++c) ASSERT_EQ(m.Re(r, c), 0.0) << r << " " << c;
  EXPECT_EQ(s.Modifications().All(), (std::vector<std::string>{"B", "T:" + above}));
  EXPECT_EQ(s.controls().Text("txtModReport"), "1. Threshold\r\nValue: " + above + "\r\n");
}

TEST(ScalogramForm, AFormulaReshapesTheMagnitudeAndKeepsTheSign) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "sin(60*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "2", "2", "0.5", "1", 1));
  const std::vector<double> before = s.Matrices().re;
  s.RunMenu("mnuPlot");
  s.controls().SetText("Formula", "2*g1");
  ASSERT_TRUE(s.Go());
  const std::vector<double>& after = s.Matrices().re;
  // g1 is the magnitude in single precision, as the formula planes hold it.
  for (std::size_t k = 0; k < before.size(); ++k) ASSERT_NEAR(after[k], 2 * before[k], 2e-7 * std::fabs(before[k]));
  EXPECT_EQ(s.Modifications().All(), (std::vector<std::string>{"B", "G:2*g1"}));
  // Restore computes again from the signal.
  s.RunMenu("mnuRestore");
  EXPECT_EQ(s.Matrices().re, before);
  EXPECT_EQ(s.Modifications().All(), std::vector<std::string>{"B"});
}

TEST(ScalogramForm, AStopLeavesTheFormerScalogram) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(60*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "2", "4", "0.5", "1", 1));
  const std::vector<double> former = s.Matrices().re;
  int yields = 0;
  t.platform.eventLoop.SetHook([&] {
    ++yields;
    EXPECT_EQ(s.controls().Text("GoButton(3)"), "Stop");
    EXPECT_EQ(s.controls().Text("LabStatus"), "Computing scalogram...");
    s.Click("GoButton(3)");  // the Go button reads Stop
  });
  s.RunMenu("mnuScalogram");
  SetFields(s, "4", "8", "0.5", "1", 3);
  s.Go();
  t.platform.eventLoop.SetHook(nullptr);
  EXPECT_EQ(yields, 1);
  EXPECT_EQ(s.controls().Text("GoButton(3)"), "Compute");
  EXPECT_EQ(s.controls().Text("LabStatus"), "");
  ASSERT_TRUE(s.Present());
  EXPECT_EQ(s.Matrices().re, former);
  EXPECT_EQ(s.Setup().octaves, 2);
}

TEST(ScalogramForm, EveryFourthRowLetsTheUserInterfaceRun) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "x");
  ScalogramForm& s = OpenScalogram(t, f);
  const long long before = t.platform.eventLoop.Count();
  ASSERT_TRUE(Compute(s, "3", "4", "1", "1", 5));
  EXPECT_EQ(t.platform.eventLoop.Count() - before, 3);  // rows 4, 8 and 12
}

TEST(ScalogramForm, EachWaveletKeepsItsLastFieldsInTheFrame) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "x");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "3", "5", "0.25", "2", 3));
  EXPECT_EQ(t.frame.settings().scalogramParams[0][3], "3");
  EXPECT_EQ(t.frame.settings().scalogramParams[2][3], "0.25");
  ASSERT_TRUE(s.controls().SetFromUser("WavScgType", "1. Mexican hat (real)"));
  s.ControlChanged("WavScgType");
  EXPECT_EQ(s.controls().Text("txtScalogram(0)"), "8");
  ASSERT_TRUE(s.controls().SetFromUser("WavScgType", "3. Gabor cosine (real)"));
  s.ControlChanged("WavScgType");
  EXPECT_EQ(s.controls().Text("txtScalogram(0)"), "3");
  EXPECT_EQ(s.controls().Text("txtScalogram(1)"), "5");
  EXPECT_EQ(s.controls().Text("txtScalogram(3)"), "2");
}

TEST(ScalogramForm, SlicesAndInversionsGoToNewOneDimensionalForms) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 256);
  Plot(f, "sin(60*x)*exp(-4*x*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "4", "4", "0.5", "1", 1));
  // The pointer over the sample at x = 0 and row 5 (octave 1).
  ASSERT_TRUE(s.Mouse(MouseAction::Down, 0.0, 1.0, MouseButton::Left));
  EXPECT_NE(s.controls().Text("labSigValues").find("t = 0"), std::string::npos);
  s.RunMenu("mnuHorizontalSlice");
  auto* row = FormAs<Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(row, nullptr);
  ASSERT_EQ(row->Points(), 256);
  for (int c = 0; c <= 256; ++c) ASSERT_EQ(row->GraphValues(0)[c], s.Matrices().Re(5, c)) << c;
  // A second slice goes to the same form as its next graph.
  ASSERT_TRUE(s.Mouse(MouseAction::Down, 0.0, 2.0, MouseButton::Left));
  s.RunMenu("mnuHorizontalSlice");
  EXPECT_EQ(t.frame.OpenForms().back(), row);
  ASSERT_EQ(row->GraphCount(), 2);
  for (int c = 0; c <= 256; ++c) ASSERT_EQ(row->GraphValues(1)[c], s.Matrices().Re(9, c)) << c;
  // A column of 17 rows does not fit its 256 points.
  s.RunMenu("mnuVerticalSlice");
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 2: Graph data incompatible."});
  EXPECT_EQ(row->GraphCount(), 2);
  t.lines.clear();
  // Once that form is closed, the next slice makes a new one.
  ASSERT_TRUE(t.frame.CloseForm(*row));
  t.frame.CollectClosedForms();
  s.RunMenu("mnuVerticalSlice");
  auto* column = FormAs<Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(column, nullptr);
  EXPECT_EQ(column->Points(), 64);
  for (int r = 0; r <= 16; ++r) ASSERT_EQ(column->GraphValues(0)[r], s.Matrices().Re(r, 128)) << r;
  for (int method = 1; method <= 3; ++method) {
    const std::size_t forms = t.frame.OpenForms().size();
    s.RunMenu("mnuInvert");
    ASSERT_TRUE(s.controls().SetFromUser("OpInvert(" + std::to_string(method) + ")", "1"));
    ASSERT_TRUE(s.Go());
    ASSERT_EQ(t.frame.OpenForms().size(), forms + 1) << method;
    auto* inverse = FormAs<Graph1Form>(t.frame.OpenForms().back());
    ASSERT_NE(inverse, nullptr);
    EXPECT_EQ(inverse->Points(), 256);
    std::vector<double> expected;
    ASSERT_TRUE(wavelet::InvertScalogram(s.Matrices(), s.Setup(), static_cast<wavelet::ScalInversion>(method),
                                         expected));
    for (int i = 0; i <= 256; ++i) ASSERT_EQ(inverse->GraphValues(0)[i], expected[static_cast<std::size_t>(i)]);
  }
  EXPECT_TRUE(t.lines.empty());
}

TEST(ScalogramForm, SavingAndLoadingReproducesAThresholdedScalogramThroughTheList) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 128);
  Plot(f, "sin(60*x)+x");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "3", "3", "0.5", "1.5", 5));
  s.RunMenu("mnuThreshold");
  s.controls().SetText("txtThreshold", "0.5");
  ASSERT_TRUE(s.Go());
  s.RunMenu("mnuDisplayStyle");
  ASSERT_TRUE(s.controls().SetFromUser("OpMag(1)", "1"));
  s.ControlChanged("OpMag(1)");
  ASSERT_TRUE(s.controls().SetFromUser("OpView(1)", "1"));
  s.ControlChanged("OpView(1)");
  const std::string path = (testing::UniqueTempPath("keldo_scalogram_test.scg")).string();
  t.platform.fileDialog.QueueAnswer(path);
  s.RunMenu("mnuSaveAs");
  ASSERT_TRUE(std::filesystem::exists(path));
  Form* loaded = t.frame.OpenFormFile(FormKind::Scalogram, path, "saved.scg");
  std::filesystem::remove(path);
  ASSERT_NE(loaded, nullptr);
  auto* l = FormAs<ScalogramForm>(loaded);
  ASSERT_NE(l, nullptr);
  EXPECT_EQ(l->Caption(), "saved.scg");
  EXPECT_EQ(l->Modifications().All(), (std::vector<std::string>{"B", "T:0.5"}));
  EXPECT_EQ(l->Matrices().re, s.Matrices().re);
  EXPECT_EQ(l->Matrices().im, s.Matrices().im);
  EXPECT_EQ(l->controls().Text("txtInformation"), s.controls().Text("txtInformation"));
  EXPECT_EQ(l->controls().Text("WavScgType"), "5. Gabor (complex)");
  EXPECT_EQ(l->controls().Text("txtScalogram(3)"), "1.5");
  EXPECT_NE(l->controls()["OpMag(1)"].value, 0);
  EXPECT_NE(l->controls()["OpView(1)"].value, 0);
  EXPECT_EQ(GraphNamed(l->Graphs(), "display")->values, GraphNamed(s.Graphs(), "display")->values);
  EXPECT_TRUE(t.lines.empty());
}

TEST(ScalogramForm, APercussionScalogramOpensTheTrainAndItsScalogramThatPlaysTheTrack) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  // Bursts of a tone, again and again.
  Plot(f, "sin(300*x)*(sin(60*x) > 0.7)");
  f.controls().SetText("TxtSound(1)", "11025");
  f.RunMenu("mnuSpectrogram");
  f.controls().SetText("TxtGraphStat", "1");
  ASSERT_TRUE(f.Go());
  auto* s = FormAs<SpectrogramForm>(t.frame.OpenForms().back());
  ASSERT_NE(s, nullptr);
  s->controls().SetText("SpSetting(0)", "64");
  s->controls().SetText("SpSetting(1)", "16");
  ASSERT_TRUE(s->Go());
  ASSERT_TRUE(s->Present());
  const fourier::SpectrogramShape shape = s->Spectrum().shape;
  ASSERT_EQ(shape.ncols, 65);
  const std::size_t forms = t.frame.OpenForms().size();
  s->RunMenu("mnuPercussion");
  ASSERT_EQ(t.frame.OpenForms().size(), forms + 2);
  // The train of 65 columns on a graph of 128 intervals, a column step apart.
  const int n = 128;
  const std::vector<double> train = fourier::PercussionTrain(s->Spectrum(), n);
  auto* trainForm = FormAs<Graph1Form>(t.frame.OpenForms()[forms]);
  ASSERT_NE(trainForm, nullptr);
  ASSERT_EQ(trainForm->Points(), n);
  const double step = 16 * f.GraphStep(0);
  EXPECT_NEAR(trainForm->GraphStep(0), step, 1e-15);
  for (int i = 0; i <= n; ++i) ASSERT_EQ(trainForm->GraphValues(0)[i], train[static_cast<std::size_t>(i)]) << i;
  int pulses = 0;
  for (int i = 1; i <= n; ++i) pulses += train[static_cast<std::size_t>(i)] == 1.0 && train[static_cast<std::size_t>(i - 1)] != 1.0;
  EXPECT_GE(pulses, 3);
  EXPECT_EQ(trainForm->controls().Text("TxtSound(1)"), "11025");
  // Its scalogram: the complex Gabor wavelet with the settings of the
  // pulses' rate, ready to compute; it plays the drum track itself.
  auto* scalogram = FormAs<ScalogramForm>(t.frame.OpenForms()[forms + 1]);
  ASSERT_NE(scalogram, nullptr);
  EXPECT_EQ(t.frame.Current(), scalogram);
  EXPECT_EQ(scalogram->Signal(), std::vector<double>(train.begin(), train.end()));
  EXPECT_EQ(scalogram->AudioSignal(), s->Signal());
  const fourier::PercussionSettings settings =
      fourier::PercussionScalogramSettings(n, n * step, fourier::PulseRate(train, step).rate);
  EXPECT_EQ(scalogram->controls().Text("WavScgType"), "5. Gabor (complex)");
  EXPECT_EQ(scalogram->controls().Text("txtScalogram(0)"), std::to_string(settings.octaves));
  EXPECT_EQ(scalogram->controls().Text("txtScalogram(1)"), std::to_string(settings.voices));
  EXPECT_EQ(scalogram->controls().Text("txtScalogram(2)"), PlainNumber(settings.width));
  EXPECT_EQ(scalogram->controls().Text("txtScalogram(3)"), PlainNumber(settings.frequency));
  EXPECT_EQ(settings.octaves * settings.voices <= 256, true);
  EXPECT_TRUE(scalogram->Go());
  EXPECT_TRUE(scalogram->Present()) << (t.lines.empty() ? "" : t.lines.back());
  EXPECT_EQ(scalogram->Setup().wavelet, wavelet::ScalWavelet::GaborComplex);
  // Playing it plays the track at the spectrogram's rate, not the train.
  scalogram->RunMenu("mnuAudio");
  ASSERT_TRUE(scalogram->Go());
  EXPECT_EQ(t.platform.audio.LastSamples().size(), 1025u);
  EXPECT_EQ(t.platform.audio.LastRate(), 11025);
}

TEST(ScalogramForm, PlayingWalksTheScanLineOverThePicture) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(300*x)");
  ScalogramForm& s = OpenScalogram(t, f);
  ASSERT_TRUE(Compute(s, "3", "4", "0.5", "1", 1));
  s.RunMenu("mnuAudio");
  s.controls().SetText("TxtSound(1)", "8000");
  ASSERT_TRUE(s.Go());
  const ScanLine& line = s.PlayScanLine();
  // 1025 samples at 8000 Hz over an undrawn picture of 512 pixels: a step
  // of ceil(512 * 8000 / 51250) = 80 pixels every 20 ms, seven places.
  EXPECT_TRUE(line.Running());
  EXPECT_EQ(line.Timing().stepPixels, 80);
  EXPECT_EQ(line.Timing().intervalMs, 20);
  t.platform.timers.Advance(200);
  EXPECT_EQ(line.Positions(), (std::vector<int>{0, 80, 160, 240, 320, 400, 480}));
  EXPECT_FALSE(line.Running());
  EXPECT_FALSE(line.Visible());
  const std::vector<GraphSummary> graphs = s.Graphs();
  const GraphSummary* signal = GraphNamed(graphs, "signal");
  ASSERT_NE(signal, nullptr);
  bool found = false;
  for (const GraphSummary::Field& field : signal->fields)
    if (field.name == "scanline") {
      found = true;
      EXPECT_EQ(field.numbers, (std::vector<double>{0, 80, 160, 240, 320, 400, 480}));
    }
  EXPECT_TRUE(found);
  // A second play that is stopped ends the line at the next tick.
  ASSERT_TRUE(s.Go());
  t.platform.timers.Advance(40);
  t.platform.audio.Stop();
  t.platform.timers.Advance(20);
  EXPECT_FALSE(line.Running());
  EXPECT_EQ(line.Positions(), (std::vector<int>{0, 80}));
}

}  // namespace
}  // namespace keldo

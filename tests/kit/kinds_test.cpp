// The table of kinds, the named calls between forms, and a revision that
// follows the control model.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kinds/form_kinds.h"
#include "kit/named_calls.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

TEST(FormKinds, EveryKindHasOneRowWithItsWord) {
  const std::vector<std::pair<FormKind, std::string>> expected = {
      {FormKind::Graph1, "1d"},       {FormKind::Graph2, "2d"},           {FormKind::SoundEditor, "audio"},
      {FormKind::Spectrogram, "spectrogram"}, {FormKind::Scalogram, "scalogram"}, {FormKind::Workshop, "workshop"},
      {FormKind::ImageProcessor, "imageproc"}};
  ASSERT_EQ(FormKinds().size(), expected.size());
  ASSERT_EQ(static_cast<int>(expected.size()), kFormKinds);
  for (const auto& [kind, word] : expected) {
    const FormKindInfo* row = FindKind(FormKinds(), kind);
    ASSERT_NE(row, nullptr) << word;
    EXPECT_EQ(row->word, word);
    EXPECT_TRUE(row->maker) << word;
  }
}

TEST(FormKinds, FormFilesAndDataFilesNameOneKindEach) {
  std::set<std::string_view> extensions;
  for (const FormKindInfo& k : FormKinds()) {
    if (!k.formExtension.empty()) {
      EXPECT_TRUE(extensions.insert(k.formExtension).second) << k.formExtension;
    }
    for (std::string_view e : k.dataFiles) EXPECT_TRUE(extensions.insert(e).second) << e;
  }
  EXPECT_EQ(FindKind(FormKinds(), FormKind::Spectrogram)->formExtension, ".spg");
  EXPECT_EQ(FindKind(FormKinds(), FormKind::Scalogram)->formExtension, ".scg");
}

TEST(FormKinds, EveryKindIsMadeWithItsCaption) {
  TestFrame t;
  int code = 0;
  Form* workshop = t.frame.NewForm(FormKind::Workshop, code);
  ASSERT_NE(workshop, nullptr);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(workshop->Kind(), FormKind::Workshop);
  EXPECT_EQ(workshop->Caption(), "Wavelet Image Compression Workshop");
  // Its File menu opens forms and closes it.
  EXPECT_TRUE(workshop->controls()["mnuClose"].enabled);
  EXPECT_TRUE(workshop->controls()["mnuOpenForm"].enabled);
  EXPECT_TRUE(workshop->RunMenu("mnuClose"));
  EXPECT_TRUE(t.frame.OpenForms().empty());
  for (const FormKindInfo& k : FormKinds()) {
    Form* form = t.frame.NewForm(k.kind, code);
    ASSERT_NE(form, nullptr) << k.word;
    EXPECT_EQ(form->Kind(), k.kind);
  }
  EXPECT_EQ(t.frame.OpenForms().size(), FormKinds().size());
  EXPECT_TRUE(t.lines.empty());
}

TEST(FormKinds, NewItemsOfAFormMakeTheKindOfTheirPlace) {
  TestFrame t;
  int code = 0;
  Form* editor = t.frame.NewForm(FormKind::SoundEditor, code);
  ASSERT_NE(editor, nullptr);
  const FormKind expected[] = {FormKind::Graph1, FormKind::Graph2, FormKind::SoundEditor, FormKind::ImageProcessor};
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(editor->RunMenu("mnuNew", i));
    EXPECT_EQ(t.frame.Current()->Kind(), expected[i]) << i;
  }
  // The image processor names its items instead of numbering them.
  Form* processor = t.frame.Current();
  ASSERT_TRUE(processor->RunMenu("mnuNewImageEditor"));
  EXPECT_EQ(t.frame.Current()->Kind(), FormKind::ImageProcessor);
  EXPECT_NE(t.frame.Current(), processor);
  ASSERT_TRUE(processor->RunMenu("mnuNew2Dim"));
  EXPECT_EQ(t.frame.Current()->Kind(), FormKind::Graph2);
}

TEST(FormKinds, TheTwoDimensionalFormOpensTheWorkshopFromItsGraphMenu) {
  TestFrame t;
  int code = 0;
  Form* form = t.frame.NewForm(FormKind::Graph2, code);
  ASSERT_NE(form, nullptr);
  EXPECT_TRUE(form->controls()["mnuWorkshop"].enabled);
  ASSERT_TRUE(form->RunMenu("mnuWorkshop"));
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  EXPECT_EQ(t.frame.Current()->Kind(), FormKind::Workshop);
  EXPECT_TRUE(t.lines.empty());
}

TEST(NamedCalls, AKindThatDoesNotAnswerTheCallLeavesNoForm) {
  TestFrame t;
  EXPECT_EQ(NewFormFor<WaveFileReceiver>(t.frame, FormKind::Graph1), nullptr);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 73: Error loading form."});
  EXPECT_TRUE(t.frame.OpenForms().empty());
}

TEST(NamedCalls, AOneDimensionalResultIsFiledOnANewForm) {
  TestFrame t;
  OneDimensionalReceiver* receiver = NewFormFor<OneDimensionalReceiver>(t.frame, FormKind::Graph1);
  ASSERT_NE(receiver, nullptr);
  std::vector<double> values(65);
  for (int i = 0; i <= 64; ++i) values[static_cast<std::size_t>(i)] = i * 0.5 - 3.0;
  receiver->ShowResult(OneDimensionalResult::Of(64, values, 1.0, 2.0, 1.0 / 64));
  Form& form = FormOf(*receiver);
  EXPECT_EQ(form.Kind(), FormKind::Graph1);
  EXPECT_EQ(form.Points(), 64);
  const std::vector<GraphSummary> graphs = form.Graphs();
  ASSERT_EQ(graphs.size(), 1u);
  EXPECT_EQ(graphs[0].values, values);
  EXPECT_EQ(graphs[0].a, 1.0);
  EXPECT_EQ(graphs[0].b, 2.0);
}

TEST(NamedCalls, AnImageIsFiledOnANewTwoDimensionalForm) {
  TestFrame t;
  ImageReceiver* receiver = NewFormFor<ImageReceiver>(t.frame, FormKind::Graph2);
  ASSERT_NE(receiver, nullptr);
  constexpr int n = 64;
  constexpr std::size_t stride = n + 3;
  std::vector<float> image(stride * (n + 1), -1.0f);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) image[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = float(i * 2 + j);
  ASSERT_TRUE(receiver->DisplayImage(n, image.data(), stride, 0.0f, 1.0f, 1.0f / n));
  const std::vector<GraphSummary> graphs = FormOf(*receiver).Graphs();
  ASSERT_EQ(graphs.size(), 1u);
  ASSERT_EQ(graphs[0].rows, n + 1);
  ASSERT_EQ(graphs[0].values.size(), std::size_t{(n + 1) * (n + 1)});
  for (int i = 0; i <= n; i += 7)
    for (int j = 0; j <= n; j += 5)
      EXPECT_EQ(graphs[0].values[static_cast<std::size_t>(i * (n + 1) + j)], i * 2 + j) << i << "," << j;
}

TEST(Revision, AChangeThroughTheControlModelShowsWithoutTouch) {
  TestFrame t;
  int code = 0;
  Form* form = t.frame.NewForm(FormKind::Graph1, code);
  ASSERT_NE(form, nullptr);
  const unsigned long long before = form->Revision();
  form->controls().SetText("Formula", "sin(x)");
  const unsigned long long afterText = form->Revision();
  EXPECT_GT(afterText, before);
  form->controls()["chkAutoFit"].value = 0;
  EXPECT_GT(form->Revision(), afterText);
  // Reading does not ask for a redraw.
  const unsigned long long settled = form->Revision();
  EXPECT_EQ(std::as_const(*form).controls().Text("Formula"), "sin(x)");
  EXPECT_NE(std::as_const(*form).controls().Find("chkAutoFit"), nullptr);
  EXPECT_EQ(form->Revision(), settled);
}

}  // namespace
}  // namespace keldo

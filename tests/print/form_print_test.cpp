// The form print dialog, the two-dimensional form's print box, and the
// recording printer's PDF file.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "form2d_driver.h"
#include "platform/headless/pdf_document.h"
#include "platform/headless/simple_images.h"
#include "print/print_graph.h"
#include "print/print_positions.h"
#include "print_test_util.h"

namespace keldo::testing {
namespace {

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

form1d::Graph1Form& FormWithPrintDialog(TestFrame& t) {
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  f.RunMenu("mnuPrintForm");
  return f;
}

TEST(PrintForm, TheDialogOpensWithTheFormsCaption) {
  TestFrame t;
  auto& f = FormWithPrintDialog(t);
  EXPECT_TRUE(f.controls()["PicSideBox(16)"].visible);
  EXPECT_EQ(f.controls().Text("txtFormCaption"), f.Caption());
  EXPECT_EQ(f.controls()["OpPrinter"].text, "Send to &Printer");
  EXPECT_EQ(f.controls()["OpClipboard"].text, "Copy to &Clipboard");
  EXPECT_EQ(f.controls()["OpFile"].text, "Save to &File");
  EXPECT_EQ(f.controls()["OpPrinter"].value, 1);
}

TEST(PrintForm, PrintAndEjectPutsThePictureAtTheCorner) {
  TestFrame t;
  auto& f = FormWithPrintDialog(t);
  f.controls().SetText("TopCorner", "2");
  f.controls().SetText("LeftCorner", "1/2");
  f.controls().SetText("txtFormCaption", "Figure 1");
  ASSERT_TRUE(f.Click("cmdPrintAndEject"));
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(t.frame.settings().captions["LabPrintForm"], "PE");
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  const auto pictures = ItemsOf(t.platform.printer, "picture");
  ASSERT_EQ(pictures.size(), 1u);
  // Corners in units of 1500 twips, a printed inch being 1440.
  EXPECT_DOUBLE_EQ(pictures[0].x1, 0.5 * 1500 / 1440);
  EXPECT_DOUBLE_EQ(pictures[0].y1, 2.0 * 1500 / 1440);
  const auto texts = ItemsOf(t.platform.printer, "text");
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, "Figure 1");
  EXPECT_GT(texts[0].y1, pictures[0].y2);
  // The dialog is closed.
  EXPECT_FALSE(f.controls()["PicSideBox(16)"].visible);
}

TEST(PrintForm, PrintLeavesTheSheetForMore) {
  TestFrame t;
  auto& f = FormWithPrintDialog(t);
  f.Click("cmdPrint");
  EXPECT_EQ(t.frame.settings().captions["LabPrintForm"], "P");
  EXPECT_TRUE(t.platform.printer.IsOpen());
  f.RunMenu("mnuPrintForm");
  f.Click("cmdEject");
  EXPECT_FALSE(t.platform.printer.IsOpen());
  EXPECT_EQ(t.platform.printer.Documents(), 1);
}

TEST(PrintForm, ABadCornerReports33AndPrintsNothing) {
  TestFrame t;
  auto& f = FormWithPrintDialog(t);
  f.controls().SetText("TopCorner", "log(0-1)");  // a run-time fault
  f.Click("cmdPrintAndEject");
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "message 33: Error printing form.");
  EXPECT_TRUE(t.platform.printer.Items().empty());
}

TEST(PrintForm, ToTheClipboardAndToAFile) {
  TestFrame t;
  ScratchFolder folder("form");
  auto& f = FormWithPrintDialog(t);
  f.controls().SetFromUser("OpClipboard", "1");
  f.Click("cmdPrint");
  EXPECT_EQ(t.frame.settings().captions["LabPrintForm"], "Clipboard");
  const platform::RgbImage& copied = t.platform.clipboard.Image();
  ASSERT_FALSE(copied.Empty());
  EXPECT_TRUE(t.platform.printer.Items().empty());

  f.RunMenu("mnuPrintForm");
  f.controls().SetFromUser("OpFile", "1");
  t.platform.fileDialog.QueueAnswer(folder / "form.bmp");
  f.Click("cmdPrint");
  EXPECT_EQ(t.frame.settings().captions["LabPrintForm"], "File");
  EXPECT_TRUE(t.lines.empty());
  const auto saved = platform::DecodeBmp(ReadAll(folder / "form.bmp"));
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->width, copied.width);
  EXPECT_EQ(saved->pixels, copied.pixels);
  EXPECT_EQ(folder.Files(), (std::vector<std::string>{"form.bmp"}));

  f.RunMenu("mnuPrintForm");
  t.platform.fileDialog.QueueAnswer(folder / "missing/form.bmp");
  f.Click("cmdPrint");
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "message 32: Error saving file.");
  EXPECT_EQ(folder.Files(), (std::vector<std::string>{"form.bmp"}));
}

// Where the front end can draw the form's window, that picture is what
// goes to the clipboard and the printer, not the form's plots alone.
TEST(PrintForm, TheWindowPictureStandsForTheFormWhereThereIsOne) {
  TestFrame t;
  platform::RgbImage window(37, 23, platform::Rgb{0x0a141e});
  window.Set(5, 7, platform::Rgb{0xc86432});
  Form* captured = nullptr;
  t.frame.SetWindowCapturer([&](Form& form) {
    captured = &form;
    return window;
  });
  auto& f = FormWithPrintDialog(t);
  f.controls().SetFromUser("OpClipboard", "1");
  f.Click("cmdPrint");
  EXPECT_EQ(captured, &f);
  EXPECT_EQ(t.platform.clipboard.Image().width, 37);
  EXPECT_EQ(t.platform.clipboard.Image().pixels, window.pixels);

  f.RunMenu("mnuPrintForm");
  f.controls().SetFromUser("OpPrinter", "1");
  f.Click("cmdPrintAndEject");
  const auto pictures = ItemsOf(t.platform.printer, "picture");
  ASSERT_EQ(pictures.size(), 1u);
  // At the screen's 96 dots to the inch.
  EXPECT_DOUBLE_EQ(pictures[0].x2 - pictures[0].x1, 37.0 / 96);
  EXPECT_DOUBLE_EQ(pictures[0].y2 - pictures[0].y1, 23.0 / 96);

  // A window that cannot be drawn leaves the form's plots.
  t.frame.SetWindowCapturer([](Form&) { return platform::RgbImage{}; });
  f.RunMenu("mnuPrintForm");
  f.controls().SetFromUser("OpClipboard", "1");
  f.Click("cmdPrint");
  EXPECT_GT(t.platform.clipboard.Image().width, 37);
}

TEST(PrintForm, CancelLeavesEverythingAndTheQuantizationCancelStillWorks) {
  TestFrame t;
  auto& f = FormWithPrintDialog(t);
  f.Click("cmdCancel");
  EXPECT_EQ(t.frame.settings().captions["LabPrintForm"], "C");
  EXPECT_FALSE(f.controls()["PicSideBox(16)"].visible);
  EXPECT_TRUE(t.platform.printer.Items().empty());
  EXPECT_TRUE(t.lines.empty());
}

TEST(PrintImageGraph, TheTwoDimensionalFormPrintsTheGraphUnderThePopUp) {
  TestFrame t;
  ScratchFolder folder("image");
  auto& f = NewForm(t, 64);
  Plot(f, "x*y");
  f.RunMenu("mnuPrintGraph");
  EXPECT_EQ(f.controls().Text("txtPrGraph"), "1");
  EXPECT_EQ(f.controls().Text("PrnParameters"), "(A), Medium, top, left");
  EXPECT_EQ(f.controls()["ChkPrLabel"].text, "Print marker label");
  f.controls().SetFromUser("PrnParameters", "Large, center, center");
  ASSERT_TRUE(f.Click("cmdPrint(1)"));
  EXPECT_TRUE(t.lines.empty()) << t.lines[0];
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  // The picture fills the box the window lands in.
  const auto pictures = ItemsOf(t.platform.printer, "picture");
  ASSERT_EQ(pictures.size(), 1u);
  const print::PrintWindow w = print::WindowOf(f, 0);
  EXPECT_LT(w.left, w.right);
  const platform::PageSize page;
  const auto place = print::PlaceOnPage(*print::SetPrinterScale("Large, center, center", w, page.width / page.height), w);
  EXPECT_NEAR(pictures[0].x1, place.left * page.width, 1e-9);
  EXPECT_NEAR(pictures[0].x2, place.right * page.width, 1e-9);
  EXPECT_NEAR(pictures[0].y1, place.top * page.height, 1e-9);
  EXPECT_NEAR(pictures[0].y2, place.bottom * page.height, 1e-9);

  // Saved as a picture with its labels.
  t.platform.fileDialog.QueueAnswer(folder / "xy.bmp");
  f.Click("cmdPrint(3)");
  EXPECT_TRUE(t.lines.empty()) << t.lines[0];
  EXPECT_EQ(folder.Files(), (std::vector<std::string>{"xy.bmp", "xy_labels.tex"}));
  EXPECT_TRUE(f.SavePrintGraphImageToFile(folder / "again", "again"));
  EXPECT_EQ(folder.Files(), (std::vector<std::string>{"again", "again_labels.tex", "xy.bmp", "xy_labels.tex"}));

  // A graph number that names no graph.
  f.controls().SetText("txtPrGraph", "3");
  f.Click("cmdPrint(0)");
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "message 3: Improper graph specification.");
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  EXPECT_FALSE(t.platform.printer.IsOpen());
}

// The recording printer's PDF: a header, every object where the cross
// reference table says, and the page box of a landscape letter sheet.
TEST(PdfDocument, TheCrossReferenceTableFindsEveryObject) {
  platform::PdfDocument pdf(platform::PageSize{});
  pdf.Line(1, 1, 2, 2, platform::MakeRgb(255, 0, 0));
  pdf.Dot(3, 3, platform::kBlack);
  pdf.SetFont(12);
  pdf.Text(1, 4, "a (b) \\ c");
  pdf.Picture(5, 5, 1, 1, platform::RgbImage(3, 2, platform::MakeRgb(10, 20, 30)));
  pdf.NewPage();
  pdf.Line(0, 0, 1, 1, platform::kBlack);
  EXPECT_EQ(pdf.Pages(), 2);
  const std::string bytes = pdf.Bytes();
  ASSERT_EQ(bytes.rfind("%PDF-1.4\n", 0), 0u);
  const std::size_t startxref = bytes.rfind("startxref\n");
  ASSERT_NE(startxref, std::string::npos);
  const std::size_t xref = std::stoul(bytes.substr(startxref + 10));
  ASSERT_EQ(bytes.compare(xref, 5, "xref\n"), 0);
  const std::size_t count = std::stoul(bytes.substr(xref + 7));
  EXPECT_EQ(count, 1u + 3 + 1 + 2 * 2);  // free entry, catalogue/pages/font, one picture, two pages
  // The entries, twenty bytes each, follow the line "0 count".
  const std::size_t table = bytes.find('\n', xref + 5) + 1;
  for (std::size_t k = 1; k < count; ++k) {
    const std::size_t offset = std::stoul(bytes.substr(table + 20 * k, 10));
    EXPECT_EQ(bytes.compare(offset, std::to_string(k).size() + 6, std::to_string(k) + " 0 obj"), 0) << k;
  }
  EXPECT_NE(bytes.find("/MediaBox [0 0 792.0000 612.0000]"), std::string::npos);
  EXPECT_NE(bytes.find("(a \\(b\\) \\\\ c) Tj"), std::string::npos);
  EXPECT_NE(bytes.find("1.0000 0.0000 0.0000 RG"), std::string::npos);
  // The line from (1, 1) inches: 72 points in, 612 - 72 points up.
  EXPECT_NE(bytes.find("72.0000 540.0000 m 144.0000 468.0000 l S"), std::string::npos);
}

TEST(PdfDocument, TheRecordingPrinterWritesEachDocumentToItsFile) {
  ScratchFolder folder("pdf");
  platform::HeadlessPrinter printer;
  printer.SetOutputPath(folder / "out.pdf");
  for (int k = 0; k < 2; ++k) {
    ASSERT_TRUE(printer.Begin("KELDO"));
    printer.Line(1, 1, 2, 2, platform::kBlack);
    ASSERT_TRUE(printer.End());
  }
  EXPECT_EQ(folder.Files(), (std::vector<std::string>{"out.pdf", "out_2.pdf"}));
  EXPECT_EQ(printer.LastDocumentPath(), folder / "out_2.pdf");
  EXPECT_FALSE(printer.End());
  // pdftoppm reads it: one page of 11 by 8.5 inches.
  ASSERT_EQ(std::system(("pdftoppm -r 10 -singlefile " + folder / "out.pdf" + " " + folder / "page").c_str()), 0);
  std::ifstream ppm(folder / "page.ppm", std::ios::binary);
  std::string magic;
  int width = 0, height = 0;
  ppm >> magic >> width >> height;
  EXPECT_EQ(magic, "P6");
  EXPECT_EQ(width, 110);
  EXPECT_EQ(height, 85);
}

}  // namespace
}  // namespace keldo::testing

namespace keldo::testing {
namespace {

// The spectrogram prints its whole form, from the File menu and the pop-up,
// each time on a sheet of its own.
TEST(PrintTimeFrequency, TheSpectrogramPrintsItsFormOnASheetOfItsOwn) {
  TestFrame t;
  auto& f = NewGraphForm(t, 256);
  Plot(f, "sin(80*pi*x)");
  f.RunMenu("mnuSpectrogram");
  f.controls().SetText("TxtGraphStat", "1");
  ASSERT_TRUE(f.Go());
  Form& s = *t.frame.OpenForms().back();
  ASSERT_EQ(s.Kind(), FormKind::Spectrogram);
  ASSERT_TRUE(s.Go());  // the compute box, as it opened
  ASSERT_TRUE(s.RunMenu("mnuPrint"));
  EXPECT_TRUE(t.lines.empty()) << t.lines[0];
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  const auto pictures = ItemsOf(t.platform.printer, "picture");
  ASSERT_EQ(pictures.size(), 1u);
  EXPECT_DOUBLE_EQ(pictures[0].x1, 1500.0 / 1440);
  EXPECT_DOUBLE_EQ(pictures[0].y1, 1500.0 / 1440);
  const auto texts = ItemsOf(t.platform.printer, "text");
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, s.Caption());
  ASSERT_TRUE(s.RunMenu("mnuPrintPopUp"));
  EXPECT_EQ(t.platform.printer.Documents(), 2);
  EXPECT_FALSE(t.platform.printer.IsOpen());
}

}  // namespace
}  // namespace keldo::testing
